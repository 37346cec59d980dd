#pragma once

#include "platform/dvdplayback/player/LibraryHandles.h"

#include <cstdint>
#include <span>

namespace Tessaron
{

/// True for a sector of a program stream whose contents are scrambled: the scrambling control of its packet is not 0
/// (ISO/IEC 13818-1 2.4.3.7). False for any other bytes. A sector has 2048 bytes.
[[nodiscard]] bool isScrambledSector(std::span<const std::uint8_t> sector);

/// What a look at the contents of a title set has found.
enum class ContentState : std::uint8_t {
    Clear,
    Scrambled,
    Unreadable, ///< the system refuses to read them, as a drive does that wants a key first
    Missing,
};

/// Looks at a few places of the titles' contents of a title set.
[[nodiscard]] ContentState stateOfContents(dvd_reader_t *disc, int titleSet);

} // namespace Tessaron
