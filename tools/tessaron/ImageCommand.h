#pragma once

#include "tools/tessaron/Arguments.h"
#include "tools/tessaron/ExitStatus.h"
#include "tools/tessaron/JobRun.h"
#include "tools/tessaron/Problem.h"
#include <TessaronClasses/DiscImageJob.h>

namespace Tessaron::Tool
{

/// `tessaron image`: has a job make the image, and reports. Runs the event loop of the main thread; serves one run.
class ImageCommand
{
public:
    explicit ImageCommand(const Arguments &arguments);

    [[nodiscard]] ExitStatus run();

private:
    [[nodiscard]] DiscImageOrder order() const;
    void makeImage();
    [[nodiscard]] ExitStatus report();

    const Arguments m_arguments;
    JobRun m_run;
    Problem m_problem;
    DiscImageResult m_result;
};

} // namespace Tessaron::Tool
