#pragma once

#include "platform/discrecording/burn/BlockStream.h"
#include "platform/disctracks/DiscTrack.h"
#include "platform/foundation/Result.h"

#include <QVariantMap>

#include <functional>
#include <memory>
#include <stop_token>

namespace Tessaron
{

class DRBurn;
class DRStorageReport;
class DRTrack;

/// What is known of a track beyond its blocks.
struct TrackFacts {
    std::uint32_t files = 0; ///< on the track
    std::uint32_t folders = 0; ///< on the track, the root not counted
    std::shared_ptr<const DRStorageReport> report; ///< null for a track that has no filesystems of its own
};

/// Brings the blocks of one track into a stream, wherever they come from. Works with and without a burn around it.
///
/// One thread makes the calls, in this order: plan(), then track() and facts(), then write(), once each but for the
/// two in the middle. The destructor may have to wait for a read that hangs.
class TrackWriter
{
public:
    TrackWriter() = default;
    TrackWriter(const TrackWriter &) = delete;
    TrackWriter &operator=(const TrackWriter &) = delete;
    virtual ~TrackWriter();

    /// What lies in front of the track's index 1; known from the start.
    [[nodiscard]] virtual TrackGap pregap() const = 0;
    /// Finds out what the track will be: all that takes time before the first block. `begin` is where on the disc the
    /// track's pregap begins, or its index 1 when it has none. `progress` gets 0 to 1. burnCancelledError() once a stop
    /// was asked for.
    [[nodiscard]] virtual NSError plan(BlockAddress begin, const std::stop_token &cancellation,
                                       const std::function<void(double)> &progress) = 0;
    /// The track as the disc's table of contents has it, but for its number.
    [[nodiscard]] virtual DiscTrack track() const = 0;
    [[nodiscard]] virtual TrackFacts facts() const { return {}; }

    /// Writes all blocks that the table promises to store, pregap first. Returns as soon as that is done, something
    /// failed or a stop was asked for.
    [[nodiscard]] virtual NSError write(BlockStream &stream) = 0;
};

/// The writer that suits the track: the only place that asks what kind of track it is. An error says what is wrong
/// with the track; no file is looked at and no producer called for that. `burn` and `media` are only passed on to
/// producers; `burn` may be null.
[[nodiscard]] Result<std::unique_ptr<TrackWriter>> trackWriterFor(const std::shared_ptr<DRTrack> &track, DRBurn *burn,
                                                                  const QVariantMap &media = {});

} // namespace Tessaron
