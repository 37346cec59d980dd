#pragma once

#include "platform/foundation/Result.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <QByteArray>

#include <stop_token>

namespace Tessaron
{

// Outputs that take an image as a stream: pipes, character devices, and files that are open already, such as
// standard output. Errors have code Destination (DiscJobErrors.h).

/// True when a pipe, a socket or a character device is at the path, or at the end of a symbolic link there, such as
/// /dev/stdout.
[[nodiscard]] bool isStream(const QByteArray &path);

/// Opens a path for which isStream() was true. Waits for a reader of a named pipe, until the stop.
[[nodiscard]] Result<UniqueDescriptor> streamAtPath(const QByteArray &path, const std::stop_token &stop);

/// Another descriptor for a file that is open already.
[[nodiscard]] Result<UniqueDescriptor> streamWithDescriptor(int descriptor);

} // namespace Tessaron
