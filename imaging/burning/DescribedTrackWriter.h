#pragma once

#include "imaging/verification/DecodedSounds.h"
#include "platform/discrecording/burn/BurnPlan.h"
#include "platform/discrecording/burn/TrackWriter.h"
#include "platform/disctracks/CueSheet.h"

#include <QStringList>

#include <memory>

namespace Tessaron
{

/// What is told of the tracks of one disc while they are read.
struct DescribedDiscNotes {
    DecodedSounds sounds;
    QStringList damages; ///< of sounds that were decoded, each with its track and time
};

/// Writes a track whose blocks lie in files, as a cue sheet says, or any other description of a disc. Sound that
/// another form holds is decoded. A file that ends too early, cannot be read, or changes meanwhile is an error that
/// names it: nothing stands for what is missing.
class DescribedTrackWriter final : public TrackWriter
{
public:
    /// The track with this index, through all sessions. The disc and the notes must outlive the writer.
    DescribedTrackWriter(const CueSheet &disc, std::size_t index, DescribedDiscNotes &notes);

    [[nodiscard]] TrackGap pregap() const override { return m_track.pregap; }
    /// Looks whether the files hold what the description says.
    [[nodiscard]] NSError plan(BlockAddress begin, const std::stop_token &cancellation,
                               const std::function<void(double)> &progress) override;
    [[nodiscard]] DiscTrack track() const override { return m_track; }
    [[nodiscard]] NSError write(BlockStream &stream) override;

private:
    [[nodiscard]] NSError writeRun(const CueRun &run, BlockStream &stream);
    [[nodiscard]] NSError writeDecodedRun(const CueRun &run, BlockStream &stream);

    const CueSheet &m_disc;
    const CueTrackPlace &m_place;
    const DiscTrack m_track;
    DescribedDiscNotes &m_notes;
};

/// The plan of the whole disc. An error of code Source (DiscJobErrors.h) when one of its files is not as described.
[[nodiscard]] Result<BurnPlan> planDescribedDisc(const CueSheet &disc, DescribedDiscNotes &notes,
                                                 const std::stop_token &stop);

} // namespace Tessaron
