#pragma once

#include "platform/discrecording/content/ContentTree.h"
#include "platform/discrecording/content/PlanProgress.h"
#include "platform/discrecording/content/StorageIssue.h"
#include "platform/discrecording/iso9660/HierarchyNames.h"
#include "platform/discrecording/iso9660/RelocatedFolders.h"
#include "platform/discrecording/iso9660/SystemUse.h"
#include "platform/discrecording/objects/DRStorageReport.h"

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace Tessaron
{

/// What kind of directory hierarchy is made.
struct HierarchyTraits {
    DRDiscTree tree = DRDiscTree::ISO9660;
    /// 0 for a primary volume that is there only because Joliet needs one beside it (ECMA-119 6.7.1): it holds nothing.
    DRFilesystemMask filesystem = DRFilesystemInclusionMaskISO9660;
    NameCoding coding = NameCoding::Iso9660;
    Iso9660Level level = Iso9660Level::Two;
    bool hasRockRidge = false;
    bool wantsOneSection = false; ///< a level was asked for that allows no more for a file (ECMA-119 10.1, 10.2)
    std::uint32_t firstBlock = 0; ///< of the image on its disc: recorded addresses count from the disc's begin
};

/// A folder of a hierarchy.
struct HierarchyFolder {
    NodeIndex node = 0;
    std::uint32_t parent = 0; ///< number in the hierarchy: for a relocated folder, of where it was moved to
    std::uint32_t firstEntry = 0; ///< place of its first child among the children of all folders
    std::uint32_t firstBlock = 0; ///< of its directory, counted from the first directory's
    std::uint32_t blockCount = 0; ///< of its directory; the continuation areas of its records follow at once
    std::uint32_t childCount = 0;
    std::uint32_t subfolderCount = 0; ///< that Rock Ridge shows in it
    std::uint32_t firstContinued = 0; ///< number of the first continuation area of its records
    std::uint32_t firstRestart = 0;
};

/// Where in a folder's sequence of records a block begins, so that a block in the middle of a huge directory can be
/// made without making those before it.
struct DirectoryRestart {
    std::uint32_t position = 0; ///< which child
    std::uint32_t section = 0; ///< which of its file sections
    std::uint32_t continued = 0; ///< number of the continuation area that comes next
};

/// A continuation area of a directory record.
struct HierarchyContinuation {
    NodeIndex node = 0; ///< the object that has the record; 0 for the "." of the root
    NameRole role = NameRole::File; ///< in which it has the record
    std::uint32_t block = 0; ///< counted like HierarchyFolder::firstBlock
    std::uint32_t offset = 0;
};

/// Most bytes of a file that one directory record can cover (ECMA-119 9.1.4), whole blocks: longer files take several.
inline constexpr std::uint64_t fileSectionSize = 0xFFFFF800;

/// How many directory records a file of this length takes.
[[nodiscard]] constexpr std::uint64_t fileSectionCount(std::uint64_t size)
{
    return size <= fileSectionSize ? 1 : (size + fileSectionSize - 1) / fileSectionSize;
}

/// One hierarchy of directories (ECMA-119 6.8): which objects it holds, under which names, in which order, and how
/// much room its directories take. Folders are ordered as the path table wants them. Constant after prepare().
class DirectoryHierarchy
{
public:
    /// Blocks of a directory between two restarts.
    static constexpr std::uint32_t blocksPerRestart = 256;

    DirectoryHierarchy(std::shared_ptr<const ContentTree> tree, const HierarchyTraits &traits);

    /// False when cancelled.
    [[nodiscard]] bool prepare(const PlanProgress &progress, StorageIssues &issues);

    [[nodiscard]] const ContentTree &tree() const { return *m_tree; }
    [[nodiscard]] std::shared_ptr<const ContentTree> sharedTree() const { return m_tree; }
    [[nodiscard]] const HierarchyTraits &traits() const { return m_traits; }
    [[nodiscard]] const HierarchyNames &names() const { return *m_names; }
    [[nodiscard]] std::shared_ptr<const HierarchyNames> sharedNames() const { return m_names; }

    /// Folders by number, 0 the root.
    [[nodiscard]] const std::vector<HierarchyFolder> &folders() const { return m_folders; }
    [[nodiscard]] const HierarchyFolder &folderOf(NodeIndex node) const
    {
        return m_folders[m_numberOfFolder[m_tree->nodes[node].folderNumber()]];
    }
    /// The `position`-th child of a folder in the order of its records.
    [[nodiscard]] NodeIndex child(const HierarchyFolder &folder, std::uint32_t position) const
    {
        return m_order[folder.firstEntry + position];
    }
    /// What the folder records the child as.
    [[nodiscard]] NameRole roleOf(const HierarchyFolder &folder, NodeIndex child) const
    {
        const bool isElsewhere = m_relocated.contains(child) && m_tree->nodes[child].parent == folder.node;
        return isElsewhere ? NameRole::FolderElsewhere : m_names->usualRole(child);
    }
    /// True for a folder that is not recorded where it belongs.
    [[nodiscard]] bool isRelocated(NodeIndex folder) const { return m_relocated.contains(folder); }
    [[nodiscard]] const std::vector<DirectoryRestart> &restarts() const { return m_restarts; }
    [[nodiscard]] const std::vector<HierarchyContinuation> &continuations() const { return m_continuations; }

    /// Blocks of all directories and their continuation areas.
    [[nodiscard]] std::uint64_t directoryBlocks() const { return m_directoryBlocks; }

    /// How many names a file has in the tree: objects that share its contents and attributes. `contents` is the object
    /// that owns the contents. Valid after prepare().
    [[nodiscard]] std::uint32_t linkCount(NodeIndex contents) const;

    /// True when a directory is longer than its 32-bit length can say; the hierarchy is of no use then.
    [[nodiscard]] bool hasOversizedDirectory() const { return m_hasOversizedDirectory; }

    /// True when the object has a record in the hierarchy.
    [[nodiscard]] bool holds(const ContentNode &content) const;
    /// True for the folder that is there for relocated ones alone: Rock Ridge does not show it.
    [[nodiscard]] bool isHiddenByRockRidge(NodeIndex node) const
    {
        return node != 0 && node == m_tree->relocationFolder && m_tree->hidesRelocationFolder;
    }

private:
    void countLinks();
    void collectChildren(std::uint32_t number, SiblingNames &siblings, StorageIssues &issues);
    void storeOrder(std::uint32_t number, const SiblingNames &siblings);
    void measure(std::uint32_t number, const SiblingNames &siblings);
    void reportChildren(std::uint32_t number, const SiblingNames &siblings, StorageIssues &issues) const;
    void reportFile(NodeIndex node, StorageIssues &issues) const;
    void reportRockRidge(NodeIndex node, StorageIssues &issues) const;
    void reportPath(std::uint32_t number, std::uint32_t longestChild, StorageIssues &issues) const;
    /// True when the records can say all times that they have of the object.
    [[nodiscard]] bool canSayTimesOf(NodeIndex node) const;
    void addChild(NodeIndex node, NameRole role, SiblingNames &siblings) const;
    void placeContinuation(NodeIndex node, NameRole role, std::size_t size);

    const std::shared_ptr<const ContentTree> m_tree;
    const HierarchyTraits m_traits;
    const std::shared_ptr<HierarchyNames> m_names;
    std::vector<HierarchyFolder> m_folders;
    std::vector<std::uint32_t> m_numberOfFolder; ///< by the tree's number of the folder
    std::vector<NodeIndex> m_order; ///< children of each folder in a row, mostly where the tree has them
    RelocatedFolders m_relocated;
    std::vector<DirectoryRestart> m_restarts;
    std::vector<HierarchyContinuation> m_continuations;
    std::vector<std::pair<NodeIndex, std::uint32_t>> m_linkCounts; ///< by owner of the contents, ordered
    std::uint64_t m_directoryBlocks = 0;
    bool m_hasOversizedDirectory = false;
    // While a folder is measured: continuation blocks of its own, and used bytes of the last one.
    std::uint32_t m_continuationBlocks = 0;
    std::uint32_t m_continuationEnd = logicalBlockSize;
    /// While folders are made: depth and length of the path to each (ECMA-119 6.8.2.1).
    struct PathMeasure {
        std::uint32_t depth = 1;
        std::uint32_t length = 0;
    };
    std::vector<PathMeasure> m_paths;
};

} // namespace Tessaron
