#pragma once

#include "platform/foundation/FileTime.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace Tessaron
{

/// The trees that an image can have, a bit each, as its record of contents has them.
enum ImageTree : std::uint8_t {
    ImageTreeISO9660 = 1,
    ImageTreeRockRidge = 2,
    ImageTreeJoliet = 4,
    ImageTreeUDF = 8,
    ImageTreeHFSPlus = 16,
};

/// What is known of a whole image once everything in it has got its place.
struct ImageFacts {
    std::uint32_t blocks = 0;
    std::uint32_t firstBlock = 0; ///< of the image on its disc
    std::uint8_t trees = 0; ///< that are written: bits of ImageTree
    FileTime time; ///< of the volume
};

inline constexpr std::size_t contentsRecordSize = 40;
/// Where the record lies in the system area of an image, bytes: in its last block, which neither partition maps nor
/// boot code reach.
inline constexpr std::size_t contentsRecordOffset = std::size_t{15} * 2048;

/// The record by which a check knows what must be in an image, even when nothing of it can be found any more. Every
/// tree of the image holds it, and so does the system area (docs/damage.md).
[[nodiscard]] std::array<std::uint8_t, contentsRecordSize> contentsRecord(const ImageFacts &facts);

/// The trees alone, for a place that has no room for more.
[[nodiscard]] std::uint32_t shortContentsRecord(const ImageFacts &facts);

} // namespace Tessaron
