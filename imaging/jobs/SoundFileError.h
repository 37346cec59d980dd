#pragma once

#include "platform/foundation/NSError.h"

#include <QByteArray>

namespace Tessaron
{

/// The error of a job that cannot read the sound of a file, made of what `CDSound` says of it: of code Source
/// (DiscJobErrors.h), or Cancelled.
[[nodiscard]] NSError soundFileError(const QByteArray &path, const NSError &error);

} // namespace Tessaron
