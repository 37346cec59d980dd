#pragma once

#include "platform/foundation/NSError.h"

#include <QString>
#include <QVariantMap>

namespace Tessaron
{

/// An error of NSOSStatusErrorDomain with a sentence for people.
[[nodiscard]] NSError burnError(OSStatus code, const QString &description);
/// What an aborted burn ends with: code kDRUserCanceledErr.
[[nodiscard]] NSError burnCancelledError();
/// A failure to write, in words that say what to do. `descriptor` is the output where it is known, else -1: the
/// message then names no file.
[[nodiscard]] NSError burnOutputError(int errnoValue, int descriptor);

/// The general meaning of a status code.
[[nodiscard]] QString meaningOfStatus(OSStatus code);
/// The value of DRErrorStatusKey for an error. The description goes in as it is, and never starts with "0x": that start
/// is the mark of a cancelled burn.
[[nodiscard]] QVariantMap errorStatusOf(const NSError &error);

} // namespace Tessaron
