#include "platform/discrecording/hfsplus/ApplePartitionMap.h"

#include "platform/foundation/ByteOrder.h"

#include <limits>
#include <string_view>

namespace Tessaron
{

namespace
{

constexpr std::uint16_t driverSignature = 0x4552; // "ER"
constexpr std::uint16_t partitionSignature = 0x504D; // "PM"

constexpr std::uint32_t smallUnit = 512;
/// The first unit is the driver descriptor's.
constexpr std::uint32_t mapStart = 1;
constexpr std::uint32_t entryCount = 2;

enum Status : std::uint32_t {
    IsValid = 1u << 0,
    IsAllocated = 1u << 1,
    IsInUse = 1u << 2,
    IsReadable = 1u << 4,
};
/// Not writable: a write would damage the other filesystems of the disc.
constexpr std::uint32_t readOnlyStatus = IsValid | IsAllocated | IsInUse | IsReadable;

// Fields of the driver descriptor (Inside Macintosh, "The Partition Map"), counted from 0.
namespace Driver
{
constexpr std::size_t signature = 0;
constexpr std::size_t unit = 2;
constexpr std::size_t unitCount = 4;
} // namespace Driver

// Fields of an entry of the map.
namespace Entry
{
constexpr std::size_t signature = 0;
constexpr std::size_t entryCount = 4;
constexpr std::size_t start = 8;
constexpr std::size_t count = 12;
constexpr std::size_t name = 16;
constexpr std::size_t type = 48;
constexpr std::size_t dataCount = 84;
constexpr std::size_t status = 88;
} // namespace Entry

void storeText(std::uint8_t *to, std::string_view text)
{
    for (const char character : text)
        *to++ = static_cast<std::uint8_t>(character);
}

} // namespace

std::uint32_t ApplePartitionMap::unitFor(std::uint64_t imageBlocks)
{
    constexpr std::uint64_t mostUnits = std::numeric_limits<std::uint32_t>::max();
    return imageBlocks * (logicalBlockSize / smallUnit) <= mostUnits ? smallUnit : logicalBlockSize;
}

void ApplePartitionMap::store(std::span<std::uint8_t, size> to) const
{
    std::uint8_t *const driver = to.data();
    storeBigEndian<std::uint16_t>(driver + Driver::signature, driverSignature);
    storeBigEndian<std::uint16_t>(driver + Driver::unit, static_cast<std::uint16_t>(unit));
    storeBigEndian<std::uint32_t>(driver + Driver::unitCount,
                                  static_cast<std::uint32_t>(imageBlocks * (logicalBlockSize / unit)));
    storeEntry(driver + std::size_t{mapStart} * unit, true);
    storeEntry(driver + std::size_t{mapStart + 1} * unit, false);
}

void ApplePartitionMap::storeEntry(std::uint8_t *to, bool isMap) const
{
    const std::uint64_t unitsPerBlock = logicalBlockSize / unit;
    const std::uint64_t volumeStart = volume.start * unitsPerBlock;
    // The map's own partition reaches up to the volume.
    const auto start = static_cast<std::uint32_t>(isMap ? mapStart : volumeStart);
    const auto count = static_cast<std::uint32_t>(isMap ? volumeStart - mapStart : volume.count * unitsPerBlock);
    storeBigEndian<std::uint16_t>(to + Entry::signature, partitionSignature);
    storeBigEndian<std::uint32_t>(to + Entry::entryCount, entryCount);
    storeBigEndian<std::uint32_t>(to + Entry::start, start);
    storeBigEndian<std::uint32_t>(to + Entry::count, count);
    storeText(to + Entry::name, isMap ? "Apple" : "HFS+");
    storeText(to + Entry::type, isMap ? "Apple_partition_map" : "Apple_HFS");
    storeBigEndian<std::uint32_t>(to + Entry::dataCount, count); // all of it is data, from its first unit on
    storeBigEndian<std::uint32_t>(to + Entry::status, readOnlyStatus);
}

} // namespace Tessaron
