#include "platform/discimage/hfsplus/HfsPlusBTreeWalker.h"

#include "platform/discimage/hfsplus/HfsPlusRecordFields.h"
#include "platform/discimage/source/DiscImageErrors.h"
#include "platform/foundation/ByteOrder.h"

#include <algorithm>
#include <array>

namespace Tessaron
{

namespace
{

namespace Node = HfsPlusNodeField;

constexpr std::uint32_t smallestNode = 512;
constexpr std::uint32_t largestNode = 32768;
constexpr std::size_t pointerSize = 4;
constexpr std::size_t keyLengthSize = 2;
/// Nodes have at least three records in an index: a tree of 2^32 nodes is less deep.
constexpr std::uint16_t greatestDepth = 24;

constexpr std::uint8_t leafKind = 0xFF;
constexpr std::uint8_t indexKind = 0;
constexpr std::uint8_t headerKind = 1;

constexpr std::uint32_t bigKeysAttribute = 2;
constexpr std::uint32_t variableIndexKeysAttribute = 4;

} // namespace

std::size_t HfsPlusTreeNode::recordStart(std::size_t index) const
{
    return loadBigEndian<std::uint16_t>(&bytes[bytes.size() - 2 * (index + 1)]);
}

HfsPlusBytes HfsPlusTreeNode::record(std::size_t index) const
{
    const std::size_t start = recordStart(index);
    return HfsPlusBytes(bytes).subspan(start, recordStart(index + 1) - start);
}

HfsPlusBTreeWalker::HfsPlusBTreeWalker(std::shared_ptr<const DiscImageSource> source, Traits traits)
    : m_source(std::move(source))
    , m_traits(std::move(traits))
{
    for (const VolumeExtent &extent : m_traits.extents) {
        m_extentStarts.push_back(m_fileLength);
        m_fileLength += extent.length;
    }
}

NSError HfsPlusBTreeWalker::damaged(std::uint64_t offset, const QString &what) const
{
    return discImageError(DiscImageErrorCode::Damaged, offset,
                          QStringLiteral("In the HFS+ %1, %2").arg(m_traits.name, what));
}

std::unique_ptr<HfsPlusBTreeWalker> HfsPlusBTreeWalker::open(std::shared_ptr<const DiscImageSource> source,
                                                             Traits traits, NSError *error)
{
    std::unique_ptr<HfsPlusBTreeWalker> walker(new HfsPlusBTreeWalker(std::move(source), std::move(traits)));
    *error = walker->readHeader();
    if (!*error && walker->m_depth > 0)
        *error = walker->checkEnds();
    return *error ? nullptr : std::move(walker);
}

std::uint64_t HfsPlusBTreeWalker::imageOffset(std::uint64_t at) const
{
    const auto behind = std::upper_bound(m_extentStarts.begin(), m_extentStarts.end(), at);
    if (behind == m_extentStarts.begin())
        return 0;
    const std::size_t index = std::size_t(behind - m_extentStarts.begin()) - 1;
    return m_traits.extents[index].offset + (at - m_extentStarts[index]);
}

NSError HfsPlusBTreeWalker::readBytes(std::uint64_t at, std::uint8_t *to, std::size_t length) const
{
    if (at > m_fileLength || length > m_fileLength - at)
        return damaged(imageOffset(0), QStringLiteral("a node lies behind the end"));
    while (length > 0) {
        const auto behind = std::upper_bound(m_extentStarts.begin(), m_extentStarts.end(), at);
        const std::size_t index = std::size_t(behind - m_extentStarts.begin()) - 1;
        const std::uint64_t within = at - m_extentStarts[index];
        const VolumeExtent &extent = m_traits.extents[index];
        const std::size_t part = std::size_t(std::min<std::uint64_t>(length, extent.length - within));
        if (NSError error = m_source->read(extent.offset + within, to, part))
            return error;
        at += part;
        to += part;
        length -= part;
    }
    return {};
}

NSError HfsPlusBTreeWalker::readHeader()
{
    std::array<std::uint8_t, Node::size + HfsPlusTreeHeaderField::size> bytes;
    if (NSError error = readBytes(0, bytes.data(), bytes.size()))
        return error;
    const std::uint64_t offset = imageOffset(0);
    namespace Header = HfsPlusTreeHeaderField;
    const std::uint8_t *const header = bytes.data() + Node::size;
    m_depth = loadBigEndian<std::uint16_t>(header + Header::depth);
    m_root = loadBigEndian<std::uint32_t>(header + Header::root);
    m_firstLeaf = loadBigEndian<std::uint32_t>(header + Header::firstLeaf);
    m_lastLeaf = loadBigEndian<std::uint32_t>(header + Header::lastLeaf);
    m_nodeSize = loadBigEndian<std::uint16_t>(header + Header::nodeSize);
    m_longestKey = loadBigEndian<std::uint16_t>(header + Header::longestKey);
    m_nodeCount = loadBigEndian<std::uint32_t>(header + Header::nodeCount);
    const std::uint32_t attributes = loadBigEndian<std::uint32_t>(header + Header::attributes);
    m_hasVariableIndexKeys = (attributes & variableIndexKeysAttribute) != 0;
    m_order = m_traits.orderFor(header[Header::compareType]);
    if (bytes[Node::kind] != headerKind || (attributes & bigKeysAttribute) == 0)
        return damaged(offset, QStringLiteral("there is no header node"));
    const bool isPowerOfTwo = (m_nodeSize & (m_nodeSize - 1)) == 0;
    if (m_nodeSize < smallestNode || m_nodeSize > largestNode || !isPowerOfTwo)
        return damaged(offset, QStringLiteral("nodes cannot have %1 bytes").arg(m_nodeSize));
    if (m_depth > greatestDepth || m_longestKey < m_traits.shortestKey || (m_depth == 0) != (m_root == 0))
        return damaged(offset, QStringLiteral("the header contradicts itself"));
    if (std::uint64_t{m_nodeCount} * m_nodeSize > m_fileLength)
        return damaged(offset, QStringLiteral("there are fewer nodes than the header says"));
    return {};
}

NSError HfsPlusBTreeWalker::checkEnds() const
{
    HfsPlusTreeNode node;
    if (NSError error = readNode(m_firstLeaf, 1, &node))
        return error;
    if (node.previous != 0)
        return damaged(node.offset, QStringLiteral("there is a leaf before the first"));
    if (NSError error = readNode(m_lastLeaf, 1, &node))
        return error;
    if (node.next != 0)
        return damaged(node.offset, QStringLiteral("there is a leaf behind the last"));
    return {};
}

NSError HfsPlusBTreeWalker::readNode(std::uint32_t number, std::uint8_t level, HfsPlusTreeNode *node) const
{
    const std::uint64_t at = std::uint64_t{number} * m_nodeSize;
    if (number == 0 || number >= m_nodeCount)
        return damaged(imageOffset(0), QStringLiteral("node %1 is asked for, which does not exist").arg(number));
    node->number = number;
    node->offset = imageOffset(at);
    node->bytes.resize(m_nodeSize);
    if (NSError error = readBytes(at, node->bytes.data(), m_nodeSize))
        return error;
    const std::uint8_t *const from = node->bytes.data();
    node->next = loadBigEndian<std::uint32_t>(from + Node::next);
    node->previous = loadBigEndian<std::uint32_t>(from + Node::previous);
    node->recordCount = loadBigEndian<std::uint16_t>(from + Node::recordCount);
    if (from[Node::kind] != (level == 1 ? leafKind : indexKind) || from[Node::height] != level)
        return damaged(node->offset, QStringLiteral("a node is not of the level where it stands"));
    const std::size_t tableSize = 2 * (std::size_t{node->recordCount} + 1);
    if (node->recordCount == 0 || tableSize > m_nodeSize - Node::size)
        return damaged(node->offset, QStringLiteral("a node has an impossible number of records"));
    std::size_t before = Node::size;
    for (std::size_t index = 0; index <= node->recordCount; ++index) {
        const std::size_t start = node->recordStart(index);
        if (index == 0 ? start != Node::size : start <= before)
            return damaged(node->offset, QStringLiteral("the records of a node are not in a row"));
        before = start;
    }
    if (before > m_nodeSize - tableSize)
        return damaged(node->offset, QStringLiteral("the records of a node leave it"));
    return {};
}

NSError HfsPlusBTreeWalker::splitRecord(const HfsPlusTreeNode &node, std::size_t index, bool isLeaf, HfsPlusBytes *key,
                                        HfsPlusBytes *data) const
{
    const HfsPlusBytes record = node.record(index);
    const std::uint64_t offset = node.offset + node.recordStart(index);
    const std::size_t length = record.size() < keyLengthSize ? 0 : loadBigEndian<std::uint16_t>(record.data());
    if (length < m_traits.shortestKey || length > m_longestKey)
        return damaged(offset, QStringLiteral("a key has an impossible length"));
    std::size_t dataStart = keyLengthSize + (isLeaf || m_hasVariableIndexKeys ? length : m_longestKey);
    dataStart += dataStart % 2;
    if (dataStart > record.size() || (!isLeaf && record.size() - dataStart < pointerSize))
        return damaged(offset, QStringLiteral("a record is shorter than its key"));
    *key = record.subspan(keyLengthSize, length);
    *data = record.subspan(dataStart);
    return {};
}

NSError HfsPlusBTreeWalker::search(const HfsPlusTreeNode &node, bool isLeaf, HfsPlusBytes wanted,
                                   std::ptrdiff_t *index) const
{
    std::size_t low = 0;
    std::size_t high = node.recordCount;
    while (low < high) {
        const std::size_t middle = (low + high) / 2;
        HfsPlusBytes key;
        HfsPlusBytes data;
        if (NSError error = splitRecord(node, middle, isLeaf, &key, &data))
            return error;
        if (m_order(key, wanted) <= 0)
            low = middle + 1;
        else
            high = middle;
    }
    *index = std::ptrdiff_t(low) - 1;
    return {};
}

NSError HfsPlusBTreeWalker::findLeaf(HfsPlusBytes key, HfsPlusTreeNode *leaf, std::ptrdiff_t *index) const
{
    std::uint32_t number = m_root;
    *index = -1;
    for (std::uint16_t level = m_depth; level > 0; --level) {
        const bool isLeaf = level == 1;
        if (NSError error = readNode(number, static_cast<std::uint8_t>(level), leaf))
            return error;
        if (NSError error = search(*leaf, isLeaf, key, index))
            return error;
        if (isLeaf || *index < 0)
            return {};
        HfsPlusBytes pointerKey;
        HfsPlusBytes pointer;
        if (NSError error = splitRecord(*leaf, std::size_t(*index), false, &pointerKey, &pointer))
            return error;
        number = loadBigEndian<std::uint32_t>(pointer.data());
    }
    return {};
}

NSError HfsPlusBTreeWalker::find(HfsPlusBytes key, HfsPlusTreePlace *place, bool *isFound) const
{
    *isFound = false;
    std::ptrdiff_t index = -1;
    if (NSError error = findLeaf(key, &place->node, &index))
        return error;
    if (index < 0)
        return {};
    place->index = std::size_t(index);
    if (NSError error = splitRecord(place->node, place->index, true, &place->key, &place->data))
        return error;
    *isFound = m_order(place->key, key) == 0;
    return {};
}

NSError HfsPlusBTreeWalker::advance(HfsPlusTreePlace *place, bool *isFound) const
{
    *isFound = false;
    const std::uint64_t offset = place->recordOffset();
    const std::vector<std::uint8_t> before(place->key.begin(), place->key.end());
    const bool isInNextNode = place->index + 1 == place->node.recordCount;
    if (isInNextNode) {
        const std::uint32_t previous = place->node.number;
        if (place->node.next == 0)
            return {};
        if (NSError error = readNode(place->node.next, 1, &place->node))
            return error;
        if (place->node.previous != previous)
            return damaged(place->node.offset, QStringLiteral("a node does not know the one before it"));
        place->index = 0;
    } else {
        ++place->index;
    }
    if (NSError error = splitRecord(place->node, place->index, true, &place->key, &place->data))
        return error;
    if (m_order(before, place->key) >= 0)
        return damaged(offset, QStringLiteral("the record behind this one should come before it"));
    if (isInNextNode) {
        HfsPlusTreeNode leaf;
        std::ptrdiff_t index = -1;
        if (NSError error = findLeaf(place->key, &leaf, &index))
            return error;
        if (index != 0 || leaf.number != place->node.number)
            return damaged(place->node.offset, QStringLiteral("the index does not lead to a node"));
    }
    *isFound = true;
    return {};
}

} // namespace Tessaron
