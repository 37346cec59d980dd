#include "media/jobs/ToolReport.h"

#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MessageTexts.h"

#include <csignal>
#include <vector>

namespace Tessaron
{

namespace
{

/// What QrlMov2Wav and DummyRedbook return when something in the source is broken and the rest is there, and what
/// DummyRedbook returns when the program behind it has gone away.
constexpr int writtenWithDamage = 3;
constexpr int readerIsGone = 4;

/// A line without the paths that programs put in front of an error, or into it.
QString withoutPaths(QString line, const ToolPaths &paths)
{
    const auto inFront = [](const QByteArray &path) { return displayableText(quoted(path)) + QStringLiteral(": "); };
    if (const QString source = inFront(paths.source); line.startsWith(source))
        line.remove(0, source.size());
    if (const QString destination = inFront(paths.destination); line.startsWith(destination))
        line.replace(0, destination.size(), QStringLiteral("the result cannot be written: "));
    const auto shown = [](const QByteArray &path) { return displayableText(stringWithFileSystemRepresentation(path)); };
    return line.replace(shown(paths.destination), shown(paths.result));
}

/// The lines that a program has printed, without its name in front. Programs that show their progress end lines with
/// carriage returns.
QStringList linesOf(QString message, const ToolPaths &paths)
{
    QStringList lines;
    for (QString &line : message.replace(u'\r', u'\n').split(u'\n', Qt::SkipEmptyParts)) {
        for (const char *const name : {"QrlMov2Wav: ", "DummyRedbook: "}) {
            if (line.startsWith(QLatin1String(name)))
                line.remove(0, QLatin1String(name).size());
        }
        lines << withoutPaths(line.trimmed(), paths);
    }
    return lines;
}

/// Empty for a program that has ended as it should.
QString failureOf(const taskLauncher::TaskEnd &end, const QString &program, const QStringList &lines)
{
    if (end.isBySignal)
        return QStringLiteral("%1 was ended by signal %2").arg(program).arg(end.status);
    if (end.hasEnded && end.status == 0)
        return {};
    if (end.hasEnded && !lines.isEmpty())
        return lines.last();
    return QStringLiteral("%1 has failed").arg(program);
}

/// Whether a decoder was ended by the end of the program behind it: that one is to be asked then.
bool isConsequence(const taskLauncher::TaskEnd &end)
{
    const bool brokePipe = end.isBySignal && end.status == SIGPIPE;
    return !end.hasEnded || brokePipe || (!end.isBySignal && end.status == readerIsGone);
}

} // namespace

ToolReport reportOfTools(const KRAudioConverter &converter, const ToolPaths &paths)
{
    ToolReport report;
    const std::vector<taskLauncher::TaskEnd> &ends = converter.lastTaskEnds();
    if (ends.empty())
        return {QStringLiteral("the programs that convert were not started"), false, {}};
    const bool isPipeline = ends.size() > 1;
    const QStringList lastLines = linesOf(converter.lastTaskMessage(), paths);
    const QStringList decoderLines = isPipeline ? linesOf(converter.earlierTaskMessage(), paths) : lastLines;
    const QString decoder = QStringLiteral("the program that reads it");
    taskLauncher::TaskEnd decoderEnd = ends.front();
    if (decoderEnd.hasEnded && !decoderEnd.isBySignal && decoderEnd.status == writtenWithDamage) {
        report.isDamaged = true;
        report.damage = decoderLines;
        decoderEnd.status = 0;
    }
    if (!isPipeline || !isConsequence(decoderEnd))
        report.failure = failureOf(decoderEnd, decoder, decoderLines);
    if (isPipeline && report.failure.isEmpty())
        report.failure = failureOf(ends.back(), QStringLiteral("the encoder"), lastLines);
    if (report.failure.isEmpty() && isConsequence(decoderEnd))
        report.failure = QStringLiteral("the encoder has ended before the sound");
    return report;
}

} // namespace Tessaron
