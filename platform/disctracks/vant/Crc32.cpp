#include "platform/disctracks/vant/Crc32.h"

#include <array>

namespace Tessaron
{

namespace
{

constexpr std::array<std::uint32_t, 256> makeTable()
{
    std::array<std::uint32_t, 256> table{};
    for (std::uint32_t byte = 0; byte < table.size(); ++byte) {
        std::uint32_t value = byte;
        for (int bit = 0; bit < 8; ++bit)
            value = (value & 1) ? (value >> 1) ^ 0xEDB88320u : value >> 1;
        table[byte] = value;
    }
    return table;
}

} // namespace

std::uint32_t crc32(std::uint32_t crc, const void *bytes, std::size_t length)
{
    static constexpr std::array<std::uint32_t, 256> table = makeTable();
    const auto *const data = static_cast<const std::uint8_t *>(bytes);
    crc = ~crc;
    for (std::size_t index = 0; index < length; ++index)
        crc = (crc >> 8) ^ table[(crc ^ data[index]) & 0xFF];
    return ~crc;
}

} // namespace Tessaron
