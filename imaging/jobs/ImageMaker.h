#pragma once

#include "imaging/jobs/SourceGatherer.h"
#include <TessaronClasses/DiscImageJob.h>

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace Tessaron
{

class BurnDevice;
class DRFolder;
class DRTrack;
class KRFileHierarchyItem;
class LayoutWriting;
struct TableOfContents;

/// What the blocks of an image are made from, and the file or device that takes them.
struct ImageMakerOrder {
    std::vector<DiscSource> sources;
    /// True: the content of the only source, a folder, is the content of the disc. False: the sources lie side by side.
    bool rootIsOnlySource = false;
    std::shared_ptr<KRFileHierarchyItem> tree; ///< in place of sources; null without one
    QString volumeName;
    bool isVolumeNameGiven = false; ///< by the user, so that another one is a loss
    bool isVolumeNameChanged = false; ///< already, from the given one
    DiscFilesystems filesystems;
    bool relocatesDeepFolders = false;
    bool isStrict = false;
    QByteArray path; ///< an existing empty file
    QByteArray finalPath; ///< what errors call it; empty for a stream without a path
    bool isSynchronized = true; ///< wait until the blocks are on the disk
    /// The disc goes on with audio tracks: raw sectors (mode 1), the last 150 of them empty, as a change of the kind of
    /// tracks needs them (ECMA-130 20).
    bool isBeforeAudio = false;
    bool isPlanOnly = false; ///< end without an error once the plan has been checked; for a device only
    /// Told how many bytes the image will have, before they are written; an error ends the making.
    std::function<NSError(std::uint64_t bytes)> checkSize;
    /// Given the layout before it is planned, to put something into it; an error ends the making.
    std::function<NSError(DRFolder &layout)> completeLayout;
    int descriptor = -1; ///< the same file, for a look at its filesystem; owned by the caller
    /// Takes the image in place of a file when it is not null; nothing reaches it before the plan has been checked.
    std::shared_ptr<BurnDevice> device;
};

/// Makes the blocks of one disc image: gathers the sources, turns them into a layout, and writes that into a file. On
/// the main thread, on an event loop; the work is done by worker threads. Destroying it stops all work and waits for
/// it.
class ImageMaker
{
public:
    explicit ImageMaker(ImageMakerOrder order);
    ~ImageMaker();
    ImageMaker(const ImageMaker &) = delete;
    ImageMaker &operator=(const ImageMaker &) = delete;

    /// Starts; `whenEnded` is called once, never from inside start().
    void start(std::function<void()> whenEnded);
    /// Stops the stage that runs; the outcome then is a cancellation.
    void cancel();

    [[nodiscard]] DiscJobProgress progress() const;
    /// To be called a few times a second: notices early that the image cannot be made, and stops.
    void lookAhead();

    /// What is known of the result: error, counts, what is not in the image.
    [[nodiscard]] const DiscImageResult &result() const { return m_result; }
    /// What was written, or was to be, once it is; null after an error.
    [[nodiscard]] std::shared_ptr<const TableOfContents> contents() const;

private:
    void sourcesGathered();
    void startLayout();
    [[nodiscard]] std::shared_ptr<KRFileHierarchyItem> rootItem();
    void nameSources(DRFolder &root) const;
    void layoutMade(const std::shared_ptr<DRFolder> &folder);
    void addUnreadable(const std::vector<UnreadableFolder> &folders);
    void startWriting(const std::shared_ptr<DRFolder> &folder);
    [[nodiscard]] std::unique_ptr<LayoutWriting> writing(const std::shared_ptr<DRFolder> &folder) const;
    void writingEnded(const NSError &error);
    [[nodiscard]] NSError checkPlan();
    [[nodiscard]] std::shared_ptr<DRTrack> track(const std::shared_ptr<DRFolder> &folder) const;
    [[nodiscard]] bool losesVolumeName(const DRStorageReport *report) const;
    [[nodiscard]] NSError checkSpace(std::uint64_t imageSize) const;
    void stop(const NSError &error);
    void endLayout();
    void end();

    const ImageMakerOrder m_order;
    DiscImageResult m_result;
    std::function<void()> m_whenEnded;
    DiscJobPhase m_phase = DiscJobPhase::Scanning;
    std::uint64_t m_allocatedSize = 0; ///< of the sources on disk
    bool m_isPlanChecked = false;
    bool m_isPlanEnough = false; ///< it has been checked, and nothing else was wanted
    bool m_hasEnded = false;

    std::unique_ptr<SourceGatherer> m_gatherer;
    std::shared_ptr<KRFileHierarchyItem> m_rootItem;
    std::unique_ptr<LayoutWriting> m_writer;
    std::shared_ptr<const void> m_life; ///< its end silences all callbacks; last member, so it goes first
};

} // namespace Tessaron
