#include "platform/discrecording/udf/UdfCompressedText.h"

#include "platform/discrecording/names/UniqueNames.h"

#include <algorithm>

namespace Tessaron
{

namespace
{

constexpr char eightBits = 8;
constexpr char sixteenBits = 16;

} // namespace

std::u16string UdfCompressedText::text() const
{
    std::u16string result;
    if (m_size == 0)
        return result;
    const auto byteAt = [this](std::size_t at) { return static_cast<unsigned char>(m_bytes[at]); };
    if (m_bytes[0] == eightBits) {
        for (std::size_t at = 1; at < m_size; ++at)
            result += static_cast<char16_t>(byteAt(at));
    } else {
        for (std::size_t at = 1; at + 1 < m_size; at += 2)
            result += static_cast<char16_t>(byteAt(at) << 8 | byteAt(at + 1));
    }
    return result;
}

void UdfCompressedText::assignRecorded(std::string_view bytes)
{
    m_size = static_cast<std::uint8_t>(bytes.copy(m_bytes.data(), m_bytes.size()));
}

void UdfCompressedText::assign(std::u16string_view text, std::size_t capacity)
{
    capacity = std::min(capacity, nameCapacity);
    const bool isNarrow = std::all_of(text.begin(), text.end(), [](char16_t unit) { return unit < 0x100; });
    const std::size_t length = lengthWithoutSplitPair(text, isNarrow ? capacity : capacity / 2);
    m_size = 0;
    m_bytes[m_size++] = isNarrow ? eightBits : sixteenBits;
    for (const char16_t unit : text.substr(0, length)) {
        if (!isNarrow)
            m_bytes[m_size++] = static_cast<char>(unit >> 8);
        m_bytes[m_size++] = static_cast<char>(unit & 0xFF);
    }
}

bool UdfCompressedText::assignPlain(std::string_view rawName)
{
    if (rawName.empty() || rawName.size() > nameCapacity || rawName == "." || rawName == "..")
        return false;
    const bool isPlain = std::all_of(rawName.begin(), rawName.end(), [](char character) {
        const auto byte = static_cast<unsigned char>(character);
        return byte > 0 && byte < 0x80 && character != '/';
    });
    if (!isPlain)
        return false;
    m_bytes[0] = eightBits;
    m_size = static_cast<std::uint8_t>(1 + rawName.copy(m_bytes.data() + 1, nameCapacity));
    return true;
}

} // namespace Tessaron
