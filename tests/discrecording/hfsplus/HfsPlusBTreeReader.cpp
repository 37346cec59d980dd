#include "tests/discrecording/hfsplus/HfsPlusBTreeReader.h"

#include <algorithm>

namespace Tessaron::Testing
{

std::uint16_t big16(Bytes bytes, std::size_t at)
{
    return at + 2 <= bytes.size() ? static_cast<std::uint16_t>(bytes[at] << 8 | bytes[at + 1]) : 0;
}

std::uint32_t big32(Bytes bytes, std::size_t at)
{
    return std::uint32_t{big16(bytes, at)} << 16 | big16(bytes, at + 2);
}

std::uint64_t big64(Bytes bytes, std::size_t at)
{
    return std::uint64_t{big32(bytes, at)} << 32 | big32(bytes, at + 4);
}

HfsPlusBTreeReader::HfsPlusBTreeReader(Bytes file, const QString &name,
                                       const std::function<bool(Bytes, Bytes)> &precedes)
    : m_file(file)
    , m_name(name)
    , m_precedes(precedes)
{
    readHeader();
    if (m_nodeSize == 0)
        return;
    m_used.assign(m_nodeCount, false);
    m_used[0] = true;
    m_levels.resize(m_depth + 1);
    if (m_root != 0)
        descend(m_root, m_depth, {});
    readLeaves();
    checkLinks();
    checkMap();
}

void HfsPlusBTreeReader::problem(const QString &text)
{
    if (m_problems.size() < 50)
        m_problems.append(m_name + QStringLiteral(": ") + text);
}

Bytes HfsPlusBTreeReader::node(std::uint32_t number)
{
    const std::uint64_t start = std::uint64_t{number} * m_nodeSize;
    if (number >= m_nodeCount || start + m_nodeSize > m_file.size()) {
        problem(QStringLiteral("node %1 is outside of the file").arg(number));
        return {};
    }
    return m_file.subspan(start, m_nodeSize);
}

void HfsPlusBTreeReader::readHeader()
{
    const std::uint32_t size = big16(m_file, 32);
    if (m_file.size() < 512 || size < 512 || (size & (size - 1)) != 0 || m_file.size() % size != 0) {
        problem(QStringLiteral("the size of nodes is wrong"));
        return;
    }
    m_nodeSize = size;
    const Bytes header = m_file.subspan(14);
    m_depth = big16(header, 0);
    m_root = big32(header, 2);
    m_leafRecords = big32(header, 6);
    m_firstLeaf = big32(header, 10);
    m_lastLeaf = big32(header, 14);
    m_longestKey = big16(header, 20);
    m_nodeCount = big32(header, 22);
    m_freeNodes = big32(header, 26);
    m_attributes = big32(header, 38);
    if (std::uint64_t{m_nodeCount} * m_nodeSize != m_file.size())
        problem(QStringLiteral("there are not as many nodes as the file has room for"));
    if (m_file[8] != 1 || m_file[9] != 0 || big16(m_file, 10) != 3)
        problem(QStringLiteral("the header node is none"));
    const std::vector<Bytes> records = recordsOf(node(0), 0);
    if (records.size() == 3 && (records[0].size() != 106 || records[1].size() != 128))
        problem(QStringLiteral("the header's records have wrong sizes"));
}

std::vector<Bytes> HfsPlusBTreeReader::recordsOf(Bytes node, std::uint32_t number)
{
    const std::uint16_t count = big16(node, 10);
    std::vector<Bytes> records;
    std::size_t start = 14;
    for (std::size_t index = 0; index <= count; ++index) {
        const std::size_t table = node.size() - 2 * (index + 1);
        const std::size_t offset = big16(node, table);
        const bool isRight = index == 0 ? offset == 14 : offset > start && offset % 2 == 0;
        if (!isRight || offset > node.size() - 2 * (std::size_t{count} + 1)) {
            problem(QStringLiteral("node %1 has a wrong offset %2").arg(number).arg(offset));
            return records;
        }
        if (index > 0)
            records.push_back(node.subspan(start, offset - start));
        start = offset;
    }
    return records;
}

HfsPlusBTreeReader::Record HfsPlusBTreeReader::split(Bytes record, std::uint32_t number)
{
    const std::size_t keySize = big16(record, 0);
    if (keySize > m_longestKey || keySize + 2 > record.size()) {
        problem(QStringLiteral("a key in node %1 is too long").arg(number));
        return {};
    }
    return {record.subspan(2, keySize), record.subspan(2 + keySize)};
}

void HfsPlusBTreeReader::descend(std::uint32_t number, unsigned int height, Bytes firstKey)
{
    const Bytes bytes = node(number);
    if (bytes.empty() || height == 0)
        return;
    if (m_used[number]) {
        problem(QStringLiteral("node %1 has two parents").arg(number));
        return;
    }
    m_used[number] = true;
    m_levels[height].push_back(number);
    const bool isLeaf = height == 1;
    if (bytes[8] != (isLeaf ? 0xFF : 0) || bytes[9] != height)
        problem(QStringLiteral("node %1 has a wrong kind or height").arg(number));
    const std::vector<Bytes> records = recordsOf(bytes, number);
    if (records.empty())
        problem(QStringLiteral("node %1 is empty").arg(number));
    for (std::size_t index = 0; index < records.size(); ++index) {
        const Record record = split(records[index], number);
        if (index == 0 && !firstKey.empty() && !std::ranges::equal(record.key, firstKey))
            problem(QStringLiteral("node %1 does not begin with the key that its parent has").arg(number));
        if (isLeaf)
            continue;
        if (record.data.size() != 4)
            problem(QStringLiteral("a record of index node %1 is not a pointer").arg(number));
        descend(big32(record.data, 0), height - 1, record.key);
    }
}

void HfsPlusBTreeReader::readLeaves()
{
    std::uint32_t number = m_firstLeaf;
    std::uint32_t last = 0;
    for (std::uint32_t count = 0; number != 0 && count <= m_nodeCount; ++count) {
        const Bytes bytes = node(number);
        if (bytes.empty())
            return;
        for (const Bytes record : recordsOf(bytes, number)) {
            m_records.push_back(split(record, number));
            const std::size_t size = m_records.size();
            if (size > 1 && !m_precedes(m_records[size - 2].key, m_records[size - 1].key))
                problem(QStringLiteral("record %1 of node %2 is out of order").arg(size - 1).arg(number));
        }
        last = number;
        number = big32(bytes, 0);
    }
    if (last != m_lastLeaf)
        problem(QStringLiteral("the last leaf is not the one of the header"));
    if (m_records.size() != m_leafRecords)
        problem(QStringLiteral("%1 records where the header says %2").arg(m_records.size()).arg(m_leafRecords));
    if (m_depth > 0 && !m_levels[1].empty() && m_levels[1].front() != m_firstLeaf)
        problem(QStringLiteral("the first leaf is not the leftmost"));
}

void HfsPlusBTreeReader::checkLinks()
{
    for (const std::vector<std::uint32_t> &level : m_levels) {
        for (std::size_t index = 0; index < level.size(); ++index) {
            const Bytes bytes = node(level[index]);
            const std::uint32_t next = index + 1 < level.size() ? level[index + 1] : 0;
            const std::uint32_t previous = index > 0 ? level[index - 1] : 0;
            if (big32(bytes, 0) != next || big32(bytes, 4) != previous)
                problem(QStringLiteral("node %1 is not linked with its neighbours").arg(level[index]));
        }
    }
}

void HfsPlusBTreeReader::checkMap()
{
    std::vector<std::uint8_t> map;
    const auto append = [&map](Bytes bytes) { map.insert(map.end(), bytes.begin(), bytes.end()); };
    const std::vector<Bytes> header = recordsOf(node(0), 0);
    if (header.size() == 3)
        append(header[2]);
    std::uint32_t previous = 0;
    for (std::uint32_t number = big32(m_file, 0); number != 0 && m_mapNodes < m_nodeCount;) {
        const Bytes bytes = node(number);
        if (bytes.empty())
            return;
        if (bytes[8] != 2 || bytes[9] != 0 || big32(bytes, 4) != previous || m_used[number])
            problem(QStringLiteral("node %1 is not a map node").arg(number));
        m_used[number] = true;
        ++m_mapNodes;
        const std::vector<Bytes> records = recordsOf(bytes, number);
        if (records.size() != 1)
            problem(QStringLiteral("map node %1 has not one record").arg(number));
        else
            append(records[0]);
        previous = number;
        number = big32(bytes, 0);
    }
    std::uint32_t unused = 0;
    for (std::uint64_t number = 0; number < map.size() * std::uint64_t{8}; ++number) {
        const bool isMarked = (map[number / 8] & (0x80u >> (number % 8))) != 0;
        const bool isUsed = number < m_nodeCount && m_used[number];
        if (isMarked != isUsed)
            problem(QStringLiteral("the map is wrong about node %1").arg(number));
        unused += number < m_nodeCount && !isUsed ? 1 : 0;
    }
    if (map.size() * std::uint64_t{8} < m_nodeCount)
        problem(QStringLiteral("the map is too short"));
    if (unused != m_freeNodes)
        problem(QStringLiteral("%1 nodes are unused where the header says %2").arg(unused).arg(m_freeNodes));
}

} // namespace Tessaron::Testing
