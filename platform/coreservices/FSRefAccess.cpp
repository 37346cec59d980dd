#include "platform/coreservices/FSRefAccess.h"

#include "platform/coreservices/FileLocator.h"
#include "platform/coreservices/NodeTable.h"
#include "platform/coreservices/PathAccess.h"

#include <cerrno>

namespace Tessaron
{

UniqueDescriptor openFSRef(const FSRef &ref, int flags, int *errnoValue)
{
    const QByteArray path = lastKnownPath(ref);
    *errnoValue = ENOENT;
    if (path.isEmpty())
        return {};
    UniqueDescriptor file = openPath(path, flags, errnoValue);
    struct statx facts;
    if (file && statDescriptor(file.get(), identityFields, &facts) == 0 && isFileAtItsPlace(ref, facts))
        return file;
    if (!file && *errnoValue != ENOENT && *errnoValue != ENOTDIR && *errnoValue != ELOOP)
        return {};
    file.reset();
    QByteArray found;
    *errnoValue = locateFile(ref, 0, nullptr, &found);
    return *errnoValue == 0 ? openPath(found, flags, errnoValue) : UniqueDescriptor();
}

int statFSRef(const FSRef &ref, unsigned int mask, struct statx *result)
{
    return locateFile(ref, mask, result, nullptr);
}

int readLinkTarget(const FSRef &ref, QByteArray *target)
{
    QByteArray path;
    if (const int error = locateFile(ref, 0, nullptr, &path))
        return error;
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
