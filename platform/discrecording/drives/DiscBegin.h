#pragma once

#include "platform/foundation/NSError.h"

#include <cstdint>
#include <span>
#include <vector>

namespace Tessaron
{

class GrabbedDrive;
struct DriveGrowth;

/// The blocks at the begin of a disc by which filesystems are found: system area and volume descriptors.
inline constexpr std::uint32_t blocksOfDiscBegin = 32;

/// The begin of a disc that is added to. `now` is what it has at the moment, `added` the begin of what was added, both
/// blocksOfDiscBegin blocks. The result has the system area and the descriptors of what was added; behind them stays
/// what is there, but for descriptors of earlier filesystems, which would be found beside the new ones. Empty when
/// `added` has no whole set of descriptors.
[[nodiscard]] std::vector<std::uint8_t> grownDiscBegin(std::span<const std::uint8_t> now,
                                                       std::span<const std::uint8_t> added);

/// Writes that to the disc, and takes its UDF away where the growth says so. What the disc had is to be seen as before
/// until `*isTouched` is true.
[[nodiscard]] NSError writeDiscBegin(GrabbedDrive &drive, const DriveGrowth &growth,
                                     std::span<const std::uint8_t> added, bool *isTouched);

} // namespace Tessaron
