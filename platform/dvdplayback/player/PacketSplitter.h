#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>

namespace Tessaron
{

enum class ElementaryKind : std::uint8_t { Video, MPEGAudio, AC3, DTS, LPCM, Subpicture };

/// A piece of one elementary stream.
struct ElementaryPiece {
    ElementaryKind kind = ElementaryKind::Video;
    std::uint8_t stream = 0; ///< from 0 within its kind
    std::optional<std::int64_t> presentation; ///< 90 kHz; of the first picture or frame that begins in the piece
    std::span<const std::uint8_t> bytes; ///< as the decoder of the kind takes them, LPCM with its own head of 3 bytes
};

inline constexpr std::size_t discSectorSize = 2048;

/// Tells the pieces of elementary streams in a sector of a program stream (ISO/IEC 13818-1 2.5.3, with the private
/// streams of DVD-Video). The bytes may be anything: what makes no sense is passed over. The pieces lie in the sector.
void splitSector(std::span<const std::uint8_t> sector, const std::function<void(const ElementaryPiece &)> &visitor);

} // namespace Tessaron
