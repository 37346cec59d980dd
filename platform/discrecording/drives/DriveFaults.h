#pragma once

#include "platform/discrecording/drives/DriveDescription.h"
#include "platform/discrecording/drives/DriveMessages.h"
#include "platform/foundation/NSError.h"

#include <cstdint>
#include <vector>

namespace Tessaron
{

/// What has gone wrong with a drive, as far as it makes a difference to what a person can do.
enum class DriveFault : std::uint8_t {
    Unknown,
    Busy, ///< another program has it, or it is mounted
    Absent, ///< there is no such drive, or it does not answer
    NotPermitted,
    NoDisc,
    WrongDisc, ///< the drive cannot write this disc, or not in this way
    Refused, ///< libburn refuses the order before anything is written
    Calibration, ///< of the laser's power
    CalibrationAreaFull, ///< the disc has no room left to try the laser
    Underrun, ///< data came too slowly
    WriteFailed,
    CloseFailed, ///< the data are written, and the track, session or disc cannot be ended
    WriteProtected,
    Full, ///< of the disc, or of the disk that holds the file
    Reset, ///< of the bus or the drive
    Stalled, ///< it takes no data any more, and does not say why
    NoAnswer, ///< it was asked, or told to blank, and has not come to an end
    Hardware, ///< the drive says that it is broken
    Gone, ///< unplugged, or dead
};

/// What a disc is worth after its writing has ended early, or was simulated.
enum class DiscCondition : std::uint8_t {
    Unchanged, ///< nothing of the order reached it
    Written, ///< all of it is there
    WrittenNotClosed, ///< the data are all there, but some drives may not read them
    Appendable, ///< what was there is kept; another session can be written
    OnlyKept, ///< what was there is kept, and nothing more can be written
    Overwritable, ///< its contents are not whole; it can be written anew at once
    NeedsBlanking, ///< its contents are not whole; it can be blanked and written anew
    Spoiled, ///< it cannot be used any more
    Unknown, ///< the drive could not be asked
};

/// The fault that the messages tell of: that of the first grave one that says more than that something failed.
[[nodiscard]] DriveFault driveFault(const std::vector<DriveMessage> &messages);

/// "busy", "calibration" … for programs.
[[nodiscard]] QString nameOfDriveFault(DriveFault fault);
/// "unchanged", "needs-blanking" … for programs.
[[nodiscard]] QString nameOfDiscCondition(DiscCondition condition);
/// A sentence about the disc, with the full stop.
[[nodiscard]] QString textOfDiscCondition(DiscCondition condition, DiscFamily family);

/// User information of a drive's error: QString, nameOfDriveFault().
extern const QString DriveFaultKey;
/// User information of a burn's error: QString, nameOfDiscCondition().
extern const QString DiscConditionKey;

/// The error for people: what happened to `drive`, with the drive's own words, and what to do about it. `condition` and
/// what it means are added where a disc was being written.
[[nodiscard]] NSError driveError(DriveFault fault, const std::vector<DriveMessage> &messages, const QString &drive);
[[nodiscard]] NSError withDiscCondition(const NSError &error, DiscCondition condition, DiscFamily family);

/// How a writing has gone: what is needed to know what the disc is worth.
struct InterruptedWriting {
    bool hasBegun = false; ///< libburn was told to write
    bool hadSessions = false; ///< before that, whole ones
    bool isSimulated = false;
    bool isWholeDataWritten = false; ///< only the closing has failed
    bool isOldKept = false; ///< what is overwritten has been added to, and shows what it showed before
};

/// What the disc is worth, by its family and by what the drive says of it when it is looked at again; `after` is null
/// where the drive cannot be asked any more.
[[nodiscard]] DiscCondition conditionAfter(const InterruptedWriting &writing, DiscFamily family,
                                           const DiscDescription *after);

} // namespace Tessaron
