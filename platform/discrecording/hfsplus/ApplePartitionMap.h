#pragma once

#include "platform/discrecording/image/ImageLayout.h"

#include <cstdint>
#include <span>

namespace Tessaron
{

/// Blocks that the driver descriptor and the partition map take, from block 0 on.
inline constexpr std::uint32_t applePartitionMapBlocks = 3;

/// Writes into block 0 the driver descriptor, which says that the map counts in blocks of 2048 bytes; only the first
/// 512 bytes are touched.
void storeAppleDriverDescriptor(std::span<std::uint8_t> block, std::uint32_t imageBlocks);

/// Writes into block 1 + `index` an entry of the map: 0 the map itself, 1 the HFS+ volume, which the run is. Its first
/// 512 bytes are touched.
void storeApplePartition(std::span<std::uint8_t> block, std::uint32_t index, const BlockRun &volume);

} // namespace Tessaron
