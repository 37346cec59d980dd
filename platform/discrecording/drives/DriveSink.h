#pragma once

#include "platform/discrecording/burn/BlockSink.h"
#include "platform/discrecording/drives/BlockFifo.h"
#include "platform/discrecording/drives/DriveActivity.h"
#include "platform/discrecording/drives/DriveFaults.h"
#include "platform/discrecording/drives/GrabbedDrive.h"
#include "platform/discrecording/drives/RecordingPlan.h"
#include "platform/discrecording/drives/SessionWriting.h"

#include <chrono>
#include <memory>
#include <stop_token>
#include <sys/types.h>
#include <vector>

namespace Tessaron
{

/// Sends the blocks of a disc to a drive. Nothing is written before the fifo is full, or the session's end has come,
/// and nothing at all where the disc does not fit. After the end the drive has been looked at again.
class DriveSink final : public BlockSink
{
public:
    /// All but the token must outlive the sink.
    DriveSink(GrabbedDrive &drive, const RecordingOptions &options, DriveActivity &activity,
              std::stop_token cancellation);
    ~DriveSink() override;

    [[nodiscard]] NSError beginDisc(const TableOfContents &disc) override;
    [[nodiscard]] NSError beginTrack(const DiscTrack &track) override;
    [[nodiscard]] NSError writeBlocks(const BlockBatch &run) override;
    [[nodiscard]] NSError endTrack() override;
    [[nodiscard]] NSError endDisc() override;
    /// Cancels what the drive does and waits until it does nothing, which may take a minute; then adds what the disc is
    /// worth.
    [[nodiscard]] NSError abandonDisc(const NSError &reason) override;

    /// What the table said and the disc does not have.
    [[nodiscard]] const QStringList &lost() const { return m_plan.lost; }
    /// What the disc is worth, after endDisc() or abandonDisc().
    [[nodiscard]] DiscCondition condition() const { return m_condition; }

private:
    [[nodiscard]] NSError put(std::span<const std::uint8_t> bytes);
    [[nodiscard]] NSError startWriting();
    [[nodiscard]] NSError finishSession();
    [[nodiscard]] NSError failure();
    void waitUntilIdle();
    [[nodiscard]] NSError endFile() const;
    void keepBegin(const BlockBatch &run);
    [[nodiscard]] NSError endGrowth();
    [[nodiscard]] bool isGrowthUndone();

    GrabbedDrive &m_drive;
    const RecordingOptions m_options;
    DriveActivity &m_activity;
    const std::stop_token m_cancellation;
    RecordingPlan m_plan;
    std::unique_ptr<BlockFifo> m_fifo; ///< null once the writing is over
    std::unique_ptr<SessionWriting> m_writing; ///< of the session that is being written
    DiscFamily m_family = DiscFamily::None;
    std::size_t m_session = 0; ///< the one that is being written
    std::size_t m_track = 0; ///< in the session: the next one
    const RecordedTrack *m_recorded = nullptr; ///< the one that is being written
    std::vector<std::uint8_t> m_kept; ///< what the drive gets of larger blocks
    std::vector<std::uint8_t> m_begin; ///< of a session that is added to what is overwritten
    off_t m_lengthBefore = 0; ///< of a file that is added to; set before the writing begins
    bool m_isBeginTouched = false; ///< that of the disc, by what is added
    std::chrono::steady_clock::time_point m_lastLook;
    DiscCondition m_condition = DiscCondition::Unchanged;
    bool m_hadSessions = false; ///< the disc, before the burn
    bool m_hasWritten = false; ///< a session was begun
    bool m_wasAllTaken = false; ///< of the last session
};

} // namespace Tessaron
