#pragma once

#include "tools/tessaron/Arguments.h"
#include "tools/tessaron/ExitStatus.h"
#include "tools/tessaron/ImageInput.h"
#include "tools/tessaron/SignalWatcher.h"
#include <TessaronClasses/VolumeCensus.h>

#include <chrono>
#include <memory>
#include <stop_token>
#include <vector>

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
    void writeVolumes(class JsonWriter &writer) const;
    void writeTracks(class JsonWriter &writer) const;

    const Arguments m_arguments;
    const std::chrono::steady_clock::time_point m_start;
    std::unique_ptr<SignalWatcher> m_signalWatcher;
    std::stop_source m_stop;
    ImageInput m_image;
    std::vector<VolumeCensus> m_censuses; ///< one for each volume of the image
    Problem m_problem;
};

} // namespace Tessaron::Tool
