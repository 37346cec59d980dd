#pragma once

#include "tools/tessaron/Arguments.h"
#include "tools/tessaron/ExitStatus.h"
#include "tools/tessaron/ProgressDisplay.h"
#include "tools/tessaron/SourceGatherer.h"

#include <chrono>
#include <memory>
#include <vector>

namespace Tessaron::Tool
{

/// `tessaron scan`: counts files and folders and sums up what they take on disk. Runs the event loop of the main
/// thread; serves one run.
class ScanCommand
{
public:
    explicit ScanCommand(const Arguments &arguments);

    [[nodiscard]] ExitStatus run();

private:
    /// What is told about one PATH.
    struct Counts {
        QByteArray path;
        std::uint64_t files = 0;
        std::uint64_t folders = 0;
        std::uint64_t sizeOnDisk = 0;
    };

    void scan(const std::vector<Source> &sources);
    void countTrees(SourceGatherer &gatherer);
    [[nodiscard]] ExitStatus status() const;
    [[nodiscard]] Counts total() const;
    [[nodiscard]] bool writeText() const;
    [[nodiscard]] bool writeJson() const;

    const Arguments m_arguments;
    const std::chrono::steady_clock::time_point m_start;
    std::unique_ptr<ProgressDisplay> m_display;
    Problem m_problem;
    std::vector<Counts> m_counts;
    std::vector<GatheringError> m_errors;
};

} // namespace Tessaron::Tool
