#include "tools/tessaron/VerifyCommand.h"

#include "tools/tessaron/CommonReport.h"
#include <TessaronClasses/VerifyJob.h>

namespace Tessaron::Tool
{

VerifyCommand::VerifyCommand(const Arguments &arguments)
    : m_arguments(arguments)
    , m_run(arguments)
{
}

ExitStatus VerifyCommand::run()
{
    verify();
    bool isWritten = true;
    if (m_arguments.json) {
        if (m_outcome.problem)
            printProblem(m_outcome.problem);
        isWritten = writeVerifyJson(m_arguments.paths.first(), m_outcome, m_run.seconds());
    } else {
        isWritten = printVerifyReport(m_arguments, m_outcome);
    }
    return exitStatusAfterReport(isWritten, exitStatusFor(m_outcome));
}

void VerifyCommand::verify()
{
    VerifyOrder order;
    order.image = m_arguments.paths.first();
    order.sources = m_arguments.paths.mid(1);
    if (m_arguments.hasFilesystems)
        order.filesystems = m_arguments.filesystems;
    VerifyJob job(order);
    m_outcome.result = m_run.resultOf(job);
    m_outcome.problem = problemOf(m_outcome.result.error);
}

} // namespace Tessaron::Tool
