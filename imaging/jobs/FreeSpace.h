#pragma once

#include <cstdint>
#include <optional>

namespace Tessaron
{

/// Bytes that this user may still write on the filesystem of an open file, where each byte written takes one: empty for
/// filesystems that share or compress their space or fetch it from elsewhere, and for unknown ones: there only trying
/// tells.
[[nodiscard]] std::optional<std::uint64_t> freeSpaceForPlainWriting(int descriptor);

} // namespace Tessaron
