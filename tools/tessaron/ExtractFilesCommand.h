#pragma once

#include "tools/tessaron/Arguments.h"
#include "tools/tessaron/ExitStatus.h"
#include "tools/tessaron/JobRun.h"
#include "tools/tessaron/Problem.h"
#include <TessaronClasses/ExtractFilesJob.h>

namespace Tessaron::Tool
{

/// `tessaron extract --files`: takes files out of a filesystem of an image. Serves one run, on the main thread.
class ExtractFilesCommand
{
public:
    explicit ExtractFilesCommand(const Arguments &arguments);

    [[nodiscard]] ExitStatus run();

private:
    void extract();
    [[nodiscard]] ExitStatus status() const;
    void print(double seconds) const;
    void printLists() const;
    [[nodiscard]] bool writeJson(double seconds) const;

    const Arguments m_arguments;
    JobRun m_run;
    ExtractFilesResult m_result;
    Problem m_problem;
};

} // namespace Tessaron::Tool
