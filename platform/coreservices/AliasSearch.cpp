#include "platform/coreservices/AliasSearch.h"

#include "platform/coreservices/FileHandle.h"
#include "platform/coreservices/FileLocator.h"
#include "platform/coreservices/Mounts.h"
#include "platform/coreservices/PathAccess.h"
#include "platform/foundation/DirectoryStream.h"
#include "platform/foundation/PathBytes.h"

#include <algorithm>
#include <deque>
#include <fcntl.h>

namespace Tessaron
{

namespace
{

/// How far the search around the old place goes: the nearest folders above it, the closest first, and in each of them
/// the first entries. That takes about 10 ms on a warm disk.
constexpr int foldersSearched = 3;
constexpr int mostEntriesInEach = 5000;

} // namespace

AliasSearch::AliasSearch(const AliasRecord &record)
    : m_record(record)
{
}

OSErr AliasSearch::run()
{
    collectPlaces();
    const bool isFound =
        std::any_of(m_places.begin(), m_places.end(), [this](const QByteArray &path) { return isAt(path); });
    if (isFound || findByHandle() || findInFolders() || findNearby() || findSuccessor())
        return noErr;
    return m_volumes.empty() && m_record.volumeIdentifier != 0 ? nsvErr : fnfErr;
}

/// The recorded path first, then the same place in the volume wherever it is mounted. Only mounts of the recorded type
/// are asked for their identifier, so that a dead file server elsewhere does not hold up the search.
void AliasSearch::collectPlaces()
{
    m_places.push_back(m_record.path);
    for (const Mount &mount : currentMounts()) {
        if (mount.type != m_record.volumeType || volumeIdentifierAt(mount.point) != m_record.volumeIdentifier)
            continue;
        m_volumes.push_back(mount.point);
        const QByteArray root = mount.root == "/" ? QByteArray() : mount.root;
        const bool isInside =
            m_record.pathInVolume == root || m_record.pathInVolume.startsWith(QByteArray(root).append('/'));
        if (!isInside)
            continue;
        const QByteArray rest = m_record.pathInVolume.mid(root.size() + 1);
        const QByteArray place = rest.isEmpty() ? mount.point : childPath(mount.point, rest);
        if (std::find(m_places.begin(), m_places.end(), place) == m_places.end())
            m_places.push_back(place);
    }
}

bool AliasSearch::isAt(const QByteArray &path)
{
    struct statx facts;
    if (statPath(path, identityFields, &facts) != 0 || facts.stx_ino != m_record.inode
        || S_ISDIR(facts.stx_mode) != m_record.isFolder)
        return false;
    const FSRef ref = refWithFacts(facts, 0);
    if (ref.birthTime() != m_record.birthTime || volumeIdentifierAt(path) != m_record.volumeIdentifier)
        return false;
    m_path = path;
    return true;
}

/// At a path that only the inode has led to, the file may be a later one that got the inode of the removed one.
bool AliasSearch::isProvenAt(const QByteArray &path)
{
    if (!isAt(path))
        return false;
    const PathAccess access(path);
    const QByteArray handle = access.error() == 0 ? fileHandleBelow(access.folder(), access.path()) : QByteArray();
    if (!handle.isEmpty() && !m_record.handle.isEmpty())
        return handle == m_record.handle;
    return m_record.birthTime != FileTime();
}

bool AliasSearch::findByHandle()
{
    for (const QByteArray &volume : m_volumes) {
        int error = 0;
        const UniqueDescriptor folder = openPath(volume, O_RDONLY | O_DIRECTORY | O_NONBLOCK, &error);
        const UniqueDescriptor file = folder ? openFileHandle(folder.get(), m_record.handle) : UniqueDescriptor();
        QByteArray path;
        if (file && readLinkBelow(AT_FDCWD, pathOfDescriptor(file.get()), &path) == 0 && isAt(path))
            return true;
    }
    return false;
}

bool AliasSearch::findInFolders()
{
    return std::any_of(m_places.begin(), m_places.end(), [this](const QByteArray &place) {
        const QByteArray folder = parentPath(place);
        const QByteArray name = nameOfInodeInFolder(folder, m_record.inode);
        return !name.isEmpty() && isProvenAt(childPath(folder, name));
    });
}

bool AliasSearch::findNearby()
{
    for (const QByteArray &place : m_places) {
        QByteArray top = place;
        for (int searched = 0; searched < foldersSearched && top != "/";) {
            top = parentPath(top);
            struct statx facts;
            if (top == "/" || statPath(top, identityFields, &facts) != 0)
                continue;
            if (findBelow(top, deviceOf(facts)))
                return true;
            ++searched;
        }
    }
    return false;
}

/// Breadth first, within one volume.
bool AliasSearch::findBelow(const QByteArray &top, std::uint64_t device)
{
    int entriesLeft = mostEntriesInEach;
    for (std::deque<QByteArray> folders{top}; !folders.empty() && entriesLeft > 0; folders.pop_front()) {
        int error = 0;
        UniqueDescriptor descriptor =
            openPath(folders.front(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_NONBLOCK, &error);
        struct statx facts;
        if (!descriptor || statDescriptor(descriptor.get(), identityFields, &facts) != 0 || deviceOf(facts) != device)
            continue;
        const DirectoryStream directory = directoryStream(std::move(descriptor));
        const dirent *entry = nullptr;
        for (; directory && (entry = ::readdir(directory.get())) && entriesLeft > 0; --entriesLeft) {
            const QByteArray name(entry->d_name);
            if (name == "." || name == "..")
                continue;
            if (entry->d_ino == m_record.inode && isProvenAt(childPath(folders.front(), name)))
                return true;
            if (entry->d_type == DT_DIR)
                folders.push_back(childPath(folders.front(), name));
        }
    }
    return false;
}

/// A file that was saved by replacing it is another file to the system, but the same one to people; one on another
/// volume, mounted where the file's volume was, is not.
bool AliasSearch::findSuccessor()
{
    for (const QByteArray &place : m_places) {
        struct statx facts;
        if (statPath(place, identityFields, &facts) != 0 || S_ISDIR(facts.stx_mode) != m_record.isFolder
            || volumeIdentifierAt(place) != m_record.volumeIdentifier)
            continue;
        m_path = place;
        m_isOriginal = false;
        return true;
    }
    return false;
}

} // namespace Tessaron
