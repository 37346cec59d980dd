#pragma once

#include "platform/foundation/NSError.h"

#include <QString>

#include <cerrno>
#include <cstddef>

namespace Tessaron
{

// What happens when a process, or all of them together, have as many files open as the system allows. Thread-safe.

/// True for the `errno` values that say so.
[[nodiscard]] inline bool isLackOfDescriptors(int errnoValue)
{
    return errnoValue == EMFILE || errnoValue == ENFILE;
}

/// True for an error that NSError::errorWithErrno() has made of one of these values.
[[nodiscard]] TESSARON_EXPORT bool isLackOfDescriptors(const NSError &error);

/// What a person can do about it, a full sentence: the recovery suggestion of such errors.
[[nodiscard]] TESSARON_EXPORT QString adviceOnDescriptors();

/// Whether this number of further files can be open at once, for what does not fail in order without them: Qt's event
/// loops and GLib end the process. 0 or the errno value. Another thread may take them at any time.
[[nodiscard]] TESSARON_EXPORT int probeDescriptors(std::size_t count);

} // namespace Tessaron
