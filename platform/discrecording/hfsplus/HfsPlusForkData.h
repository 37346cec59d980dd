#pragma once

#include "platform/foundation/ByteOrder.h"

#include <cstdint>

namespace Tessaron
{

/// The block of the image with which the volume begins; its own blocks are counted from there. It lies in the 32 KiB
/// that no other filesystem uses, behind the partition map, so that the map and the volume share nothing.
inline constexpr std::uint64_t hfsPlusVolumeStart = 8;

/// Bytes of what the volume says of a fork (HFS Plus Volume Format, "Fork Data Structure").
inline constexpr std::size_t hfsPlusForkDataSize = 80;

/// Describes a fork in one extent; nothing is written for an empty one. `firstBlock` is counted in the image.
inline void storeHfsPlusForkData(std::uint8_t *to, std::uint64_t length, std::uint64_t firstBlock,
                                 std::uint64_t blockCount, std::uint32_t clumpSize = 0)
{
    if (length == 0)
        return;
    storeBigEndian<std::uint64_t>(to, length);
    storeBigEndian<std::uint32_t>(to + 8, clumpSize);
    storeBigEndian<std::uint32_t>(to + 12, static_cast<std::uint32_t>(blockCount));
    storeBigEndian<std::uint32_t>(to + 16, static_cast<std::uint32_t>(firstBlock - hfsPlusVolumeStart));
    storeBigEndian<std::uint32_t>(to + 20, static_cast<std::uint32_t>(blockCount));
}

} // namespace Tessaron
