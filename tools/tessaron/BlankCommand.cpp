#include "tools/tessaron/BlankCommand.h"

#include "tools/tessaron/CommonReport.h"
#include "tools/tessaron/DriveReport.h"
#include "tools/tessaron/JsonWriter.h"
#include "tools/tessaron/StandardStreams.h"

#include <unistd.h>

namespace Tessaron::Tool
{

BlankCommand::BlankCommand(const Arguments &arguments)
    : m_arguments(arguments)
    , m_run(arguments)
{
}

ExitStatus BlankCommand::run()
{
    const DiscBlanking blanking = m_arguments.formats ? DiscBlanking::Format
        : m_arguments.blanksAll                       ? DiscBlanking::Full
                                                      : DiscBlanking::Quick;
    BlankDiscJob job({m_arguments.drive, blanking, m_arguments.ejects});
    m_result = m_run.resultOf(job);
    m_problem = problemOf(m_result.error);
    const double seconds = m_run.seconds();
    print(seconds);
    return exitStatusAfterReport(!m_arguments.json || writeJson(seconds), exitStatusFor(m_problem));
}

void BlankCommand::print(double seconds) const
{
    const bool isQuiet = m_arguments.verbosity == Verbosity::Quiet;
    if (!isQuiet) {
        for (const QString &note : m_result.notes)
            printDiagnostic(note);
    }
    if (m_problem)
        printProblem(m_problem);
    else if (!isQuiet)
        printDiagnostic(QStringLiteral("%1 %2 with %3, %4 s")
                            .arg(m_arguments.formats ? QStringLiteral("formatted") : QStringLiteral("blanked"),
                                 discText(m_result.before), m_result.driveName, QString::number(seconds, 'f', 1)));
}

bool BlankCommand::writeJson(double seconds) const
{
    JsonWriter writer(STDOUT_FILENO);
    beginReport(writer, QStringLiteral("blank"), exitStatusFor(m_problem));
    writer.pathMember("drive", m_arguments.drive);
    writer.key("before");
    writeDiscObject(writer, m_result.before);
    writer.key("after");
    writeDiscObject(writer, m_result.after);
    writer.key("seconds");
    writer.value(seconds, 3);
    writer.textsMember("notes", m_result.notes);
    if (!m_result.fault.isEmpty())
        writer.member("fault", m_result.fault);
    if (!m_result.condition.isEmpty())
        writer.member("condition", m_result.condition);
    return endReport(writer, m_problem);
}

} // namespace Tessaron::Tool
