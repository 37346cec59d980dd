#pragma once

#include "tools/tessaron/Arguments.h"
#include "tools/tessaron/ExitStatus.h"
#include "tools/tessaron/Problem.h"
#include <TessaronClasses/DrivesJob.h>

#include <QByteArray>

namespace Tessaron::Tool
{

/// `tessaron drives`: lists the optical drives, and tells about the discs in those that it may open. Runs the event
/// loop of the main thread; serves one run.
class DrivesCommand
{
public:
    explicit DrivesCommand(const Arguments &arguments);

    [[nodiscard]] ExitStatus run();

private:
    [[nodiscard]] bool writeText() const;
    [[nodiscard]] bool writeJson() const;

    const Arguments m_arguments;
    DrivesResult m_result;
    Problem m_problem;
};

} // namespace Tessaron::Tool
