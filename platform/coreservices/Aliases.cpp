#include "platform/coreservices/Aliases.h"

#include "platform/coreservices/AliasRecord.h"
#include "platform/coreservices/AliasSearch.h"
#include "platform/coreservices/FSCatalog.h"
#include "platform/coreservices/FileLocator.h"
#include "platform/coreservices/ForkAttributes.h"
#include "platform/coreservices/Mounts.h"
#include "platform/coreservices/PathAccess.h"
#include "platform/foundation/ByteOrder.h"
#include "platform/foundation/NSError.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
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

QByteArray handleOf(const QByteArray &path)
{
    struct Storage {
        std::array<std::uint32_t, 2 + MAX_HANDLE_SZ / 4> words = {};
    } storage;
    storage.words[0] = MAX_HANDLE_SZ;
    auto *const handle = reinterpret_cast<file_handle *>(storage.words.data());
    const PathAccess access(path);
    int mountNumber = 0;
    if (access.error() != 0 || ::name_to_handle_at(access.folder(), access.path(), handle, &mountNumber, 0) != 0)
        return {};
    QByteArray bytes(4, '\0');
    storeBigEndian<std::uint32_t>(reinterpret_cast<std::uint8_t *>(bytes.data()), storage.words[1]);
    return bytes.append(reinterpret_cast<const char *>(storage.words.data() + 2),
                        static_cast<qsizetype>(storage.words[0]));
}

/// The alias data in an alias file, empty for another file.
QByteArray aliasDataInFile(const FSRef &ref, bool *isFolder, OSStatus *status)
{
    struct statx facts;
    QByteArray path;
    *status = statusForErrno(locateFile(ref, STATX_SIZE, &facts, &path));
    if (*status != noErr)
        return {};
    *isFolder = S_ISDIR(facts.stx_mode);
    const PathAccess access(path);
    if (!S_ISREG(facts.stx_mode) || !(finderFlagsOf(readFinderInfo(access).data()) & kFinderIsAlias))
        return {};
    QByteArray data = readResourceFork(access, longestAliasData);
    if (!data.isEmpty() && aliasRecordFromData(data))
        return data;
    int error = 0;
    const UniqueDescriptor file = openPath(path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK, &error);
    if (!file || facts.stx_size > static_cast<std::uint64_t>(longestAliasData))
        return {};
    data.resize(static_cast<qsizetype>(facts.stx_size));
    const ssize_t length = ::pread(file.get(), data.data(), static_cast<std::size_t>(data.size()), 0);
    data.truncate(std::max(ssize_t(0), length));
    return aliasRecordFromData(data) ? data : QByteArray();
}

OSStatus fillAliasFile(int descriptor, const QByteArray &path, const QByteArray &data)
{
    const ssize_t written = ::write(descriptor, data.constData(), static_cast<std::size_t>(data.size()));
    if (written != data.size())
        return written < 0 ? statusForErrno(errno) : OSErr(dskFulErr);
    FinderInfoBytes info = {};
    storeBigEndian<std::uint16_t>(info.data() + 8, kFinderIsAlias);
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
    record.inode = target->inode;
    record.birthSeconds = target->birthSeconds;
    record.birthNanoseconds = target->birthNanoseconds;
    record.volumeIdentifier = volumeIdentifierAt(record.path);
    const std::vector<Mount> mounts = currentMounts();
    const Mount *const mount = mountOfPath(mounts, record.path);
    record.volumeType = mount ? mount->type : QByteArray();
    record.pathInVolume = mount ? pathInVolume(*mount, record.path) : record.path;
    record.handle = handleOf(record.path);
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
    OSStatus status = noErr;
    bool isFolder = false;
    const QByteArray data = aliasDataInFile(*ref, &isFolder, &status);
    if (status != noErr)
        return static_cast<OSErr>(status);
    if (aliasFileFlag)
        *aliasFileFlag = !data.isEmpty();
    if (folderFlag)
        *folderFlag = isFolder;
    return noErr;
}

OSErr FSResolveAliasFile(FSRef *ref, bool resolveAliasChains, bool *targetIsFolder, bool *wasAliased)
{
    if (!ref)
        return paramErr;
    FSRef at = *ref;
    bool isFolder = false;
    int links = 0;
    for (;;) {
        OSStatus status = noErr;
        const QByteArray data = aliasDataInFile(at, &isFolder, &status);
        if (status != noErr)
            return static_cast<OSErr>(status);
        if (data.isEmpty() || (links > 0 && !resolveAliasChains))
            break;
        if (++links > longestChain)
            return fnfErr;
        if (const OSErr error = FSResolveAliasWithMountFlags(nullptr, data, &at, nullptr, kResolveAliasFileNoUI))
            return error;
    }
    *ref = at;
    if (targetIsFolder)
        *targetIsFolder = isFolder;
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
