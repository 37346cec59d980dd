#pragma once

#include "platform/discrecording/content/PlanProgress.h"
#include "platform/discrecording/hfsplus/BTreeRecords.h"

#include <cstdint>
#include <span>
#include <vector>

namespace Tessaron
{

/// What a B-tree says of itself (HFS Plus Volume Format, "B-Trees").
struct BTreeTraits {
    enum Attribute : std::uint32_t {
        HasBigKeys = 2,
        HasVariableIndexKeys = 4,
    };

    std::uint32_t nodeSize = 4096; ///< bytes, a power of two from 512 on
    std::uint16_t longestKey = 0; ///< bytes, without the two of the length
    std::uint32_t attributes = HasBigKeys;
};

/// The nodes of a B-tree file: the header node, the leaves in order, the index nodes level by level, the map nodes, and
/// nodes that were reserved but are not needed. The shape is found once; after that any node can be made by itself.
///
/// Each leaf takes as many records as it has room for, so that eight bytes for each leaf are all that is kept.
class BTree
{
public:
    /// The records must outlive the tree.
    BTree(const BTreeRecords &records, const BTreeTraits &traits);

    /// Finds the shape, anew when called again; false when cancelled.
    [[nodiscard]] bool measure(const PlanProgress &progress);
    /// Makes room for at least `count` nodes besides map nodes, for a file whose size must be known before its records
    /// are.
    void reserveNodes(std::uint32_t count);

    /// All nodes, unused ones counted.
    [[nodiscard]] std::uint32_t nodeCount() const { return m_nodeCount; }
    [[nodiscard]] std::uint64_t byteCount() const { return std::uint64_t{m_nodeCount} * m_traits.nodeSize; }
    [[nodiscard]] std::uint32_t nodeSize() const { return m_traits.nodeSize; }

    /// Fills `out`, which holds zeros, with the bytes of the file from `firstByte` on. Thread-safe.
    void fill(std::uint64_t firstByte, std::span<std::uint8_t> out) const;

private:
    /// One level of index nodes.
    struct Level {
        std::vector<std::uint32_t> firstChild; ///< of each node: which of the nodes one level below
        std::uint32_t firstNode = 0; ///< number of the first node
    };

    [[nodiscard]] bool measureLeaves(const PlanProgress &progress);
    void measureIndex();
    void countNodes();
    /// How many nodes there are in a level, 0 the leaves, and the number of its first node.
    [[nodiscard]] std::uint32_t levelSize(std::size_t level) const;
    [[nodiscard]] std::uint32_t levelStart(std::size_t level) const;
    /// Where the records below a node of a level begin.
    [[nodiscard]] BTreePosition firstPosition(std::size_t level, std::uint32_t index) const;

    void fillNode(std::uint32_t number, std::span<std::uint8_t> node) const;
    void fillHeader(std::span<std::uint8_t> node) const;
    void fillLeaf(std::uint32_t index, std::span<std::uint8_t> node) const;
    void fillIndex(std::size_t level, std::uint32_t index, std::span<std::uint8_t> node) const;
    void fillMapNode(std::uint32_t index, std::span<std::uint8_t> node) const;
    /// Sets the bits of the used nodes from `firstNode` on.
    void fillMap(std::uint64_t firstNode, std::span<std::uint8_t> map) const;

    const BTreeRecords &m_records;
    const BTreeTraits m_traits;
    std::vector<BTreePosition> m_leafStarts;
    std::vector<Level> m_levels; ///< from the lowest on; the last has one node
    std::uint32_t m_recordCount = 0;
    std::uint32_t m_reserved = 0;
    std::uint32_t m_usedWithoutMap = 1; ///< header, leaves and index nodes
    std::uint32_t m_mapNodes = 0;
    std::uint32_t m_nodeCount = 1;
};

} // namespace Tessaron
