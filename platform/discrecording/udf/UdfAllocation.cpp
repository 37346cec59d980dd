#include "platform/discrecording/udf/UdfAllocation.h"

#include "platform/discrecording/udf/UdfFields.h"
#include "platform/discrecording/udf/UdfTag.h"
#include "platform/foundation/ByteOrder.h"

#include <algorithm>

namespace Tessaron
{

namespace
{

// Fields of an allocation extent (ECMA-167 4/14.5), counted from 0.
namespace ExtentHead
{
constexpr std::size_t previousExtent = 16;
constexpr std::size_t descriptorsLength = 20;
} // namespace ExtentHead

/// The two highest bits of a length are the type of the extent (ECMA-167 4/14.14.1.1).
constexpr unsigned int extentTypeShift = 30;
/// Extent type 3: the descriptors go on in the extent.
constexpr std::uint32_t goesOnThere = 3u << extentTypeShift;

} // namespace

void UdfAllocation::storeDescriptors(std::uint8_t *to, std::uint64_t first, std::uint64_t count) const
{
    constexpr std::uint32_t blocksPerPart = longestPart / logicalBlockSize;
    for (std::uint64_t part = first; part < first + count; ++part, to += descriptorSize) {
        const std::uint64_t bytes = std::min<std::uint64_t>(longestPart, size - part * longestPart);
        storeUdfShortDescriptor(to, static_cast<std::uint32_t>(bytes),
                                static_cast<std::uint32_t>(block + part * blocksPerPart));
    }
}

std::size_t UdfAllocation::storeInEntry(std::uint8_t *to, std::uint32_t firstExtent) const
{
    if (extentCount() == 0) {
        storeDescriptors(to, 0, descriptorCount());
        return descriptorCount() * descriptorSize;
    }
    storeDescriptors(to, 0, entryCapacity - 1);
    storeUdfShortDescriptor(to + (entryCapacity - 1) * descriptorSize, goesOnThere | logicalBlockSize, firstExtent);
    return entryCapacity * descriptorSize;
}

void UdfAllocation::storeExtent(std::uint8_t *to, std::uint64_t index, std::uint32_t firstExtent) const
{
    const std::uint64_t first = entryCapacity - 1 + index * (extentCapacity - 1);
    const bool isLast = index + 1 == extentCount();
    const std::uint64_t count = isLast ? descriptorCount() - first : extentCapacity - 1;
    const auto here = static_cast<std::uint32_t>(firstExtent + index);
    std::uint64_t stored = count;
    storeDescriptors(to + extentHeadSize, first, count);
    if (!isLast) {
        storeUdfShortDescriptor(to + extentHeadSize + count * descriptorSize, goesOnThere | logicalBlockSize, here + 1);
        ++stored;
    }
    const std::uint64_t bytes = stored * descriptorSize;
    if (index > 0)
        storeLittleEndian<std::uint32_t>(to + ExtentHead::previousExtent, here - 1);
    storeLittleEndian<std::uint32_t>(to + ExtentHead::descriptorsLength, static_cast<std::uint32_t>(bytes));
    storeUdfTag({to, extentHeadSize + bytes}, UdfTag::AllocationExtent, here);
}

} // namespace Tessaron
