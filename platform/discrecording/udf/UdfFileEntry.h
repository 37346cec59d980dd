#pragma once

#include "platform/discrecording/udf/UdfHierarchy.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace Tessaron
{

/// Where the parts of a UDF tree lie: blocks of the image.
struct UdfPlaces {
    std::uint32_t partition = 0; ///< what blocks of the partition are counted from
    std::uint32_t fileSet = 0;
    std::uint32_t icbs = 0;
    std::uint32_t allocationExtents = 0;
    std::uint32_t directories = 0;

    /// The same block, counted within the partition.
    [[nodiscard]] std::uint32_t inPartition(std::uint32_t imageBlock) const { return imageBlock - partition; }
    [[nodiscard]] std::uint32_t icb(std::uint32_t number) const { return icbs + number - partition; }
};

/// Makes file entries (ECMA-167 4/14.9): what UDF says of an object besides its name.
class UdfFileEntry
{
public:
    /// Bytes of contents that an entry itself can hold.
    static constexpr std::size_t embeddedCapacity = logicalBlockSize - UdfAllocation::entryHeadSize;
    /// The root's unique id is 0, all others' are at least this (UDF 3.2.1.1: the lower ones are another system's).
    static constexpr std::uint64_t firstUniqueId = 16;

    /// Both must outlive this object.
    UdfFileEntry(const UdfHierarchy &hierarchy, const UdfPlaces &places);

    /// Fills a zeroed block with the file entry of an ICB.
    void store(std::span<std::uint8_t> block, std::uint32_t icb) const;
    /// Fills a zeroed block with an allocation extent, counted from the first of all.
    void storeAllocationExtent(std::span<std::uint8_t> block, std::uint32_t extent) const;

private:
    void storeIcbTag(std::uint8_t *to, const ContentNode &content) const;
    void storeTimes(std::uint8_t *entry, NodeIndex node) const;
    /// Writes the attributes behind the entry's head; returns how many bytes they take.
    std::size_t storeAttributes(std::uint8_t *to, const ContentNode &content, std::uint32_t icb) const;
    /// Writes the allocation descriptors, or the contents themselves; returns how many bytes they take.
    std::size_t storeAllocation(std::uint8_t *to, NodeIndex node, std::uint32_t icb) const;
    /// Where the bytes of a file or a directory are.
    [[nodiscard]] UdfAllocation allocationOf(NodeIndex node) const;

    const UdfHierarchy &m_hierarchy;
    const UdfPlaces &m_places;
};

} // namespace Tessaron
