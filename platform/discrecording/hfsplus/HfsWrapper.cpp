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
// Attributes of the wrapper. Only with all of them do readers believe in an embedded volume.
constexpr std::uint16_t unmounted = 1u << 8;
constexpr std::uint16_t sparedBlocks = 1u << 9; // some that are not the wrapper's own
constexpr std::uint16_t softwareLock = 1u << 15;
/// The IDs below are the format's own.
constexpr std::uint32_t firstFreeId = 16;
constexpr std::uint64_t mostUnits = 65534;
constexpr std::uint64_t sectorsPerBlock = logicalBlockSize / 512;
constexpr std::size_t longestName = 27;

// Fields of a master directory block (Inside Macintosh, "Master Directory Blocks"), counted from 0.
namespace Field
{
constexpr std::size_t signature = 0;
constexpr std::size_t creationDate = 2;
constexpr std::size_t modificationDate = 6;
constexpr std::size_t attributes = 10;
constexpr std::size_t unitCount = 18;
constexpr std::size_t unitSize = 20;
constexpr std::size_t clumpSize = 24;
constexpr std::size_t firstUnit = 28;
constexpr std::size_t nextId = 30;
constexpr std::size_t nameLength = 36;
constexpr std::size_t name = 37;
constexpr std::size_t embeddedSignature = 124;
constexpr std::size_t embeddedStart = 126;
constexpr std::size_t embeddedCount = 128;
} // namespace Field

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
    storeBigEndian<std::uint16_t>(to + Field::signature, wrapperSignature);
    storeBigEndian<std::uint32_t>(to + Field::creationDate, hfsPlusDate(time));
    storeBigEndian<std::uint32_t>(to + Field::modificationDate, hfsPlusDate(time));
    storeBigEndian<std::uint16_t>(to + Field::attributes, unmounted | sparedBlocks | softwareLock);
    storeBigEndian<std::uint16_t>(to + Field::unitCount, units);
    storeBigEndian<std::uint32_t>(to + Field::unitSize, unitBytes);
    storeBigEndian<std::uint32_t>(to + Field::clumpSize, unitBytes);
    storeBigEndian<std::uint16_t>(to + Field::firstUnit, static_cast<std::uint16_t>(firstUnit));
    storeBigEndian<std::uint32_t>(to + Field::nextId, firstFreeId);
    const std::u16string_view shown = name.substr(0, longestName);
    to[Field::nameLength] = static_cast<std::uint8_t>(shown.size());
    std::ranges::transform(shown, to + Field::name, [](char16_t unitOfName) {
        return unitOfName >= 0x20 && unitOfName < 0x7F ? static_cast<std::uint8_t>(unitOfName) : std::uint8_t{'_'};
    });
    storeBigEndian<std::uint16_t>(to + Field::embeddedSignature, embeddedSignature);
    storeBigEndian<std::uint16_t>(to + Field::embeddedStart, std::uint16_t{0});
    storeBigEndian<std::uint16_t>(to + Field::embeddedCount, units);
}

} // namespace Tessaron
