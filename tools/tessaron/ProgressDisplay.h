#pragma once

#include "tools/tessaron/Arguments.h"
#include <TessaronClasses/DiscJob.h>

#include <QByteArray>

#include <memory>
#include <vector>

namespace Tessaron::Tool
{

/// A file that is being worked on, for jobs that tell which ones these are.
struct FileProgress {
    QByteArray path;
    double fraction = 0; ///< done of it, from 0 to 1
};

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

    /// Shows what DiscJob::progressed() tells and, on a terminal, a line for each of these files under it.
    virtual void show(const DiscJobProgress &progress, const std::vector<FileProgress> &files) = 0;
    void show(const DiscJobProgress &progress) { show(progress, {}); }
    /// Takes the bar away, if there is one.
    virtual void clear() { }

protected:
    ProgressDisplay() = default;
};

} // namespace Tessaron::Tool
