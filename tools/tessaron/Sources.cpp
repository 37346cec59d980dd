#include "tools/tessaron/Sources.h"

#include "tools/tessaron/Text.h"

#include <QHash>

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaron::Tool
{

namespace
{

Problem sourceProblem(const QByteArray &path, const QString &message, const QString &advice = {})
{
    return {Problem::Kind::Source, message, advice, path};
}

/// The real path, all links resolved; empty with `errno` set when there is none.
QByteArray resolved(const QByteArray &path)
{
    const std::unique_ptr<char, decltype(&std::free)> result(::realpath(path.constData(), nullptr), &std::free);
    return result ? QByteArray(result.get()) : QByteArray();
}

Problem missing(const QByteArray &path, int reason)
{
    if (reason == ENOENT)
        return sourceProblem(path, QStringLiteral("there is no file or folder %1").arg(quoted(path)));
    return sourceProblem(path, QStringLiteral("%1 cannot be reached: %2").arg(quoted(path), systemText(reason)));
}

QByteArray discName(const Source &source)
{
    const QByteArray name = lastComponent(source.argument);
    return name == "." || name == ".." ? lastComponent(resolved(source.argument)) : name;
}

Problem checkReadable(const Source &source)
{
    const int wanted = source.isFolder ? R_OK | X_OK : R_OK;
    if (::faccessat(AT_FDCWD, source.path.constData(), wanted, AT_EACCESS) == 0)
        return {};
    const QString kind = source.isFolder ? QStringLiteral("folder") : QStringLiteral("file");
    return sourceProblem(
        source.argument,
        QStringLiteral("the %1 %2 cannot be read: %3").arg(kind, quoted(source.argument), systemText(errno)));
}

Problem inspect(const QByteArray &argument, Source *source)
{
    source->argument = argument;
    source->path = argument;
    struct stat status;
    if (::lstat(argument.constData(), &status) != 0)
        return missing(argument, errno);
    if (S_ISLNK(status.st_mode)) {
        source->path = resolved(argument);
        if (source->path.isEmpty() || ::stat(source->path.constData(), &status) != 0)
            return sourceProblem(
                argument,
                QStringLiteral("the symbolic link %1 leads nowhere: %2").arg(quoted(argument), systemText(errno)));
    }
    if (!S_ISDIR(status.st_mode) && !S_ISREG(status.st_mode))
        return sourceProblem(argument,
                             QStringLiteral("%1 is neither a folder nor a regular file").arg(quoted(argument)),
                             QStringLiteral("Give the folder that holds it to store it as a special file."));
    source->isFolder = S_ISDIR(status.st_mode);
    source->identity = {status.st_dev, status.st_ino};
    source->name = discName(*source);
    return checkReadable(*source);
}

Problem twice(const Source &first, const Source &second)
{
    return {Problem::Kind::Usage,
            QStringLiteral("%1 and %2 are the same folder").arg(quoted(first.argument), quoted(second.argument)),
            QStringLiteral("Give it once."), second.argument};
}

Problem sameName(const Source &first, const Source &second)
{
    if (first.identity == second.identity)
        return {Problem::Kind::Usage,
                QStringLiteral("%1 and %2 are the same file").arg(quoted(first.argument), quoted(second.argument)),
                QStringLiteral("Give it once."), second.argument};
    return {Problem::Kind::Usage,
            QStringLiteral("two sources have the name %1: %2 and %3")
                .arg(quoted(first.name), quoted(first.argument), quoted(second.argument)),
            QStringLiteral("Rename one of them, or give the folders that hold them."), second.argument};
}

} // namespace

Problem inspectSources(const QList<QByteArray> &paths, std::vector<Source> *sources)
{
    sources->clear();
    for (const QByteArray &path : paths) {
        Source source;
        if (Problem problem = inspect(path, &source))
            return problem;
        sources->push_back(source);
    }
    return {};
}

Problem checkSideBySide(const std::vector<Source> &sources)
{
    QHash<QByteArray, const Source *> byName;
    QHash<QPair<quint64, quint64>, const Source *> folders;
    for (const Source &source : sources) {
        if (source.isFolder) {
            const Source *&known = folders[{source.identity.device, source.identity.inode}];
            if (known != nullptr)
                return twice(*known, source);
            known = &source;
        }
        const Source *&known = byName[source.name];
        if (known != nullptr)
            return sameName(*known, source);
        known = &source;
    }
    return {};
}

} // namespace Tessaron::Tool
