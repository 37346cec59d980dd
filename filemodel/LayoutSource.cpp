#include "filemodel/LayoutSource.h"

#include "platform/coreservices/FSRefAccess.h"
#include "platform/coreservices/FileLocator.h"
#include "platform/coreservices/FilePlaces.h"
#include "platform/coreservices/NodeTable.h"
#include "platform/coreservices/PathAccess.h"
#include "platform/foundation/DirectoryStream.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>

namespace Tessaron
{

namespace
{

constexpr int folderFlags = O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

/// A folder of which at least this many files are laid out is listed once, in place of a look at each.
constexpr std::size_t filesWorthListing = 8;
/// Bytes of names that are kept of one folder.
constexpr std::size_t longestNames = std::size_t(4) << 20;

} // namespace

void FolderNames::read(int folder)
{
    struct statx facts;
    UniqueDescriptor listed(::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC));
    if (!listed || statDescriptor(listed.get(), STATX_INO, &facts) != 0)
        return;
    m_device = deviceOf(facts);
    const DirectoryStream directory = directoryStream(std::move(listed));
    while (const dirent *const entry = directory ? ::readdir(directory.get()) : nullptr) {
        if (m_text.size() > longestNames)
            break;
        m_names.emplace_back(entry->d_ino, static_cast<std::uint32_t>(m_text.size()));
        m_text.append(entry->d_name, std::strlen(entry->d_name) + 1);
    }
    std::sort(m_names.begin(), m_names.end());
}

bool FolderNames::hold(const FSRef &ref) const
{
    if (ref.device != m_device)
        return false;
    const QByteArrayView name = nameOfFSRef(ref);
    auto at = std::lower_bound(m_names.begin(), m_names.end(), std::pair(ref.inode, std::uint32_t(0)));
    for (; at != m_names.end() && at->first == ref.inode; ++at) {
        if (name == QByteArrayView(m_text.data() + at->second))
            return true;
    }
    return false;
}

LayoutPlace findLayoutPlace(const FSRef &ref, const LayoutSource &folder)
{
    LayoutPlace place;
    const QByteArrayView name = nameOfFSRef(ref);
    if (folder.descriptor && folder.node != 0 && parentNodeOfFSRef(ref) == folder.node
        && statBelow(folder.descriptor.get(), name.data(), identityFields, &place.facts) == 0
        && hasSameIdentity(ref, place.facts)) {
        place.isBelow = true;
        place.name = name;
        return place;
    }
    place.errnoValue = locateFile(ref, 0, &place.facts, &place.path);
    const std::string_view found = NodeTable::shared().nameOf(FilePlaces::shared().currentNode(ref));
    place.name = QByteArrayView(found.data(), static_cast<qsizetype>(found.size()));
    return place;
}

QByteArrayView findLayoutName(const FSRef &ref, LayoutSource &folder)
{
    const bool isIn = folder.node != 0 && parentNodeOfFSRef(ref) == folder.node;
    if (isIn && folder.descriptor && !folder.isListed && folder.filesToLookAt >= filesWorthListing) {
        folder.isListed = true;
        folder.names.read(folder.descriptor.get());
    }
    // The birth time need not be compared: a file that has got the name and the inode of another one, which is gone
    // then, is meant in its place.
    return isIn && folder.names.hold(ref) ? nameOfFSRef(ref) : findLayoutPlace(ref, folder).name;
}

void enterFolderOf(const FSRef &ref, LayoutSource &folder)
{
    const std::uint32_t node = parentNodeOfFSRef(ref);
    if (node != folder.node) {
        folder = {};
        folder.node = node;
    }
    if (++folder.filesToLookAt < filesWorthListing || folder.descriptor || folder.isListed)
        return;
    int error = 0;
    folder.descriptor = openPath(pathOfNode(node), O_PATH | O_DIRECTORY | O_CLOEXEC, &error);
    folder.isListed = !folder.descriptor; // not tried again
}

UniqueDescriptor openLayoutSource(const FSRef &ref, const LayoutPlace &place, const LayoutSource &folder,
                                  int *errnoValue)
{
    *errnoValue = place.errnoValue;
    if (place.errnoValue != 0)
        return {};
    if (!place.isBelow)
        return openPath(place.path, folderFlags, errnoValue);
    UniqueDescriptor opened(::openat(folder.descriptor.get(), nameOfFSRef(ref).data(), folderFlags));
    *errnoValue = opened ? 0 : errno;
    return opened;
}

UniqueDescriptor openSourceAbove(const LayoutSource &below, const FSRef &above)
{
    UniqueDescriptor opened(below.descriptor ? ::openat(below.descriptor.get(), "..", folderFlags) : -1);
    struct statx facts;
    const bool isRight =
        opened && statDescriptor(opened.get(), identityFields, &facts) == 0 && hasSameIdentity(above, facts);
    return isRight ? std::move(opened) : UniqueDescriptor();
}

} // namespace Tessaron
