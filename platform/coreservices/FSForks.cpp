#include "platform/coreservices/FSForks.h"

#include "platform/coreservices/FSCatalog.h"

namespace Tessaron
{

OSErr FSIterateForks(const FSRef *ref, FSForkPosition *position, FSForkInfo *fork)
{
    if (!ref || !position || !fork)
        return paramErr;
    FSCatalogInfo info;
    if (const OSErr error =
            FSGetCatalogInfo(ref, kFSCatInfoNodeFlags | kFSCatInfoDataSizes | kFSCatInfoRsrcSizes, &info))
        return error;
    if (info.nodeFlags & kFSNodeIsDirectoryMask)
        return errFSNoMoreItems;
    if (position->next == 0) {
        *fork = {QByteArray(), info.dataLogicalSize, info.dataPhysicalSize};
        position->next = 1;
        return noErr;
    }
    if (position->next == 1 && info.rsrcLogicalSize > 0) {
        *fork = {QByteArray("RESOURCE_FORK"), info.rsrcLogicalSize, info.rsrcPhysicalSize};
        position->next = 2;
        return noErr;
    }
    return errFSNoMoreItems;
}

} // namespace Tessaron
