#pragma once

#include "imaging/jobs/AudioAlbum.h"
#include "imaging/jobs/AudioDecoding.h"
#include "imaging/jobs/AudioSources.h"
#include "imaging/jobs/AudioTrackLayout.h"
#include "imaging/jobs/OrderedTracks.h"
#include "platform/disctracks/TableOfContents.h"
#include "platform/foundation/NSError.h"
#include "platform/quicktime/SoundHelpers.h"
#include <TessaronClasses/AudioImageJob.h>

#include <atomic>
#include <cstdint>
#include <optional>
#include <stop_token>
#include <vector>

namespace Tessaron
{

/// Makes the sound of a disc out of an order, for a job, which knows where it goes. One worker at a time makes the
/// calls, in the order in which they stand here. Errors are those of DiscJobErrors.h.
class AudioDiscMaker
{
public:
    /// Where an image goes by the order does not count. Both must outlive this; the result gets what is found out:
    /// tracks, frames, texts and notes.
    AudioDiscMaker(const AudioImageOrder &order, AudioImageResult &result);

    /// Finds out what the order's sources stand for; no sound is opened.
    [[nodiscard]] NSError findSources();
    /// Every file that is read, cue sheets and what they name included.
    [[nodiscard]] QList<QByteArray> paths() const;
    /// Files of CD-TEXT that the cue sheets among the sources name.
    [[nodiscard]] QList<QByteArray> cdTextPaths() const;
    [[nodiscard]] const AudioSources &sources() const { return m_sources; }

    /// Opens all files, and makes tracks of them.
    [[nodiscard]] NSError openFiles(const std::stop_token &stop);
    /// Frames of the tracks and gaps.
    [[nodiscard]] std::uint64_t soundFrames() const;

    /// The table of the disc, with a track of data in front where there is one.
    [[nodiscard]] TableOfContents plan(const std::optional<DiscTrack> &dataTrack);
    /// Measures the loudness, where the order wants one that is common to all.
    [[nodiscard]] NSError measure(const std::stop_token &stop);

    /// Where the sound goes.
    enum class Output : std::uint8_t {
        File, ///< which has its length, and zeros where no sound lies
        Stream, ///< one frame after the other, from the first one behind a track of data on
    };
    /// Decodes everything; the result gets what is damaged.
    [[nodiscard]] NSError decodeInto(int descriptor, Output output, const std::stop_token &stop);
    /// Ends the helper programs that wait for more.
    void endIdleHelpers() { m_helpers.endIdle(); }

    // For any thread.
    [[nodiscard]] std::uint64_t filesFound() const { return m_filesFound; }
    [[nodiscard]] std::uint64_t bytesDone() const { return m_bytesDone; }
    /// 0 until it is known.
    [[nodiscard]] std::uint64_t bytesTotal() const { return m_bytesTotal; }

private:
    void describeTracks();
    void addTexts(TableOfContents *contents);
    [[nodiscard]] bool hasData() const { return !m_order.dataFolder.isEmpty(); }

    const AudioImageOrder &m_order;
    AudioImageResult &m_result;
    const bool m_isOrderedByTrack;
    const OrderedTracks m_ordered; ///< the tracks of the order, where it has some
    AudioSources m_sources;
    SoundHelpers m_helpers;
    std::vector<AlbumFile> m_files;
    AudioAlbum m_album;
    AudioLayout m_layout;
    std::vector<double> m_gains; ///< a factor for each file
    std::atomic<std::uint64_t> m_filesFound = 0;
    std::atomic<std::uint64_t> m_bytesDone = 0;
    std::atomic<std::uint64_t> m_bytesTotal = 0;
};

} // namespace Tessaron
