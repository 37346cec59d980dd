#pragma once

#include "platform/discrecording/content/ContentTree.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace Tessaron
{

/// Where a master directory block begins in the first block of the image, and its copy in the last one, bytes.
inline constexpr std::size_t hfsWrapperOffset = 1024;

/// Blocks in one unit of a wrapper around a volume of `volumeBlocks` blocks: the least power of two with which the
/// 65,534 units that a wrapper can count are enough.
[[nodiscard]] std::uint64_t hfsWrapperUnit(std::uint64_t volumeBlocks);

/// Writes 162 bytes of a master directory block, which tells systems that read the image from its first byte that an
/// HFS+ volume is embedded in it, and where (HFS Plus Volume Format, "HFS Wrapper"). `volumeBlocks` must be whole units
/// of `unit` blocks. `to` holds zeros.
void storeHfsWrapper(std::uint8_t *to, FileTime time, std::u16string_view name, std::uint64_t volumeBlocks,
                     std::uint64_t unit);

} // namespace Tessaron
