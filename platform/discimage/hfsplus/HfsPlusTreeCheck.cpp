#include "platform/discimage/hfsplus/HfsPlusTreeCheck.h"

#include "platform/discimage/hfsplus/HfsPlusRecordFields.h"
#include "platform/foundation/ByteOrder.h"
#include "platform/foundation/MessageTexts.h"

#include <algorithm>

namespace Tessaron
{

namespace
{

namespace NodeField = HfsPlusNodeField;
namespace HeaderField = HfsPlusTreeHeaderField;

constexpr std::size_t userRecordSize = 128;
constexpr std::uint32_t smallestNode = 512;
constexpr std::uint32_t largestNode = 32768;
constexpr std::size_t keyLengthSize = 2;
constexpr std::size_t pointerSize = 4;
constexpr std::uint16_t greatestDepth = 24;

enum NodeKind : std::uint8_t { IndexNode = 0, HeaderNode = 1, MapNode = 2, LeafNode = 0xFF };
constexpr std::uint32_t closedBadly = 1;
constexpr std::uint32_t bigKeys = 2;
constexpr std::uint32_t variableIndexKeys = 4;

std::uint64_t hashOf(HfsPlusBytes bytes)
{
    std::uint64_t hash = 0xCBF29CE484222325u; // FNV-1a
    for (const std::uint8_t byte : bytes)
        hash = (hash ^ byte) * 0x100000001B3u;
    return hash | 1; // 0 stands for no key
}

std::size_t recordStart(const std::vector<std::uint8_t> &node, std::size_t index)
{
    return loadBigEndian<std::uint16_t>(&node[node.size() - 2 * (index + 1)]);
}

std::size_t recordCount(const std::vector<std::uint8_t> &node)
{
    return loadBigEndian<std::uint16_t>(&node[NodeField::recordCount]);
}

/// The records lie in a row and end before the table of their places.
bool hasSoundRecords(const std::vector<std::uint8_t> &node)
{
    const std::size_t count = recordCount(node);
    const std::size_t tableSize = 2 * (count + 1);
    if (tableSize > node.size() - NodeField::size || recordStart(node, 0) != NodeField::size)
        return false;
    for (std::size_t index = 1; index <= count; ++index) {
        if (recordStart(node, index) <= recordStart(node, index - 1))
            return false;
    }
    return recordStart(node, count) <= node.size() - tableSize;
}

} // namespace

HfsPlusTreeCheck::HfsPlusTreeCheck(const DiscImageSource &source, Traits traits, const VolumeProblems &problems)
    : m_source(source)
    , m_traits(std::move(traits))
    , m_problems(problems)
{
    for (const VolumeExtent &extent : m_traits.extents) {
        m_starts.push_back(m_fileLength);
        m_fileLength += extent.length;
    }
}

void HfsPlusTreeCheck::damaged(std::uint64_t offset, const QString &message) const
{
    m_problems.damaged(offset, m_traits.name, message);
}

void HfsPlusTreeCheck::unnoticed(std::uint64_t offset, const QString &message) const
{
    m_problems.unnoticed(offset, m_traits.name, message);
}

/// The extent that holds a byte of the file, which has to lie in it.
std::size_t HfsPlusTreeCheck::extentAt(std::uint64_t at) const
{
    return std::size_t(std::upper_bound(m_starts.begin(), m_starts.end(), at) - m_starts.begin()) - 1;
}

std::uint64_t HfsPlusTreeCheck::imageOffset(std::uint64_t at) const
{
    if (at >= m_fileLength)
        return m_traits.extents.empty() ? 0 : m_traits.extents.front().offset;
    const std::size_t index = extentAt(at);
    return m_traits.extents[index].offset + (at - m_starts[index]);
}

bool HfsPlusTreeCheck::readBytes(std::uint64_t at, std::uint8_t *to, std::size_t length) const
{
    if (at > m_fileLength || length > m_fileLength - at)
        return false;
    while (length > 0) {
        const std::size_t index = extentAt(at);
        const VolumeExtent &extent = m_traits.extents[index];
        const std::uint64_t within = at - m_starts[index];
        const auto part = std::size_t(std::min<std::uint64_t>(length, extent.length - within));
        if (m_source.read(extent.offset + within, to, part))
            return false;
        at += part;
        to += part;
        length -= part;
    }
    return true;
}

bool HfsPlusTreeCheck::run()
{
    if (!readHeader() || !checkHeader())
        return false;
    m_order = m_traits.orderFor(m_header.compareType);
    m_isUsed.assign(m_header.nodeCount, false);
    m_isUsed[0] = true;
    std::vector<Expected> nodes;
    if (m_header.depth > 0)
        nodes.push_back({m_header.root, 0});
    for (std::uint16_t height = m_header.depth; height > 0; --height) {
        std::vector<Expected> below;
        if (!checkLevel(height, nodes, &below))
            return false;
        nodes = std::move(below);
    }
    const std::uint64_t offset = imageOffset(NodeField::size);
    if (m_leafRecords != m_header.leafRecords)
        unnoticed(offset + HeaderField::leafRecords,
                  QStringLiteral("its header says that it has %1, but it has %2")
                      .arg(counted(m_header.leafRecords, "record", "records"))
                      .arg(m_leafRecords));
    checkMap();
    return true;
}

bool HfsPlusTreeCheck::readHeader()
{
    std::uint8_t start[NodeField::size + HeaderField::size];
    if (!readBytes(0, start, sizeof start)) {
        damaged(imageOffset(0), QStringLiteral("its header lies beyond the end of the image"));
        return false;
    }
    const std::uint8_t *const from = start + NodeField::size;
    m_header.depth = loadBigEndian<std::uint16_t>(from + HeaderField::depth);
    m_header.root = loadBigEndian<std::uint32_t>(from + HeaderField::root);
    m_header.leafRecords = loadBigEndian<std::uint32_t>(from + HeaderField::leafRecords);
    m_header.firstLeaf = loadBigEndian<std::uint32_t>(from + HeaderField::firstLeaf);
    m_header.lastLeaf = loadBigEndian<std::uint32_t>(from + HeaderField::lastLeaf);
    m_header.nodeSize = loadBigEndian<std::uint16_t>(from + HeaderField::nodeSize);
    m_header.longestKey = loadBigEndian<std::uint16_t>(from + HeaderField::longestKey);
    m_header.nodeCount = loadBigEndian<std::uint32_t>(from + HeaderField::nodeCount);
    m_header.freeNodes = loadBigEndian<std::uint32_t>(from + HeaderField::freeNodes);
    m_header.compareType = from[HeaderField::compareType];
    m_header.attributes = loadBigEndian<std::uint32_t>(from + HeaderField::attributes);
    const bool isPowerOfTwo = (m_header.nodeSize & (m_header.nodeSize - 1)) == 0;
    const bool isPossible = m_header.nodeSize >= smallestNode && m_header.nodeSize <= largestNode && isPowerOfTwo
        && m_header.nodeCount > 0 && std::uint64_t(m_header.nodeCount) * m_header.nodeSize <= m_fileLength;
    m_headerNode.resize(isPossible ? m_header.nodeSize : 0);
    if (!isPossible || !readBytes(0, m_headerNode.data(), m_headerNode.size())) {
        damaged(imageOffset(NodeField::size), QStringLiteral("its header makes no sense"));
        return false;
    }
    return true;
}

bool HfsPlusTreeCheck::checkHeader() const
{
    const std::uint64_t offset = imageOffset(0);
    constexpr std::size_t headerRecords = 3;
    const bool hasRecords = hasSoundRecords(m_headerNode) && recordCount(m_headerNode) == headerRecords
        && recordStart(m_headerNode, 1) == NodeField::size + HeaderField::size
        && recordStart(m_headerNode, 2) == NodeField::size + HeaderField::size + userRecordSize;
    if (!hasRecords || m_headerNode[NodeField::kind] != HeaderNode || m_headerNode[NodeField::height] != 0
        || loadBigEndian<std::uint32_t>(&m_headerNode[NodeField::previous]) != 0) {
        damaged(offset, QStringLiteral("its header node makes no sense"));
        return false;
    }
    if (m_header.depth > greatestDepth || (m_header.depth == 0) != (m_header.root == 0)
        || (m_header.attributes & bigKeys) == 0 || m_header.longestKey < m_traits.shortestKey) {
        damaged(offset + NodeField::size, QStringLiteral("its header contradicts itself"));
        return false;
    }
    if ((m_header.attributes & ~(bigKeys | variableIndexKeys)) != 0)
        unnoticed(offset + NodeField::size + HeaderField::attributes,
                  (m_header.attributes & closedBadly) != 0 ? QStringLiteral("it was not closed by what wrote it last")
                                                           : QStringLiteral("it has unknown attributes"));
    if (m_headerNode[NodeField::size + HeaderField::type] != 0)
        unnoticed(offset + NodeField::size + HeaderField::type, QStringLiteral("it is of an unknown type"));
    if (std::uint64_t(m_header.nodeCount) * m_header.nodeSize != m_fileLength)
        unnoticed(offset + NodeField::size + HeaderField::nodeCount,
                  QStringLiteral("it has %1, but its file has room for %2")
                      .arg(counted(m_header.nodeCount, "node", "nodes"))
                      .arg(m_fileLength / m_header.nodeSize));
    return true;
}

bool HfsPlusTreeCheck::takeNode(std::uint32_t number)
{
    if (number == 0 || number >= m_header.nodeCount || m_isUsed[number])
        return false;
    m_isUsed[number] = true;
    m_number = number;
    m_node.resize(m_header.nodeSize);
    return readBytes(std::uint64_t(number) * m_header.nodeSize, m_node.data(), m_node.size());
}

bool HfsPlusTreeCheck::checkLevel(std::uint16_t height, const std::vector<Expected> &nodes,
                                  std::vector<Expected> *below)
{
    m_lastKey.clear();
    for (std::size_t index = 0; index < nodes.size(); ++index) {
        if (m_problems.isStopped())
            return false;
        const std::uint32_t number = nodes[index].number;
        if (!takeNode(number)) {
            damaged(
                imageOffset(0),
                QStringLiteral("its index leads to node %1, which does not exist or has another place").arg(number));
            return false;
        }
        if (!checkNodeHead(height, nodes, index) || !checkRecords(height, nodes[index], below))
            return false;
    }
    if (height == 1 && (nodes.front().number != m_header.firstLeaf || nodes.back().number != m_header.lastLeaf))
        damaged(imageOffset(NodeField::size) + HeaderField::firstLeaf,
                QStringLiteral("its header names other leaves as the first and the last"));
    return true;
}

bool HfsPlusTreeCheck::checkNodeHead(std::uint16_t height, const std::vector<Expected> &nodes, std::size_t index)
{
    const std::uint32_t next = index + 1 < nodes.size() ? nodes[index + 1].number : 0;
    const std::uint32_t previous = index > 0 ? nodes[index - 1].number : 0;
    if (m_node[NodeField::kind] != (height == 1 ? LeafNode : IndexNode) || m_node[NodeField::height] != height) {
        damaged(nodeOffset(), QStringLiteral("a node is not of the level where it stands"));
        return false;
    }
    if (loadBigEndian<std::uint32_t>(&m_node[NodeField::next]) != next
        || loadBigEndian<std::uint32_t>(&m_node[NodeField::previous]) != previous)
        damaged(nodeOffset(), QStringLiteral("a node is not linked with those beside it"));
    if (loadBigEndian<std::uint16_t>(&m_node[NodeField::reserved]) != 0)
        unnoticed(nodeOffset() + NodeField::reserved, QStringLiteral("bytes that have to be zero are not"));
    if (!hasSoundRecords(m_node) || recordCount(m_node) == 0) {
        damaged(nodeOffset(), QStringLiteral("the records of a node are not in a row"));
        return false;
    }
    return true;
}

bool HfsPlusTreeCheck::splitRecord(std::size_t index, bool isLeaf, HfsPlusBytes *key, HfsPlusBytes *data) const
{
    const std::size_t start = recordStart(m_node, index);
    const HfsPlusBytes record = HfsPlusBytes(m_node).subspan(start, recordStart(m_node, index + 1) - start);
    const std::size_t length = record.size() < keyLengthSize ? 0 : loadBigEndian<std::uint16_t>(record.data());
    if (length < m_traits.shortestKey || length > m_header.longestKey)
        return false;
    const bool isVariable = isLeaf || (m_header.attributes & variableIndexKeys) != 0;
    std::size_t dataStart = keyLengthSize + (isVariable ? length : m_header.longestKey);
    dataStart += dataStart % 2;
    if (dataStart > record.size() || (!isLeaf && record.size() - dataStart != pointerSize))
        return false;
    *key = record.subspan(keyLengthSize, length);
    *data = record.subspan(dataStart);
    return true;
}

bool HfsPlusTreeCheck::checkRecords(std::uint16_t height, const Expected &expected, std::vector<Expected> *below)
{
    const bool isLeaf = height == 1;
    for (std::size_t index = 0; index < recordCount(m_node); ++index) {
        const std::uint64_t offset = nodeOffset() + recordStart(m_node, index);
        HfsPlusBytes key;
        HfsPlusBytes data;
        if (!splitRecord(index, isLeaf, &key, &data)) {
            damaged(offset, QStringLiteral("a key has an impossible length"));
            return false;
        }
        if (!m_lastKey.empty() && m_order(m_lastKey, key) >= 0)
            damaged(offset, QStringLiteral("a record stands behind one that should come after it"));
        if (index == 0 && expected.keyHash != 0 && hashOf(key) != expected.keyHash)
            damaged(offset, QStringLiteral("the first key of a node is not the one that the index has for it"));
        m_lastKey.assign(key.begin(), key.end());
        if (!isLeaf) {
            below->push_back({loadBigEndian<std::uint32_t>(data.data()), hashOf(key)});
            continue;
        }
        ++m_leafRecords;
        m_traits.record(key, data, offset);
    }
    return true;
}

/// A bit for each node: those of the header node first, then those of the map nodes that it leads to.
void HfsPlusTreeCheck::checkMap()
{
    constexpr std::size_t mapRecord = 2;
    std::vector<std::uint8_t> map(m_headerNode.begin() + std::ptrdiff_t(recordStart(m_headerNode, mapRecord)),
                                  m_headerNode.begin() + std::ptrdiff_t(recordStart(m_headerNode, mapRecord + 1)));
    std::uint32_t next = loadBigEndian<std::uint32_t>(&m_headerNode[NodeField::next]);
    while (next != 0) {
        if (!takeNode(next) || m_node[NodeField::kind] != MapNode || !hasSoundRecords(m_node)
            || recordCount(m_node) != 1)
            return damaged(imageOffset(0), QStringLiteral("its map of nodes leads to a node that is not part of it"));
        map.insert(map.end(), m_node.begin() + std::ptrdiff_t(recordStart(m_node, 0)),
                   m_node.begin() + std::ptrdiff_t(recordStart(m_node, 1)));
        next = loadBigEndian<std::uint32_t>(&m_node[NodeField::next]);
    }
    if (std::uint64_t(map.size()) * 8 < m_header.nodeCount)
        return damaged(imageOffset(0), QStringLiteral("its map of nodes is too short"));
    std::uint32_t used = 0;
    bool isSame = true;
    for (std::uint64_t number = 0; number < std::uint64_t(map.size()) * 8; ++number) {
        const bool isMarked = (map[number / 8] >> (7 - number % 8) & 1) != 0;
        isSame = isSame && isMarked == (number < m_header.nodeCount && m_isUsed[number]);
        used += number < m_header.nodeCount && m_isUsed[number] ? 1 : 0;
    }
    if (!isSame)
        unnoticed(imageOffset(recordStart(m_headerNode, mapRecord)),
                  QStringLiteral("its map of nodes does not show those in use"));
    if (m_header.nodeCount - used != m_header.freeNodes)
        unnoticed(imageOffset(NodeField::size) + HeaderField::freeNodes,
                  QStringLiteral("its header says that it has %1 free, but it has %2")
                      .arg(counted(m_header.freeNodes, "node", "nodes"))
                      .arg(m_header.nodeCount - used));
}

} // namespace Tessaron
