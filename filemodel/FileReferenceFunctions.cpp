#include "platform/coreservices/Aliases.h"
#include "platform/coreservices/FSCatalog.h"
#include "platform/coreservices/FSForks.h"
#include <TessaronClasses/FileReferenceFunctions.h>

#include <algorithm>

namespace Tessaron
{

bool FSRefValid(const FSRef *ref)
{
    return FSGetCatalogInfo(ref, kFSCatInfoNone, nullptr) == noErr;
}

OSErr FSGetFinderInfo(const FSRef *ref, FileInfo *finderInfo, ExtendedFileInfo *extendedFinderInfo, bool *isDirectory)
{
    std::uint32_t wanted = kFSCatInfoNone;
    if (finderInfo)
        wanted |= kFSCatInfoFinderInfo;
    if (extendedFinderInfo)
        wanted |= kFSCatInfoFinderXInfo;
    if (isDirectory != nullptr)
        wanted |= kFSCatInfoNodeFlags;
    FSCatalogInfo info;
    if (const OSErr error = FSGetCatalogInfo(ref, wanted, &info))
        return error;
    if (finderInfo)
        std::copy(std::begin(info.finderInfo), std::end(info.finderInfo), finderInfo->bytes.begin());
    if (extendedFinderInfo)
        std::copy(std::begin(info.extFinderInfo), std::end(info.extFinderInfo), extendedFinderInfo->bytes.begin());
    if (isDirectory)
        *isDirectory = info.nodeFlags & kFSNodeIsDirectoryMask;
    return noErr;
}

OSErr FSGetTotalForkSizes(const FSRef *ref, std::uint64_t *totalLogicalSize, std::uint64_t *totalPhysicalSize,
                          std::uint64_t *forkCount)
{
    for (std::uint64_t *const output : {totalLogicalSize, totalPhysicalSize, forkCount}) {
        if (output)
            *output = 0;
    }
    FSForkPosition position;
    FSForkInfo fork;
    OSErr status = noErr;
    while ((status = FSIterateForks(ref, &position, &fork)) == noErr) {
        if (totalLogicalSize)
            *totalLogicalSize += fork.logicalSize;
        if (totalPhysicalSize)
            *totalPhysicalSize += fork.physicalSize;
        if (forkCount)
            ++*forkCount;
    }
    return status == errFSNoMoreItems ? noErr : status;
}

QByteArray AliasDataFromFSRef(const FSRef *ref)
{
    QByteArray data;
    return FSNewAliasMinimal(ref, &data) == noErr ? data : QByteArray();
}

OSErr FSRefFromAliasData(const QByteArray &data, FSRef *ref)
{
    constexpr OSErr noDataStatus = 1;
    if (data.isNull())
        return noDataStatus;
    return FSResolveAliasWithMountFlags(nullptr, data, ref, nullptr, kResolveAliasFileNoUI);
}

} // namespace Tessaron
