#include "platform/fileevents/InotifySource.h"

#include "platform/coreservices/PathAccess.h"
#include "platform/fileevents/FileEventRecord.h"
#include "platform/fileevents/WatchedRoots.h"
#include "platform/foundation/DirectoryStream.h"
#include "platform/foundation/MessageTexts.h"
#include "platform/foundation/PathBytes.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <utility>

namespace Tessaron
{

namespace
{

constexpr std::uint32_t changesOfNames = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO;
constexpr std::uint32_t changesInFolders = changesOfNames | IN_MODIFY | IN_ATTRIB;

/// Folders that are watched before events are read again: the kernel keeps 16384 events by default.
constexpr int visitsInAStep = 256;
/// Reads before deliveries are looked at again.
constexpr int mostReads = 16;
/// While more folders than these wait to be watched, events stay in the kernel's queue, which is bounded.
constexpr std::size_t mostVisitsWaiting = 65536;
constexpr qsizetype mostArrivals = 4096;

NSError noInotify(int error)
{
    if (error == EMFILE)
        return cannotWatch("/", QStringLiteral("This user has as many watchers of files as the system allows."),
                           QStringLiteral("Quit other programs that watch files, or let the administrator raise "
                                          "fs.inotify.max_user_instances (sysctl)."));
    return cannotWatch("/", systemText(error), QStringLiteral("Quit programs that are not needed and try again."));
}

bool isEarlier(const timespec &one, const timespec &other)
{
    return one.tv_sec != other.tv_sec ? one.tv_sec < other.tv_sec : one.tv_nsec < other.tv_nsec;
}

bool isSameFolder(int folder, const QByteArray &path)
{
    int error = 0;
    const UniqueDescriptor other = openPath(path, O_PATH | O_NOFOLLOW, &error);
    struct stat one;
    struct stat two;
    return other && ::fstat(folder, &one) == 0 && ::fstat(other.get(), &two) == 0 && one.st_dev == two.st_dev
        && one.st_ino == two.st_ino;
}

bool isFolder(int parent, const dirent &entry)
{
    if (entry.d_type != DT_UNKNOWN)
        return entry.d_type == DT_DIR;
    struct stat facts;
    return ::fstatat(parent, entry.d_name, &facts, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(facts.st_mode);
}

} // namespace

std::unique_ptr<FileEventSource> makeInotifySource()
{
    return std::make_unique<InotifySource>();
}

NSError InotifySource::open(const std::vector<Mount> &mounts)
{
    m_events.reset(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    if (!m_events)
        return noInotify(errno);
    // File times come from this clock.
    ::clock_gettime(CLOCK_REALTIME_COARSE, &m_begin);
    noteMounts(mounts);
    return {};
}

void InotifySource::continueOnThread()
{
    watchRoots();
}

void InotifySource::watchAnew(const std::vector<Mount> &mounts, FSEventStreamEventFlags flags)
{
    // Closing drops the watches with all that they have told. Taking them away one by one would fill the queue again.
    m_events.reset();
    m_events.reset(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    m_watches.clear();
    m_watchOfFolder.clear();
    m_toVisit.clear();
    m_toBeScanned.clear();
    m_unreadable = 0;
    m_flagsAtEnd |= flags;
    noteMounts(mounts);
    if (m_events) {
        watchRoots();
    } else {
        m_record->addProblem(noInotify(errno));
        m_record->lost(kFSEventStreamEventFlagUserDropped);
    }
}

void InotifySource::mountHasChanged(const std::vector<Mount> &mounts, const QByteArray &point)
{
    noteMounts(mounts);
    arrive(point);
}

void InotifySource::arrive(const QByteArray &folder)
{
    forget(folder);
    m_record->add(folder, kFSEventStreamEventFlagMustScanSubDirs);
    m_toVisit.push_back(Visit{folder, Occasion::Arrival});
    // It is told again when all of it is watched: a reader of the first event may be quicker than that.
    if (m_toBeScanned.size() < mostArrivals)
        m_toBeScanned.insert(folder);
    else
        m_isBuilding = true; // then everything is to be scanned
}

void InotifySource::noteMounts(const std::vector<Mount> &mounts)
{
    m_leftOut.clear();
    for (const Mount &mount : mounts) {
        // The last one at a point hides the others.
        if (holdsSystemFilesOnly(mount.type))
            m_leftOut.insert(mount.point);
        else
            m_leftOut.remove(mount.point);
    }
}

void InotifySource::watchRoots()
{
    m_isBuilding = true;
    watchWays();
    for (const WatchedRoots::Root &root : m_roots->roots()) {
        if (!root.real.isEmpty())
            m_toVisit.push_back(Visit{root.real, Occasion::Start});
    }
}

void InotifySource::watchWays()
{
    // From above downwards: a folder that is replaced before it is watched is told by the one above it.
    const QSet<QByteArray> &unordered = m_roots->foldersOnTheWay();
    std::vector<QByteArray> folders(unordered.begin(), unordered.end());
    std::sort(folders.begin(), folders.end());
    for (const QByteArray &path : folders) {
        int error = 0;
        const UniqueDescriptor folder = openPath(path, O_PATH | O_DIRECTORY, &error);
        // A folder that is gone has been replaced or removed, which the folder above it tells.
        if (folder)
            (void)watch(folder.get(), path, false);
        else if (error != ENOENT && error != ENOTDIR)
            tellOfFailure(path, error);
    }
}

bool InotifySource::watchMore()
{
    for (int visits = 0; visits < visitsInAStep && !m_toVisit.empty(); ++visits) {
        const Visit next = std::move(m_toVisit.back());
        m_toVisit.pop_back();
        visit(next);
    }
    if (!m_toVisit.empty())
        return true;
    tellOfUnreadableFolders();
    for (const QByteArray &folder : std::exchange(m_toBeScanned, {}))
        m_record->add(folder, kFSEventStreamEventFlagMustScanSubDirs);
    if (std::exchange(m_isBuilding, false))
        allAreWatched();
    return false;
}

void InotifySource::allAreWatched()
{
    const FSEventStreamEventFlags flags = std::exchange(m_flagsAtEnd, kFSEventStreamEventFlagNone);
    for (const QByteArray &place : m_roots->places())
        m_record->add(place, flags | kFSEventStreamEventFlagMustScanSubDirs);
}

void InotifySource::visit(const Visit &next)
{
    if (!m_events || m_leftOut.contains(next.folder))
        return;
    int error = 0;
    UniqueDescriptor folder =
        openPath(next.folder, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_NONBLOCK | O_NOATIME, &error);
    if (!folder && error == EPERM) // the folder of another user, whose times may not be left alone
        folder = openPath(next.folder, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_NONBLOCK, &error);
    if (!folder) {
        // What is gone or no folder any more is told by the events of the folder above.
        if (error != ENOENT && error != ENOTDIR && error != ELOOP)
            tellOfFailure(next.folder, error);
        return;
    }
    if (watch(folder.get(), next.folder, true))
        list(std::move(folder), next);
}

bool InotifySource::watch(int folder, const QByteArray &path, bool isListed)
{
    const std::uint32_t changes = isListed ? changesInFolders : changesOfNames;
    const int number = ::inotify_add_watch(m_events.get(), pathOfDescriptor(folder).constData(),
                                           changes | IN_ONLYDIR | IN_MASK_ADD | IN_EXCL_UNLINK);
    if (number < 0) {
        tellOfFailure(path, errno);
        return false;
    }
    m_isLimitTold = false;
    const auto before = m_watches.constFind(number);
    const bool wasListed = before != m_watches.cend() && before->isListed;
    if (before != m_watches.cend() && before->folder != path) {
        const QByteArray formerPath = before->folder;
        // Mounted at two places: it is told at the first.
        if (isSameFolder(folder, formerPath))
            return false;
        // It came here from another place, and what the kernel tells of that is still to be read.
        m_watchOfFolder.erase(formerPath);
        forgetBelow(formerPath);
    }
    m_watches.insert(number, Watch{path, isListed || wasListed});
    m_watchOfFolder[path] = number;
    return true;
}

void InotifySource::list(UniqueDescriptor folder, const Visit &next)
{
    struct stat facts;
    const bool changedMeanwhile =
        next.occasion == Occasion::Start && ::fstat(folder.get(), &facts) == 0 && !isEarlier(facts.st_ctim, m_begin);
    const DirectoryStream entries = directoryStream(std::move(folder));
    bool isEmpty = true;
    while (entries) {
        errno = 0;
        const dirent *entry = ::readdir(entries.get());
        if (!entry)
            break;
        const std::string_view name = entry->d_name;
        if (name == "." || name == "..")
            continue;
        isEmpty = false;
        if (!isFolder(::dirfd(entries.get()), *entry))
            continue;
        const QByteArray path = childPath(next.folder, QByteArrayView(name.data(), qsizetype(name.size())));
        const auto known = m_watchOfFolder.find(path);
        if (known == m_watchOfFolder.end() || !m_watches.value(known->second).isListed)
            m_toVisit.push_back(Visit{path, next.occasion});
    }
    if (!entries || errno != 0)
        tellOfFailure(next.folder, errno);
    if (changedMeanwhile || (next.occasion == Occasion::Appearance && !isEmpty))
        m_record->add(next.folder, kFSEventStreamEventFlagNone);
}

void InotifySource::readEvents()
{
    for (int reads = 0; reads < mostReads && m_toVisit.size() < mostVisitsWaiting; ++reads) {
        const ssize_t length = ::read(m_events.get(), m_buffer.data(), m_buffer.size());
        if (length <= 0)
            return;
        inotify_event event;
        for (std::size_t at = 0; at + sizeof event <= static_cast<std::size_t>(length);
             at += sizeof event + event.len) {
            std::memcpy(&event, m_buffer.data() + at, sizeof event);
            if ((event.mask & IN_Q_OVERFLOW) != 0) {
                m_record->lost(kFSEventStreamEventFlagKernelDropped);
                watchAnew(currentMounts(), kFSEventStreamEventFlagKernelDropped);
                return;
            }
            const char *name = m_buffer.data() + at + sizeof event;
            record(event, event.len > 0 ? QByteArray(name, qstrnlen(name, event.len)) : QByteArray());
        }
    }
}

void InotifySource::record(const inotify_event &event, const QByteArray &name)
{
    const auto found = m_watches.constFind(event.wd);
    // A watch that was taken away has told this before: its folder was moved, and is to be scanned or out of sight.
    if (found == m_watches.cend())
        return;
    const QByteArray folder = found->folder;
    if ((event.mask & IN_IGNORED) != 0) {
        m_watches.erase(found);
        const auto number = m_watchOfFolder.find(folder);
        if (number != m_watchOfFolder.end() && number->second == event.wd)
            m_watchOfFolder.erase(number);
        return;
    }
    if ((event.mask & changesInFolders) == 0)
        return;
    const bool isInside = m_roots->contains(folder);
    if (isInside)
        m_record->add(folder, kFSEventStreamEventFlagNone);
    if ((event.mask & changesOfNames) == 0)
        return;
    const QByteArray entry = childPath(folder, name);
    if (m_roots->leadsThrough(folder))
        m_roots->entryHasChanged(entry);
    if (isInside && (event.mask & IN_ISDIR) != 0)
        recordFolderEntry(event.mask, entry);
}

void InotifySource::recordFolderEntry(std::uint32_t mask, const QByteArray &entry)
{
    if ((mask & IN_MOVED_FROM) != 0) {
        // Paired or not: where it comes in again it is watched anew, and is to be scanned.
        forget(entry);
    } else if ((mask & IN_MOVED_TO) != 0) {
        arrive(entry);
    } else if ((mask & IN_CREATE) != 0) {
        const auto known = m_watchOfFolder.find(entry);
        if (known == m_watchOfFolder.end() || !m_watches.value(known->second).isListed)
            m_toVisit.push_back(Visit{entry, Occasion::Appearance});
    }
}

void InotifySource::forget(const QByteArray &folder)
{
    const auto number = m_watchOfFolder.find(folder);
    if (number != m_watchOfFolder.end()) {
        ::inotify_rm_watch(m_events.get(), number->second);
        m_watches.remove(number->second);
        m_watchOfFolder.erase(number);
    }
    forgetBelow(folder);
}

void InotifySource::forgetBelow(const QByteArray &folder)
{
    const QByteArray prefix = folder.endsWith('/') ? folder : folder + '/';
    auto below = m_watchOfFolder.lower_bound(prefix);
    while (below != m_watchOfFolder.end() && below->first.startsWith(prefix)) {
        ::inotify_rm_watch(m_events.get(), below->second);
        m_watches.remove(below->second);
        below = m_watchOfFolder.erase(below);
    }
}

void InotifySource::tellOfFailure(const QByteArray &folder, int error)
{
    if (m_roots->contains(folder))
        m_record->add(folder, kFSEventStreamEventFlagMustScanSubDirs | kFSEventStreamEventFlagUserDropped);
    if (error == EACCES) {
        if (m_unreadable++ == 0)
            m_firstUnreadable = folder;
    } else if (error == ENOSPC || error == ENOMEM) {
        if (std::exchange(m_isLimitTold, true))
            return;
        m_record->addProblem(cannotWatch(
            folder,
            QStringLiteral("Each folder takes a watch, and this user has all %1 that could be had; further folders are "
                           "not watched either.")
                .arg(m_watches.size()),
            QStringLiteral("Watch fewer folders, quit other programs that watch files, or let the administrator raise "
                           "fs.inotify.max_user_watches (sysctl); then start watching again.")));
    } else {
        m_record->addProblem(cannotWatch(folder, systemText(error),
                                         QStringLiteral("Look at the folder by other means when it matters.")));
    }
}

void InotifySource::tellOfUnreadableFolders()
{
    const std::uint64_t folders = std::exchange(m_unreadable, 0);
    if (folders == 0)
        return;
    m_record->addProblem(cannotWatch(
        m_firstUnreadable,
        QStringLiteral("This user may not read %1, and only what may be read can be watched.")
            .arg(folders == 1 ? QStringLiteral("it")
                              : QStringLiteral("it and %1").arg(counted(folders - 1, "other folder", "other folders"))),
        QStringLiteral("Run as a user who may read them when changes there matter.")));
}

} // namespace Tessaron
