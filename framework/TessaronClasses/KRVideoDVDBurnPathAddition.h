#pragma once

#include "platform/coreservices/FSRef.h"
#include "platform/foundation/Export.h"

#include <QString>

namespace Tessaron
{

// Paths and references as the audio tracks convert them. Thread-safe.

/// The reference of what is at a path; a symbolic link at its end is not followed. A failure is not reported: the
/// reference is not valid (FSRefValid()) then.
[[nodiscard]] TESSARON_EXPORT FSRef KRfsRef(const QString &path);

/// The path of a reference; null when its file is gone or the path is longer than 1023 bytes.
[[nodiscard]] TESSARON_EXPORT QString KRstringWithFSRef(const FSRef *ref);

} // namespace Tessaron
