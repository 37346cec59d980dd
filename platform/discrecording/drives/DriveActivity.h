#pragma once

#include <atomic>
#include <cstdint>

namespace Tessaron
{

/// What a drive does at the moment.
enum class DriveStage : std::uint8_t {
    Idle,
    Starting, ///< the laser is set, the lead-in written
    Writing,
    Closing, ///< track, session or disc
    Blanking,
    Formatting,
};

/// What a drive does, kept by the thread that works with it and read by any.
struct DriveActivity {
    std::atomic<DriveStage> stage = DriveStage::Idle;
    std::atomic<std::uint64_t> bytesSent = 0; ///< to the drive, of the disc's data
    std::atomic<std::uint32_t> done = 0; ///< of blanking or formatting, in 65536ths
    std::atomic<std::uint64_t> waits = 0; ///< how often the drive ran dry
};

} // namespace Tessaron
