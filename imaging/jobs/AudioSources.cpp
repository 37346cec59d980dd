#include "imaging/jobs/AudioSources.h"

#include "platform/disctracks/DescribedFilePath.h"
#include "platform/disctracks/DescribedFiles.h"
#include "platform/disctracks/DiscDescription.h"
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
        return listError(path, QStringLiteral("is not the text of a list"),
                         QStringLiteral("Name the audio files instead."));
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

NSError sheetError(const QByteArray &path, const NSError &error)
{
    return discJobError(
        DiscJobErrorCode::Source,
        QStringLiteral("the cue sheet %1 cannot be used: %2").arg(quoted(path), error.localizedFailureReason()),
        error.localizedRecoverySuggestion(), path);
}

/// Finds the files of sound in which the tracks of a sheet lie.
NSError addSheet(const QByteArray &path, AudioSources *sources)
{
    Result<QByteArray> text = textOfDescription(path);
    if (!text)
        return sheetError(path, text.error());
    AudioSource source;
    source.sheetPath = path;
    source.firstFile = std::size_t(sources->files.size());
    const CueSheetFiles beside = filesBeside(path);
    CueSheetFiles files = beside;
    files.measure = [&](CueFile *file) -> Result<std::optional<std::uint64_t>> {
        if (file->type == CueFileType::Binary || file->type == CueFileType::Motorola)
            return NSError(NSOSStatusErrorDomain, paramErr,
                           {{NSLocalizedFailureReasonErrorKey,
                             QStringLiteral("it holds sectors of an image, not a sound that can be decoded")},
                            {NSLocalizedRecoverySuggestionErrorKey,
                             QStringLiteral("Take the tracks out with 'tessaron extract' first.")}});
        const Result<std::optional<std::uint64_t>> found = beside.measure(file);
        if (!found)
            return found.error();
        sources->files << file->path;
        return std::optional<std::uint64_t>(); // only a decoder knows it to the sample
    };
    files.cdText = [&](const QByteArray &name) {
        const Result<QByteArray> found = pathOfDescribedFile(path.left(path.lastIndexOf('/') + 1), {name});
        source.cdTextPath = found ? *found : QByteArray();
        return beside.cdText(name);
    };
    const Result<CueSheet> sheet = cueSheetOfText(*text, files);
    if (!sheet)
        return sheetError(path, sheet.error());
    source.sheet = *std::move(text);
    source.fileCount = std::size_t(sources->files.size()) - source.firstFile;
    sources->sources.push_back(std::move(source));
    return {};
}

/// Of a path that leads to something else than a file; one that leads nowhere is told when it is opened.
NSError errorOfKind(const QByteArray &path)
{
    struct stat status;
    if (::stat(path.constData(), &status) != 0 || S_ISREG(status.st_mode))
        return {};
    if (S_ISDIR(status.st_mode))
        return discJobError(DiscJobErrorCode::Source,
                            QStringLiteral("%1 is a folder, and a track is made of a file").arg(quoted(path)),
                            QStringLiteral("Name the files in it, or a list of them."), path);
    return discJobError(DiscJobErrorCode::Source, QStringLiteral("%1 is not a regular file").arg(quoted(path)),
                        QStringLiteral("Copy what it delivers into a file first."), path);
}

NSError addFile(const QByteArray &path, AudioSources *sources)
{
    if (NSError error = errorOfKind(path))
        return error;
    if (isCueSheetName(path))
        return addSheet(path, sources);
    if (const DiscDescriptionKind kind = discDescriptionKind(path); kind != DiscDescriptionKind::None)
        return discJobError(DiscJobErrorCode::Source,
                            QStringLiteral("%1 is a %2, which describes a disc and is not sound")
                                .arg(quoted(path), nameOfDiscDescription(kind)),
                            QStringLiteral("Take its tracks out with 'tessaron extract' first."), path);
    sources->sources.push_back({std::size_t(sources->files.size()), 1, {}, {}, {}});
    sources->files << path;
    return {};
}

} // namespace

bool isCueSheetName(const QByteArray &path)
{
    return path.toLower().endsWith(".cue");
}

Result<QList<QByteArray>> entriesOfList(const QByteArray &path, QByteArray text)
{
    if (text.startsWith("\xEF\xBB\xBF"))
        text.remove(0, 3);
    text.replace("\r\n", "\n").replace('\r', '\n');
    QList<QByteArray> entries;
    const QList<QByteArray> lines = text.split('\n');
    for (qsizetype number = 0; number < lines.size(); ++number) {
        const QByteArray entry = lines[number].trimmed();
        if (entry.isEmpty() || entry.startsWith('#'))
            continue;
        const auto refuse = [&](const QString &what, const QString &suggestion) {
            return listError(path, QStringLiteral("names %1 in line %2").arg(what).arg(number + 1), suggestion);
        };
        if (entry.contains('\0'))
            return refuse(QStringLiteral("no file"), QStringLiteral("A list is a text with a path in each line."));
        if (entry.contains("://"))
            return refuse(QStringLiteral("the address %1").arg(quoted(entry)),
                          QStringLiteral("Only files can be taken: fetch it, and name the file."));
        if (isList(entry))
            return refuse(QStringLiteral("another list, %1,").arg(quoted(entry)),
                          QStringLiteral("Name that list itself."));
        entries << pathOfEntry(entry, path);
    }
    return entries;
}

Result<AudioSources> audioSourcesOf(const QList<QByteArray> &arguments)
{
    AudioSources sources;
    for (const QByteArray &argument : arguments) {
        QList<QByteArray> paths = {argument};
        if (isList(argument)) {
            const Result<QByteArray> contents = contentsOfList(argument);
            if (!contents)
                return contents.error();
            Result<QList<QByteArray>> entries = entriesOfList(argument, *contents);
            if (!entries)
                return entries.error();
            paths = *std::move(entries);
        }
        for (const QByteArray &path : paths) {
            if (NSError error = addFile(path, &sources))
                return error;
        }
    }
    return sources;
}

} // namespace Tessaron
