#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Tessaron::Testing
{

using Bytes = std::vector<std::uint8_t>;

[[nodiscard]] std::string hexadecimal(const std::uint8_t *bytes, std::size_t count);
[[nodiscard]] Bytes bytesOfHexadecimal(const std::string &text);

/// A number of `count` bytes in big-endian order, as SCSI has them.
[[nodiscard]] int number(const std::uint8_t *bytes, int count);
/// Stores a number so, where need be behind the end of what there is.
void put(Bytes *bytes, std::size_t at, std::uint32_t value, int count);
/// Stores the address of a block in minutes, seconds and frames.
void putMSF(Bytes *bytes, std::size_t at, int block);

} // namespace Tessaron::Testing
