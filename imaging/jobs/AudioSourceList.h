#pragma once

#include "platform/foundation/Result.h"

#include <QByteArray>
#include <QList>

namespace Tessaron
{

/// The files that the arguments stand for: a list (".m3u", ".m3u8") is replaced by the files that it names, in its
/// order, relative ones beside it. An error of code Source or InvalidOrder (DiscJobErrors.h) names the line that cannot
/// be used. What the files are is not looked at.
[[nodiscard]] Result<QList<QByteArray>> audioSourcesOf(const QList<QByteArray> &arguments);

} // namespace Tessaron
