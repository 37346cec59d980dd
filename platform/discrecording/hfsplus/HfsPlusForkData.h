#pragma once

#include "platform/foundation/ByteOrder.h"

#include <cstdint>

namespace Tessaron
{

/// The block of the image with which the volume begins; its own blocks are counted from there. It lies in the 32 KiB
/// that no other filesystem uses, behind the partition map, so that the map and the volume share nothing.
inline constexpr std::uint64_t hfsPlusVolumeStart = 8;

/// Where the fields of a fork's description lie in it, counted from 0 (HFS Plus Volume Format, "Fork Data Structure").
struct HfsPlusForkField {
    static constexpr std::size_t length = 0;
    static constexpr std::size_t clumpSize = 8;
    static constexpr std::size_t blockCount = 12;
    static constexpr std::size_t extents = 16;
};

/// Bytes of an extent: its first block and the number of its blocks.
inline constexpr std::size_t hfsPlusExtentSize = 8;

/// `firstBlock` is counted in the volume.
inline void storeHfsPlusExtent(std::uint8_t *to, std::uint32_t firstBlock, std::uint32_t blockCount)
{
    storeBigEndian<std::uint32_t>(to, firstBlock);
    storeBigEndian<std::uint32_t>(to + sizeof firstBlock, blockCount);
}

/// Describes a fork in one extent; nothing is written for an empty one. `firstBlock` is counted in the image.
inline void storeHfsPlusForkData(std::uint8_t *to, std::uint64_t length, std::uint64_t firstBlock,
                                 std::uint64_t blockCount, std::uint32_t clumpSize = 0)
{
    if (length == 0)
        return;
    storeBigEndian<std::uint64_t>(to + HfsPlusForkField::length, length);
    storeBigEndian<std::uint32_t>(to + HfsPlusForkField::clumpSize, clumpSize);
    storeBigEndian<std::uint32_t>(to + HfsPlusForkField::blockCount, static_cast<std::uint32_t>(blockCount));
    storeHfsPlusExtent(to + HfsPlusForkField::extents, static_cast<std::uint32_t>(firstBlock - hfsPlusVolumeStart),
                       static_cast<std::uint32_t>(blockCount));
}

} // namespace Tessaron
