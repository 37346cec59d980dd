#include "platform/discrecording/drives/DiscBegin.h"

#include "platform/discrecording/burn/BurnErrors.h"
#include "platform/discrecording/drives/DriveGrowth.h"
#include "platform/discrecording/drives/GrabbedDrive.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace Tessaron
{

namespace
{

constexpr std::size_t blockSize = 2048;
constexpr std::uint32_t firstDescriptor = 16; // ECMA-119 6.2.1
constexpr std::uint8_t terminatorType = 255; // ECMA-119 8.3.1
constexpr std::uint32_t udfAnchor = 256; // ECMA-167 3/8.4.2.1
constexpr std::uint8_t anchorTag = 2; // ECMA-167 3/7.2.1
constexpr std::uint32_t writtenAtOnce = 16; // blocks: 32 KiB, which every disc that is overwritten takes

/// The standard identifier of a descriptor (ECMA-119 8.1.2, ECMA-167 2/9.1.2).
std::string_view identifierOf(std::span<const std::uint8_t> disc, std::uint32_t block)
{
    constexpr std::size_t offset = 1;
    constexpr std::size_t length = 5;
    return {reinterpret_cast<const char *>(disc.data()) + block * blockSize + offset, length};
}

bool isVolumeDescriptor(std::span<const std::uint8_t> disc, std::uint32_t block)
{
    return identifierOf(disc, block) == "CD001";
}

/// Of ISO 9660, or of those by which UDF is recognised.
bool isDescriptor(std::span<const std::uint8_t> disc, std::uint32_t block)
{
    static constexpr std::array<std::string_view, 7> known = {"CD001", "BEA01", "NSR02", "NSR03",
                                                              "TEA01", "BOOT2", "CDW02"};
    return std::find(known.begin(), known.end(), identifierOf(disc, block)) != known.end();
}

/// Behind the terminator; 0 without one.
std::uint32_t endOfDescriptors(std::span<const std::uint8_t> disc)
{
    for (std::uint32_t block = firstDescriptor; block < blocksOfDiscBegin; ++block) {
        if (!isVolumeDescriptor(disc, block))
            return 0;
        if (disc[block * blockSize] == terminatorType)
            return block + 1;
    }
    return 0;
}

} // namespace

std::vector<std::uint8_t> grownDiscBegin(std::span<const std::uint8_t> now, std::span<const std::uint8_t> added)
{
    const std::uint32_t end = endOfDescriptors(added);
    if (end == 0)
        return {};
    std::vector<std::uint8_t> begin(now.begin(), now.end());
    for (std::uint32_t block = firstDescriptor; block < blocksOfDiscBegin && isDescriptor(now, block); ++block)
        std::fill_n(begin.begin() + std::ptrdiff_t(block * blockSize), blockSize, std::uint8_t(0));
    std::copy_n(added.begin(), end * blockSize, begin.begin());
    return begin;
}

NSError writeDiscBegin(GrabbedDrive &drive, const DriveGrowth &growth, std::span<const std::uint8_t> added,
                       bool *isTouched)
{
    std::vector<std::uint8_t> now(blocksOfDiscBegin * blockSize);
    if (NSError error = drive.readBlocks(0, blocksOfDiscBegin, reinterpret_cast<char *>(now.data())))
        return error;
    const std::vector<std::uint8_t> begin = grownDiscBegin(now, added);
    if (begin.empty())
        return burnError(paramErr, QStringLiteral("what was added has no volume descriptors"));
    std::vector<std::uint8_t> anchor(writtenAtOnce * blockSize);
    if (growth.endsUDF) {
        if (NSError error = drive.readBlocks(udfAnchor, writtenAtOnce, reinterpret_cast<char *>(anchor.data())))
            return error;
    }
    // The descriptors go first: with them everything is seen that the disc has, and without them nothing new.
    *isTouched = true;
    const std::span<const std::uint8_t> whole(begin);
    for (const std::uint32_t first : {firstDescriptor, 0U}) {
        if (NSError error = drive.overwriteBlocks(first, whole.subspan(first * blockSize, writtenAtOnce * blockSize)))
            return error;
    }
    if (!growth.endsUDF || anchor[0] != anchorTag || anchor[1] != 0)
        return {};
    std::fill_n(anchor.begin(), blockSize, std::uint8_t(0));
    return drive.overwriteBlocks(udfAnchor, anchor);
}

} // namespace Tessaron
