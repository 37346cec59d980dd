#include "tools/tessaron/Problem.h"

namespace Tessaron::Tool
{

Problem interruption()
{
    return {Problem::Kind::Interrupted, QStringLiteral("interrupted"), {}, {}};
}

QString nameOfKind(Problem::Kind kind)
{
    switch (kind) {
    case Problem::Kind::None:
        return QStringLiteral("none");
    case Problem::Kind::Usage:
        return QStringLiteral("usage");
    case Problem::Kind::Source:
        return QStringLiteral("source");
    case Problem::Kind::Destination:
        return QStringLiteral("destination");
    case Problem::Kind::Space:
        return QStringLiteral("space");
    case Problem::Kind::Layout:
        return QStringLiteral("layout");
    case Problem::Kind::Write:
        return QStringLiteral("write");
    case Problem::Kind::NotStored:
        return QStringLiteral("not-stored");
    case Problem::Kind::Interrupted:
        return QStringLiteral("interrupted");
    }
    return {};
}

} // namespace Tessaron::Tool
