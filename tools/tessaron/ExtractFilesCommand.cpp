#include "tools/tessaron/ExtractFilesCommand.h"

#include "platform/foundation/FileSystemRepresentation.h"
#include "tools/tessaron/CommonReport.h"
#include "tools/tessaron/JsonWriter.h"
#include "tools/tessaron/StandardStreams.h"
#include "tools/tessaron/Text.h"
#include "tools/tessaron/VolumeJson.h"

#include <unistd.h>

namespace Tessaron::Tool
{

namespace
{

/// Errors that jobs make name the file themselves; those of readers say where in the image something is wrong.
QString lineAbout(const ExtractFilesResult::Failure &failure)
{
    return failure.error.domain() == DiscJobErrorDomain
        ? failure.error.localizedDescription()
        : QStringLiteral("%1: %2").arg(quoted(failure.path), failure.error.localizedDescription());
}

void writeFailure(JsonWriter &writer, const ExtractFilesResult::Failure &failure)
{
    writer.beginObject();
    writer.pathMember("path", failure.path);
    writer.member("message", failure.error.localizedDescription());
    writer.endObject();
}

} // namespace

ExtractFilesCommand::ExtractFilesCommand(const Arguments &arguments)
    : m_arguments(arguments)
    , m_run(arguments)
{
}

ExitStatus ExtractFilesCommand::run()
{
    extract();
    const double seconds = m_run.seconds();
    print(seconds);
    return exitStatusAfterReport(!m_arguments.json || writeJson(seconds), status());
}

void ExtractFilesCommand::extract()
{
    ExtractFilesOrder order;
    order.image = m_arguments.paths.first();
    order.paths = m_arguments.paths.mid(1);
    order.filesystem = m_arguments.extractedFilesystem;
    order.track = m_arguments.track;
    order.folder = m_arguments.output;
    order.isSynchronized = m_arguments.isSynchronized;
    ExtractFilesJob job(order);
    m_result = m_run.resultOf(job);
    m_problem = problemOf(m_result.error);
}

ExitStatus ExtractFilesCommand::status() const
{
    if (m_problem)
        return exitStatusFor(m_problem);
    return m_result.isComplete() ? ExitStatus::Done : ExitStatus::Incomplete;
}

void ExtractFilesCommand::printLists() const
{
    for (const ExtractFilesResult::Failure &failure : m_result.failures)
        printDiagnostic(lineAbout(failure));
    if (m_result.failureCount > m_result.failures.size())
        printDiagnostic(QStringLiteral("… and %1 more that could not be taken out")
                            .arg(m_result.failureCount - m_result.failures.size()));
    for (const ExtractFilesResult::Renaming &renaming : m_result.renamings)
        printDiagnostic(QStringLiteral("%1 is %2 now").arg(quoted(renaming.path), quoted(renaming.name)));
    if (m_result.renamingCount > m_result.renamings.size())
        printDiagnostic(
            QStringLiteral("… and %1 more with other names").arg(m_result.renamingCount - m_result.renamings.size()));
    if (m_result.unsetTimes > 0)
        printDiagnostic(QStringLiteral("%1 could not be given the date of the image")
                            .arg(counted(m_result.unsetTimes, "file", "files")));
}

void ExtractFilesCommand::print(double seconds) const
{
    for (const QString &note : m_result.notes)
        printDiagnostic(note);
    printLists();
    if (m_problem)
        printProblem(m_problem);
    const bool isAnythingThere = m_result.files + m_result.folders + m_result.symbolicLinks > 0;
    if (m_problem ? !isAnythingThere : m_arguments.verbosity == Verbosity::Quiet)
        return;
    QString line = QStringLiteral("%1 %2, %3")
                       .arg(m_problem ? QStringLiteral("what was taken out before stays:") : QStringLiteral("took out"),
                            counted(m_result.files, "file", "files"), counted(m_result.folders, "folder", "folders"));
    if (m_result.symbolicLinks > 0)
        line += QStringLiteral(", ") + counted(m_result.symbolicLinks, "symbolic link", "symbolic links");
    printDiagnostic(
        line
        + QStringLiteral(", %1 of %2 in %3 s")
              .arg(sizeText(m_result.bytes), volumeKindName(m_result.filesystem), QString::number(seconds, 'f', 1)));
}

bool ExtractFilesCommand::writeJson(double seconds) const
{
    JsonWriter writer(STDOUT_FILENO);
    beginReport(writer, QStringLiteral("extract"), status());
    writer.pathMember("image", m_arguments.paths.first());
    writer.pathMember("output", m_arguments.output);
    writer.member("filesystem", volumeKindKey(m_result.filesystem));
    writer.member("files", m_result.files);
    writer.member("folders", m_result.folders);
    writer.member("symbolicLinks", m_result.symbolicLinks);
    writer.member("bytes", m_result.bytes);
    writer.member("failureCount", m_result.failureCount);
    writer.key("failures");
    writer.beginArray();
    for (const ExtractFilesResult::Failure &failure : m_result.failures)
        writeFailure(writer, failure);
    writer.endArray();
    writer.member("renamingCount", m_result.renamingCount);
    writer.key("renamings");
    writer.beginArray();
    for (const ExtractFilesResult::Renaming &renaming : m_result.renamings) {
        writer.beginObject();
        writer.pathMember("path", renaming.path);
        writer.pathMember("name", renaming.name);
        writer.endObject();
    }
    writer.endArray();
    writer.member("unsetTimes", m_result.unsetTimes);
    writer.textsMember("notes", m_result.notes);
    writer.key("seconds");
    writer.value(seconds, 3);
    return endReport(writer, m_problem);
}

} // namespace Tessaron::Tool
