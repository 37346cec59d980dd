#include "tools/tessaron/Sources.h"

namespace Tessaron::Tool
{

Problem inspectSources(const QList<QByteArray> &paths, std::vector<Source> *sources)
{
    Result<std::vector<DiscSource>> found = discSourcesAtPaths(paths);
    if (!found)
        return problemOf(found.error());
    *sources = std::move(*found);
    return {};
}

Problem checkSideBySide(const std::vector<Source> &sources)
{
    return problemOf(errorOfSourcesSideBySide(sources));
}

} // namespace Tessaron::Tool
