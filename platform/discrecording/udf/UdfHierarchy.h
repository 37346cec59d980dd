#pragma once

#include "platform/discrecording/content/ContentTree.h"
#include "platform/discrecording/content/PlanProgress.h"
#include "platform/discrecording/content/StorageIssue.h"
#include "platform/discrecording/udf/UdfAllocation.h"
#include "platform/discrecording/udf/UdfTreeNames.h"

#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <utility>
#include <vector>

namespace Tessaron
{

/// A folder of the disc. One that is not in the UDF tree has a size of 0; a directory in the tree is never empty.
struct UdfFolder {
    NodeIndex node = 0;
    std::uint32_t firstBlock = 0; ///< of its directory, counted from the first directory's
    std::uint64_t size = 0; ///< of its directory, bytes
    std::uint32_t firstRestart = 0;
    std::uint32_t subfolderCount = 0;
};

/// The first entry of a directory that lies, in part at least, behind a certain block; so that a block in the middle of
/// a huge directory can be made without making those before it.
struct UdfRestart {
    NodeIndex child = 0;
    std::uint64_t offset = 0; ///< where the entry begins in the directory, bytes
};

/// A file whose allocation descriptors do not fit into its entry.
struct UdfLongFile {
    std::uint32_t icb = 0;
    std::uint32_t firstExtent = 0; ///< its first allocation extent, counted from the first of all
    std::uint32_t extentCount = 0;
};

/// What a UDF tree holds: which objects, under which names, and how much room its directories take. Every object has an
/// ICB (ECMA-167 4/6.10), one block with its file entry; hard links to one file share one. ICBs are numbered in the
/// order of the tree, 0 is the root's. Eight bytes for each object. Constant after prepare().
class UdfHierarchy
{
public:
    /// Blocks of a directory between two restarts.
    static constexpr std::uint32_t blocksPerRestart = 64;

    explicit UdfHierarchy(std::shared_ptr<const ContentTree> tree);

    /// False when cancelled.
    [[nodiscard]] bool prepare(const PlanProgress &progress, StorageIssues &issues);

    [[nodiscard]] const ContentTree &tree() const { return *m_tree; }
    [[nodiscard]] const UdfTreeNames &names() const { return *m_names; }
    [[nodiscard]] std::shared_ptr<const UdfTreeNames> sharedNames() const { return m_names; }

    /// True when the object is in the tree.
    [[nodiscard]] bool holds(NodeIndex node) const { return m_icbOfNode[node] != noIcb; }
    /// The number of the ICB of an object in the tree.
    [[nodiscard]] std::uint32_t icbOf(NodeIndex node) const { return m_icbOfNode[node]; }
    /// The object that an ICB describes; of several names of one file the first.
    [[nodiscard]] NodeIndex nodeOf(std::uint32_t icb) const { return m_nodeOfIcb[icb]; }
    [[nodiscard]] std::uint32_t icbCount() const { return static_cast<std::uint32_t>(m_nodeOfIcb.size()); }
    /// How many directory entries lead to the ICB, as far as its field of 16 bits can say.
    [[nodiscard]] std::uint16_t linkCount(std::uint32_t icb) const;

    /// Directories in the order of their places; with gaps for the tree's other folders, which take no room.
    [[nodiscard]] const std::vector<UdfFolder> &folders() const { return m_folders; }
    [[nodiscard]] const UdfFolder &folderOf(NodeIndex node) const
    {
        return m_folders[m_tree->nodes[node].folderNumber()];
    }
    [[nodiscard]] const std::vector<UdfRestart> &restarts() const { return m_restarts; }
    [[nodiscard]] std::uint64_t directoryBlocks() const { return m_directoryBlocks; }

    /// Ordered by ICB.
    [[nodiscard]] const std::vector<UdfLongFile> &longFiles() const { return m_longFiles; }
    [[nodiscard]] std::uint32_t allocationExtentCount() const { return m_allocationExtents; }

    /// Names in the tree that are not folders', and folders, the root included.
    [[nodiscard]] std::uint32_t fileCount() const { return m_fileCount; }
    [[nodiscard]] std::uint32_t folderCount() const { return m_folderCount; }

private:
    static constexpr std::uint32_t noIcb = std::numeric_limits<std::uint32_t>::max();
    /// What names of one file have in common, if they are to share an ICB: contents, permissions, owner, group.
    struct Identity {
        NodeIndex contents = 0;
        std::uint16_t mode = 0;
        std::uint32_t userId = 0;
        std::uint32_t groupId = 0;
        // The check takes the zero that the compiler itself compares with for one in the source.
        friend auto operator<=>(const Identity &, const Identity &) = default; // NOLINT(modernize-use-nullptr)
    };
    struct SharedIcb {
        std::uint32_t icb = 0;
        std::uint32_t links = 0;
    };

    /// True when an object can be in the tree. Adds to `issues` why it cannot, or what has to change.
    [[nodiscard]] bool admits(NodeIndex node, StorageIssues &issues) const;
    void addIcb(NodeIndex node);
    void addFolder(NodeIndex node, const std::stop_token &cancellation, StorageIssues &issues);
    void measure(NodeIndex node);
    void report(const UdfSibling &sibling, StorageIssues &issues) const;
    void reportTimes(NodeIndex node, StorageIssues &issues) const;
    void keepLinkCounts();

    const std::shared_ptr<const ContentTree> m_tree;
    const std::shared_ptr<UdfTreeNames> m_names;
    std::vector<std::uint32_t> m_icbOfNode;
    std::vector<NodeIndex> m_nodeOfIcb;
    std::vector<UdfFolder> m_folders; ///< by the tree's number of the folder
    std::vector<UdfRestart> m_restarts;
    std::vector<UdfLongFile> m_longFiles;
    std::vector<std::pair<std::uint32_t, std::uint16_t>> m_linkCounts; ///< of files with several names, ordered by ICB
    std::uint64_t m_directoryBlocks = 0;
    std::uint32_t m_allocationExtents = 0;
    std::uint32_t m_fileCount = 0;
    std::uint32_t m_folderCount = 0;

    std::vector<UdfSibling> m_siblings; ///< of one folder, while it is added
    std::map<Identity, SharedIcb> m_shared; ///< while ICBs are numbered
};

/// Bytes of a directory entry (file identifier descriptor, ECMA-167 4/14.4) with a recorded name of this size.
[[nodiscard]] constexpr std::size_t udfDirectoryEntrySize(std::size_t nameSize)
{
    constexpr std::size_t headSize = 38;
    constexpr std::size_t alignment = 4;
    return (headSize + nameSize + alignment - 1) / alignment * alignment;
}

} // namespace Tessaron
