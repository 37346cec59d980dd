#include "tools/tessaron/ImageCommand.h"

#include "tools/tessaron/CommonReport.h"
#include "tools/tessaron/DiscOrders.h"
#include "tools/tessaron/ImageReport.h"

#include <unistd.h>

namespace Tessaron::Tool
{

ImageCommand::ImageCommand(const Arguments &arguments)
    : m_arguments(arguments)
    , m_run(arguments)
{
}

ExitStatus ImageCommand::run()
{
    m_problem = problemOfStandardOutput(m_arguments);
    if (!m_problem)
        makeImage();
    return report();
}

DiscImageOrder ImageCommand::order() const
{
    DiscImageOrder order;
    setLayoutOptions(&order, m_arguments);
    if (m_arguments.output == "-")
        order.outputDescriptor = STDOUT_FILENO;
    else
        order.output = m_arguments.output;
    order.format = m_arguments.format;
    order.isSynchronized = m_arguments.isSynchronized;
    return order;
}

void ImageCommand::makeImage()
{
    DiscImageJob job(order());
    m_result = m_run.resultOf(job);
    m_problem = problemOf(m_result.error);
    if (m_problem.kind == Problem::Kind::NotStored)
        m_problem.advice = QStringLiteral("Leave --strict out to make the image without what is missing.");
}

ExitStatus ImageCommand::report()
{
    const double seconds = m_run.seconds();
    printImageReport(m_arguments, m_result, m_problem, seconds);
    const bool isWritten = !m_arguments.json || writeImageJson(m_arguments, m_result, m_problem, seconds);
    return exitStatusAfterReport(isWritten, exitStatusFor(m_result, m_problem));
}

} // namespace Tessaron::Tool
