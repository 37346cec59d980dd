#pragma once

#include "platform/disctracks/DiscTrack.h"
#include "platform/disctracks/Subchannel.h"
#include "platform/foundation/Export.h"

#include <array>
#include <cstdint>

namespace Tessaron
{

/// The subchannels of a track's sectors, as they stand behind each sector in blocks of 2448 bytes: P marks the pregap,
/// Q says where the head is, R to W are empty (IEC 60908 17). A value; thread-safe.
class TESSARON_EXPORT TrackSubchannel
{
public:
    /// `start` is the address of the track's index 1.
    TrackSubchannel(const DiscTrack &track, BlockAddress start);

    /// The 96 bytes of the sector at an address of the track, its pregap included, in the order in which a drive has
    /// them: see interleaveSubchannels().
    [[nodiscard]] std::array<std::uint8_t, subchannelSize> bytesAt(BlockAddress address) const;

private:
    [[nodiscard]] std::uint8_t indexAt(std::int64_t blocksFromStart) const;

    std::uint8_t m_control;
    std::uint8_t m_number;
    std::vector<std::uint64_t> m_indexPoints;
    BlockAddress m_start;
};

} // namespace Tessaron
