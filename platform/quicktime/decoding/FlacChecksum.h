#pragma once

#include <cstdint>
#include <span>

namespace Tessaron
{

/// True when the bytes are a FLAC frame, or several, with the checksum that ends each (CRC-16, RFC 9639 9.3). False for
/// all others, and where that cannot be found out faster than the decoder does: then it has to look itself.
[[nodiscard]] bool isKnownAsWholeFlacFrame(std::span<const std::uint8_t> bytes);

} // namespace Tessaron
