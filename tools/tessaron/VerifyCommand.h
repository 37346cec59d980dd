#pragma once

#include "tools/tessaron/Arguments.h"
#include "tools/tessaron/ExitStatus.h"
#include "tools/tessaron/JobRun.h"
#include "tools/tessaron/VerifyReport.h"

namespace Tessaron::Tool
{

/// `tessaron verify`: reads every filesystem of an image back and compares it with the sources. Serves one run, on the
/// main thread.
class VerifyCommand
{
public:
    explicit VerifyCommand(const Arguments &arguments);

    [[nodiscard]] ExitStatus run();

private:
    void verify();

    const Arguments m_arguments;
    JobRun m_run;
    VerifyOutcome m_outcome;
};

} // namespace Tessaron::Tool
