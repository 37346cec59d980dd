#include "platform/discrecording/hfsplus/ApplePartitionMap.h"

#include "platform/foundation/ByteOrder.h"

#include <string_view>

namespace Tessaron
{

namespace
{

constexpr std::uint16_t driverSignature = 0x4552; // "ER"
constexpr std::uint16_t partitionSignature = 0x504D; // "PM"

/// Where the map begins.
constexpr std::uint64_t mapStart = 1;
constexpr std::uint32_t entryCount = applePartitionMapBlocks - 1;

/// Valid, allocated, in use, and readable, but not writable: a write would damage the other filesystems of the disc.
constexpr std::uint32_t readOnlyStatus = 0x17;

void storeText(std::uint8_t *to, std::string_view text)
{
    for (const char character : text)
        *to++ = static_cast<std::uint8_t>(character);
}

} // namespace

void storeAppleDriverDescriptor(std::span<std::uint8_t> block, std::uint32_t imageBlocks)
{
    std::uint8_t *const to = block.data();
    storeBigEndian<std::uint16_t>(to, driverSignature);
    storeBigEndian<std::uint16_t>(to + 2, logicalBlockSize);
    storeBigEndian<std::uint32_t>(to + 4, imageBlocks);
}

void storeApplePartition(std::span<std::uint8_t> block, std::uint32_t index, const BlockRun &volume)
{
    const bool isMap = index == 0;
    // The map may have all blocks up to the volume.
    const BlockRun run = isMap ? BlockRun{mapStart, volume.start - mapStart} : volume;
    const auto count = static_cast<std::uint32_t>(run.count);
    std::uint8_t *const to = block.data();
    storeBigEndian<std::uint16_t>(to, partitionSignature);
    storeBigEndian<std::uint32_t>(to + 4, entryCount);
    storeBigEndian<std::uint32_t>(to + 8, static_cast<std::uint32_t>(run.start));
    storeBigEndian<std::uint32_t>(to + 12, count);
    storeText(to + 16, isMap ? "Apple" : "HFS+");
    storeText(to + 48, isMap ? "Apple_partition_map" : "Apple_HFS");
    storeBigEndian<std::uint32_t>(to + 84, count); // all of it is data, from its first block on
    storeBigEndian<std::uint32_t>(to + 88, readOnlyStatus);
}

} // namespace Tessaron
