#pragma once

#include "tests/support/TemporaryTree.h"

#include <QByteArray>

namespace Tessaron::Testing
{

/// Makes `depth` folders of the given name below each other below `top`, entering each, so that paths may be of any
/// length. Leaves a file "leaf" holding "deep" in the last. The path of that file, empty on failure.
QByteArray makeDeepFolders(const QByteArray &top, const QByteArray &name, int depth);

/// Removes such folders again, which ordinary means cannot do beyond PATH_MAX.
void removeDeepFolders(const QByteArray &top, const QByteArray &name, int depth);

} // namespace Tessaron::Testing
