#include "platform/discrecording/hfsplus/BTree.h"

#include "platform/foundation/ByteOrder.h"

#include <algorithm>

namespace Tessaron
{

namespace
{

// Fields of a node's descriptor (HFS Plus Volume Format, "Node Structure"), counted from 0.
namespace NodeField
{
constexpr std::size_t next = 0;
constexpr std::size_t previous = 4;
constexpr std::size_t kind = 8;
constexpr std::size_t height = 9;
constexpr std::size_t recordCount = 10;
} // namespace NodeField

// Fields of the header record ("Header Record").
namespace HeaderField
{
constexpr std::size_t depth = 0;
constexpr std::size_t root = 2;
constexpr std::size_t leafRecords = 6;
constexpr std::size_t firstLeaf = 10;
constexpr std::size_t lastLeaf = 14;
constexpr std::size_t nodeSize = 18;
constexpr std::size_t longestKey = 20;
constexpr std::size_t nodeCount = 22;
constexpr std::size_t freeNodes = 26;
constexpr std::size_t clumpSize = 32;
constexpr std::size_t attributes = 38;
} // namespace HeaderField

constexpr std::size_t descriptorSize = 14;
constexpr std::size_t offsetSize = 2;
constexpr std::size_t childPointerSize = 4;
// The three records of the header node.
constexpr std::size_t headerRecordSize = 106;
constexpr std::size_t userRecordSize = 128;
constexpr std::size_t headerMapOffset = descriptorSize + headerRecordSize + userRecordSize;
constexpr std::size_t headerOffsets = 4 * offsetSize;
/// What a map node has besides its bits: descriptor, two offsets, and two bytes that make the map whole words.
constexpr std::size_t mapNodeOverhead = 20;

enum NodeKind : std::uint8_t {
    LeafNode = 0xFF,
    IndexNode = 0,
    HeaderNode = 1,
    MapNode = 2,
};

constexpr std::uint32_t recordsPerCheck = 8192;

/// Puts records into a node one behind the other, and their offsets at its end.
class NodeFiller
{
public:
    explicit NodeFiller(std::span<std::uint8_t> node)
        : m_node(node)
    {
        storeOffset();
    }

    std::uint8_t *append(std::size_t size)
    {
        std::uint8_t *const record = m_node.data() + m_used;
        m_used += size;
        ++m_count;
        storeOffset();
        return record;
    }

    void finish(NodeKind kind, std::uint8_t height, std::uint32_t next, std::uint32_t previous)
    {
        std::uint8_t *const node = m_node.data();
        storeBigEndian<std::uint32_t>(node + NodeField::next, next);
        storeBigEndian<std::uint32_t>(node + NodeField::previous, previous);
        node[NodeField::kind] = kind;
        node[NodeField::height] = height;
        storeBigEndian<std::uint16_t>(node + NodeField::recordCount, m_count);
    }

private:
    /// The offset of what comes next: a record, or free space.
    void storeOffset()
    {
        storeBigEndian<std::uint16_t>(m_node.data() + m_node.size() - offsetSize * (m_count + 1u),
                                      static_cast<std::uint16_t>(m_used));
    }

    std::span<std::uint8_t> m_node;
    std::size_t m_used = descriptorSize;
    std::uint16_t m_count = 0;
};

/// Tells where records of given sizes begin a new node.
class NodeRoom
{
public:
    explicit NodeRoom(std::uint32_t nodeSize)
        : m_nodeSize(nodeSize)
    {
    }

