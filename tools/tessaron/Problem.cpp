#include "tools/tessaron/Problem.h"

#include "platform/foundation/FileSystemRepresentation.h"

#include <array>

namespace Tessaron::Tool
{

Problem interruption()
{
    return {Problem::Kind::Interrupted, QStringLiteral("interrupted"), {}, {}};
}

Problem problemOf(const NSError &error)
{
    using Kind = Problem::Kind;
    if (!error)
        return {};
    Kind kind = Kind::Write;
    if (isDiscJobError(error, DiscJobErrorCode::Cancelled))
        return {Kind::Interrupted, interruption().message, error.localizedRecoverySuggestion(), {}};
    constexpr std::array kinds = {Kind::Usage,  Kind::Source, Kind::Destination, Kind::Space,
                                  Kind::Layout, Kind::Write,  Kind::NotStored};
    if (error.domain() == DiscJobErrorDomain && error.code() >= 1 && error.code() <= qint64(kinds.size()))
        kind = kinds[std::size_t(error.code() - 1)];
    return {kind, error.localizedDescription(), error.localizedRecoverySuggestion(),
            fileSystemRepresentation(error.filePath()),
            error.userInfo().value(DiscJobUnderlyingStatusKey).toLongLong()};
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
