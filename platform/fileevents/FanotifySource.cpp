#include "platform/fileevents/FanotifySource.h"

#include "platform/coreservices/FileHandle.h"
#include "platform/coreservices/PathAccess.h"
#include "platform/fileevents/FileEventRecord.h"
#include "platform/fileevents/WatchedRoots.h"
#include "platform/foundation/ByteOrder.h"
#include "platform/foundation/MessageTexts.h"
#include "platform/foundation/PathBytes.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <string_view>
#include <sys/fanotify.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <utility>

namespace Tessaron
{

namespace
{

constexpr std::uint64_t changesOfNames = FAN_CREATE | FAN_DELETE | FAN_MOVED_FROM | FAN_MOVED_TO;
constexpr std::uint64_t changes = changesOfNames | FAN_MODIFY | FAN_ATTRIB | FAN_ONDIR;

/// Reads before deliveries are looked at again, and before open folders are given back.
constexpr int mostReads = 16;
constexpr qsizetype mostFoldersKept = 4096;

/// A volume on another machine, or behind a program, may let everybody wait who looks at it.
bool mayHang(const QByteArray &type)
{
    static constexpr std::array<std::string_view, 7> beginnings = {"9p", "afs", "ceph", "cifs", "fuse", "nfs", "smb"};
    const std::string_view text(type.constData(), static_cast<std::size_t>(type.size()));
    return std::any_of(beginnings.begin(), beginnings.end(),
                       [text](std::string_view beginning) { return text.starts_with(beginning); });
}

bool isGone(int error)
{
    return error == ENOENT || error == ENOTDIR;
}

/// True where a path leads to what is open. No value when that could not be found out.
std::optional<bool> leadsTo(const QByteArray &path, const struct stat &facts)
{
    int error = 0;
    const UniqueDescriptor folder = openPath(path, O_PATH | O_NOFOLLOW, &error);
    if (!folder)
        return isGone(error) ? std::optional(false) : std::nullopt;
    struct stat found;
    if (::fstat(folder.get(), &found) != 0)
        return std::nullopt;
    return found.st_dev == facts.st_dev && found.st_ino == facts.st_ino;
}

NSError refusal(const QByteArray &point, const QByteArray &type, int error)
{
    return cannotWatch(point,
                       QStringLiteral("Its file system (%1) does not tell of changes: %2")
                           .arg(QString::fromLatin1(type), systemText(error)),
                       QStringLiteral("Look at it by other means when changes there matter."));
}

} // namespace

std::unique_ptr<FileEventSource> makeFanotifySource()
{
    return std::make_unique<FanotifySource>();
}

NSError FanotifySource::open(const std::vector<Mount> &mounts)
{
    m_mounts = mounts;
    // Not FAN_UNLIMITED_QUEUE, although only those who may have it get here: a storm must not eat the kernel's memory.
    m_events.reset(::fanotify_init(FAN_CLASS_NOTIF | FAN_CLOEXEC | FAN_NONBLOCK | FAN_REPORT_DFID_NAME, O_RDONLY));
    if (!m_events)
        return NSError::errorWithErrno(errno, QString());
    return markLocalMounts();
}

void FanotifySource::continueOnThread()
{
    markMounts();
}

void FanotifySource::watchAnew(const std::vector<Mount> &mounts, FSEventStreamEventFlags flags)
{
    m_mounts = mounts;
    markMounts();
    for (const QByteArray &place : m_roots->places())
        m_record->add(place, flags | kFSEventStreamEventFlagMustScanSubDirs);
}

void FanotifySource::mountHasChanged(const std::vector<Mount> &mounts, const QByteArray &point)
{
    m_mounts = mounts;
    m_refused.remove(point);
    markMounts();
    m_record->add(point, kFSEventStreamEventFlagMustScanSubDirs);
}

bool FanotifySource::isOfUse(const Mount &mount) const
{
    if (holdsSystemFilesOnly(mount.type))
        return false;
    const QSet<QByteArray> &ways = m_roots->foldersOnTheWay();
    return m_roots->contains(mount.point)
        || std::any_of(ways.begin(), ways.end(),
                       [&mount](const QByteArray &folder) { return isAtOrBelow(folder, mount.point); })
        || std::any_of(m_roots->roots().begin(), m_roots->roots().end(), [&mount](const WatchedRoots::Root &root) {
               return !root.real.isEmpty() && isAtOrBelow(root.real, mount.point);
           });
}

int FanotifySource::mark(const QByteArray &point)
{
    struct statfs facts;
    if (::fanotify_mark(m_events.get(), FAN_MARK_ADD | FAN_MARK_FILESYSTEM | FAN_MARK_ONLYDIR, changes, AT_FDCWD,
                        point.constData())
            != 0
        || ::statfs(point.constData(), &facts) != 0)
        return errno;
    const QByteArray volume(reinterpret_cast<const char *>(&facts.f_fsid), sizeof facts.f_fsid);
    QByteArrayList &points = m_pointsOfVolume[volume];
    if (!points.contains(point))
        points.append(point);
    return 0;
}

NSError FanotifySource::markLocalMounts()
{
    for (const Mount &mount : m_mounts) {
        if (!isOfUse(mount))
            continue;
        const auto &roots = m_roots->roots();
        const bool holdsRoot = std::any_of(roots.begin(), roots.end(), [&mount](const WatchedRoots::Root &root) {
            return isAtOrBelow(root.real.isEmpty() ? root.given : root.real, mount.point);
        });
        // What is mounted inside a root is left for continueOnThread() when it may take long or is refused.
        if (!holdsRoot && mayHang(mount.type))
            continue;
        if (const int error = mark(mount.point); error != 0 && holdsRoot)
            return refusal(mount.point, mount.type, error);
    }
    return {};
}

void FanotifySource::markMounts()
{
    m_pointsOfVolume.clear();
    for (const Mount &mount : std::as_const(m_mounts)) {
        if (!isOfUse(mount))
            continue;
        const int error = mark(mount.point);
        if (error == 0 || error == ENOENT || m_refused.contains(mount.point))
            continue;
        m_refused.insert(mount.point);
        m_record->addProblem(refusal(mount.point, mount.type, error));
        if (m_roots->contains(mount.point))
            m_record->add(mount.point, kFSEventStreamEventFlagMustScanSubDirs | kFSEventStreamEventFlagUserDropped);
    }
}

void FanotifySource::readEvents()
{
    for (int reads = 0; reads < mostReads; ++reads) {
        const ssize_t length = ::read(m_events.get(), m_buffer.data(), m_buffer.size());
        if (length <= 0)
            break;
        std::size_t left = static_cast<std::size_t>(length);
        for (const char *event = m_buffer.data(); left >= FAN_EVENT_METADATA_LEN;) {
            fanotify_event_metadata head;
            std::memcpy(&head, event, sizeof head);
            if (head.event_len < FAN_EVENT_METADATA_LEN || head.event_len > left)
                break;
            Change change;
            if ((head.mask & FAN_Q_OVERFLOW) != 0)
                m_record->lost(kFSEventStreamEventFlagKernelDropped);
            else if (head.vers == FANOTIFY_METADATA_VERSION && read(event, head.event_len, &change))
                record(change);
            else
                m_record->lost(kFSEventStreamEventFlagUserDropped);
            left -= head.event_len;
            event += head.event_len;
        }
    }
    m_folders.clear();
    m_openPoints.clear();
}

/// False for an event without a folder and a name, which the kernel never sends for what was asked.
bool FanotifySource::read(const char *event, std::size_t length, Change *change)
{
    fanotify_event_metadata head;
    std::memcpy(&head, event, sizeof head);
    change->mask = head.mask;
    fanotify_event_info_fid info;
    file_handle handle;
    for (std::size_t at = head.metadata_len; at + sizeof info + sizeof handle <= length; at += info.hdr.len) {
        std::memcpy(&info, event + at, sizeof info);
        if (info.hdr.len < sizeof info + sizeof handle || info.hdr.len > length - at)
            return false;
        if (info.hdr.info_type != FAN_EVENT_INFO_TYPE_DFID_NAME)
            continue;
        std::memcpy(&handle, event + at + sizeof info, sizeof handle);
        const std::size_t rest = info.hdr.len - sizeof info - sizeof handle;
        if (handle.handle_bytes >= rest)
            return false;
        const char *const bytes = event + at + sizeof info + sizeof handle;
        change->volume = QByteArray(reinterpret_cast<const char *>(&info.fsid), sizeof info.fsid);
        change->folder.resize(sizeof(std::uint32_t));
        storeBigEndian<std::uint32_t>(reinterpret_cast<std::uint8_t *>(change->folder.data()),
                                      static_cast<std::uint32_t>(handle.handle_type));
        change->folder.append(bytes, handle.handle_bytes);
        const char *const name = bytes + handle.handle_bytes;
        change->name = QByteArray(name, qstrnlen(name, rest - handle.handle_bytes));
        return true;
    }
    return false;
}

void FanotifySource::record(const Change &change)
{
    for (const QByteArray &folder : foldersOf(change))
        recordIn(folder, change);
    // Folders that are known may lie elsewhere now.
    if ((change.mask & FAN_ONDIR) != 0 && (change.mask & changesOfNames) != 0)
        m_folders.clear();
}

void FanotifySource::recordIn(const QByteArray &folder, const Change &change)
{
    const bool isInside = m_roots->contains(folder);
    if (isInside)
        m_record->add(folder, kFSEventStreamEventFlagNone);
    if (change.name == ".") {
        // As if told of the entry that it is of the folder above.
        if (const QByteArray above = parentPath(folder); above != folder && m_roots->contains(above))
            m_record->add(above, kFSEventStreamEventFlagNone);
        return;
    }
    if ((change.mask & changesOfNames) == 0)
        return;
    const QByteArray entry = childPath(folder, change.name);
    if (m_roots->leadsThrough(folder))
        m_roots->entryHasChanged(entry);
    if (isInside && (change.mask & FAN_MOVED_TO) != 0 && (change.mask & FAN_ONDIR) != 0)
        m_record->add(entry, kFSEventStreamEventFlagMustScanSubDirs);
}

const std::vector<QByteArray> &FanotifySource::foldersOf(const Change &change)
{
    const QByteArray key = change.volume + change.folder;
    auto known = m_folders.find(key);
    // Where a place could not be found out, each event is lost for itself: what was told of an earlier one may have
    // been delivered by now.
    if (known == m_folders.end() || !known->areAll) {
        if (m_folders.size() >= mostFoldersKept)
            m_folders.clear();
        known = m_folders.insert(key, foldersNow(change));
    }
    return known->folders;
}

/// Where the folder lies, once for each place at which its file system is mounted. Nowhere when it is gone, which the
/// folder above it tells.
FanotifySource::Places FanotifySource::foldersNow(const Change &change)
{
    Places places;
    const auto lose = [&] {
        m_record->lost(kFSEventStreamEventFlagUserDropped);
        places.areAll = false;
    };
    const QByteArrayList points = m_pointsOfVolume.value(change.volume);
    if (points.empty())
        lose();
    for (const QByteArray &point : points) {
        int error = 0;
        const int volume = mountFolder(point, &error);
        if (volume < 0) {
            // The list of mounts tells what was unmounted.
            if (!isGone(error))
                lose();
            continue;
        }
        const UniqueDescriptor folder = openFileHandle(volume, change.folder);
        if (!folder && errno == ESTALE)
            continue;
        struct stat facts;
        QByteArray path;
        if (!folder || ::fstat(folder.get(), &facts) != 0
            || (facts.st_nlink > 0
                && readLinkBelow(AT_FDCWD, pathOfDescriptor(folder.get()).constData(), &path) != 0)) {
            lose();
            continue;
        }
        if (facts.st_nlink == 0)
            continue;
        // A place that another mount hides, or that this mount does not show, leads elsewhere.
        if (const std::optional<bool> isThere = leadsTo(path, facts); !isThere)
            lose();
        else if (*isThere)
            places.folders.push_back(path);
    }
    return places;
}

/// Less than 0, with the `errno` value, when the place of the mount cannot be opened.
int FanotifySource::mountFolder(const QByteArray &point, int *error)
{
    for (const auto &[known, descriptor] : m_openPoints) {
        if (known == point)
            return descriptor.get();
    }
    UniqueDescriptor folder = openPath(point, O_RDONLY | O_DIRECTORY | O_NONBLOCK, error);
    if (!folder)
        return -1;
    return m_openPoints.emplace_back(point, std::move(folder)).second.get();
}

} // namespace Tessaron
