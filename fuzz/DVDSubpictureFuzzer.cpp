#include "fuzz/FuzzTarget.h"

#include "platform/dvdplayback/player/Subpicture.h"

#include <algorithm>
#include <vector>

/// A sub-picture of a disc, behind a byte that says which size the video has, and two that cut the packet in two. It is
/// laid over a picture, with a button in other colours.
int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    using namespace Tessaron;
    constexpr std::size_t sizeOfHead = 3;
    if (size < sizeOfHead)
        return 0;
    struct Size {
        int width, height;
    };
    constexpr std::array<Size, 4> sizes = {{{720, 480}, {704, 576}, {352, 288}, {352, 240}}};
    const auto [width, height] = sizes[bytes[0] % sizes.size()];
    const std::span<const std::uint8_t> packet(bytes + sizeOfHead, size - sizeOfHead);
    const std::size_t cut = std::min<std::size_t>(packet.size(), std::size_t(bytes[1]) << 8 | bytes[2]);
    static const std::unique_ptr<SubpictureDecoder> decoder = SubpictureDecoder::create();
    require(decoder != nullptr, "there is a decoder");
    decoder->forget();
    std::optional<Subpicture> subpicture = decoder->add(packet.first(cut), true);
    if (!subpicture)
        subpicture = decoder->add(packet.subspan(cut), false);
    if (!subpicture)
        return 0;
    const PictureArea &area = subpicture->area;
    require(area.left < area.right && area.top < area.bottom, "a picture is not empty");
    require(subpicture->values.size() == std::size_t(area.right - area.left) * std::size_t(area.bottom - area.top),
            "each sample has a value");
    require(
        std::all_of(subpicture->values.begin(), subpicture->values.end(), [](std::uint8_t value) { return value < 4; }),
        "a value has two bits");
    ColourTable colours;
    for (std::size_t index = 0; index < colours.size(); ++index)
        colours[index] = std::uint32_t(index * 0x0f0f0f);
    const ButtonColours button = {{width / 4, height / 4, width, height / 2}, coloursOfButton(0x3210ff0f)};
    // Of exactly the size, so that a sanitizer sees a write beyond it.
    std::vector<std::uint8_t> pixels(std::size_t(width) * std::size_t(height) * 4);
    layOver(*subpicture, colours, button, pixels.data(), std::size_t(width) * 4, width, height);
    return 0;
}
