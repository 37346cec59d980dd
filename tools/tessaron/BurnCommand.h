#pragma once

#include "tools/tessaron/Arguments.h"
#include "tools/tessaron/ExitStatus.h"
#include "tools/tessaron/JobRun.h"
#include "tools/tessaron/Problem.h"
#include <TessaronClasses/BurnDiscJob.h>

namespace Tessaron::Tool
{

/// `tessaron burn`: has a job write the disc, and reports. Runs the event loop of the main thread; serves one run.
class BurnCommand
{
public:
    explicit BurnCommand(const Arguments &arguments);

    [[nodiscard]] ExitStatus run();

private:
    [[nodiscard]] Problem makeOrder(BurnDiscOrder *made) const;
    [[nodiscard]] ExitStatus status() const;
    void print(double seconds) const;
    void printReplaced() const;
    [[nodiscard]] QString whatWasWritten() const;
    [[nodiscard]] bool writeJson(double seconds) const;

    const Arguments m_arguments;
    JobRun m_run;
    Problem m_problem;
    BurnDiscResult m_result;
};

} // namespace Tessaron::Tool
