#include "platform/discrecording/iso9660/PathTable.h"

#include "platform/foundation/ByteOrder.h"

#include <algorithm>
#include <array>

namespace Tessaron
{

namespace
{

// Fields of a record (ECMA-119 9.4), counted from 0.
namespace Field
{
constexpr std::size_t identifierLength = 0;
constexpr std::size_t extentBlock = 2;
constexpr std::size_t parentNumber = 6;
constexpr std::size_t identifier = 8;
} // namespace Field

constexpr std::size_t recordSize(std::size_t identifierSize)
{
    return Field::identifier + identifierSize + identifierSize % 2;
}

} // namespace

PathTable::PathTable(const DirectoryHierarchy &hierarchy)
    : m_hierarchy(hierarchy)
{
}

void PathTable::identifierOf(std::uint32_t number, RecordedName *name) const
{
    if (number == 0)
        name->assign(std::string_view("\0", 1));
    else
        m_hierarchy.names().nameOf(m_hierarchy.folders()[number].node, name);
}

void PathTable::prepare(StorageIssues &issues)
{
    const auto &folders = m_hierarchy.folders();
    RecordedName name;
    for (std::uint32_t number = 0; number < folders.size(); ++number) {
        // Parents come in ascending order: once one is out of range, all that follow are.
        if (folders[number].parent >= lastParentNumber) {
            issues.push_back({folders[number].node, m_hierarchy.traits().tree, DRStorageReportItem::Kind::Altered,
                              StorageReason::MissingInPathTable, false});
            continue;
        }
        if (number % foldersPerMark == 0)
            m_marks.push_back(m_size);
        identifierOf(number, &name);
        m_size += recordSize(name.size());
        m_folderCount = number + 1;
    }
}

void PathTable::fill(PathTableOrder order, const HierarchyPlaces &places, std::uint64_t firstByte,
                     std::span<std::uint8_t> out) const
{
    const auto &folders = m_hierarchy.folders();
    const auto mark = std::upper_bound(m_marks.begin(), m_marks.end(), firstByte) - 1;
    auto number = static_cast<std::uint32_t>(mark - m_marks.begin()) * foldersPerMark;
    const std::uint64_t end = firstByte + out.size();
    RecordedName name;
    std::array<std::uint8_t, 256> record;
    for (std::uint64_t at = *mark; number < m_folderCount && at < end; ++number) {
        identifierOf(number, &name);
        const std::size_t size = recordSize(name.size());
        const auto block = static_cast<std::uint32_t>(places.directories + folders[number].firstBlock);
        const auto parent = static_cast<std::uint16_t>(folders[number].parent + 1);
        record.fill(0);
        record[Field::identifierLength] = static_cast<std::uint8_t>(name.size());
        if (order == PathTableOrder::LittleEndian) {
            storeLittleEndian<std::uint32_t>(&record[Field::extentBlock], block);
            storeLittleEndian<std::uint16_t>(&record[Field::parentNumber], parent);
        } else {
            storeBigEndian<std::uint32_t>(&record[Field::extentBlock], block);
            storeBigEndian<std::uint16_t>(&record[Field::parentNumber], parent);
        }
        std::copy_n(name.view().begin(), name.size(), record.begin() + Field::identifier);
        // The table is a row of bytes: a record may lie partly before or behind the part that is wanted.
        const std::uint64_t from = std::max(at, firstByte);
        const std::uint64_t to = std::min(at + size, end);
        if (from < to)
            std::copy_n(record.begin() + static_cast<std::ptrdiff_t>(from - at), to - from,
                        out.begin() + static_cast<std::ptrdiff_t>(from - firstByte));
        at += size;
    }
}

} // namespace Tessaron
