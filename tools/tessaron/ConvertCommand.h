#pragma once

#include "tools/tessaron/Arguments.h"
#include "tools/tessaron/ExitStatus.h"
#include "tools/tessaron/JobRun.h"
#include "tools/tessaron/Problem.h"
#include <TessaronClasses/AudioConvertJob.h>

namespace Tessaron::Tool
{

/// `tessaron convert`: has a job make WAVE, AIFF or MP3 files of audio and movie files, and reports. Runs the event
/// loop of the main thread; serves one run.
class ConvertCommand
{
public:
    explicit ConvertCommand(const Arguments &arguments);

    [[nodiscard]] ExitStatus run();

private:
    void convert();
    [[nodiscard]] ExitStatus exitStatus() const;
    void print(double seconds) const;
    void printFiles() const;
    void printSummary(double seconds) const;
    [[nodiscard]] bool writeJson(double seconds) const;

    const Arguments m_arguments;
    JobRun m_run;
    Problem m_problem;
    AudioConvertResult m_result;
};

} // namespace Tessaron::Tool
