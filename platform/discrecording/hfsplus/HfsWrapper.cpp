#include "platform/discrecording/hfsplus/HfsWrapper.h"

#include "platform/discrecording/hfsplus/HfsPlusDates.h"
#include "platform/discrecording/hfsplus/HfsPlusForkData.h"
#include "platform/discrecording/image/BlockImage.h"
#include "platform/foundation/ByteOrder.h"

#include <algorithm>

namespace Tessaron
{

namespace
{

constexpr std::uint16_t wrapperSignature = 0x4244; // "BD"
constexpr std::uint16_t embeddedSignature = 0x482B; // "H+"
/// Unmounted, with blocks that are not its own, locked by software: what makes readers believe in an embedded volume.
constexpr std::uint16_t wrapperAttributes = 0x8300;
constexpr std::uint64_t mostUnits = 65534;
constexpr std::uint64_t sectorsPerBlock = logicalBlockSize / 512;
constexpr std::size_t longestName = 27;

/// Where fields of a master directory block lie.
enum Field : std::size_t {
    Created = 2,
    Modified = 6,
    Attributes = 10,
    UnitCount = 18,
    UnitSize = 20,
    ClumpSize = 24,
    FirstUnit = 28,
    NextId = 30,
    NameLength = 36,
    Name = 37,
    EmbeddedSignature = 124,
    EmbeddedStart = 126,
    EmbeddedCount = 128,
};

} // namespace

std::uint64_t hfsWrapperUnit(std::uint64_t volumeBlocks)
{
    std::uint64_t unit = 1;
    while ((volumeBlocks + unit - 1) / unit > mostUnits)
        unit *= 2;
    return unit;
}

void storeHfsWrapper(std::uint8_t *to, FileTime time, std::u16string_view name, std::uint64_t volumeBlocks,
                     std::uint64_t unit)
{
    const auto units = static_cast<std::uint16_t>(volumeBlocks / unit);
    const auto unitBytes = static_cast<std::uint32_t>(unit * logicalBlockSize);
    const std::uint64_t firstUnit = hfsPlusVolumeStart * sectorsPerBlock;
    storeBigEndian<std::uint16_t>(to, wrapperSignature);
    storeBigEndian<std::uint32_t>(to + Created, hfsPlusDate(time));
    storeBigEndian<std::uint32_t>(to + Modified, hfsPlusDate(time));
    storeBigEndian<std::uint16_t>(to + Attributes, wrapperAttributes);
    storeBigEndian<std::uint16_t>(to + UnitCount, units);
    storeBigEndian<std::uint32_t>(to + UnitSize, unitBytes);
    storeBigEndian<std::uint32_t>(to + ClumpSize, unitBytes);
    storeBigEndian<std::uint16_t>(to + FirstUnit, static_cast<std::uint16_t>(firstUnit));
    storeBigEndian<std::uint32_t>(to + NextId, 16);
    const std::u16string_view shown = name.substr(0, longestName);
    to[NameLength] = static_cast<std::uint8_t>(shown.size());
    std::ranges::transform(shown, to + Name, [](char16_t unitOfName) {
        return unitOfName >= 0x20 && unitOfName < 0x7F ? static_cast<std::uint8_t>(unitOfName) : std::uint8_t{'_'};
    });
    storeBigEndian<std::uint16_t>(to + EmbeddedSignature, embeddedSignature);
    storeBigEndian<std::uint16_t>(to + EmbeddedStart, std::uint16_t{0});
    storeBigEndian<std::uint16_t>(to + EmbeddedCount, units);
}

} // namespace Tessaron
