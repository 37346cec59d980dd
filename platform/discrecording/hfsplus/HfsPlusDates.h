#pragma once

#include "platform/discrecording/content/ContentTree.h"

#include <algorithm>
#include <cstdint>

namespace Tessaron
{

/// From 1 January 1904, where HFS+ begins to count, to 1970, in seconds.
inline constexpr std::int64_t hfsPlusEpochDistance = 2'082'844'800;

/// True when the catalog can say the time: until 6 February 2040, 06:28:15.
[[nodiscard]] constexpr bool fitsHfsPlusDate(FileTime time)
{
    return time.seconds >= -hfsPlusEpochDistance && time.seconds <= std::int64_t{UINT32_MAX} - hfsPlusEpochDistance;
}

/// Seconds since 1904, UTC; a time out of range becomes the first or last that is in range.
[[nodiscard]] constexpr std::uint32_t hfsPlusDate(FileTime time)
{
    const std::int64_t seconds =
        std::clamp(time.seconds, -hfsPlusEpochDistance, std::int64_t{UINT32_MAX} - hfsPlusEpochDistance);
    return static_cast<std::uint32_t>(seconds + hfsPlusEpochDistance);
}

} // namespace Tessaron
