#pragma once

#include "tools/tessaron/Arguments.h"
#include "tools/tessaron/ExitStatus.h"
#include "tools/tessaron/Problem.h"
#include "tools/tessaron/ProgressDisplay.h"
#include <TessaronClasses/ExtractJob.h>

#include <chrono>
#include <memory>

namespace Tessaron::Tool
{

/// `tessaron extract`: takes tracks out of an image. Serves one run, on the main thread.
class ExtractCommand
{
public:
    explicit ExtractCommand(const Arguments &arguments);
    ~ExtractCommand();

    [[nodiscard]] ExitStatus run();

private:
    void extract();
    [[nodiscard]] ExitStatus status() const;
    void print(double seconds) const;
    [[nodiscard]] bool writeJson(double seconds) const;

    const Arguments m_arguments;
    const std::chrono::steady_clock::time_point m_start;
    std::unique_ptr<ProgressDisplay> m_display;
    ExtractResult m_result;
    Problem m_problem;
};

} // namespace Tessaron::Tool
