#include "platform/coreservices/FSRefAccess.h"

#include "platform/coreservices/FilePlaces.h"
#include "platform/coreservices/NodeTable.h"
#include "platform/coreservices/PathAccess.h"

#include <cerrno>

namespace Tessaron
{

UniqueDescriptor openFSRef(const FSRef &ref, int flags, int *errnoValue)
{
    const QByteArray path = lastKnownPath(ref);
    if (!path.isEmpty())
        return openPath(path, flags, errnoValue);
    *errnoValue = ENOENT;
    return {};
}

int statFSRef(const FSRef &ref, unsigned int mask, struct statx *result)
{
    const QByteArray path = lastKnownPath(ref);
    return path.isEmpty() ? ENOENT : statPath(path, mask, result);
}

int readLinkTarget(const FSRef &ref, QByteArray *target)
{
    const QByteArray path = lastKnownPath(ref);
    if (path.isEmpty())
        return ENOENT;
    const PathAccess access(path);
    return access.error() != 0 ? access.error() : readLinkBelow(access.folder(), access.path(), target);
}

QByteArrayView nameOfFSRef(const FSRef &ref)
{
    const std::string_view name = NodeTable::shared().nameOf(ref.node);
    return QByteArrayView(name.data(), static_cast<qsizetype>(name.size()));
}

std::uint32_t parentNodeOfFSRef(const FSRef &ref)
{
    return NodeTable::shared().parentOf(ref.node);
}

} // namespace Tessaron
