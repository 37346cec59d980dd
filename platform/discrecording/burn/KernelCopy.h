#pragma once

#include <cstdint>
#include <functional>

namespace Tessaron
{

/// A range of one file that is to go to the current position of another.
struct CopyRange {
    int from = -1; ///< regular file, open for reading
    int to = -1; ///< open for writing; written at its position, which moves on
    std::uint64_t offset = 0; ///< in `from`, bytes
    std::uint64_t length = 0; ///< bytes
};

struct CopyResult {
    enum class Outcome : std::uint8_t {
        Copied,
        Cancelled,
        EndedEarly, ///< `from` has fewer bytes
        ReadFailed,
        WriteFailed,
    };
    Outcome outcome = Outcome::Copied;
    int errnoValue = 0; ///< of the failure
};

/// Told how many more bytes were copied; false cancels. Called at least every 16 MiB, and about every 20 ms on a slow
/// disk.
using CopyProgress = std::function<bool(std::uint64_t bytes)>;

/// Copies inside the kernel where it can (copy_file_range(2)), which shares extents where the file systems have
/// them, and by reading and writing where it cannot. Holes of the source become holes of a regular output that grows by
/// them, and zero bytes of any other: they are never read.
[[nodiscard]] CopyResult copyDescriptorRange(const CopyRange &range, const CopyProgress &progress);

} // namespace Tessaron
