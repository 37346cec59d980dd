#pragma once

#include "platform/foundation/Export.h"

#include <cstddef>
#include <cstdint>

namespace Tessaron
{

// Reading and writing whole amounts through descriptors. Interrupted and short calls are continued. Each function
// returns 0 or the `errno` value of what failed.

/// Writes all bytes at the descriptor's position. Waits where a descriptor that does not block takes nothing for now.
[[nodiscard]] TESSARON_EXPORT int writeFully(int descriptor, const void *bytes, std::size_t length);

/// Writes zero bytes, like writeFully().
[[nodiscard]] TESSARON_EXPORT int writeZeros(int descriptor, std::uint64_t length);

/// Reads up to `length` bytes from `offset` of a file; `*got` says how many, also after a failure: fewer only where the
/// file ends. The descriptor's position does not matter and stays.
[[nodiscard]] TESSARON_EXPORT int readFully(int descriptor, std::uint64_t offset, void *buffer, std::size_t length,
                                            std::size_t *got);

/// Waits until what was written to the file, or the names in the folder, are on the disk (fsync(2)). What cannot be
/// waited for, a pipe for one, counts as done.
[[nodiscard]] TESSARON_EXPORT int syncToDisk(int descriptor);

} // namespace Tessaron
