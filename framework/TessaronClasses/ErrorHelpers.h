#pragma once

#include "platform/foundation/Export.h"
#include "platform/foundation/NSError.h"

#include <QString>

#include <memory>

namespace Tessaron
{

class NSBundle;

/// What the framework adds to NSError. All of it is thread-safe.

/// The Finder's bundle, "/System/Library/CoreServices/Finder.app", whose texts the errors use. Null where it is not
/// installed. Looked up once and kept; only after NSBundle::setSystemRoot() has named another folder is it looked up
/// again.
[[nodiscard]] TESSARON_EXPORT std::shared_ptr<NSBundle> _finderBundle();

/// Why it failed, for people; null for an error of another domain than NSOSStatusErrorDomain. The Finder's own text for
/// access denied and for a taken name, else "OSStatus error (code)".
[[nodiscard]] TESSARON_EXPORT QString getFailureReason(const NSError &error);

/// An item cannot take the name because another has it: code dupFNErr.
[[nodiscard]] TESSARON_EXPORT NSError filenameAlreadyExistsErrorForName(const QString &name);
/// The same seen from the name: description and suggestion change places.
[[nodiscard]] TESSARON_EXPORT NSError thereIsAlreadyAnItemWithThatNameError();
/// Code coreFoundationUnknownErr, without a text.
[[nodiscard]] TESSARON_EXPORT NSError unkownError();

} // namespace Tessaron
