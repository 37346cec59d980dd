#pragma once

#include "platform/discrecording/image/BlockImage.h"

#include <cstddef>
#include <cstdint>

namespace Tessaron
{

/// Where in the partition the bytes of a file or directory lie: in one row. An allocation descriptor says less than
/// 2^30 bytes, whole blocks but for the last (ECMA-167 4/14.14.1, UDF 2.3.10), so that a long row takes several; those
/// that do not fit beside the file's entry go into allocation extents (ECMA-167 4/14.5) of one block each.
struct UdfAllocation {
    std::uint32_t block = 0; ///< of the partition
    std::uint64_t size = 0; ///< bytes

    /// Most bytes that one descriptor can describe.
    static constexpr std::uint32_t longestPart = 0x3FFFF800;
    static constexpr std::size_t descriptorSize = 8;
    static constexpr std::size_t entryHeadSize = 176; ///< of a file entry without attributes (ECMA-167 4/14.9)
    static constexpr std::size_t extentHeadSize = 24; ///< of an allocation extent
    static constexpr std::uint64_t entryCapacity = (logicalBlockSize - entryHeadSize) / descriptorSize;
    static constexpr std::uint64_t extentCapacity = (logicalBlockSize - extentHeadSize) / descriptorSize;

    [[nodiscard]] constexpr std::uint64_t descriptorCount() const { return (size + longestPart - 1) / longestPart; }

    /// How many allocation extents the row needs. All but the last give up one descriptor for the place of the next,
    /// and so does the file entry before them.
    [[nodiscard]] constexpr std::uint64_t extentCount() const
    {
        if (descriptorCount() <= entryCapacity)
            return 0;
        const std::uint64_t left = descriptorCount() - (entryCapacity - 1);
        return left <= extentCapacity ? 1 : 1 + (left - extentCapacity + extentCapacity - 2) / (extentCapacity - 1);
    }

    /// Writes the descriptors that the file entry itself has, and returns how many bytes they take. The allocation
    /// extents lie at `firstExtent` of the partition, in a row.
    std::size_t storeInEntry(std::uint8_t *to, std::uint32_t firstExtent) const;
    /// Fills a zeroed block with the `index`-th allocation extent.
    void storeExtent(std::uint8_t *block, std::uint64_t index, std::uint32_t firstExtent) const;

private:
    /// Writes `count` descriptors from the `first`-th of the row on.
    void storeDescriptors(std::uint8_t *to, std::uint64_t first, std::uint64_t count) const;
};

} // namespace Tessaron
