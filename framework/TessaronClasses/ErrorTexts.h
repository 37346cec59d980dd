#pragma once

#include "platform/foundation/Export.h"

#include <QString>

namespace Tessaron
{

/// Texts of the errors about names, in the Finder's words where its bundle is installed, else in English. Thread-safe.

[[nodiscard]] TESSARON_EXPORT QString anItemWithTheSameNameAlreadyExistsLocalizedString();
/// The Finder's text names the item; a null name leaves the place empty.
[[nodiscard]] TESSARON_EXPORT QString theItemCannotBeRenamedLocalizedString(const QString &name);
[[nodiscard]] TESSARON_EXPORT QString renameTheItemLocalizedString();

} // namespace Tessaron
