#pragma once

#include <QByteArray>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace Tessaron
{

/// The identity of a disc as the log has it: two words as they lie in memory, 8 digits each, with "0x" in front unless
/// the first one is 0. That is how C prints a number in the alternate form, and not how Qt does.
[[nodiscard]] inline QByteArray mediaIdentifierText(const std::array<std::uint8_t, 8> &identifier)
{
    std::array<std::uint32_t, 2> words{};
    std::memcpy(words.data(), identifier.data(), sizeof words);
    std::array<char, 24> text{};
    std::snprintf(text.data(), text.size(), "%#.8x%.8x", words[0], words[1]);
    return text.data();
}

} // namespace Tessaron
