#include "imaging/verification/SourceIndex.h"

#include "platform/discimage/volume/VolumeReader.h"
#include "platform/discrecording/objects/DRFilesystems.h"
#include "platform/foundation/DescriptorLimit.h"
#include "platform/foundation/DirectoryStream.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MessageTexts.h"
#include <TessaronClasses/KRFileHierarchyItem.h>
#include <TessaronClasses/KRFileReference.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaron
{

namespace
{

/// The system takes no longer path at once.
constexpr qsizetype longestPath = PATH_MAX - 1;

VolumeObjectKind kindOf(mode_t mode)
{
    if (S_ISREG(mode))
        return VolumeObjectKind::File;
    if (S_ISDIR(mode))
        return VolumeObjectKind::Folder;
    return S_ISLNK(mode) ? VolumeObjectKind::SymbolicLink : VolumeObjectKind::Other;
}

/// Opens the folder that holds the last component of the path, in steps that the system takes; the last component comes
/// back in `*name`.
UniqueDescriptor openParent(const QByteArray &path, QByteArray *name)
{
    QByteArray rest = path;
    UniqueDescriptor folder;
    while (rest.size() > longestPath) {
        const qsizetype slash = rest.lastIndexOf('/', longestPath - 1);
        if (slash <= 0) {
            errno = ENAMETOOLONG;
            return {};
        }
        const QByteArray part = rest.left(slash);
        folder = UniqueDescriptor(
            ::openat(folder ? folder.get() : AT_FDCWD, part.constData(), O_PATH | O_DIRECTORY | O_CLOEXEC));
        if (!folder)
            return {};
        rest = rest.mid(slash + 1);
    }
    *name = rest;
    return folder;
}

SourceObject objectFor(const struct stat &status)
{
    SourceObject object;
    object.kind = kindOf(status.st_mode);
    object.size = S_ISREG(status.st_mode) ? std::uint64_t(status.st_size) : 0;
    object.device = status.st_dev;
    object.inode = status.st_ino;
    object.modificationSeconds = status.st_mtim.tv_sec;
    object.modificationNanoseconds = std::uint32_t(status.st_mtim.tv_nsec);
    return object;
}

/// The filesystems that an item's options choose, as a layout takes them; those of its folder where they choose none.
DRFilesystemMask maskOf(const KRFileReference &reference, DRFilesystemMask ofFolder)
{
    const _TessaronAttributes &options = *reference.tessaronAttributes();
    if (options.useBasicFSInclusion && options.hasBasicFSInclusion && options.basicFSInclusion == 1)
        return DRFilesystemInclusionMaskUDF | DRFilesystemInclusionMaskHFSPlus;
    if (options.useBasicFSInclusion && options.hasBasicFSInclusion && options.basicFSInclusion == 2)
        return DRFilesystemInclusionMaskISO9660 | DRFilesystemInclusionMaskJoliet;
    if (!options.useBasicFSInclusion && options.hasAdvancedFSInclusion && options.advancedFSInclusion != 0)
        return DRFilesystemMask(options.advancedFSInclusion);
    return ofFolder;
}

std::uint8_t volumesWithout(DRFilesystemMask mask)
{
    std::uint8_t volumes = 0;
    const auto leaveOut = [&](DRFilesystemMask bit, VolumeKind kind) {
        if ((mask & bit) == 0)
            volumes = std::uint8_t(volumes | (1u << unsigned(kind)));
    };
    leaveOut(DRFilesystemInclusionMaskISO9660, VolumeKind::ISO9660);
    leaveOut(DRFilesystemInclusionMaskISO9660, VolumeKind::RockRidge);
    leaveOut(DRFilesystemInclusionMaskJoliet, VolumeKind::Joliet);
    leaveOut(DRFilesystemInclusionMaskUDF, VolumeKind::UDF);
    leaveOut(DRFilesystemInclusionMaskHFSPlus, VolumeKind::HFSPlus);
    return volumes;
}

/// The icon of a folder belongs to the folder that holds it on disk; a layout takes it from nowhere else.
bool isLeftOut(const KRFileReference &reference, const KRFileReference *folder)
{
    return !reference.isVirtual() && folder && folder->isVirtual()
        && lastKnownPath(*reference.fileRef()).endsWith("/Icon\r");
}

} // namespace

struct SourceIndex::Entry {
    QByteArray name;
    SourceObject object;
    QByteArray top; ///< for a source given by the user: its path
    const KRFileHierarchyItem *item = nullptr; ///< of a tree
};

/// The folders that were listed last stay open, so that those in them can be opened from there: by whole paths the time
/// would grow with the square of the depth.
class SourceIndex::RecentFolders
{
public:
    /// -1 when the folder is not open any more.
    [[nodiscard]] int descriptorOf(SourceNumber folder) const
    {
        const auto found = std::find_if(m_folders.begin(), m_folders.end(),
                                        [folder](const Folder &each) { return each.number == folder; });
        return found != m_folders.end() && found->listing ? ::dirfd(found->listing.get()) : -1;
    }

    /// Takes the descriptor over; null with `errno` set when it cannot be listed. The one kept longest is closed.
    DIR *keep(SourceNumber folder, UniqueDescriptor descriptor)
    {
        m_next = (m_next + 1) % m_folders.size();
        Folder &place = m_folders[m_next];
        place.number = folder;
        place.listing = directoryStream(std::move(descriptor));
        return place.listing.get();
    }

    void close() { m_folders = {}; }

private:
    struct Folder {
        SourceNumber number = noSource;
        DirectoryStream listing;
    };
    std::array<Folder, 8> m_folders;
    std::size_t m_next = 0;
};

SourceIndex::SourceIndex(const std::vector<DiscSource> &sources, const std::stop_token &stop)
    : m_rootIsOnlySource(sources.size() == 1 && sources.front().isFolder)
{
    addSources(sources);
    RecentFolders recent;
    // Children are appended behind all that is there, so going on by number is going on by level.
    for (SourceNumber number = m_rootIsOnlySource ? 0 : 1; number < m_objects.size() && !stop.stop_requested();
         ++number) {
        if (m_objects[number].kind == VolumeObjectKind::Folder)
            listFolder(number, recent);
    }
}

/// A child that is not to be in a volume by its own options, or since its folder is not, counts as seen there.
SourceIndex::SourceIndex(const KRFileHierarchyItem &root, const std::stop_token &stop)
{
    m_objects.emplace_back().kind = VolumeObjectKind::Folder;
    m_objects.front().modificationNanoseconds = SourceObject::noTime;
    m_refs.emplace_back();
    std::vector<const KRFileHierarchyItem *> items = {&root};
    std::vector<DRFilesystemMask> masks = {DRFilesystemInclusionMaskAll};
    for (SourceNumber number = 0; number < m_objects.size() && !stop.stop_requested(); ++number) {
        std::vector<Entry> entries;
        const std::shared_ptr<KRFileReference> &folder = items[number]->fileReference();
        for (const std::shared_ptr<KRFileHierarchyItem> &item : items[number]->items()) {
            if (!item->fileReference() || isLeftOut(*item->fileReference(), folder.get()))
                continue;
            const FSRef &ref = *item->fileReference()->fileRef();
            entries.push_back(entryFor(*item, ref));
        }
        addChildren(number, entries);
        for (std::size_t index = 0; index < entries.size(); ++index) {
            const KRFileHierarchyItem &item = *entries[index].item;
            const DRFilesystemMask mask = masks[number] & maskOf(*item.fileReference(), masks[number]);
            items.push_back(&item);
            masks.push_back(mask);
            m_refs.push_back(*item.fileReference()->fileRef());
            m_objects[m_objects[number].firstChild + index].seenIn = volumesWithout(mask);
        }
    }
}

SourceIndex::Entry SourceIndex::entryFor(const KRFileHierarchyItem &item, const FSRef &ref)
{
    KRFileReference &reference = *item.fileReference();
    const QByteArray path = lastKnownPath(ref);
    Entry entry;
    entry.item = &item;
    entry.name = reference.isVirtual() || reference.hasDesiredName()
        ? fileSystemRepresentation(reference.desiredNameWithExtensionEvenIfHidden(true))
        : path.mid(path.lastIndexOf('/') + 1);
    entry.object.kind = reference.isContainer() ? VolumeObjectKind::Folder : VolumeObjectKind::File;
    entry.object.modificationNanoseconds = SourceObject::noTime;
    if (reference.isVirtual())
        return entry;
    QByteArray last;
    struct stat status;
    const UniqueDescriptor parent = openParent(path, &last);
    if (last.isEmpty()
        || ::fstatat(parent ? parent.get() : AT_FDCWD, last.constData(), &status, AT_SYMLINK_NOFOLLOW) != 0)
        m_failures.push_back({path, systemText(errno)});
    else
        entry.object = objectFor(status);
    return entry;
}

void SourceIndex::addSources(const std::vector<DiscSource> &sources)
{
    SourceObject root;
    root.kind = VolumeObjectKind::Folder;
    struct stat status;
    if (m_rootIsOnlySource) {
        if (::stat(sources.front().path.constData(), &status) == 0)
            root = objectFor(status);
        m_tops.push_back(sources.front().path);
        m_objects.push_back(root);
        return;
    }
    m_objects.push_back(root);
    std::vector<Entry> entries;
    for (const DiscSource &source : sources) {
        if (::stat(source.path.constData(), &status) != 0) {
            m_failures.push_back({source.path, systemText(errno)});
            continue;
        }
        entries.push_back({source.name, objectFor(status), source.path});
    }
    addChildren(0, entries);
    for (const Entry &entry : entries)
        m_tops.push_back(entry.top);
}

int SourceIndex::openFolder(SourceNumber folder, const RecentFolders &recent) const
{
    constexpr int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
    // A source that the user gave has a path of its own.
    const bool wasGiven = folder == 0 || (m_objects[folder].parent == 0 && !m_rootIsOnlySource);
    const int parent = wasGiven ? -1 : recent.descriptorOf(m_objects[folder].parent);
    if (parent < 0)
        return openByPath(folder, flags);
    return ::openat(parent, std::string(name(folder)).c_str(), flags | O_NOCTTY | O_NONBLOCK);
}

void SourceIndex::listFolder(SourceNumber folder, RecentFolders &recent)
{
    UniqueDescriptor descriptor(openFolder(folder, recent));
    if (!descriptor && isLackOfDescriptors(errno)) {
        recent.close();
        descriptor.reset(openFolder(folder, recent));
    }
    DIR *const listing = descriptor ? recent.keep(folder, std::move(descriptor)) : nullptr;
    if (!listing) {
        fail(folder, errno);
        return;
    }
    std::vector<Entry> entries;
    errno = 0;
    while (const dirent *const found = ::readdir(listing)) {
        const std::string_view name(found->d_name);
        struct stat status;
        if (name != "." && name != "..") {
            if (::fstatat(::dirfd(listing), found->d_name, &status, AT_SYMLINK_NOFOLLOW) == 0)
                entries.push_back({QByteArray(found->d_name), objectFor(status), {}});
            else
                fail(folder, errno);
        }
        errno = 0;
    }
    if (errno != 0)
        fail(folder, errno);
    addChildren(folder, entries);
}

void SourceIndex::addChildren(SourceNumber folder, std::vector<Entry> &entries)
{
    std::sort(entries.begin(), entries.end(),
              [](const Entry &one, const Entry &other) { return one.name < other.name; });
    m_objects[folder].firstChild = SourceNumber(m_objects.size());
    m_objects[folder].childCount = std::uint32_t(entries.size());
    for (Entry &entry : entries) {
        entry.object.parent = folder;
        entry.object.nameOffset = std::uint32_t(m_names.size());
        entry.object.nameLength = std::uint16_t(entry.name.size());
        m_names.insert(m_names.end(), entry.name.begin(), entry.name.end());
        m_objects.push_back(entry.object);
        if (entry.object.kind == VolumeObjectKind::Folder)
            ++m_folderCount;
        else
            ++m_fileCount;
        m_byteCount += entry.object.size;
    }
}

void SourceIndex::fail(SourceNumber number, int errnoValue)
{
    m_lacksDescriptors = m_lacksDescriptors || isLackOfDescriptors(errnoValue);
    m_failures.push_back({diskPath(number), systemText(errnoValue)});
}

std::string_view SourceIndex::name(SourceNumber number) const
{
    const SourceObject &object = m_objects[number];
    return {m_names.data() + object.nameOffset, object.nameLength};
}

SourceNumber SourceIndex::child(SourceNumber folder, std::string_view wanted) const
{
    const SourceNumber first = m_objects[folder].firstChild;
    SourceNumber low = first;
    SourceNumber high = first + m_objects[folder].childCount;
    const SourceNumber end = high;
    while (low < high) {
        const SourceNumber middle = low + (high - low) / 2;
        if (name(middle) < wanted)
            low = middle + 1;
        else
            high = middle;
    }
    return low < end && name(low) == wanted ? low : noSource;
}

QByteArray SourceIndex::discPath(SourceNumber number) const
{
    QByteArray path;
    for (; number != 0 && number != noSource; number = m_objects[number].parent)
        path.prepend('/' + QByteArray(name(number).data(), qsizetype(name(number).size())));
    return path.isEmpty() ? QByteArrayLiteral("/") : path;
}

QByteArray SourceIndex::diskPath(SourceNumber number) const
{
    if (!m_refs.empty())
        return lastKnownPath(m_refs[number]);
    QByteArray below;
    while (number != 0) {
        const SourceNumber parent = m_objects[number].parent;
        if (!m_rootIsOnlySource && parent == 0)
            return m_tops[number - m_objects[0].firstChild] + below;
        below.prepend('/' + QByteArray(name(number).data(), qsizetype(name(number).size())));
        number = parent;
    }
    return m_tops.empty() ? below : m_tops.front() + below;
}

int SourceIndex::open(SourceNumber number, int flags) const
{
    const int descriptor = openByPath(number, flags);
    m_lacksDescriptors = m_lacksDescriptors || (descriptor < 0 && isLackOfDescriptors(errno));
    return descriptor;
}

int SourceIndex::openByPath(SourceNumber number, int flags) const
{
    QByteArray last;
    errno = 0;
    const UniqueDescriptor parent = openParent(diskPath(number), &last);
    if (last.isEmpty())
        return -1;
    return ::openat(parent ? parent.get() : AT_FDCWD, last.constData(), flags | O_NOCTTY | O_NONBLOCK);
}

QByteArray SourceIndex::linkTarget(SourceNumber number) const
{
    QByteArray last;
    const UniqueDescriptor parent = openParent(diskPath(number), &last);
    if (last.isEmpty()) {
        m_lacksDescriptors = m_lacksDescriptors || isLackOfDescriptors(errno);
        return {};
    }
    QByteArray target(PATH_MAX, Qt::Uninitialized);
    const ssize_t length =
        ::readlinkat(parent ? parent.get() : AT_FDCWD, last.constData(), target.data(), std::size_t(target.size()));
    if (length < 0)
        return {};
    target.truncate(length);
    return target;
}

} // namespace Tessaron
