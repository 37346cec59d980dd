#pragma once

#include "tools/tessaron/Arguments.h"
#include <TessaronClasses/DiscJob.h>

#include <memory>

namespace Tessaron::Tool
{

/// Shows on standard error how far a job has come. Call clear() before printing anything else.
class ProgressDisplay
{
public:
    /// The display for the mode. An output that is not a terminal gets nothing in mode Auto, and no control sequences
    /// in any mode.
    [[nodiscard]] static std::unique_ptr<ProgressDisplay> create(ProgressMode mode, Verbosity verbosity);
    virtual ~ProgressDisplay() = default;
    ProgressDisplay(const ProgressDisplay &) = delete;
    ProgressDisplay &operator=(const ProgressDisplay &) = delete;

    /// Shows what DiscJob::progressed() tells.
    virtual void show(const DiscJobProgress &progress) = 0;
    /// Takes the bar away, if there is one.
    virtual void clear() { }

protected:
    ProgressDisplay() = default;
};

} // namespace Tessaron::Tool
