#pragma once

#include <optional>
#include <sys/stat.h>

namespace Tessaron::Testing
{

// How a program's calls about "/dev/sr0" come to the one fake drive. Thread-safe.

/// True for the path of the drive in a program that is to have it.
[[nodiscard]] bool isFake(const char *path);

/// A descriptor for the drive; -1 with `errno` as a drive would have it.
[[nodiscard]] int openDrive();
/// Saves the disc when the descriptor is that of the drive, which has to be closed as well.
void letDriveGo(int descriptor);
/// What the drive answers; no value when the descriptor is not that of the drive.
[[nodiscard]] std::optional<int> controlDrive(int descriptor, unsigned long request, void *argument);
/// The device file, as stat() tells of it.
int describe(const char *path, struct stat *status);

} // namespace Tessaron::Testing
