#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace Tessaron
{

/// A text in OSTA compressed Unicode (UDF 2.1.1): a byte that says how many bits a character has, 8 or 16, then the
/// characters, big-endian. Characters beyond U+FFFF are surrogate pairs, which UDF 1.02 does not know but its readers
/// do.
class UdfCompressedText
{
public:
    /// Bytes of the characters of a file's name at most: its length, one byte, counts the first byte, too.
    static constexpr std::size_t nameCapacity = 254;

    [[nodiscard]] std::string_view view() const { return {m_bytes.data(), m_size}; }
    [[nodiscard]] std::size_t size() const { return m_size; }
    /// The text in UTF-16.
    [[nodiscard]] std::u16string text() const;

    /// Takes the recorded bytes of another one.
    void assignRecorded(std::string_view bytes);
    /// Records a text in as few bytes as possible; characters that do not fit into `capacity` bytes are cut off.
    void assign(std::u16string_view text, std::size_t capacity = nameCapacity);
    /// Records a name of ASCII characters alone, which needs none of the rules; false, and nothing recorded, for other
    /// names and for those that no file can have.
    [[nodiscard]] bool assignPlain(std::string_view rawName);

private:
    std::array<char, nameCapacity + 1> m_bytes{};
    std::uint8_t m_size = 0;
};

} // namespace Tessaron
