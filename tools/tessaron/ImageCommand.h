#pragma once

#include "tools/tessaron/Arguments.h"
#include "tools/tessaron/Destination.h"
#include "tools/tessaron/ExitStatus.h"
#include "tools/tessaron/ImageMaker.h"
#include "tools/tessaron/ProgressDisplay.h"
#include "tools/tessaron/SignalWatcher.h"
#include "tools/tessaron/StagedFile.h"

#include <chrono>
#include <memory>
#include <vector>

namespace Tessaron::Tool
{

/// `tessaron image`: checks sources and destination, has the image made in a staged file, gives it its name when it is
/// whole, and reports. Runs the event loop of the main thread; serves one run.
class ImageCommand
{
public:
    explicit ImageCommand(const Arguments &arguments);
    ~ImageCommand();

    [[nodiscard]] ExitStatus run();

private:
    [[nodiscard]] static Problem checkEnvironment();
    [[nodiscard]] Problem prepare();
    [[nodiscard]] Problem stageFiles();
    [[nodiscard]] QString volumeName() const;
    [[nodiscard]] bool isDvdVideo() const;
    void makeImage();
    void nameImageInProblem();
    [[nodiscard]] Problem checkLength() const;
    [[nodiscard]] Problem writeCueSheet() const;
    [[nodiscard]] Problem appendTrailer();
    [[nodiscard]] Problem publish();
    [[nodiscard]] ExitStatus report();

    const Arguments m_arguments;
    const std::chrono::steady_clock::time_point m_start;
    std::vector<Source> m_sources;
    Destination m_destination;
    QString m_volumeName;
    std::unique_ptr<StagedFile> m_image;
    std::unique_ptr<StagedFile> m_cueSheet;
    std::unique_ptr<ProgressDisplay> m_display;
    std::unique_ptr<ImageMaker> m_maker;
    ImageOutcome m_outcome;
    std::unique_ptr<SignalWatcher> m_signalWatcher; ///< there before the first file is made
};

} // namespace Tessaron::Tool
