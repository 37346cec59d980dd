#pragma once

#include "tools/tessaron/Arguments.h"
#include "tools/tessaron/ExitStatus.h"
#include "tools/tessaron/ProgressDisplay.h"
#include "tools/tessaron/VerifyReport.h"

#include <chrono>
#include <memory>

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
    const std::chrono::steady_clock::time_point m_start;
    std::unique_ptr<ProgressDisplay> m_display;
    VerifyOutcome m_outcome;
};

} // namespace Tessaron::Tool
