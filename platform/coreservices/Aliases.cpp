#include "platform/coreservices/Aliases.h"

#include "platform/coreservices/AliasRecord.h"
#include "platform/coreservices/AliasSearch.h"
#include "platform/coreservices/FileHandle.h"
#include "platform/coreservices/FileLocator.h"
#include "platform/coreservices/ForkAttributes.h"
#include "platform/coreservices/Mounts.h"
#include "platform/coreservices/PathAccess.h"
#include "platform/foundation/DescriptorIO.h"
#include "platform/foundation/NSError.h"
#include "platform/foundation/PathBytes.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace Tessaron
{

namespace
{

/// No sensible chain of alias files is longer.
constexpr int longestChain = 32;

/// The part of the path that is inside the file system, seen from its root.
QByteArray pathInVolume(const Mount &mount, const QByteArray &path)
{
    const QByteArray rest = mount.point == "/" ? path : path.mid(mount.point.size());
    return mount.root == "/" ? (rest.isEmpty() ? QByteArray("/") : rest) : QByteArray(mount.root).append(rest);
}

/// The longest mount point that is the path or a folder above it. Of several mounts at one point the last is on top.
const Mount *mountOfPath(const std::vector<Mount> &mounts, const QByteArray &path)
{
    const Mount *best = nullptr;
    for (const Mount &mount : mounts) {
        const bool isAbove = mount.point == "/" || path == mount.point
            || (path.startsWith(mount.point) && path[mount.point.size()] == '/');
        if (isAbove && (!best || mount.point.size() >= best->point.size()))
            best = &mount;
    }
    return best;
}

/// The same path without symbolic links on the way, as the list of mounts has it; the path itself where the system
/// cannot tell. A link at its end stays.
QByteArray pathWithoutLinks(const QByteArray &path)
{
    if (path == "/")
        return path;
    int error = 0;
    const UniqueDescriptor folder = openPath(parentPath(path), O_PATH | O_DIRECTORY, &error);
    QByteArray real;
    if (!folder || readLinkBelow(AT_FDCWD, pathOfDescriptor(folder.get()), &real) != 0 || !real.startsWith('/'))
        return path;
    return childPath(real, lastPathComponent(path));
}

/// What is known of a file that may be an alias file.
struct AliasFile {
    bool isAlias = false; ///< it has the flag
    bool isFolder = false;
    QByteArray data; ///< empty where it has the flag alone
};

OSStatus readAliasFile(const FSRef &ref, AliasFile *alias)
{
    struct statx facts;
    QByteArray path;
    if (const int error = locateFile(ref, STATX_SIZE, &facts, &path))
        return statusForErrno(error);
    *alias = {};
    alias->isFolder = S_ISDIR(facts.stx_mode);
    const PathAccess access(path);
    alias->isAlias = S_ISREG(facts.stx_mode) && (finderFlagsOf(readFinderInfo(access).data()) & kFinderIsAlias);
    if (!alias->isAlias)
        return noErr;
    const QByteArray fork = readResourceFork(access, longestAliasData);
    if (!fork.isEmpty() && aliasRecordFromData(fork)) {
        alias->data = fork;
        return noErr;
    }
    int error = 0;
    const UniqueDescriptor file = openPath(path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK, &error);
    if (!file || facts.stx_size > static_cast<std::uint64_t>(longestAliasData))
        return noErr;
    QByteArray contents(static_cast<qsizetype>(facts.stx_size), '\0');
    std::size_t length = 0;
    error = readFully(file.get(), 0, contents.data(), static_cast<std::size_t>(contents.size()), &length);
    contents.truncate(static_cast<qsizetype>(length));
    if (error == 0 && aliasRecordFromData(contents))
        alias->data = contents;
    return noErr;
}

OSStatus fillAliasFile(int descriptor, const QByteArray &path, const QByteArray &data)
{
    const ssize_t written = ::write(descriptor, data.constData(), static_cast<std::size_t>(data.size()));
    if (written != data.size())
        return written < 0 ? statusForErrno(errno) : OSErr(dskFulErr);
    FinderInfoBytes info = {};
    setFinderFlags(info.data(), kFinderIsAlias);
    return writeFinderInfo(PathAccess(path), info);
}

} // namespace

OSErr FSNewAliasMinimal(const FSRef *target, QByteArray *alias)
{
    if (!target || !alias)
        return paramErr;
    struct statx facts;
    AliasRecord record;
    if (const int error = locateFile(*target, 0, &facts, &record.path))
        return statusForErrno(error);
    record.isFolder = S_ISDIR(facts.stx_mode);
    const FSRef found = refWithFacts(facts, 0); // perhaps the file that has taken the place of the first
    record.inode = found.inode;
    record.birthTime = found.birthTime();
    record.volumeIdentifier = volumeIdentifierAt(record.path);
    const std::vector<Mount> mounts = currentMounts();
    const QByteArray realPath = pathWithoutLinks(record.path);
    const Mount *const mount = mountOfPath(mounts, realPath);
    record.volumeType = mount ? mount->type : QByteArray();
    record.pathInVolume = mount ? pathInVolume(*mount, realPath) : realPath;
    if (const PathAccess access(record.path); access.error() == 0)
        record.handle = fileHandleBelow(access.folder(), access.path());
    *alias = aliasDataFromRecord(record);
    return alias->size() <= longestAliasData ? noErr : bdNamErr;
}

OSErr FSResolveAliasWithMountFlags(const FSRef *, const QByteArray &alias, FSRef *target, bool *wasChanged,
                                   std::uint32_t)
{
    const std::optional<AliasRecord> record = aliasRecordFromData(alias);
    if (!record || !target)
        return paramErr;
    AliasSearch search(*record);
    if (const OSErr status = search.run())
        return status;
    const OSStatus status =
        FSPathMakeRefWithOptions(search.path(), kFSPathMakeRefDoNotFollowLeafSymlink, target, nullptr);
    if (status == noErr && wasChanged)
        *wasChanged = !search.isOriginal() || search.path() != record->path;
    return static_cast<OSErr>(status);
}

OSErr FSIsAliasFile(const FSRef *ref, bool *aliasFileFlag, bool *folderFlag)
{
    if (!ref)
        return paramErr;
    AliasFile alias;
    if (const OSStatus status = readAliasFile(*ref, &alias))
        return static_cast<OSErr>(status);
    if (aliasFileFlag)
        *aliasFileFlag = alias.isAlias;
    if (folderFlag)
        *folderFlag = alias.isFolder;
    return noErr;
}

OSErr FSResolveAliasFile(FSRef *ref, bool resolveAliasChains, bool *targetIsFolder, bool *wasAliased)
{
    if (!ref)
        return paramErr;
    FSRef at = *ref;
    AliasFile alias;
    int links = 0;
    for (;;) {
        if (const OSStatus status = readAliasFile(at, &alias))
            return static_cast<OSErr>(status);
        if (!alias.isAlias || (links > 0 && !resolveAliasChains))
            break;
        if (++links > longestChain)
            return fnfErr;
        if (const OSErr error = FSResolveAliasWithMountFlags(nullptr, alias.data, &at, nullptr, kResolveAliasFileNoUI))
            return error;
    }
    *ref = at;
    if (targetIsFolder)
        *targetIsFolder = alias.isFolder;
    if (wasAliased)
        *wasAliased = links > 0;
    return noErr;
}

OSStatus writeAliasFile(const QByteArray &path, const FSRef &target)
{
    QByteArray data;
    if (const OSErr error = FSNewAliasMinimal(&target, &data))
        return error;
    UniqueDescriptor file(::open(path.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (!file)
        return statusForErrno(errno);
    OSStatus status = fillAliasFile(file.get(), path, data);
    if (!file.closeAndReport() && status == noErr)
        status = statusForErrno(errno);
    if (status != noErr)
        ::unlink(path.constData());
    return status;
}

} // namespace Tessaron
