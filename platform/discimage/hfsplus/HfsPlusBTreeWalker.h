#pragma once

#include "platform/discimage/source/DiscImageSource.h"
#include "platform/discimage/volume/VolumeObject.h"
#include "platform/foundation/NSError.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <vector>

namespace Tessaron
{

using HfsPlusBytes = std::span<const std::uint8_t>;

/// A node of a B-tree whose structure was found sound (HFS Plus Volume Format, "Node Structure").
struct HfsPlusTreeNode {
    std::uint32_t number = 0;
    std::uint64_t offset = 0; ///< of its first byte in the image
    std::uint32_t next = 0; ///< 0 for the last one of its level
    std::uint32_t previous = 0;
    std::uint16_t recordCount = 0;
    std::vector<std::uint8_t> bytes;

    /// Where a record begins in the node; of the record behind the last, where it ends.
    [[nodiscard]] std::size_t recordStart(std::size_t index) const;
    [[nodiscard]] HfsPlusBytes record(std::size_t index) const;
};

/// A record of a leaf.
struct HfsPlusTreePlace {
    HfsPlusTreeNode node;
    std::size_t index = 0;
    HfsPlusBytes key; ///< without its length; lives as long as the place stays where it is
    HfsPlusBytes data;

    [[nodiscard]] std::uint64_t recordOffset() const { return node.offset + node.recordStart(index); }
};

/// Finds records in a B-tree file of an HFS+ volume and goes from one to the next. Whatever the bytes are, each call
/// ends after a few nodes, and memory is that of two of them. Several threads may use one at once.
class HfsPlusBTreeWalker
{
public:
    /// Compares two keys without their lengths: negative when the first precedes. Keys have at least the bytes that
    /// were asked for in open().
    using Order = std::function<int(HfsPlusBytes one, HfsPlusBytes other)>;

    struct Traits {
        std::vector<VolumeExtent> extents; ///< of the file, in order; they make up its length
        std::size_t shortestKey = 0; ///< bytes, without the length
        /// Chosen by the kind of comparison that the tree's header names.
        std::function<Order(std::uint8_t compareType)> orderFor;
        QString name; ///< for messages: "catalog"
    };

    /// Null with an error when the header makes no sense.
    [[nodiscard]] static std::unique_ptr<HfsPlusBTreeWalker> open(std::shared_ptr<const DiscImageSource> source,
                                                                  Traits traits, NSError *error);

    /// Goes to the record with the key. `*isFound` is false, and the place without meaning, when there is none.
    [[nodiscard]] NSError find(HfsPlusBytes key, HfsPlusTreePlace *place, bool *isFound) const;
    /// Goes on to the next record; `*isFound` is false behind the last. An error when that is not behind this one in
    /// the order, or when the index does not lead to it: a system would not find it then.
    [[nodiscard]] NSError advance(HfsPlusTreePlace *place, bool *isFound) const;

private:
    HfsPlusBTreeWalker(std::shared_ptr<const DiscImageSource> source, Traits traits);

    [[nodiscard]] NSError readHeader();
    [[nodiscard]] NSError checkEnds() const;
    [[nodiscard]] NSError readBytes(std::uint64_t at, std::uint8_t *to, std::size_t length) const;
    [[nodiscard]] std::uint64_t imageOffset(std::uint64_t at) const;
    /// Reads a node of a level, 1 for leaves.
    [[nodiscard]] NSError readNode(std::uint32_t number, std::uint8_t level, HfsPlusTreeNode *node) const;
    [[nodiscard]] NSError splitRecord(const HfsPlusTreeNode &node, std::size_t index, bool isLeaf, HfsPlusBytes *key,
                                      HfsPlusBytes *data) const;
    /// The last record whose key is not behind the wanted one; -1 when there is none.
    [[nodiscard]] NSError search(const HfsPlusTreeNode &node, bool isLeaf, HfsPlusBytes wanted,
                                 std::ptrdiff_t *index) const;
    [[nodiscard]] NSError findLeaf(HfsPlusBytes key, HfsPlusTreeNode *leaf, std::ptrdiff_t *index) const;
    [[nodiscard]] NSError damaged(std::uint64_t offset, const QString &what) const;

    const std::shared_ptr<const DiscImageSource> m_source;
    const Traits m_traits;
    Order m_order;
    std::vector<std::uint64_t> m_extentStarts; ///< in the file
    std::uint64_t m_fileLength = 0;
    std::uint32_t m_nodeSize = 0;
    std::uint32_t m_nodeCount = 0;
    std::uint32_t m_root = 0;
    std::uint32_t m_firstLeaf = 0;
    std::uint32_t m_lastLeaf = 0;
    std::uint16_t m_depth = 0;
    std::uint16_t m_longestKey = 0;
    bool m_hasVariableIndexKeys = false;
};

} // namespace Tessaron
