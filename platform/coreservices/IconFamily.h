#pragma once

#include <QByteArray>
#include <QImage>

#include <cstdint>
#include <vector>

namespace Tessaron
{

/// The 'icns' container: a header of four letters and the total length, then members of four letters, a length and
/// data; all lengths are big-endian and count their own 8 bytes. A picture is one member of colours, run-length coded
/// channel by channel, and one of an 8-bit mask, or, from 128 pixels on, also a PNG file.

/// Members of a family by the size that they serve, as selectors of IconRefToIconFamily().
enum IconFamilySelectors : std::uint32_t {
    kSelectorLarge32Bit = 0x00000008, ///< il32, 32 pixels
    kSelectorLarge8BitMask = 0x00000010, ///< l8mk
    kSelectorAllLargeData = 0x000000FF,
    kSelectorSmall32Bit = 0x00000800, ///< is32, 16 pixels
    kSelectorSmall8BitMask = 0x00001000, ///< s8mk
    kSelectorAllSmallData = 0x0000FF00,
    kSelectorHuge32Bit = 0x00080000, ///< ih32, 48 pixels
    kSelectorHuge8BitMask = 0x00100000, ///< h8mk
    kSelectorAllHugeData = 0x00FF0000,
    kSelectorThumbnail = 0x0F000000, ///< it32, t8mk (128 pixels) and PNG members of 128 and 256 pixels
    kSelectorAllAvailableData = 0xFFFFFFFF,
};

/// A container with the selected members for which there is a picture of the right size (16, 32, 48, 128, 256 pixels
/// square); empty when there is none. Pictures of other sizes are left out.
[[nodiscard]] QByteArray iconFamilyFromImages(const std::vector<QImage> &images, std::uint32_t selectors);

/// The picture of a container that serves a side of `preferredSide` pixels best: that size, else the next larger one,
/// else the largest; with 0 the largest. Null for bytes that are not a container and for a container without a picture
/// that can be read. Safe for any bytes.
[[nodiscard]] QImage imageFromIconFamily(QByteArrayView family, int preferredSide);

/// All pictures of a container that can be read, in the order of their members. Safe for any bytes.
[[nodiscard]] std::vector<QImage> imagesFromIconFamily(QByteArrayView family);

} // namespace Tessaron
