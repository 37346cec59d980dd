#pragma once

#include "tools/tessaron/Arguments.h"
#include "tools/tessaron/ExitStatus.h"
#include "tools/tessaron/JobRun.h"
#include "tools/tessaron/Problem.h"
#include <TessaronClasses/BlankDiscJob.h>

namespace Tessaron::Tool
{

/// `tessaron blank`: has a job blank or format a disc, and reports. Runs the event loop of the main thread; serves one
/// run.
class BlankCommand
{
public:
    explicit BlankCommand(const Arguments &arguments);

    [[nodiscard]] ExitStatus run();

private:
    void print(double seconds) const;
    [[nodiscard]] bool writeJson(double seconds) const;

    const Arguments m_arguments;
    JobRun m_run;
    Problem m_problem;
    BlankDiscResult m_result;
};

} // namespace Tessaron::Tool
