#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace Tessaron
{

/// Integers in the byte order of disc structures. The pointers need no alignment.

template <typename Integer>
constexpr void storeLittleEndian(std::uint8_t *to, std::type_identity_t<Integer> value)
{
    static_assert(std::is_unsigned_v<Integer>);
    for (std::size_t index = 0; index < sizeof(Integer); ++index)
        to[index] = static_cast<std::uint8_t>(value >> (8 * index));
}

template <typename Integer>
constexpr void storeBigEndian(std::uint8_t *to, std::type_identity_t<Integer> value)
{
    static_assert(std::is_unsigned_v<Integer>);
    for (std::size_t index = 0; index < sizeof(Integer); ++index)
        to[index] = static_cast<std::uint8_t>(value >> (8 * (sizeof(Integer) - 1 - index)));
}

template <typename Integer>
[[nodiscard]] constexpr Integer loadLittleEndian(const std::uint8_t *from)
{
    static_assert(std::is_unsigned_v<Integer>);
    Integer value = 0;
    for (std::size_t index = 0; index < sizeof(Integer); ++index)
        value = static_cast<Integer>(value | (static_cast<Integer>(from[index]) << (8 * index)));
    return value;
}

template <typename Integer>
[[nodiscard]] constexpr Integer loadBigEndian(const std::uint8_t *from)
{
    static_assert(std::is_unsigned_v<Integer>);
    Integer value = 0;
    for (std::size_t index = 0; index < sizeof(Integer); ++index)
        value = static_cast<Integer>((sizeof(Integer) > 1 ? value << 8 : 0) | from[index]);
    return value;
}

} // namespace Tessaron
