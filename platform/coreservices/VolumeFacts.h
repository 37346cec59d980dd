#pragma once

#include <cstdint>

namespace Tessaron
{

/// What is worth knowing about a mounted file system; kept for some seconds once asked.
struct VolumeFacts {
    std::uint64_t device = 0;
    std::uint32_t blockSize = 4096; ///< unit of allocation, bytes
    std::int64_t type = 0; ///< `f_type` of statfs(2)
    std::uint64_t identifier = 0; ///< `f_fsid`: stays the same from mount to mount where the file system has one
};

/// The facts of the file system that holds the file named `name` in an open folder (or AT_FDCWD and a path), which is
/// not opened; a default value with `device` when it cannot be asked. Thread-safe.
[[nodiscard]] VolumeFacts volumeFactsOf(std::uint64_t device, int folder, const char *name);

/// False for some seconds after a file of the device was found to be unable to carry extended attributes of users, so
/// that a scan asks once and not once a file. Thread-safe.
[[nodiscard]] bool volumeKeepsAttributes(std::uint64_t device);
void noteVolumeKeepsNoAttributes(std::uint64_t device);

/// True when the file system can be asked for a file by its inode alone.
[[nodiscard]] bool volumeFindsInodes(int descriptor);

} // namespace Tessaron
