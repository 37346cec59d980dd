#pragma once

#include "tools/tessaron/Arguments.h"
#include "tools/tessaron/ExitStatus.h"
#include "tools/tessaron/JobRun.h"
#include "tools/tessaron/Problem.h"
#include <TessaronClasses/ExtractJob.h>

namespace Tessaron::Tool
{

/// `tessaron extract`: takes tracks out of an image. Serves one run, on the main thread.
class ExtractCommand
{
public:
    explicit ExtractCommand(const Arguments &arguments);

    [[nodiscard]] ExitStatus run();

private:
    void extract();
    [[nodiscard]] ExitStatus status() const;
    void print(double seconds) const;
    [[nodiscard]] bool writeJson(double seconds) const;

    const Arguments m_arguments;
    JobRun m_run;
    ExtractResult m_result;
    Problem m_problem;
};

} // namespace Tessaron::Tool
