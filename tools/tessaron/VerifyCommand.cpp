#include "tools/tessaron/VerifyCommand.h"

#include "tools/tessaron/CommonReport.h"
#include "tools/tessaron/JobRun.h"
#include "tools/tessaron/StandardStreams.h"
#include "tools/tessaron/Text.h"
#include <TessaronClasses/VerifyJob.h>

#include <cerrno>

namespace Tessaron::Tool
{

VerifyCommand::VerifyCommand(const Arguments &arguments)
    : m_arguments(arguments)
    , m_start(std::chrono::steady_clock::now())
    , m_display(ProgressDisplay::create(arguments.progress, arguments.verbosity))
{
}

ExitStatus VerifyCommand::run()
{
    verify();
    m_display->clear();
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - m_start;
    bool isWritten = true;
    if (m_arguments.json) {
        if (m_outcome.problem)
            printProblem(m_outcome.problem);
        isWritten = writeVerifyJson(m_arguments.paths.first(), m_outcome, time.count());
    } else {
        isWritten = printVerifyReport(m_arguments, m_outcome);
    }
    if (isWritten)
        return exitStatusFor(m_outcome);
    printDiagnostic(QStringLiteral("the report cannot be written to standard output: %1").arg(systemText(errno)));
    return ExitStatus::Failed;
}

void VerifyCommand::verify()
{
    VerifyOrder order;
    order.image = m_arguments.paths.first();
    order.sources = m_arguments.paths.mid(1);
    if (m_arguments.hasFilesystems)
        order.filesystems = m_arguments.filesystems;
    VerifyJob job(order);
    m_outcome.result = runToItsEnd(job, m_display.get());
    m_outcome.problem = problemOf(m_outcome.result.error);
}

} // namespace Tessaron::Tool
