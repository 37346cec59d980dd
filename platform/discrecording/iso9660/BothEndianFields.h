#pragma once

#include "platform/foundation/ByteOrder.h"

#include <cstdint>

namespace Tessaron
{

// Numbers that ISO 9660 records twice, in little-endian and behind that in big-endian order.

/// Writes a number of 32 bits into 8 bytes (ECMA-119 7.3.3).
inline void storeBothEndian(std::uint8_t *to, std::uint32_t value)
{
    storeLittleEndian<std::uint32_t>(to, value);
    storeBigEndian<std::uint32_t>(to + sizeof value, value);
}

/// Writes a number of 16 bits into 4 bytes (ECMA-119 7.2.3).
inline void storeBothEndian16(std::uint8_t *to, std::uint16_t value)
{
    storeLittleEndian<std::uint16_t>(to, value);
    storeBigEndian<std::uint16_t>(to + sizeof value, value);
}

} // namespace Tessaron
