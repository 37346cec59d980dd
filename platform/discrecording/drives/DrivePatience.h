#pragma once

#include <chrono>
#include <cstdint>

namespace Tessaron
{

/// How long a drive may leave its user without an answer. libburn itself repeats a command for 200 seconds, asks for
/// dozens of things when it opens a drive, and says nothing meanwhile.
struct DrivePatience {
    /// While there are data to be written, until the first `beginBytes` are taken: the laser is set and the lead-in
    /// written before the drive's buffer moves.
    std::chrono::milliseconds atBegin = std::chrono::minutes(2);
    /// Later. Drives pause for seconds: to set the laser anew, at a change of the layer, for bad places of a BD.
    std::chrono::milliseconds later = std::chrono::minutes(1);
    std::uint64_t beginBytes = std::uint64_t(32) << 20; ///< more than the buffers of the drive and of libburn
    /// To be opened and described, with its tray taken in and a bad disc tried at several speeds.
    std::chrono::milliseconds atOpening = std::chrono::minutes(2);
    /// To read or write the few blocks that it was asked for; to be let go of.
    std::chrono::milliseconds atQuestion = std::chrono::minutes(2);
    /// To blank or format without getting on. Many drives do not say how far they are: this is more than the slowest
    /// one takes for a whole disc of those that it can be done to.
    std::chrono::milliseconds atErasing = std::chrono::hours(3);
    /// The same for what says where things are, which is done in a minute or two.
    std::chrono::milliseconds atQuickErasing = std::chrono::minutes(15);
};

} // namespace Tessaron
