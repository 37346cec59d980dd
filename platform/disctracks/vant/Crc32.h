#pragma once

#include <cstddef>
#include <cstdint>

namespace Tessaron
{

/// Continues a CRC-32 (ITU-T V.42: reflected polynomial 0xEDB88320, inverted at start and end) over further bytes;
/// start with `crc` 0. Thread-safe.
[[nodiscard]] std::uint32_t crc32(std::uint32_t crc, const void *bytes, std::size_t length);

} // namespace Tessaron
