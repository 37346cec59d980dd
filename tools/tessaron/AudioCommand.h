#pragma once

#include "tools/tessaron/Arguments.h"
#include "tools/tessaron/ExitStatus.h"
#include "tools/tessaron/JobRun.h"
#include "tools/tessaron/Problem.h"
#include <TessaronClasses/AudioImageJob.h>

namespace Tessaron::Tool
{

/// `tessaron audio`: has a job make the image of an audio CD, and reports. Runs the event loop of the main thread;
/// serves one run.
class AudioCommand
{
public:
    explicit AudioCommand(const Arguments &arguments);

    [[nodiscard]] ExitStatus run();

private:
    void makeImage();
    [[nodiscard]] ExitStatus exitStatus() const;
    void print(double seconds) const;
    void printTracks() const;
    [[nodiscard]] bool writeJson(double seconds) const;

    const Arguments m_arguments;
    JobRun m_run;
    Problem m_problem;
    AudioImageResult m_result;
};

} // namespace Tessaron::Tool
