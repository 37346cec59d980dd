#pragma once

#include "platform/dvdplayback/player/DecoderHandles.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace Tessaron
{

/// A rectangle of a picture, in its samples; right and bottom are outside.
struct PictureArea {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;

    friend bool operator==(const PictureArea &, const PictureArea &) = default;
};

/// Which of the disc's 16 colours each of the four values of a sub-picture has, and how much it covers, 0 to 15.
struct SubpictureColours {
    std::array<std::uint8_t, 4> colour{};
    std::array<std::uint8_t, 4> cover{};

    friend bool operator==(const SubpictureColours &, const SubpictureColours &) = default;
};

/// Colours as the buttons of a menu have them: four bits for each value, the cover in the lower half.
[[nodiscard]] SubpictureColours coloursOfButton(std::uint32_t packed);

/// A picture of four values to lay over the video.
struct Subpicture {
    PictureArea area;
    std::vector<std::uint8_t> values; ///< line by line, each 0 to 3
    SubpictureColours colours;
    bool isForced = false; ///< to be shown even without subtitles, as that of a menu is
    std::int64_t start = 0; ///< 90 kHz, after the presentation time of its packet
    std::optional<std::int64_t> end; ///< likewise; absent for one that stays
};

/// Puts sub-pictures together and decodes them, of one stream. Broken ones are left out.
class SubpictureDecoder
{
public:
    /// Null when there is no decoder, or no memory.
    [[nodiscard]] static std::unique_ptr<SubpictureDecoder> create();

    /// Takes the next bytes of the stream; the picture that they complete.
    [[nodiscard]] std::optional<Subpicture> add(std::span<const std::uint8_t> bytes, bool isBegin);
    void forget() { m_bytes.clear(); }

private:
    SubpictureDecoder() = default;
    [[nodiscard]] std::optional<Subpicture> decode();

    DecoderContext m_context;
    std::vector<std::uint8_t> m_bytes; ///< of the picture that is not complete
};

/// Colours of a disc, as its tables have them (0, Y, Cr, Cb from the highest byte down).
using ColourTable = std::array<std::uint32_t, 16>;

/// Lays a sub-picture over 32-bit pixels of that size, whose lines are `stride` bytes apart; inside of `button`, in
/// other colours. Both are of a plane of 720 samples and all lines of the standard, whatever size the picture has.
struct ButtonColours {
    PictureArea area;
    SubpictureColours colours;

    friend bool operator==(const ButtonColours &, const ButtonColours &) = default;
};
void layOver(const Subpicture &subpicture, const ColourTable &table, const std::optional<ButtonColours> &button,
             std::uint8_t *pixels, std::size_t stride, int width, int height);

} // namespace Tessaron
