#include "platform/coreservices/FSCatalog.h"

#include "platform/coreservices/CatalogFacts.h"
#include "platform/coreservices/FileLocator.h"
#include "platform/coreservices/PathAccess.h"
#include "platform/foundation/NSError.h"

namespace Tessaron
{

OSErr FSGetCatalogInfo(const FSRef *ref, std::uint32_t whichInfo, FSCatalogInfo *info)
{
    if (!ref || (whichInfo != kFSCatInfoNone && !info))
        return paramErr;
    struct statx facts;
    QByteArray path;
    if (const int error = locateFile(*ref, catalogFields(whichInfo), &facts, &path))
        return statusForErrno(error);
    if (whichInfo == kFSCatInfoNone)
        return noErr;
    fillCatalogInfo(facts, whichInfo, info);
    const bool wantsFork = mayHaveResourceFork(facts) && (whichInfo & kFSCatInfoRsrcSizes);
    const bool wantsFinderInfo =
        mayHaveFinderInfo(facts) && (whichInfo & (kFSCatInfoFinderInfo | kFSCatInfoFinderXInfo));
    if ((wantsFork || wantsFinderInfo) && volumeKeepsAttributes(ref->device)) {
        const PathAccess access(path);
        AttributeSource source{access.folder(), access.path(), {}, ref->device};
        if (access.error() == 0)
            fillFromAttributes(source, facts, whichInfo, info);
    }
    return noErr;
}

} // namespace Tessaron
