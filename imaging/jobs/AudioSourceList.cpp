#include "imaging/jobs/AudioSourceList.h"

#include "platform/foundation/DescriptorIO.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MessageTexts.h"
#include "platform/foundation/UniqueDescriptor.h"
#include <TessaronClasses/DiscJobErrors.h>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

namespace Tessaron
{

namespace
{

/// Far more than 99 of the longest paths.
constexpr std::int64_t longestList = 1 << 20;

bool isList(const QByteArray &path)
{
    const QByteArray name = path.toLower();
    return name.endsWith(".m3u") || name.endsWith(".m3u8");
}

NSError listError(const QByteArray &path, const QString &reason, const QString &suggestion)
{
    return discJobError(DiscJobErrorCode::Source, QStringLiteral("the list %1 %2").arg(quoted(path), reason),
                        suggestion, path);
}

Result<QByteArray> contentsOfList(const QByteArray &path)
{
    const UniqueDescriptor file(::open(path.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status;
    if (!file || ::fstat(file.get(), &status) != 0)
        return listError(path, QStringLiteral("cannot be read: ") + systemText(errno), {});
    if (!S_ISREG(status.st_mode) || status.st_size > longestList)
        return listError(path, QStringLiteral("is no text of a list"), QStringLiteral("Name the audio files instead."));
    QByteArray contents(status.st_size, Qt::Uninitialized);
    std::size_t got = 0;
    if (const int failure = readFully(file.get(), 0, contents.data(), std::size_t(contents.size()), &got))
        return listError(path, QStringLiteral("cannot be read: ") + systemText(failure), {});
    contents.truncate(qsizetype(got));
    return contents;
}

/// A line of a list as a path from where the program runs.
QByteArray pathOfEntry(const QByteArray &entry, const QByteArray &list)
{
    if (entry.startsWith('/'))
        return entry;
    return list.left(list.lastIndexOf('/') + 1) + entry;
}

} // namespace

Result<QList<QByteArray>> audioSourcesOf(const QList<QByteArray> &arguments)
{
    QList<QByteArray> sources;
    for (const QByteArray &argument : arguments) {
        if (!isList(argument)) {
            sources << argument;
            continue;
        }
        Result<QByteArray> contents = contentsOfList(argument);
        if (!contents)
            return contents.error();
        if (contents->startsWith("\xEF\xBB\xBF"))
            contents->remove(0, 3);
        contents->replace('\r', '\n');
        for (const QByteArray &line : contents->split('\n')) {
            const QByteArray entry = line.trimmed();
            if (entry.isEmpty() || entry.startsWith('#'))
                continue;
            if (entry.contains("://"))
                return listError(argument, QStringLiteral("names the address %1").arg(quoted(entry)),
                                 QStringLiteral("Only files can be taken: fetch it, and name the file."));
            if (isList(entry))
                return listError(argument, QStringLiteral("names another list, %1").arg(quoted(entry)),
                                 QStringLiteral("Name that list itself."));
            sources << pathOfEntry(entry, argument);
        }
    }
    return sources;
}

} // namespace Tessaron
