#include "tools/tessaron/ConvertCommand.h"

#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MessageTexts.h"
#include "tools/tessaron/CommonReport.h"
#include "tools/tessaron/JsonWriter.h"
#include "tools/tessaron/StandardStreams.h"
#include "tools/tessaron/StopWatcher.h"
#include "tools/tessaron/Text.h"

#include <algorithm>
#include <unistd.h>

namespace Tessaron::Tool
{

namespace
{

constexpr qsizetype shownPlaces = 20; ///< of damage in a file

bool isCancelled(const ConvertedFile &file)
{
    return isDiscJobError(file.error, DiscJobErrorCode::Cancelled);
}

void printDamage(const ConvertedFile &file, qsizetype most)
{
    const QString source = stringWithFileSystemRepresentation(file.source);
    for (const QString &place : file.damage.mid(0, most))
        printDiagnostic(source + QStringLiteral(", ") + place);
    if (file.damage.size() > most)
        printDiagnostic(QStringLiteral("%1: and %2 more lines like these").arg(source).arg(file.damage.size() - most));
    printDiagnostic(QStringLiteral("%1 is broken in places; silence stands for them in %2")
                        .arg(quoted(file.source), quoted(file.destination)));
}

void writeFile(JsonWriter &writer, const ConvertedFile &file)
{
    writer.beginObject();
    writer.pathMember("source", file.source);
    if (!file.destination.isEmpty())
        writer.pathMember("destination", file.destination);
    writer.member("damaged", file.isDamaged);
    writer.textsMember("damage", file.damage);
    writer.textsMember("notes", file.notes);
    writeErrorMember(writer, problemOf(file.error));
    writer.endObject();
}

} // namespace

ConvertCommand::ConvertCommand(const Arguments &arguments)
    : m_arguments(arguments)
    , m_run(arguments)
{
}

ExitStatus ConvertCommand::run()
{
    convert();
    const double seconds = m_run.seconds();
    print(seconds);
    return exitStatusAfterReport(!m_arguments.json || writeJson(seconds), exitStatus());
}

void ConvertCommand::convert()
{
    AudioConvertOrder order;
    order.sources = m_arguments.paths;
    order.destination = m_arguments.folder;
    order.format = m_arguments.soundFormat;
    order.isFlat = m_arguments.isFlat;
    order.jobs = m_arguments.jobs;
    order.carriesTags = m_arguments.carriesTags;
    AudioConvertJob job(order);
    // The programs that convert are in process groups of their own, which Ctrl-Z does not reach.
    const StopWatcher stopWatcher(
        [&] {
            job.suspend();
            m_run.display().clear();
        },
        [&job] { job.resume(); });
    m_result = m_run.resultOf(job, [&](const DiscJobProgress &progress) {
        std::vector<FileProgress> files;
        for (const RunningConversion &one : job.running())
            files.push_back({one.source, one.fraction});
        m_run.display().show(progress, files);
    });
    m_problem = problemOf(m_result.error);
}

/// A file that could not be converted is a failure, although the others follow.
ExitStatus ConvertCommand::exitStatus() const
{
    if (m_problem)
        return exitStatusFor(m_problem);
    if (m_result.failures() > 0)
        return ExitStatus::Failed;
    return m_result.isComplete() ? ExitStatus::Done : ExitStatus::Incomplete;
}

void ConvertCommand::print(double seconds) const
{
    printFiles();
    if (m_problem)
        printProblem(m_problem);
    else if (m_arguments.verbosity != Verbosity::Quiet)
        printSummary(seconds);
}

/// The failures come last, so that they stand where people look first.
void ConvertCommand::printFiles() const
{
    const bool isVerbose = m_arguments.verbosity == Verbosity::Verbose;
    printUnreadable(m_result.unreadable);
    if (m_result.isDestinationLeftOut && m_arguments.verbosity != Verbosity::Quiet)
        printDiagnostic(QStringLiteral("the folder %1 lies in a source; what is in it was left out")
                            .arg(quoted(m_arguments.folder)));
    for (const ConvertedFile &file : m_result.files) {
        if (!file.error && isVerbose)
            printDiagnostic(QStringLiteral("%1 is now %2").arg(quoted(file.source), quoted(file.destination)));
        if (!file.error && file.isDamaged)
            printDamage(file, isVerbose ? file.damage.size() : shownPlaces);
        for (const QString &note : file.notes)
            printDiagnostic(note);
    }
    for (const ConvertedFile &file : m_result.files) {
        if (file.error && !isCancelled(file))
            printProblem(problemOf(file.error));
    }
}

void ConvertCommand::printSummary(double seconds) const
{
    const std::size_t failures = m_result.failures();
    QString line =
        QStringLiteral("converted %1 in %2 s")
            .arg(counted(m_result.files.size() - failures, "file", "files"), QString::number(seconds, 'f', 1));
    if (failures > 0)
        line += QStringLiteral("; %1 could not be converted, see above").arg(counted(failures, "file", "files"));
    else if (exitStatus() == ExitStatus::Incomplete)
        line += QStringLiteral("; not everything is as it should be, see above");
    if (m_result.leftOut > 0)
        line += QStringLiteral("; left out %1 that by their names are neither sound nor movies")
                    .arg(counted(m_result.leftOut, "file", "files"));
    if (m_result.leftOutSpecial > 0)
        line += QStringLiteral("; left out %1")
                    .arg(counted(m_result.leftOutSpecial, "link or special file", "links and special files"));
    printDiagnostic(line);
}

bool ConvertCommand::writeJson(double seconds) const
{
    JsonWriter writer(STDOUT_FILENO);
    beginReport(writer, QStringLiteral("convert"), exitStatus());
    writer.pathMember("directory", m_arguments.folder);
    writer.member("failures", m_result.failures());
    writer.member("leftOut", m_result.leftOut);
    writer.member("leftOutSpecial", m_result.leftOutSpecial);
    writer.key("seconds");
    writer.value(seconds, 3);
    writer.key("files");
    writer.beginArray();
    for (const ConvertedFile &file : m_result.files)
        writeFile(writer, file);
    writer.endArray();
    writeUnreadableMember(writer, m_result.unreadable);
    return endReport(writer, m_problem);
}

} // namespace Tessaron::Tool
