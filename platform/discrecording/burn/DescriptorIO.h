#pragma once

#include <cstddef>
#include <cstdint>

namespace Tessaron
{

/// Writes all bytes at the descriptor's position; 0 or the `errno` value of what failed. Interrupted and short writes
/// are continued.
[[nodiscard]] int writeFully(int descriptor, const void *bytes, std::size_t length);

/// Writes zero bytes, like writeFully().
[[nodiscard]] int writeZeros(int descriptor, std::uint64_t length);

} // namespace Tessaron
