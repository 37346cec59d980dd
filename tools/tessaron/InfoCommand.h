#pragma once

#include "tools/tessaron/Arguments.h"
#include "tools/tessaron/ExitStatus.h"
#include "tools/tessaron/JobRun.h"
#include "tools/tessaron/Problem.h"
#include <TessaronClasses/InfoJob.h>

namespace Tessaron::Tool
{

class JsonWriter;

/// `tessaron info`: tells what is in audio and movie files. Serves one run, on the main thread.
class InfoCommand
{
public:
    explicit InfoCommand(const Arguments &arguments);

    [[nodiscard]] ExitStatus run();

private:
    [[nodiscard]] Problem problemOfResult() const;
    void printFailures() const;
    [[nodiscard]] bool writeText() const;
    [[nodiscard]] bool writeJson() const;

    const Arguments m_arguments;
    JobRun m_run;
    InfoResult m_result;
    Problem m_problem;
};

} // namespace Tessaron::Tool
