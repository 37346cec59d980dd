#pragma once

#include "platform/foundation/Export.h"

#include <QString>
#include <QVariantList>

namespace Tessaron
{

/// The elements, with those of an element that is a list itself in its place; lists in such a list stay as they are.
[[nodiscard]] TESSARON_EXPORT QVariantList flattenedArray(const QVariantList &array);

/// The first element that is a text and begins with the prefix (letter case counts); a null text when no element does.
/// No text begins with an empty prefix.
[[nodiscard]] TESSARON_EXPORT QString stringWithPrefix(const QVariantList &array, const QString &prefix);

} // namespace Tessaron
