#include "platform/coreservices/FileLocator.h"

#include "platform/coreservices/FilePlaces.h"
#include "platform/coreservices/IdentityProofs.h"
#include "platform/coreservices/NodeTable.h"
#include "platform/coreservices/PathAccess.h"
#include "platform/coreservices/VolumeFacts.h"
#include "platform/foundation/DirectoryStream.h"
#include "platform/foundation/FileTime.h"
#include "platform/foundation/PathBytes.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <mutex>
#include <vector>

namespace Tessaron
{

namespace
{

/// Names of one folder by inode.
struct FolderListing {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    FileTime changed;
    bool mayServeAgain = false; ///< false when the folder changed so lately that its time need not show the next change
    std::chrono::steady_clock::time_point servesAnywayUntil; ///< so that a folder in motion is not listed all the time
    std::vector<std::pair<std::uint64_t, std::uint32_t>> names; ///< inode and offset in `text`, sorted
    std::string text; ///< the names, each followed by a NUL

    [[nodiscard]] bool isOf(const struct statx &facts) const
    {
        if (device != deviceOf(facts) || inode != facts.stx_ino)
            return false;
        const bool isUnchanged = mayServeAgain && changed == FileTime::from(facts.stx_mtime);
        return isUnchanged || std::chrono::steady_clock::now() < servesAnywayUntil;
    }
};

/// Two changes within a tick of the system's coarse clock (10 ms at most) get the same time.
bool isOlderThanClockTicks(FileTime time)
{
    constexpr std::int64_t margin = 50'000'000;
    timespec now = {};
    ::clock_gettime(CLOCK_REALTIME, &now);
    return FileTime::from(now).nanosecondsSince(time) > margin;
}

FolderListing listFolder(UniqueDescriptor folder, const struct statx &facts)
{
    FolderListing listing;
    const auto start = std::chrono::steady_clock::now();
    const DirectoryStream directory = directoryStream(std::move(folder));
    if (!directory)
        return listing;
    while (const dirent *const entry = ::readdir(directory.get())) {
        listing.names.emplace_back(entry->d_ino, static_cast<std::uint32_t>(listing.text.size()));
        listing.text.append(entry->d_name, std::strlen(entry->d_name) + 1);
    }
    std::sort(listing.names.begin(), listing.names.end());
    listing.device = deviceOf(facts);
    listing.inode = facts.stx_ino;
    listing.changed = FileTime::from(facts.stx_mtime);
    listing.mayServeAgain = isOlderThanClockTicks(listing.changed);
    // Listing may take a twentieth of the time, no more; a small folder is always listed anew.
    constexpr std::size_t manyNames = 10'000;
    const auto end = std::chrono::steady_clock::now();
    listing.servesAnywayUntil = listing.names.size() < manyNames ? end : end + 20 * (end - start);
    return listing;
}

/// One reference being looked for.
class Search
{
public:
    Search(const FSRef &ref, unsigned int mask)
        : m_ref(ref)
        , m_mask(mask | identityFields)
    {
    }

    /// At a path that the reference's own names lead to, the identity is enough.
    [[nodiscard]] bool isAt(const QByteArray &path)
    {
        if (path.isEmpty() || statPath(path, m_mask, &m_facts) != 0 || !hasSameIdentity(m_ref, m_facts))
            return false;
        m_path = path;
        return true;
    }

    /// Tries the places in turn, and remembers the one that is right.
    [[nodiscard]] bool findElsewhere()
    {
        bool isGone = false;
        if (!findWithNewFolders() && !findByInode(&isGone) && (isGone || !findInFolder())
            && !findAlongMovedFolders(isGone))
            return false;
        const std::uint32_t node = nodeOfPath(m_path);
        if (node == NodeTable::none)
            return true;
        // A new folder may lie where one was that moved away: the path that was found leads through the new one.
        noteFoldersAbove(node);
        FilePlaces::shared().noteMove(identityOf(m_ref), m_ref.node, node, S_ISDIR(m_facts.stx_mode));
        return true;
    }

    /// True when a file that stands for the reference's own, which is gone, lies at its path.
    [[nodiscard]] bool findSuccessor();

