#pragma once

#include "platform/foundation/NSError.h"

#include <QString>
#include <QVariantMap>

namespace Tessaron
{

/// An error of NSOSStatusErrorDomain with a sentence for people and, where there is one, another that says what to do.
[[nodiscard]] NSError burnError(OSStatus code, const QString &description, const QString &suggestion = {});
/// What an aborted burn ends with: code kDRUserCanceledErr. `known`, where it has this code already, is taken as it is:
/// a sink that was stopped may have put there what became of the disc.
[[nodiscard]] NSError burnCancelledError(const NSError &known = {});
/// A failure to write to the output that people know by this name; with an empty one the error names no file.
[[nodiscard]] NSError burnOutputError(int errnoValue, const QString &outputName);

/// The general meaning of a status code.
[[nodiscard]] QString meaningOfStatus(OSStatus code);
/// The value of DRErrorStatusKey for an error: what happened and what to do about it in one text. That never starts
/// with "0x", which is the mark of a cancelled burn.
[[nodiscard]] QVariantMap errorStatusOf(const NSError &error);

} // namespace Tessaron
