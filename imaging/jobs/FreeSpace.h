#pragma once

#include <cstdint>
#include <optional>

namespace Tessaron
{

/// Bytes that this user may still write on the filesystem of an open file, where each byte written takes one: empty for
/// filesystems that share, compress or fetch their space from elsewhere, and for those that are not known not to.
/// There only trying tells.
[[nodiscard]] std::optional<std::uint64_t> freeSpaceForPlainWriting(int descriptor);

} // namespace Tessaron
