#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Tessaron
{

/// One character of a file name given as bytes.
struct NameCharacter {
    char32_t codePoint = 0; ///< U+FFFD for a byte that belongs to no valid UTF-8 sequence
    std::uint32_t byteCount = 0; ///< how many bytes it takes, at least 1
};

/// Decodes the character at `at`, which must lie inside the name. A byte that is not part of valid UTF-8 (Unicode 15,
/// table 3-7) counts as one character of its own, so that every name has a well-defined number of characters.
[[nodiscard]] constexpr NameCharacter nameCharacterAt(std::string_view name, std::size_t at)
{
    const auto byteAt = [&](std::size_t index) -> std::uint32_t {
        return index < name.size() ? static_cast<unsigned char>(name[index]) : 0;
    };
    const auto isTail = [](std::uint32_t byte) { return (byte & 0xC0) == 0x80; };
    const std::uint32_t b0 = byteAt(at);
    if (b0 < 0x80)
        return {b0, 1};
    const std::uint32_t b1 = byteAt(at + 1);
    const std::uint32_t b2 = byteAt(at + 2);
    const std::uint32_t b3 = byteAt(at + 3);
    if (b0 >= 0xC2 && b0 <= 0xDF && isTail(b1))
        return {(b0 & 0x1F) << 6 | (b1 & 0x3F), 2};
    if (b0 >= 0xE0 && b0 <= 0xEF && isTail(b1) && isTail(b2)) {
        const char32_t codePoint = (b0 & 0x0F) << 12 | (b1 & 0x3F) << 6 | (b2 & 0x3F);
        if (codePoint >= 0x800 && (codePoint < 0xD800 || codePoint > 0xDFFF))
            return {codePoint, 3};
    }
    if (b0 >= 0xF0 && b0 <= 0xF4 && isTail(b1) && isTail(b2) && isTail(b3)) {
        const char32_t codePoint = (b0 & 0x07) << 18 | (b1 & 0x3F) << 12 | (b2 & 0x3F) << 6 | (b3 & 0x3F);
        if (codePoint >= 0x10000 && codePoint <= 0x10FFFF)
            return {codePoint, 4};
    }
    return {0xFFFD, 1};
}

/// Longest extension, in characters, that is taken for one. What follows the last dot of "Mr. Smith goes to Washington"
/// is not worth keeping when such a name has to be cut.
inline constexpr std::size_t longestSensibleExtension = 15;

} // namespace Tessaron
