#pragma once

#include <QByteArray>

#include <array>
#include <cstdint>
#include <string_view>

namespace Tessaron
{

/// A size of picture in an icon family and the members that hold it.
struct IconFamilyMember {
    int side; ///< pixels
    std::string_view colours;
    std::string_view mask;
    std::string_view png; ///< empty where the size has no such member
    std::uint32_t colourSelector;
    std::uint32_t maskSelector;
};

inline constexpr std::array<IconFamilyMember, 5> iconFamilyMembers = {{
    {16, "is32", "s8mk", "", 0x00000800, 0x00001000},
    {32, "il32", "l8mk", "", 0x00000008, 0x00000010},
    {48, "ih32", "h8mk", "", 0x00080000, 0x00100000},
    {128, "it32", "t8mk", "ic07", 0x01000000, 0x02000000},
    {256, "", "", "ic08", 0x04000000, 0},
}};

inline constexpr qsizetype iconFamilyHeaderBytes = 8;
/// The 128-pixel colours start with four zero bytes.
inline constexpr qsizetype thumbnailPadding = 4;

/// One channel of a colour member in runs: a byte from 0x80 on, less 125, is the count (3 to 130) of the byte that
/// follows; a byte below, plus 1, is the count of bytes that follow as they are.
void appendRunLengthCoded(QByteArray &to, const QByteArray &channel);

/// Decodes a channel of exactly `size` bytes from the front of `from`, which is moved past it. False when the data ends
/// too soon or a run goes beyond the channel.
[[nodiscard]] bool takeRunLengthCoded(QByteArrayView &from, qsizetype size, QByteArray &channel);

} // namespace Tessaron
