#pragma once

#include "tools/tessaron/Arguments.h"
#include "tools/tessaron/ExitStatus.h"
#include "tools/tessaron/JobRun.h"
#include "tools/tessaron/Problem.h"
#include <TessaronClasses/ScanJob.h>

namespace Tessaron::Tool
{

/// `tessaron scan`: counts files and folders and sums up what they take on disk. Runs the event loop of the main
/// thread; serves one run.
class ScanCommand
{
public:
    explicit ScanCommand(const Arguments &arguments);

    [[nodiscard]] ExitStatus run();

private:
    void scan();
    [[nodiscard]] ExitStatus status() const;
    [[nodiscard]] ScannedSource total() const;
    [[nodiscard]] bool writeText() const;
    [[nodiscard]] bool writeJson() const;

    const Arguments m_arguments;
    JobRun m_run;
    Problem m_problem;
    ScanResult m_result;
};

} // namespace Tessaron::Tool
