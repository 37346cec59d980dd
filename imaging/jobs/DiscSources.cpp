#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MessageTexts.h"
#include <TessaronClasses/DiscJobErrors.h>
#include <TessaronClasses/DiscSources.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <map>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace Tessaron
{

namespace
{

NSError sourceError(const QByteArray &path, const QString &message, const QString &advice = {})
{
    return discJobError(DiscJobErrorCode::Source, message, advice, path);
}

/// The real path, all links resolved; empty, with `errno` set, when nothing is there.
QByteArray resolved(const QByteArray &path)
{
    const std::unique_ptr<char, decltype(&std::free)> result(::realpath(path.constData(), nullptr), &std::free);
    return result ? QByteArray(result.get()) : QByteArray();
}

NSError missing(const QByteArray &path, int reason)
{
    if (reason == ENOENT)
        return sourceError(path, QStringLiteral("there is no file or folder %1").arg(quoted(path)));
    if (reason == ENAMETOOLONG && path.size() >= PATH_MAX)
        return sourceError(path,
                           QStringLiteral("a path has %1 bytes, and the system takes %2 at most: “%3…”")
                               .arg(path.size())
                               .arg(PATH_MAX - 1)
                               .arg(displayableText(stringWithFileSystemRepresentation(path.left(60)))),
                           QStringLiteral("Go into a folder on its way, and name it from there."));
    return sourceError(path, QStringLiteral("%1 cannot be reached: %2").arg(quoted(path), systemText(reason)));
}

QByteArray discName(const DiscSource &source)
{
    const QByteArray name = lastComponent(source.argument);
    return name == "." || name == ".." ? lastComponent(resolved(source.argument)) : name;
}

NSError checkReadable(const DiscSource &source)
{
    const int wanted = source.isFolder ? R_OK | X_OK : R_OK;
    if (::faccessat(AT_FDCWD, source.path.constData(), wanted, AT_EACCESS) == 0)
        return {};
    const QString kind = source.isFolder ? QStringLiteral("folder") : QStringLiteral("file");
    return sourceError(
        source.argument,
        QStringLiteral("the %1 %2 cannot be read: %3").arg(kind, quoted(source.argument), systemText(errno)));
}

NSError inspect(const QByteArray &argument, DiscSource *source)
{
    source->argument = argument;
    source->path = argument;
    struct stat status;
    if (::lstat(argument.constData(), &status) != 0)
        return missing(argument, errno);
    if (S_ISLNK(status.st_mode)) {
        source->path = resolved(argument);
        if (source->path.isEmpty() || ::stat(source->path.constData(), &status) != 0)
            return sourceError(
                argument,
                QStringLiteral("the symbolic link %1 leads nowhere: %2").arg(quoted(argument), systemText(errno)));
    }
    if (!S_ISDIR(status.st_mode) && !S_ISREG(status.st_mode))
        return sourceError(argument, QStringLiteral("%1 is neither a folder nor a regular file").arg(quoted(argument)),
                           QStringLiteral("Give the folder that holds it to store it as a special file."));
    source->isFolder = S_ISDIR(status.st_mode);
    source->identity = {status.st_dev, status.st_ino};
    source->name = discName(*source);
    return checkReadable(*source);
}

NSError twice(const DiscSource &first, const DiscSource &second)
{
    return discJobError(
        DiscJobErrorCode::InvalidOrder,
        QStringLiteral("%1 and %2 are the same folder").arg(quoted(first.argument), quoted(second.argument)),
        QStringLiteral("Give it once."), second.argument);
}

NSError sameName(const DiscSource &first, const DiscSource &second)
{
    if (first.identity == second.identity)
        return discJobError(
            DiscJobErrorCode::InvalidOrder,
            QStringLiteral("%1 and %2 are the same file").arg(quoted(first.argument), quoted(second.argument)),
            QStringLiteral("Give it once."), second.argument);
    return discJobError(DiscJobErrorCode::InvalidOrder,
                        QStringLiteral("two sources have the name %1: %2 and %3")
                            .arg(quoted(first.name), quoted(first.argument), quoted(second.argument)),
                        QStringLiteral("Rename one of them, or give the folders that hold them."), second.argument);
}

} // namespace

Result<std::vector<DiscSource>> discSourcesAtPaths(const QList<QByteArray> &paths)
{
    std::vector<DiscSource> sources;
    for (const QByteArray &path : paths) {
        DiscSource source;
        if (NSError error = inspect(path, &source))
            return error;
        sources.push_back(source);
    }
    return sources;
}

NSError errorOfSourcesSideBySide(const std::vector<DiscSource> &sources)
{
    std::map<QByteArray, const DiscSource *> byName;
    std::map<std::pair<std::uint64_t, std::uint64_t>, const DiscSource *> folders;
    for (const DiscSource &source : sources) {
        if (source.isFolder) {
            const DiscSource *&known = folders[{source.identity.device, source.identity.inode}];
            if (known != nullptr)
                return twice(*known, source);
            known = &source;
        }
        const DiscSource *&known = byName[source.name];
        if (known != nullptr)
            return sameName(*known, source);
        known = &source;
    }
    return {};
}

} // namespace Tessaron
