#include "platform/coreservices/FSRef.h"

#include "platform/coreservices/AbsolutePath.h"
#include "platform/coreservices/FileLocator.h"
#include "platform/coreservices/FilePlaces.h"
#include "platform/coreservices/IdentityProofs.h"
#include "platform/coreservices/NodeTable.h"
#include "platform/coreservices/PathAccess.h"
#include "platform/foundation/NSError.h"

#include <cerrno>
#include <cstring>
#include <vector>

namespace Tessaron
{

namespace
{

OSStatus makeRef(const QByteArray &absolutePath, FSRef *ref, bool *isDirectory)
{
    const FileTime now = IdentityProofs::now();
    const PathAccess access(absolutePath);
    struct statx facts;
    if (const int error =
            access.error() ? access.error() : statBelow(access.folder(), access.path(), identityFields, &facts))
        return statusForErrno(error);
    const std::uint32_t node = nodeOfPath(absolutePath);
    if (node == NodeTable::none)
        return memFullErr;
    noteFoldersAbove(node);
    const FSRef made = refWithFacts(facts, node);
    IdentityProofs::shared().noteMount(made.device, mountOf(facts));
    const bool hasBirth = made.birthTime() != FileTime();
    if (!hasBirth || IdentityProofs::isYoung(made, now))
        IdentityProofs::shared().noteYoung(made, access.folder(), access.path());
    const bool isFolder = S_ISDIR(facts.stx_mode);
    if (isFolder && node != NodeTable::root && FilePlaces::shared().isFolderInDoubt(node))
        FilePlaces::shared().noteFolder(node, identityOf(made));
    *ref = made;
    if (isDirectory)
        *isDirectory = isFolder;
    return noErr;
}

} // namespace

OSStatus FSPathMakeRefWithOptions(const QByteArray &path, std::uint32_t options, FSRef *ref, bool *isDirectory)
{
    if (!ref)
        return paramErr;
    const LeafLink leaf = options & kFSPathMakeRefDoNotFollowLeafSymlink ? LeafLink::NotFollowed : LeafLink::Followed;
    QByteArray absolute;
    if (const int error = makeAbsolutePath(path, leaf, &absolute))
        return statusForErrno(error);
    return makeRef(absolute, ref, isDirectory);
}

OSStatus FSPathMakeRef(const QByteArray &path, FSRef *ref, bool *isDirectory)
{
    return FSPathMakeRefWithOptions(path, kFSPathMakeRefDefaultOptions, ref, isDirectory);
}

OSStatus FSRefMakePath(const FSRef *ref, char *buffer, std::uint32_t bufferSize)
{
    if (!ref || !buffer)
        return paramErr;
    QByteArray path;
    if (const int error = locateFile(*ref, 0, nullptr, &path))
        return statusForErrno(error);
    if (path.size() >= static_cast<qsizetype>(bufferSize))
        return bdNamErr;
    std::memcpy(buffer, path.constData(), static_cast<std::size_t>(path.size()) + 1);
    return noErr;
}

QByteArray lastKnownPath(const FSRef &ref)
{
    return pathOfNode(FilePlaces::shared().currentNode(ref));
}

OSStatus FSMakeFSRefForChild(const FSRef &parent, const QByteArray &name, FSRef *child)
{
    if (!child || name.isEmpty() || name == "." || name == ".." || name.contains('/') || name.contains('\0'))
        return paramErr;
    QByteArray path;
    if (const int error = locateFile(parent, 0, nullptr, &path))
        return statusForErrno(error);
    if (!path.endsWith('/'))
        path += '/';
    return makeRef(path + name, child, nullptr);
}

} // namespace Tessaron
