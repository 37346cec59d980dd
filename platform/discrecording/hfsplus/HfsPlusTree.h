#pragma once

#include "platform/discrecording/content/ContentTree.h"
#include "platform/discrecording/content/PlanProgress.h"
#include "platform/discrecording/content/StorageIssue.h"
#include "platform/discrecording/hfsplus/HfsPlusTreeNames.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace Tessaron
{

/// Catalog node IDs that the format gives away.
enum HfsPlusId : std::uint32_t {
    HfsPlusRootParentId = 1,
    HfsPlusRootId = 2,
    HfsPlusBadBlockFileId = 5,
    HfsPlusFirstOwnId = 16,
};

/// Contents that several objects of the disc's tree share.
struct HfsPlusSharedFile {
    NodeIndex contents = 0; ///< the object that owns the extent
    NodeIndex firstName = 0; ///< first of its names in the HFS+ tree; its attributes hold for all
    std::uint32_t nameCount = 0; ///< names in the HFS+ tree
    std::uint32_t number = 0; ///< among those with several names; meaningless for others
};

/// What the HFS+ tree of a disc holds: which objects, under which names, in which order and with which IDs. The ID of
/// an object follows from its number in the disc's tree, so that the order of the catalog needs no table. Constant
/// after prepare(); four bytes for each object and one for the length of its name are all that is kept.
///
/// A file with several names is one node in a hidden folder of the volume, and each name is a link to it.
class HfsPlusTree
{
public:
    static constexpr DRFilesystemMask filesystem = DRFilesystemInclusionMaskHFSPlus;

    explicit HfsPlusTree(std::shared_ptr<const ContentTree> tree);

    /// False when cancelled.
    [[nodiscard]] bool prepare(const PlanProgress &progress, StorageIssues &issues);

    [[nodiscard]] const ContentTree &tree() const { return *m_tree; }
    [[nodiscard]] const HfsPlusTreeNames &names() const { return *m_names; }
    [[nodiscard]] std::shared_ptr<const HfsPlusTreeNames> sharedNames() const { return m_names; }

    [[nodiscard]] bool holds(NodeIndex node) const;
    /// True when a file of the HFS+ tree has the contents of this one.
    [[nodiscard]] bool holdsContents(NodeIndex node) const;
    /// Children of a folder, without the hidden folder.
    [[nodiscard]] std::uint32_t childCount(NodeIndex folder) const
    {
        return m_childCounts[m_tree->nodes[folder].folderNumber()];
    }
    /// The `position`-th child in the catalog's order.
    [[nodiscard]] NodeIndex child(NodeIndex folder, std::uint32_t position) const
    {
        return m_order[m_tree->nodes[folder].firstChild() + position];
    }
    /// Units of the object's name.
    [[nodiscard]] std::uint32_t nameLength(NodeIndex node) const { return m_nameLengths[node]; }

    /// The file behind the object when it has several names in the tree; null for all others.
    [[nodiscard]] const HfsPlusSharedFile *linkedFile(NodeIndex node) const;
    /// Files with several names by number.
    [[nodiscard]] const HfsPlusSharedFile &linkedFileByNumber(std::uint32_t number) const
    {
        return m_shared[m_linked[number]];
    }
    [[nodiscard]] std::uint32_t linkedFileCount() const { return static_cast<std::uint32_t>(m_linked.size()); }
    /// True when there is a hidden folder with files that have several names.
    [[nodiscard]] bool hasPrivateFolder() const { return !m_linked.empty(); }

    [[nodiscard]] static std::uint32_t idOf(NodeIndex node)
    {
        return node == 0 ? std::uint32_t{HfsPlusRootId} : node + HfsPlusFirstOwnId - 1;
    }
    [[nodiscard]] std::uint32_t privateFolderId() const { return m_tree->nodes.size() + HfsPlusFirstOwnId - 1; }
    [[nodiscard]] std::uint32_t firstLinkedId() const { return m_firstLinkedId; }
    /// Higher than any ID in use.
    [[nodiscard]] std::uint32_t nextId() const { return m_firstLinkedId + linkedFileCount(); }

    /// Records of files and of folders in the catalog, the root not counted.
    [[nodiscard]] std::uint32_t fileCount() const { return m_fileCount + linkedFileCount(); }
    [[nodiscard]] std::uint32_t folderCount() const { return m_folderCount + (hasPrivateFolder() ? 1 : 0); }

private:
    void findSharedFiles();
    void prepareFolder(NodeIndex folder, HfsPlusSiblings &siblings, const std::stop_token &cancellation,
                       StorageIssues &issues);
    void report(const HfsPlusSiblings::Entry &entry, StorageIssues &issues) const;
    void reportTimes(NodeIndex node, StorageIssues &issues) const;
    [[nodiscard]] const HfsPlusSharedFile *sharedFile(NodeIndex node) const;

    const std::shared_ptr<const ContentTree> m_tree;
    const std::shared_ptr<HfsPlusTreeNames> m_names;
    std::vector<std::uint32_t> m_childCounts; ///< by number of the folder
    std::vector<NodeIndex> m_order; ///< children of each folder in a row, where the tree has them
    std::vector<std::uint8_t> m_nameLengths; ///< by node
    std::vector<HfsPlusSharedFile> m_shared; ///< ordered by contents
    std::vector<std::uint32_t> m_linked; ///< places in m_shared
    std::uint32_t m_firstLinkedId = 0;
    std::uint32_t m_fileCount = 0;
    std::uint32_t m_folderCount = 0;
};

/// True when the number of a device file fits into the catalog: 8 bits for the major and 24 for the minor number.
[[nodiscard]] bool fitsHfsPlusDevice(std::uint64_t device);

} // namespace Tessaron