    /// True when the record is the first of a node.
    bool beginsNode(std::size_t size)
    {
        const bool begins = m_count == 0 || m_used + size + offsetSize * (m_count + 2) > m_nodeSize;
        if (begins) {
            m_used = descriptorSize;
            m_count = 0;
        }
        m_used += size;
        ++m_count;
        return begins;
    }

private:
    const std::size_t m_nodeSize;
    std::size_t m_used = descriptorSize;
    std::size_t m_count = 0;
};

} // namespace

BTree::BTree(const BTreeRecords &records, const BTreeTraits &traits)
    : m_records(records)
    , m_traits(traits)
{
}

bool BTree::measure(const PlanProgress &progress)
{
    m_leafStarts.clear();
    m_levels.clear();
    m_recordCount = 0;
    if (!m_records.isEmpty() && !measureLeaves(progress))
        return false;
    measureIndex();
    countNodes();
    return true;
}

bool BTree::measureLeaves(const PlanProgress &progress)
{
    NodeRoom room(m_traits.nodeSize);
    BTreePosition position = m_records.first();
    do {
        if (m_recordCount++ % recordsPerCheck == 0 && progress.isCancelled())
            return false;
        if (room.beginsNode(m_records.recordSize(position)))
            m_leafStarts.push_back(position);
    } while (m_records.advance(&position));
    m_leafStarts.shrink_to_fit();
    return true;
}

void BTree::measureIndex()
{
    std::uint32_t nextNode = 1 + levelSize(0);
    for (std::size_t below = 0; levelSize(below) > 1; ++below) {
        Level level;
        level.firstNode = nextNode;
        NodeRoom room(m_traits.nodeSize);
        for (std::uint32_t child = 0; child < levelSize(below); ++child) {
            if (room.beginsNode(m_records.keySize(firstPosition(below, child)) + childPointerSize))
                level.firstChild.push_back(child);
        }
        nextNode += static_cast<std::uint32_t>(level.firstChild.size());
        m_levels.push_back(std::move(level));
    }
    m_usedWithoutMap = nextNode;
}

void BTree::countNodes()
{
    const std::uint32_t wanted = std::max(m_usedWithoutMap, m_reserved);
    const std::uint64_t headerBits = (m_traits.nodeSize - headerMapOffset - headerOffsets) * 8;
    const std::uint64_t nodeBits = (m_traits.nodeSize - mapNodeOverhead) * 8;
    m_mapNodes = 0;
    while (std::uint64_t{wanted} + m_mapNodes > headerBits + m_mapNodes * nodeBits)
        ++m_mapNodes;
    m_nodeCount = wanted + m_mapNodes;
}

void BTree::reserveNodes(std::uint32_t count)
{
    m_reserved = count;
    countNodes();
}

std::uint32_t BTree::levelSize(std::size_t level) const
{
    return static_cast<std::uint32_t>(level == 0 ? m_leafStarts.size() : m_levels[level - 1].firstChild.size());
}

std::uint32_t BTree::levelStart(std::size_t level) const
{
    return level == 0 ? 1 : m_levels[level - 1].firstNode;
}

BTreePosition BTree::firstPosition(std::size_t level, std::uint32_t index) const
{
    for (; level > 0; --level)
        index = m_levels[level - 1].firstChild[index];
    return m_leafStarts[index];
}

void BTree::fill(std::uint64_t firstByte, std::span<std::uint8_t> out) const
{
    const std::uint64_t endByte = firstByte + out.size();
    std::vector<std::uint8_t> partial;
    for (std::uint64_t number = firstByte / m_traits.nodeSize; number * m_traits.nodeSize < endByte; ++number) {
        const std::uint64_t start = number * m_traits.nodeSize;
        const std::uint64_t end = start + m_traits.nodeSize;
        if (start >= firstByte && end <= endByte) {
            fillNode(static_cast<std::uint32_t>(number), out.subspan(start - firstByte, m_traits.nodeSize));
            continue;
        }
        partial.assign(m_traits.nodeSize, 0);
        fillNode(static_cast<std::uint32_t>(number), partial);
        const std::uint64_t from = std::max(start, firstByte);
        const std::uint64_t to = std::min(end, endByte);
        std::copy_n(partial.begin() + static_cast<std::ptrdiff_t>(from - start), to - from,
                    out.begin() + static_cast<std::ptrdiff_t>(from - firstByte));
    }
}

void BTree::fillNode(std::uint32_t number, std::span<std::uint8_t> node) const
{
    if (number == 0) {
        fillHeader(node);
        return;
    }
    if (number >= m_usedWithoutMap) {
        if (number - m_usedWithoutMap < m_mapNodes)
            fillMapNode(number - m_usedWithoutMap, node);
        return; // reserved nodes are free and zero
    }
    std::size_t level = m_levels.size();
    while (level > 0 && number < levelStart(level))
        --level;
    if (level == 0)
        fillLeaf(number - 1, node);
    else
        fillIndex(level, number - levelStart(level), node);
}

void BTree::fillHeader(std::span<std::uint8_t> node) const
{
    NodeFiller filler(node);
    std::uint8_t *const header = filler.append(headerRecordSize);
    const bool isEmpty = m_leafStarts.empty();
    const std::size_t top = m_levels.size();
    storeBigEndian<std::uint16_t>(header + HeaderField::depth, isEmpty ? 0 : static_cast<std::uint16_t>(top + 1));
    storeBigEndian<std::uint32_t>(header + HeaderField::root, isEmpty ? 0 : levelStart(top));
    storeBigEndian<std::uint32_t>(header + HeaderField::leafRecords, m_recordCount);
    storeBigEndian<std::uint32_t>(header + HeaderField::firstLeaf, isEmpty ? 0 : 1);
    storeBigEndian<std::uint32_t>(header + HeaderField::lastLeaf, levelSize(0));
    storeBigEndian<std::uint16_t>(header + HeaderField::nodeSize, static_cast<std::uint16_t>(m_traits.nodeSize));
    storeBigEndian<std::uint16_t>(header + HeaderField::longestKey, m_traits.longestKey);
    storeBigEndian<std::uint32_t>(header + HeaderField::nodeCount, m_nodeCount);
    storeBigEndian<std::uint32_t>(header + HeaderField::freeNodes, m_nodeCount - m_usedWithoutMap - m_mapNodes);
    storeBigEndian<std::uint32_t>(header + HeaderField::clumpSize, m_traits.nodeSize);
    storeBigEndian<std::uint32_t>(header + HeaderField::attributes, m_traits.attributes);
    filler.append(userRecordSize);
    const std::size_t mapSize = m_traits.nodeSize - headerMapOffset - headerOffsets;
    fillMap(0, {filler.append(mapSize), mapSize});
    filler.finish(HeaderNode, 0, m_mapNodes > 0 ? m_usedWithoutMap : 0, 0);
}

void BTree::fillMapNode(std::uint32_t index, std::span<std::uint8_t> node) const
{
    NodeFiller filler(node);
    const std::uint64_t headerBits = (m_traits.nodeSize - headerMapOffset - headerOffsets) * 8;
    const std::size_t mapSize = m_traits.nodeSize - mapNodeOverhead;
    fillMap(headerBits + std::uint64_t{index} * mapSize * 8, {filler.append(mapSize), mapSize});
    const bool isLast = index + 1 == m_mapNodes;
    filler.finish(MapNode, 0, isLast ? 0 : m_usedWithoutMap + index + 1, index == 0 ? 0 : m_usedWithoutMap + index - 1);
}

void BTree::fillMap(std::uint64_t firstNode, std::span<std::uint8_t> map) const
{
    const std::uint64_t used = std::uint64_t{m_usedWithoutMap} + m_mapNodes;
    const std::uint64_t count = std::min<std::uint64_t>(used > firstNode ? used - firstNode : 0, map.size() * 8);
    std::fill_n(map.begin(), count / 8, std::uint8_t{0xFF});
    if (count % 8 != 0)
        map[count / 8] = static_cast<std::uint8_t>(0xFF00u >> (count % 8));
}

void BTree::fillLeaf(std::uint32_t index, std::span<std::uint8_t> node) const
{
    NodeFiller filler(node);
    const bool isLast = index + 1 == levelSize(0);
    BTreePosition position = m_leafStarts[index];
    do
        m_records.storeRecord(position, filler.append(m_records.recordSize(position)));
    while (m_records.advance(&position) && (isLast || position != m_leafStarts[index + 1]));
    filler.finish(LeafNode, 1, isLast ? 0 : index + 2, index);
}

void BTree::fillIndex(std::size_t level, std::uint32_t index, std::span<std::uint8_t> node) const
{
    NodeFiller filler(node);
    const std::vector<std::uint32_t> &starts = m_levels[level - 1].firstChild;
    const bool isLast = index + 1 == starts.size();
    const std::uint32_t end = isLast ? levelSize(level - 1) : starts[index + 1];
    for (std::uint32_t child = starts[index]; child < end; ++child) {
        const BTreePosition position = firstPosition(level - 1, child);
        const std::size_t keySize = m_records.keySize(position);
        std::uint8_t *const record = filler.append(keySize + childPointerSize);
        m_records.storeKey(position, record);
        storeBigEndian<std::uint32_t>(record + keySize, levelStart(level - 1) + child);
    }
    const std::uint32_t number = levelStart(level) + index;
    filler.finish(IndexNode, static_cast<std::uint8_t>(level + 1), isLast ? 0 : number + 1,
                  index == 0 ? 0 : number - 1);
}

} // namespace Tessaron
