#pragma once

#include "platform/discrecording/objects/DRFilesystems.h"
#include "tools/tessaron/Problem.h"
#include "tools/tessaron/ProgressDisplay.h"
#include "tools/tessaron/SourceGatherer.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace Tessaron
{
class DRFolder;
class DRStorageReport;
class KRFileHierarchyItem;
class KRTrackWriter;
} // namespace Tessaron

namespace Tessaron::Tool
{

/// What an image is made from and how.
struct ImageOrder {
    std::vector<Source> sources;
    /// True: the content of the only source, a folder, is the content of the disc. False: the sources lie side by side.
    bool rootIsOnlySource = false;
    QString volumeName;
    DRFilesystemMask filesystems = 0;
    bool isStrict = false;
    QByteArray path; ///< an existing empty file
    int descriptor = -1; ///< the same file, for a look at its filesystem; owned by the caller
};

/// How the making of an image has ended.
struct ImageOutcome {
    Problem problem; ///< none when the image is whole
    std::uint64_t bytes = 0;
    std::uint64_t files = 0;
    std::uint64_t folders = 0;
    std::vector<GatheringError> gatheringErrors;
    std::shared_ptr<const DRStorageReport> report; ///< null when it did not come so far
};

/// Makes one disc image: gathers the sources, turns them into a layout, and writes that into a file. On the main
/// thread, on an event loop; the work is done by worker threads. Destroying it stops all work and waits for it.
class ImageMaker
{
public:
    explicit ImageMaker(ImageOrder order);
    ~ImageMaker();
    ImageMaker(const ImageMaker &) = delete;
    ImageMaker &operator=(const ImageMaker &) = delete;

    /// Starts; `whenEnded` is called once, never from inside start().
    void start(std::function<void()> whenEnded);
    /// Stops the stage that runs; the outcome then is an interruption.
    void interrupt();

    [[nodiscard]] ProgressState progress() const;
    /// Call this a few times a second: it notices early what makes going on pointless.
    void lookAhead();

    [[nodiscard]] const ImageOutcome &outcome() const { return m_outcome; }

private:
    void sourcesGathered();
    [[nodiscard]] std::shared_ptr<KRFileHierarchyItem> rootItem();
    void nameSources(const DRFolder &root) const;
    void layoutMade(const std::shared_ptr<DRFolder> &folder);
    void startWriting(const std::shared_ptr<DRFolder> &folder);
    void writingEnded(const Problem &problem);
    [[nodiscard]] Problem checkPlan() const;
    [[nodiscard]] Problem checkSpace(std::uint64_t imageSize) const;
    void stop(const Problem &problem);
    void end();

    const ImageOrder m_order;
    ImageOutcome m_outcome;
    std::function<void()> m_whenEnded;
    ProgressState::Phase m_phase = ProgressState::Phase::Scanning;
    std::uint64_t m_allocatedSize = 0; ///< of the sources on disk
    bool m_isPlanChecked = false;
    bool m_hasEnded = false;

    std::unique_ptr<SourceGatherer> m_gatherer;
    std::shared_ptr<KRFileHierarchyItem> m_rootItem;
    std::shared_ptr<KRTrackWriter> m_writer;
    std::shared_ptr<const void> m_life; ///< its end silences all callbacks; last member, so it goes first
};

} // namespace Tessaron::Tool
