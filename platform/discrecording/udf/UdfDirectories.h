#pragma once

#include "platform/discrecording/udf/UdfFileEntry.h"

#include <cstdint>
#include <span>

namespace Tessaron
{

/// Makes directories: file identifier descriptors (ECMA-167 4/14.4) in a row; the first one leads to the parent. They
/// may run from one block into the next; each directory begins a block.
class UdfDirectories
{
public:
    /// Both must outlive this object.
    UdfDirectories(const UdfHierarchy &hierarchy, const UdfPlaces &places);

    /// Fills zeroed blocks with those from `firstBlock` on, counted from the first directory's.
    void fill(std::uint32_t firstBlock, std::span<std::uint8_t> out) const;

private:
    /// Fills with the bytes of one directory from `begin` on.
    void fillDirectory(const UdfFolder &folder, std::uint64_t begin, std::span<std::uint8_t> out) const;
    /// Writes one descriptor; `location` is its block of the partition.
    void storeEntry(std::span<std::uint8_t> entry, std::uint8_t characteristics, NodeIndex target,
                    std::string_view name, std::uint32_t location) const;

    const UdfHierarchy &m_hierarchy;
    const UdfPlaces &m_places;
};

} // namespace Tessaron
