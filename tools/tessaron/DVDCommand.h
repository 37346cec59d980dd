#pragma once

#include "tools/tessaron/Arguments.h"
#include "tools/tessaron/ExitStatus.h"
#include "tools/tessaron/JobRun.h"
#include "tools/tessaron/Problem.h"
#include <TessaronClasses/DVDInspectJob.h>

namespace Tessaron::Tool
{

class JsonWriter;

/// `tessaron dvd`: tells what a video DVD says about itself. Serves one run, on the main thread.
class DVDCommand
{
public:
    explicit DVDCommand(const Arguments &arguments);

    [[nodiscard]] ExitStatus run();

private:
    [[nodiscard]] ExitStatus status() const;
    [[nodiscard]] QStringList damages() const;
    [[nodiscard]] bool writeText() const;
    [[nodiscard]] bool writeJson() const;
    static void writeTitle(JsonWriter &writer, const DVDTitle &title);

    const Arguments m_arguments;
    JobRun m_run;
    DVDInspectResult m_result;
    Problem m_problem;
};

} // namespace Tessaron::Tool
