#pragma once

#include "platform/discrecording/drives/BlockFifo.h"
#include "platform/discrecording/drives/DriveActivity.h"
#include "platform/discrecording/drives/DriveMessages.h"
#include "platform/discrecording/drives/GrabbedDrive.h"
#include "platform/discrecording/drives/RecordingPlan.h"
#include "platform/foundation/NSError.h"

#include <chrono>
#include <memory>
#include <vector>

namespace Tessaron
{

/// The writing of one session by libburn: a disc of one session, made of sources that all draw on one fifo. Made, used
/// and destroyed by one thread, which is not the control thread; every call runs there and waits. Destroying it while
/// it runs cancels it and waits for the drive.
class SessionWriting
{
public:
    /// The drive, the fifo and the activity must outlive it.
    SessionWriting(GrabbedDrive &drive, const RecordedSession &session, const RecordingOptions &options,
                   BlockFifo &fifo, DriveActivity &activity);
    ~SessionWriting();
    SessionWriting(const SessionWriting &) = delete;
    SessionWriting &operator=(const SessionWriting &) = delete;

    /// Tells libburn to write, which from then on takes bytes from the fifo on a thread of its own.
    [[nodiscard]] NSError start();
    /// Asks the drive what it does; false once it does nothing any more. A drive that has taken nothing for longer than
    /// it may is made to stop.
    [[nodiscard]] bool isRunning();
    /// Makes libburn stop at its next look, before the fifo says that there is no more: otherwise it would fill up with
    /// zeros and call that well written.
    void cancel();
    /// Once it is not running: the null error when all was written well.
    [[nodiscard]] NSError outcome();

    /// True once start() has told libburn to write.
    [[nodiscard]] bool hasBegun() const { return m_hasBegun; }
    /// What libburn has said so far.
    [[nodiscard]] const std::vector<DriveMessage> &messages() const { return m_messages; }
    /// True when the drive has taken every byte of the session.
    [[nodiscard]] bool isAllTaken() const;

private:
    struct Handles;
    struct Progress;

    [[nodiscard]] NSError startOnControlThread();
    [[nodiscard]] NSError addTrack(const RecordedTrack &track);
    [[nodiscard]] NSError setOptions();
    [[nodiscard]] NSError setTexts();
    void takeMessages();
    void stopWhenStalled();

    GrabbedDrive &m_drive;
    const RecordedSession m_session;
    const RecordingOptions m_options;
    BlockFifo &m_fifo;
    DriveActivity &m_activity;
    std::unique_ptr<Handles> m_handles; ///< libburn's objects
    const std::shared_ptr<Progress> m_progress; ///< shared with the sources, which libburn frees
    std::vector<DriveMessage> m_messages;
    std::uint64_t m_takenLately = 0; ///< bytes, at m_lastTaking
    std::chrono::steady_clock::time_point m_lastTaking; ///< when the drive last took something, or had nothing to take
    bool m_hasStalled = false;
    bool m_hasBegun = false;
    bool m_isRunning = false;
    bool m_isWellWritten = false;
};

} // namespace Tessaron
