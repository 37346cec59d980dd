#include "filemodel/LayoutSource.h"

#include "platform/coreservices/FSRefAccess.h"
#include "platform/coreservices/FileLocator.h"
#include "platform/coreservices/FilePlaces.h"
#include "platform/coreservices/NodeTable.h"
#include "platform/coreservices/PathAccess.h"

#include <cerrno>
#include <fcntl.h>

namespace Tessaron
{

namespace
{

constexpr int folderFlags = O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

} // namespace

LayoutPlace findLayoutPlace(const FSRef &ref, const LayoutSource &folder)
{
    LayoutPlace place;
    const QByteArrayView name = nameOfFSRef(ref);
    if (folder.descriptor && folder.node != 0 && parentNodeOfFSRef(ref) == folder.node
        && statBelow(folder.descriptor.get(), name.data(), identityFields, &place.facts) == 0
        && hasSameIdentity(ref, place.facts)) {
        place.isBelow = true;
        place.name = name;
        return place;
    }
    place.errnoValue = locateFile(ref, 0, &place.facts, &place.path);
    const std::string_view found = NodeTable::shared().nameOf(FilePlaces::shared().currentNode(ref));
    place.name = QByteArrayView(found.data(), static_cast<qsizetype>(found.size()));
    return place;
}

UniqueDescriptor openLayoutSource(const FSRef &ref, const LayoutPlace &place, const LayoutSource &folder,
                                  int *errnoValue)
{
    *errnoValue = place.errnoValue;
    if (place.errnoValue != 0)
        return {};
    if (!place.isBelow)
        return openPath(place.path, folderFlags, errnoValue);
    UniqueDescriptor opened(::openat(folder.descriptor.get(), nameOfFSRef(ref).data(), folderFlags));
    *errnoValue = opened ? 0 : errno;
    return opened;
}

UniqueDescriptor openSourceAbove(const LayoutSource &below, const FSRef &above)
{
    UniqueDescriptor opened(below.descriptor ? ::openat(below.descriptor.get(), "..", folderFlags) : -1);
    struct statx facts;
    const bool isRight =
        opened && statDescriptor(opened.get(), identityFields, &facts) == 0 && hasSameIdentity(above, facts);
    return isRight ? std::move(opened) : UniqueDescriptor();
}

} // namespace Tessaron
