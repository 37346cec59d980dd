#pragma once

#include "tools/tessaron/Problem.h"
#include <TessaronClasses/DiscSources.h>

namespace Tessaron::Tool
{

using Source = DiscSource;

/// discSourcesAtPaths() with its error as a problem.
[[nodiscard]] Problem inspectSources(const QList<QByteArray> &paths, std::vector<Source> *sources);

/// errorOfSourcesSideBySide() as a problem.
[[nodiscard]] Problem checkSideBySide(const std::vector<Source> &sources);

} // namespace Tessaron::Tool
