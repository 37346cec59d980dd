#pragma once

#include "platform/foundation/Export.h"

#include <QString>

class QButtonGroup;
class QLineEdit;

namespace Tessaron
{

/// Conveniences for controls, on the main thread.

/// Sets the text of a field; a null text empties it.
TESSARON_EXPORT void safelySetStringValue(QLineEdit &field, const QString &value);

/// Sets the state of every button of a group: 0 off, 1 on, -1 mixed, which a check box of three states has; for any
/// other button that is on. Buttons that are not checkable are left alone. All buttons get the state, also those of an
/// exclusive group, which then may have none or several that are on until the user clicks one.
TESSARON_EXPORT void changeStateOfAllCells(QButtonGroup &matrix, int state);

} // namespace Tessaron
