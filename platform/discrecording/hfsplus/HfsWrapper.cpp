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
constexpr std::uint64_t mostUnits = 65534; // and one before the volume
constexpr std::uint64_t sectorsPerBlock = logicalBlockSize / 512;
constexpr std::size_t longestName = 27;

} // namespace

std::uint64_t hfsWrapperUnit(std::uint64_t volumeBlocks)
{
    std::uint64_t unit = 1;
    while ((volumeBlocks + unit - 1) / unit > mostUnits)
        unit *= 2;
    return unit;
}

bool canWrap(std::uint64_t unit, HfsWrapperReaders readers)
{
    return readers == HfsWrapperReaders::All || unit <= hfsPlusVolumeStart;
}

void storeHfsWrapper(std::uint8_t *to, FileTime time, std::u16string_view name, std::uint64_t volumeBlocks,
                     std::uint64_t unit, HfsWrapperReaders readers)
{
    const auto units = static_cast<std::uint16_t>(volumeBlocks / unit);
    const std::uint16_t unitsBefore = readers == HfsWrapperReaders::All ? 0 : 1;
    const auto unitBytes = static_cast<std::uint32_t>(unit * logicalBlockSize + unitsBefore);
    const std::uint64_t firstUnit = (hfsPlusVolumeStart - unitsBefore * unit) * sectorsPerBlock;
    storeBigEndian<std::uint16_t>(to, wrapperSignature);
    storeBigEndian<std::uint32_t>(to + 2, hfsPlusDate(time)); // created
    storeBigEndian<std::uint32_t>(to + 6, hfsPlusDate(time)); // modified
    storeBigEndian<std::uint16_t>(to + 10, wrapperAttributes);
    storeBigEndian<std::uint16_t>(to + 18, static_cast<std::uint16_t>(unitsBefore + units));
    storeBigEndian<std::uint32_t>(to + 20, unitBytes);
    storeBigEndian<std::uint32_t>(to + 24, unitBytes); // clump size
    storeBigEndian<std::uint16_t>(to + 28, static_cast<std::uint16_t>(firstUnit));
    storeBigEndian<std::uint32_t>(to + 30, 16); // next free ID
    const std::u16string_view shown = name.substr(0, longestName);
    to[36] = static_cast<std::uint8_t>(shown.size());
    std::ranges::transform(shown, to + 37, [](char16_t unitOfName) {
        return unitOfName >= 0x20 && unitOfName < 0x7F ? static_cast<std::uint8_t>(unitOfName) : std::uint8_t{'_'};
    });
    storeBigEndian<std::uint16_t>(to + 124, embeddedSignature);
    storeBigEndian<std::uint16_t>(to + 126, unitsBefore);
    storeBigEndian<std::uint16_t>(to + 128, units);
}

} // namespace Tessaron
