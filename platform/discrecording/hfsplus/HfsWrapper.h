#pragma once

#include "platform/discrecording/content/ContentTree.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace Tessaron
{

/// Where a master directory block begins in the first block of the image, and its copy in the last one, bytes.
inline constexpr std::size_t hfsWrapperOffset = 1024;

/// Blocks in one unit of a wrapper around so many blocks of a volume: it can count 65,534 units. A power of two.
[[nodiscard]] std::uint64_t hfsWrapperUnit(std::uint64_t volumeBlocks);

/// Whom a wrapper leads to the volume.
enum class HfsWrapperReaders : std::uint8_t {
    All, ///< where the image has no other filesystem that such readers look for
    /// All but those that look for every filesystem that begins at a fixed place. libblkid is one: when it finds a
    /// second one, it calls the device ambivalent, and mount(8) and desktops then mount none. So the wrapper counts in
    /// units of a sector's multiple plus one byte and embeds the volume from the second unit on: who divides into whole
    /// sectors arrives at the volume, who multiplies bytes arrives beside it.
    NotProbers,
};

/// True when such a wrapper can be written: the volume's place leaves room for no more than 8 blocks in a unit before
/// it, so that the wrapper of NotProbers reaches up to 1 GiB.
[[nodiscard]] bool canWrap(std::uint64_t unit, HfsWrapperReaders readers);

/// Writes 162 bytes of a master directory block, which tells who reads the image from its first byte that an HFS+
/// volume is embedded in it, and where (HFS Plus Volume Format, "HFS Wrapper"). `volumeBlocks` must be whole units of
/// `unit` blocks. `to` holds zeros.
void storeHfsWrapper(std::uint8_t *to, FileTime time, std::u16string_view name, std::uint64_t volumeBlocks,
                     std::uint64_t unit, HfsWrapperReaders readers);

} // namespace Tessaron
