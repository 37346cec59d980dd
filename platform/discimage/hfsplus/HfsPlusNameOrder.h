#pragma once

#include <cstdint>
#include <span>

namespace Tessaron
{

/// Compares two names as the catalog of an HFS+ volume orders them: negative when the first comes before the other, 0
/// when they are the same name. Letters of either case are the same, some characters do not count (HFS Plus Volume
/// Format, "Case-Insensitive String Comparison Algorithm"). The names are UTF-16, big-endian, without their lengths; a
/// last odd byte is ignored.
[[nodiscard]] int compareHfsPlusNames(std::span<const std::uint8_t> one, std::span<const std::uint8_t> other);

/// The same without regard for anything but the units, as a volume of the HFSX kind may have it.
[[nodiscard]] int compareHfsxNames(std::span<const std::uint8_t> one, std::span<const std::uint8_t> other);

} // namespace Tessaron
