#pragma once

#include "tools/tessaron/Arguments.h"
#include "tools/tessaron/ExitStatus.h"
#include "tools/tessaron/JobRun.h"
#include "tools/tessaron/Problem.h"
#include <TessaronClasses/InspectJob.h>

#include <functional>

namespace Tessaron::Tool
{

/// `tessaron inspect`: says what an image holds. Serves one run, on the main thread.
class InspectCommand
{
public:
    explicit InspectCommand(const Arguments &arguments);

    [[nodiscard]] ExitStatus run();

private:
    void inspect();
    [[nodiscard]] Problem judge() const;
    void printErrors() const;
    [[nodiscard]] bool writeText() const;
    [[nodiscard]] bool writeJson() const;
    /// Calls the function with each volume of the image and of its parts, what was counted in it, and its part's name.
    void forEachVolume(
        const std::function<void(const FoundVolume &, const VolumeCensus &, const QString &part)> &function) const;
    void writeVolumes(class JsonWriter &writer) const;
    void writeTracks(class JsonWriter &writer) const;
    void writeProblems(class JsonWriter &writer) const;
    void writeBootCatalog(class JsonWriter &writer) const;
    [[nodiscard]] bool hasProblemIn(VolumeKind volume, const QString &part) const;
    [[nodiscard]] QString contentsOf(std::size_t partition) const;

    const Arguments m_arguments;
    JobRun m_run;
    ImageInspection m_result;
    Problem m_problem;
};

} // namespace Tessaron::Tool
