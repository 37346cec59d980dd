#pragma once

#include "platform/foundation/NSError.h"

#include <QByteArray>

namespace Tessaron
{

/// An error of DVDErrorDomain about the disc at a path: “path”: reason.
[[nodiscard]] NSError dvdError(OSStatus status, const QByteArray &path, const QString &reason);

} // namespace Tessaron
