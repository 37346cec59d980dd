#pragma once

#include <QByteArray>
#include <QByteArrayList>

namespace Tessaron
{

/// Where a file lies that a description names, by the first of its names under which it is found; `folder` is the
/// description's, with a slash at its end, or empty. Empty when it is not there.
[[nodiscard]] QByteArray pathOfDescribedFile(const QByteArray &folder, const QByteArrayList &names);

} // namespace Tessaron
