#pragma once

#include "platform/discrecording/iso9660/DirectoryHierarchy.h"
#include "platform/discrecording/iso9660/DirectoryRecords.h"

#include <cstdint>
#include <span>
#include <vector>

namespace Tessaron
{

enum class PathTableOrder : std::uint8_t {
    LittleEndian, ///< type L
    BigEndian, ///< type M
};

/// The path tables of a hierarchy (ECMA-119 6.9, 9.4): every folder in the order of the hierarchy, each with the number
/// of its parent. That number has 16 bits: a folder below one that is beyond 65,535 is left out and reported, since a
/// wrong parent would do more harm. Directories hold it all the same. Constant after prepare().
class PathTable
{
public:
    explicit PathTable(const DirectoryHierarchy &hierarchy);

    void prepare(StorageIssues &issues);
    /// Bytes of one table.
    [[nodiscard]] std::uint64_t size() const { return m_size; }
    /// Fills the part of a table that begins `firstByte` bytes into it; `out` holds zeros.
    void fill(PathTableOrder order, const HierarchyPlaces &places, std::uint64_t firstByte,
              std::span<std::uint8_t> out) const;

private:
    /// Parents are numbered from 1 up to this.
    static constexpr std::uint32_t lastParentNumber = 65535;
    /// Folders from one record whose offset is kept to the next.
    static constexpr std::uint32_t foldersPerMark = 1024;

    /// The identifier that the table holds for a folder.
    void identifierOf(std::uint32_t number, RecordedName *name) const;

    const DirectoryHierarchy &m_hierarchy;
    std::vector<std::uint64_t> m_marks;
    std::uint64_t m_size = 0;
    std::uint32_t m_folderCount = 0; ///< folders in the table
};

} // namespace Tessaron