    [[nodiscard]] const struct statx &facts() const { return m_facts; }
    [[nodiscard]] const QByteArray &path() const { return m_path; }

private:
    /// At any other path the file may be one that got the inode of the removed one.
    [[nodiscard]] bool isProvenAt(const QByteArray &path)
    {
        return isAt(path) && IdentityProofs::shared().isProven(m_ref, PathAccess(path));
    }
    [[nodiscard]] bool findWithNewFolders();
    [[nodiscard]] bool findByInode(bool *isGone);
    [[nodiscard]] bool findInFolder();
    [[nodiscard]] bool findAlongMovedFolders(bool isGone);
    [[nodiscard]] bool findBelowMovedFolder(const std::vector<std::uint32_t> &chain, std::size_t index,
                                            const FileIdentity &identity);

    const FSRef &m_ref;
    const unsigned int m_mask;
    struct statx m_facts = {};
    QByteArray m_path;
};

/// The reference may mean a file of a new folder that took the place of one which moved away.
bool Search::findWithNewFolders()
{
    if (!isAt(pathOfNode(m_ref.node)))
        return false;
    noteFoldersAbove(m_ref.node);
    return true;
}

bool Search::findByInode(bool *isGone)
{
    // The nearest folder on the way that still exists opens the volume.
    QByteArray folder = parentPath(lastKnownPath(m_ref));
    UniqueDescriptor descriptor;
    for (int error = 0; !(descriptor = openPath(folder, O_RDONLY | O_DIRECTORY | O_NONBLOCK, &error));) {
        if (folder.size() <= 1)
            return false;
        folder = parentPath(folder);
    }
    struct statx facts;
    if (statDescriptor(descriptor.get(), STATX_INO, &facts) != 0 || deviceOf(facts) != m_ref.device)
        return false;
    const QByteArray path = pathOfInode(descriptor.get(), m_ref.inode, isGone);
    if (path.isEmpty())
        return false;
    // The system names no symbolic links on the way; keep the way that the program knows where it leads there, too.
    return isProvenAt(childPath(folder, lastPathComponent(path))) || isProvenAt(path);
}

bool Search::findInFolder()
{
    const QByteArray folder = parentPath(lastKnownPath(m_ref));
    const QByteArray name = nameOfInodeInFolder(folder, m_ref.inode);
    return !name.isEmpty() && isProvenAt(childPath(folder, name));
}

/// Goes down from the root folder and looks for each folder that is not where it was.
bool Search::findAlongMovedFolders(bool isGone)
{
    const NodeTable &table = NodeTable::shared();
    std::vector<std::uint32_t> chain; // the reference's node first
    for (std::uint32_t at = m_ref.node; at > NodeTable::root; at = table.parentOf(at))
        chain.push_back(at);
    for (std::size_t index = chain.size(); index-- > 1;) {
        for (const FileIdentity &identity : FilePlaces::shared().foldersAt(chain[index])) {
            if (findBelowMovedFolder(chain, index, identity))
                return true;
        }
    }
    return isAt(lastKnownPath(m_ref)) || (!isGone && findInFolder());
}

/// Looks whether this folder, seen at `chain[index]`, lies elsewhere by now and holds the file at its old names.
bool Search::findBelowMovedFolder(const std::vector<std::uint32_t> &chain, std::size_t index,
                                  const FileIdentity &identity)
{
    FilePlaces &places = FilePlaces::shared();
    FSRef folder;
    folder.device = identity.device;
    folder.inode = identity.inode;
    folder.setBirthTime(identity.birthTime);
    folder.node = chain[index];
    Search search(folder, 0);
    if (search.isAt(lastKnownPath(folder)) && places.currentNode(folder) == folder.node)
        return false;
    if (search.path().isEmpty()) {
        bool isGone = false;
        if (!search.findByInode(&isGone) && (isGone || !search.findInFolder()))
            return false;
        const std::uint32_t node = nodeOfPath(search.path());
        noteFoldersAbove(node);
        places.noteMove(identity, folder.node, node, true);
    }
    QByteArray path = search.path();
    for (std::size_t below = index; below-- > 0;) {
        const std::string_view name = NodeTable::shared().nameOf(chain[below]);
        path = childPath(path, QByteArrayView(name.data(), static_cast<qsizetype>(name.size())));
    }
    return isAt(path);
}

bool Search::findSuccessor()
{
    const QByteArray path = lastKnownPath(m_ref);
    if (path.isEmpty() || statPath(path, m_mask, &m_facts) != 0 || !maySucceed(m_ref, m_facts))
        return false;
    m_path = path;
    FilePlaces::shared().noteSuccessor(identityOf(m_ref), identityOf(refWithFacts(m_facts, 0)));
    return true;
}

} // namespace

void noteFoldersAbove(std::uint32_t node)
{
    const NodeTable &table = NodeTable::shared();
    FilePlaces &places = FilePlaces::shared();
    for (std::uint32_t at = table.parentOf(node); at > NodeTable::root; at = table.parentOf(at)) {
        struct statx facts;
        if (places.isFolderInDoubt(at) && statPath(pathOfNode(at), identityFields, &facts) == 0)
            places.noteFolder(at, identityOf(refWithFacts(facts, at)));
    }
}

bool maySucceed(const FSRef &ref, const struct statx &facts)
{
    if (ref.kind != 0 && ref.kind != (facts.stx_mode & S_IFMT))
        return false;
    const FSRef found = refWithFacts(facts, 0);
    const bool isSameBirth = found.birthTime() == ref.birthTime() && ref.birthTime() != FileTime();
    const std::uint64_t mount = mountOf(facts);
    return IdentityProofs::shared().wasSeenOnMount(ref.device, mount)
        || (found.device == ref.device && (isSameBirth || mount == 0));
}

bool isFileAtItsPlace(const FSRef &ref, const struct statx &facts)
{
    return hasSameIdentity(ref, facts)
        || FilePlaces::shared().isSuccessor(identityOf(ref), identityOf(refWithFacts(facts, 0)));
}

int locateFile(const FSRef &ref, unsigned int mask, struct statx *facts, QByteArray *path)
{
    if (ref.node == NodeTable::none)
        return ENOENT;
    const QByteArray known = lastKnownPath(ref);
    if (known.isEmpty())
        return ENOENT;
    struct statx found;
    const int error = statPath(known, mask | identityFields, &found);
    if (error == 0 && isFileAtItsPlace(ref, found)) {
        if (facts)
            *facts = found;
        if (path)
            *path = known;
        return 0;
    }
    if (error != 0 && error != ENOENT && error != ENOTDIR)
        return error;
    Search search(ref, mask);
    if (!search.findElsewhere() && !search.findSuccessor())
        return ENOENT;
    if (facts)
        *facts = search.facts();
    if (path)
        *path = search.path();
    return 0;
}

QByteArray pathOfInode(int folderOnVolume, std::uint64_t inode, bool *isGone)
{
    *isGone = false;
    if (!volumeFindsInodes(folderOnVolume) || inode > UINT32_MAX)
        return {};
    // A handle of 8 bytes of the type with inode and generation (FILEID_INO32_GEN); generation 0 means any.
    std::array<std::uint32_t, 4> handle = {8, 1, static_cast<std::uint32_t>(inode), 0};
    const UniqueDescriptor found(::open_by_handle_at(folderOnVolume, reinterpret_cast<file_handle *>(handle.data()),
                                                     O_PATH | O_NOFOLLOW | O_CLOEXEC));
    if (!found) {
        *isGone = errno == ESTALE;
        return {};
    }
    QByteArray path;
    if (readLinkBelow(AT_FDCWD, pathOfDescriptor(found.get()), &path) != 0 || !path.startsWith('/'))
        return {};
    return path;
}

QByteArray nameOfInodeInFolder(const QByteArray &folderPath, std::uint64_t inode)
{
    // The mutex guards the pointer alone: listing a slow folder keeps no other search waiting.
    static std::mutex mutex;
    static auto *const last = new std::shared_ptr<const FolderListing>; // kept to the very end of the process
    int error = 0;
    UniqueDescriptor folder = openPath(folderPath, O_RDONLY | O_DIRECTORY | O_NONBLOCK, &error);
    struct statx facts;
    if (!folder || statDescriptor(folder.get(), STATX_INO | STATX_MTIME, &facts) != 0)
        return {};
    std::shared_ptr<const FolderListing> listing;
    {
        const std::lock_guard lock(mutex);
        listing = *last;
    }
    if (!listing || !listing->isOf(facts)) {
        listing = std::make_shared<const FolderListing>(listFolder(std::move(folder), facts));
        const std::lock_guard lock(mutex);
        *last = listing;
    }
    const auto found =
        std::lower_bound(listing->names.begin(), listing->names.end(), std::pair(inode, std::uint32_t(0)));
    if (found == listing->names.end() || found->first != inode)
        return {};
    return QByteArray(listing->text.data() + found->second);
}

} // namespace Tessaron
