#include "tests/fakedrive/ScsiBytes.h"

namespace Tessaron::Testing
{

std::string hexadecimal(const std::uint8_t *bytes, std::size_t count)
{
    static constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (std::size_t index = 0; index < count; ++index) {
        text += digits[bytes[index] >> 4];
        text += digits[bytes[index] & 15];
    }
    return text;
}

Bytes bytesOfHexadecimal(const std::string &text)
{
    Bytes bytes;
    for (std::size_t index = 0; index + 1 < text.size(); index += 2)
        bytes.push_back(std::uint8_t(std::stoi(text.substr(index, 2), nullptr, 16)));
    return bytes;
}

int number(const std::uint8_t *bytes, int count)
{
    int value = 0;
    for (int index = 0; index < count; ++index)
        value = value << 8 | bytes[index];
    return value;
}

void put(Bytes *bytes, std::size_t at, std::uint32_t value, int count)
{
    if (bytes->size() < at + std::size_t(count))
        bytes->resize(at + std::size_t(count));
    for (int index = 0; index < count; ++index)
        (*bytes)[at + std::size_t(index)] = std::uint8_t(value >> (8 * (count - 1 - index)));
}

void putMSF(Bytes *bytes, std::size_t at, int block)
{
    const int frames = block + 150;
    put(bytes, at, std::uint32_t(frames / 4500), 1);
    put(bytes, at + 1, std::uint32_t(frames / 75 % 60), 1);
    put(bytes, at + 2, std::uint32_t(frames % 75), 1);
}

} // namespace Tessaron::Testing
