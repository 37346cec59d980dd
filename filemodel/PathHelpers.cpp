#include "platform/coreservices/AbsolutePath.h"
#include "platform/coreservices/Aliases.h"
#include "platform/coreservices/LaunchServices.h"
#include "platform/coreservices/PathAccess.h"
#include "platform/foundation/DirectoryStream.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/PathBytes.h"
#include <TessaronClasses/FileReferenceFunctions.h>
#include <TessaronClasses/PathHelpers.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <unistd.h>
#include <vector>

namespace Tessaron
{

namespace
{

constexpr std::uint32_t pathBufferSize = 1024;
constexpr const char *folderSettingsName = ".DS_Store";

bool existsAt(const QByteArray &path)
{
    QByteArray absolute;
    struct statx facts;
    return makeAbsolutePath(path, LeafLink::NotFollowed, &absolute) == 0 && statPath(absolute, STATX_TYPE, &facts) == 0;
}

/// False when the entry is worth keeping. The size is asked from where the file lies: another computer may have filled
/// it just now.
bool isWorthless(int folder, const QByteArray &name)
{
    constexpr int flags = AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT | AT_STATX_FORCE_SYNC;
    struct statx facts;
    if (::statx(folder, name.constData(), flags, STATX_TYPE | STATX_SIZE, &facts) != 0 || S_ISDIR(facts.stx_mode))
        return false;
    return name == folderSettingsName || facts.stx_size == 0;
}

/// Lists an open folder as long as its entries are worthless; false when one is not, and when listing fails.
bool listWorthless(const UniqueDescriptor &folder, std::vector<QByteArray> *names)
{
    const DirectoryStream directory =
        directoryStream(UniqueDescriptor(::openat(folder.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC)));
    if (!directory)
        return false;
    for (;;) {
        errno = 0; // the only way to tell the end from a failure
        const dirent *const entry = ::readdir(directory.get());
        if (!entry)
            return errno == 0;
        const QByteArray name(entry->d_name);
        if (name == "." || name == "..")
            continue;
        if (!isWorthless(folder.get(), name))
            return false;
        names->push_back(name);
    }
}

/// "stem-number.extension", the stem shortened as far as a file system that takes 255 bytes demands.
QByteArray numberedName(QByteArray stem, std::uint64_t number, const QByteArray &extension)
{
    QByteArray end = QByteArray("-").append(QByteArray::number(qulonglong(number)));
    if (!extension.isEmpty())
        end.append('.').append(extension);
    qsizetype room = std::max<qsizetype>(NAME_MAX - end.size(), 1);
    if (stem.size() > room) {
        constexpr auto continuesCharacter = [](char byte) {
            return (static_cast<unsigned char>(byte) & 0xC0u) == 0x80;
        };
        while (room > 1 && continuesCharacter(stem[room]))
            --room;
        stem.truncate(room);
    }
    return (stem + end).left(NAME_MAX);
}

} // namespace

FSRef fsRef(const QString &path)
{
    FSRef ref;
    (void)FSPathMakeRefWithOptions(fileSystemRepresentation(path), kFSPathMakeRefDoNotFollowLeafSymlink, &ref, nullptr);
    return ref;
}

QString stringWithFSRef(const FSRef *ref)
{
    std::array<char, pathBufferSize> buffer;
    if (FSRefMakePath(ref, buffer.data(), pathBufferSize) != noErr)
        return {};
    return stringWithFileSystemRepresentation(buffer.data());
}

QString stringByResolvingFinderAlias(const QString &path)
{
    if (path.isNull())
        return {};
    FSRef ref = fsRef(path);
    if (!FSRefValid(&ref))
        return {};
    bool wasAliased = false;
    if (FSResolveAliasFile(&ref, true, nullptr, &wasAliased) != noErr || !wasAliased)
        return path;
    return stringWithFSRef(&ref);
}

QString unusedName(const QString &path)
{
    return unusedName(path, [](const QString &) { return false; });
}

QString unusedName(const QString &path, const std::function<bool(const QString &)> &isTakenToo)
{
    QByteArray bytes = fileSystemRepresentation(path);
    if (!existsAt(bytes) && !isTakenToo(path))
        return path;
    while (bytes.size() > 1 && bytes.endsWith('/'))
        bytes.chop(1);
    const QByteArray name = lastPathComponent(bytes).toByteArray();
    const QByteArray folder = bytes.chopped(name.size());
    const QByteArray extension = extensionOfName(name).toByteArray();
    const QByteArray stem = extension.isEmpty() ? name : name.chopped(extension.size() + 1);
    for (std::uint64_t number = 1;; ++number) {
        const QByteArray candidate = folder + numberedName(stem, number, extension);
        QString result = stringWithFileSystemRepresentation(candidate);
        if (!existsAt(candidate) && !isTakenToo(result))
            return result;
    }
}

bool isFinderAliasAtPath(const QString &path)
{
    if (path.isNull())
        return false;
    const FSRef ref = fsRef(path);
    bool isAlias = false;
    return FSRefValid(&ref) && FSIsAliasFile(&ref, &isAlias, nullptr) == noErr && isAlias;
}

bool deleteDirectoryAtPathIfEmpty(const QString &path)
{
    QByteArray bytes = fileSystemRepresentation(path);
    // A link to a folder does not count as one, with or without a slash behind it.
    while (bytes.size() > 1 && bytes.endsWith('/'))
        bytes.chop(1);
    QByteArray absolute;
    int error = makeAbsolutePath(bytes, LeafLink::NotFollowed, &absolute);
    if (error != 0)
        return false;
    const UniqueDescriptor folder = openPath(absolute, O_RDONLY | O_DIRECTORY | O_NOFOLLOW, &error);
    std::vector<QByteArray> names;
    if (!folder || !listWorthless(folder, &names))
        return false;
    // Only what was looked at is removed: a file that came or grew meanwhile stays, and with it the folder.
    for (const QByteArray &name : names) {
        if (!isWorthless(folder.get(), name))
            return false;
        if (::unlinkat(folder.get(), name.constData(), 0) != 0 && errno != ENOENT)
            return false;
    }
    const PathAccess access(absolute);
    return access.error() == 0 && ::unlinkat(access.folder(), access.path(), AT_REMOVEDIR) == 0;
}

} // namespace Tessaron
