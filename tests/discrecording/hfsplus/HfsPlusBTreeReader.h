#pragma once

#include <QStringList>

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace Tessaron::Testing
{

using Bytes = std::span<const std::uint8_t>;

/// Reads a B-tree file as the HFS Plus volume format describes it and collects what breaks its rules.
class HfsPlusBTreeReader
{
public:
    /// `precedes` tells whether the first key, its length not included, comes before the second.
    HfsPlusBTreeReader(Bytes file, const QString &name, const std::function<bool(Bytes, Bytes)> &precedes);

    struct Record {
        Bytes key; ///< without its length
        Bytes data;
    };
    /// The leaves' records in the order of the file.
    [[nodiscard]] const std::vector<Record> &records() const { return m_records; }
    [[nodiscard]] const QStringList &problems() const { return m_problems; }
    [[nodiscard]] unsigned int depth() const { return m_depth; }
    [[nodiscard]] std::uint32_t mapNodeCount() const { return m_mapNodes; }
    [[nodiscard]] std::uint32_t nodeCount() const { return m_nodeCount; }
    [[nodiscard]] std::uint32_t freeNodeCount() const { return m_freeNodes; }
    [[nodiscard]] std::uint32_t attributes() const { return m_attributes; }
    [[nodiscard]] std::uint16_t longestKey() const { return m_longestKey; }

private:
    void problem(const QString &text);
    [[nodiscard]] Bytes node(std::uint32_t number);
    [[nodiscard]] std::vector<Bytes> recordsOf(Bytes node, std::uint32_t number);
    [[nodiscard]] Record split(Bytes record, std::uint32_t number);
    void readHeader();
    void readLeaves();
    /// Visits a node from above; `firstKey` is what its parent says that it begins with, empty for the root.
    void descend(std::uint32_t number, unsigned int height, Bytes firstKey);
    void checkLinks();
    void checkMap();

    const Bytes m_file;
    const QString m_name;
    const std::function<bool(Bytes, Bytes)> m_precedes;
    QStringList m_problems;
    std::vector<Record> m_records;
    std::vector<bool> m_used;
    std::vector<std::vector<std::uint32_t>> m_levels; ///< visited nodes by height, 1 the leaves
    std::uint32_t m_nodeSize = 0;
    std::uint32_t m_nodeCount = 0;
    std::uint32_t m_freeNodes = 0;
    std::uint32_t m_mapNodes = 0;
    std::uint32_t m_root = 0;
    std::uint32_t m_leafRecords = 0;
    std::uint32_t m_firstLeaf = 0;
    std::uint32_t m_lastLeaf = 0;
    std::uint32_t m_attributes = 0;
    std::uint16_t m_longestKey = 0;
    unsigned int m_depth = 0;
};

[[nodiscard]] std::uint16_t big16(Bytes bytes, std::size_t at);
[[nodiscard]] std::uint32_t big32(Bytes bytes, std::size_t at);
[[nodiscard]] std::uint64_t big64(Bytes bytes, std::size_t at);

} // namespace Tessaron::Testing
