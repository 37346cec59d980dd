#include "imaging/AbandonedEntries.h"

#include "platform/foundation/DirectoryStream.h"

#include <QByteArrayList>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaron
{

namespace
{

constexpr qsizetype variableLetters = 6; // mkstemp(3)

UniqueDescriptor openFolder(int parent, const char *name)
{
    return UniqueDescriptor(::openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

bool isFileOrFolderOfThisUser(int folder, const char *name)
{
    struct stat status;
    return ::fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) == 0 && status.st_uid == ::geteuid()
        && (S_ISREG(status.st_mode) || S_ISDIR(status.st_mode));
}

bool isLetterOrDigit(char one)
{
    return (one >= 'a' && one <= 'z') || (one >= 'A' && one <= 'Z') || (one >= '0' && one <= '9');
}

} // namespace

bool hasName(int descriptor)
{
    struct stat status;
    return ::fstat(descriptor, &status) == 0 && status.st_nlink > 0;
}

bool lockNewEntry(int descriptor)
{
    if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK)
        return false;
    return hasName(descriptor);
}

void forEachAbandoned(int folder, const std::function<bool(QByteArrayView name)> &isMeant,
                      const std::function<void(const QByteArray &name, int descriptor)> &remove)
{
    // First all names: entries that go while a folder is listed may hide others.
    QByteArrayList names;
    const DirectoryStream stream = directoryStream(openFolder(folder, "."));
    while (const dirent *const entry = stream ? ::readdir(stream.get()) : nullptr) {
        if (isMeant(entry->d_name))
            names << QByteArray(entry->d_name);
    }
    for (const QByteArray &name : std::as_const(names)) {
        if (!isFileOrFolderOfThisUser(folder, name.constData()))
            continue;
        // What lies there may be a pipe by now: opening must not wait for its other end.
        const UniqueDescriptor entry(
            ::openat(folder, name.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
        if (entry && ::flock(entry.get(), LOCK_EX | LOCK_NB) == 0)
            remove(name, entry.get());
    }
}

void removeEntry(int folder, const char *name)
{
    if (::unlinkat(folder, name, 0) == 0)
        return;
    if (const UniqueDescriptor inner = openFolder(folder, name))
        removeContents(inner.get());
    ::unlinkat(folder, name, AT_REMOVEDIR);
}

void removeContents(int folder)
{
    const DirectoryStream stream = directoryStream(openFolder(folder, "."));
    while (const dirent *const entry = stream ? ::readdir(stream.get()) : nullptr) {
        const QByteArrayView name(entry->d_name);
        if (name != "." && name != "..")
            removeEntry(folder, entry->d_name);
    }
}

bool isTemporaryName(QByteArrayView name, QByteArrayView beginning, QByteArrayView end)
{
    if (name.size() != beginning.size() + variableLetters + end.size() || !name.startsWith(beginning)
        || !name.endsWith(end))
        return false;
    const QByteArrayView variable = name.sliced(beginning.size(), variableLetters);
    return std::all_of(variable.begin(), variable.end(), isLetterOrDigit);
}

} // namespace Tessaron
