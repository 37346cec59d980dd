#pragma once

#include <chrono>
#include <cstdint>

namespace Tessaron
{

/// How long a drive may take no data although there are some for it. libburn itself repeats a command for 200 seconds,
/// and says nothing meanwhile.
struct DrivePatience {
    /// Until the first `beginBytes` are taken: the laser is set and the lead-in written before the drive's buffer
    /// moves.
    std::chrono::milliseconds atBegin = std::chrono::minutes(2);
    /// Later. Drives pause for seconds: to set the laser anew, at a change of the layer, for bad places of a BD.
    std::chrono::milliseconds later = std::chrono::minutes(1);
    std::uint64_t beginBytes = std::uint64_t(32) << 20; ///< more than the buffers of the drive and of libburn
};

} // namespace Tessaron
