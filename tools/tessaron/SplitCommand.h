#pragma once

#include "tools/tessaron/Arguments.h"
#include "tools/tessaron/ExitStatus.h"
#include "tools/tessaron/JobRun.h"
#include "tools/tessaron/Problem.h"
#include <TessaronClasses/DiscImageJob.h>
#include <TessaronClasses/DiscSplitJob.h>
#include <TessaronClasses/ScanJob.h>

#include <memory>
#include <vector>

namespace Tessaron
{
class KRFileHierarchyItem;
}

namespace Tessaron::Tool
{

/// `tessaron image --split`: makes images of folders and files for as many discs as they need. Serves one run, on the
/// main thread.
class SplitCommand
{
public:
    explicit SplitCommand(const Arguments &arguments);

    [[nodiscard]] ExitStatus run();

private:
    void work();
    [[nodiscard]] std::shared_ptr<KRFileHierarchyItem> scannedTree();
    void split(const std::shared_ptr<KRFileHierarchyItem> &tree);
    void makeImage(const DiscShare &disc, std::size_t number);
    [[nodiscard]] QByteArray outputOf(std::size_t number) const;
    [[nodiscard]] QString volumeName() const;
    [[nodiscard]] ExitStatus status() const;
    void printEnd() const;
    [[nodiscard]] bool writeJson(double seconds) const;

    const Arguments m_arguments;
    JobRun m_run;
    ScanResult m_scan;
    DiscSplitResult m_split;
    std::vector<DiscImageResult> m_images; ///< that were made
    Problem m_problem;
};

} // namespace Tessaron::Tool
