#pragma once

#include "platform/foundation/UniqueDescriptor.h"

#include <QByteArray>

namespace Tessaron
{

// Handles of name_to_handle_at(2): what a file system calls a file for good, mostly inode and generation, so that a
// file which got a removed one's inode has another. As bytes: a 32-bit type in big-endian order, then the handle.

/// The handle of the file below an open folder (or AT_FDCWD and a path), which is not opened; a symbolic link has its
/// own. Empty where the file system has none.
[[nodiscard]] QByteArray fileHandleBelow(int folder, const char *name);

/// Opens the file with O_PATH on the file system that holds the open folder. Only privileged processes may. An invalid
/// descriptor for a handle that leads nowhere, and for bytes that are not a handle.
[[nodiscard]] UniqueDescriptor openFileHandle(int folderOnVolume, const QByteArray &handle);

} // namespace Tessaron
