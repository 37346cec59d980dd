#pragma once

#include "tools/tessaron/Arguments.h"
#include "tools/tessaron/ExitStatus.h"
#include "tools/tessaron/ImageInput.h"
#include "tools/tessaron/ProgressDisplay.h"
#include "tools/tessaron/SignalWatcher.h"
#include "tools/tessaron/Sources.h"
#include "tools/tessaron/VerifyReport.h"

#include <chrono>
#include <memory>
#include <vector>

namespace Tessaron
{
class VerifyJob;
} // namespace Tessaron

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
    [[nodiscard]] Problem prepare(std::vector<Source> *sources);
    void verify(const std::vector<Source> &sources);
    void showProgress(const VerificationProgress &progress);

    const Arguments m_arguments;
    const std::chrono::steady_clock::time_point m_start;
    std::unique_ptr<ProgressDisplay> m_display;
    std::unique_ptr<SignalWatcher> m_signalWatcher;
    VerifyJob *m_job = nullptr; ///< while it runs
    ProgressState m_progress;
    ImageInput m_image;
    VerifyOutcome m_outcome;
};

} // namespace Tessaron::Tool
