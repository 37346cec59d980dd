#pragma once

#include "platform/coreservices/FSRef.h"

#include <QByteArray>

#include <atomic>
#include <cstdint>
#include <deque>
#include <mutex>
#include <unordered_map>
#include <vector>

namespace Tessaron
{

/// What makes a file the same file wherever it lies.
struct FileIdentity {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    FileTime birthTime;

    friend bool operator==(const FileIdentity &, const FileIdentity &) = default;
};

[[nodiscard]] FileIdentity identityOf(const FSRef &ref);

/// What is known beyond the table of names: which folders were seen at which node, and which files were found again at
/// another node than their references say. Thread-safe. While no file was found elsewhere, a look-up costs one atomic
/// read.
class FilePlaces
{
public:
    static FilePlaces &shared();

    /// The node whose chain of names is the path at which the reference's file was last found.
    [[nodiscard]] std::uint32_t currentNode(const FSRef &ref);

    /// Remembers that this folder (or symbolic link to one) was seen at a node.
    void noteFolder(std::uint32_t node, const FileIdentity &identity);
    /// True when no folder was noted at the node, or when one moved away from there, so that another may have come.
    [[nodiscard]] bool isFolderInDoubt(std::uint32_t node) const;
    /// The folders seen at a node, the latest first.
    [[nodiscard]] std::vector<FileIdentity> foldersAt(std::uint32_t node) const;

    /// Remembers that the file which a reference looked for at `from` lies at `to`.
    void noteMove(const FileIdentity &identity, std::uint32_t from, std::uint32_t to, bool isFolder);

    /// Remembers that another file has taken the place of this one and is meant now.
    void noteSuccessor(const FileIdentity &identity, const FileIdentity &successor);
    [[nodiscard]] bool isSuccessor(const FileIdentity &identity, const FileIdentity &successor) const;

private:
    struct Hash {
        std::size_t operator()(const FileIdentity &identity) const;
    };
    struct FolderSeen {
        FileIdentity identity;
        std::uint32_t previous = 0; ///< index + 1 of the folder seen at the same node before; 0 for none
    };

    FilePlaces();

    void noteFolderLocked(std::uint32_t node, const FileIdentity &identity);
    [[nodiscard]] std::uint32_t newPlaceOfFolder(std::uint32_t node) const;
    [[nodiscard]] std::uint32_t settle(std::uint32_t node) const;

    std::atomic<bool> m_hasMoves = false;
    mutable std::mutex m_mutex; ///< guards the members below
    std::vector<FolderSeen> m_folders;
    std::unordered_map<FileIdentity, std::uint32_t, Hash> m_moves;
    std::unordered_map<FileIdentity, FileIdentity, Hash> m_successors;
};

/// The path of a node as its names say, without a look at moves or at the disk.
[[nodiscard]] QByteArray pathOfNode(std::uint32_t node);
/// The node of an absolute path without ".", ".." or doubled slashes; 0 when the table is full.
[[nodiscard]] std::uint32_t nodeOfPath(QByteArrayView path);

} // namespace Tessaron
