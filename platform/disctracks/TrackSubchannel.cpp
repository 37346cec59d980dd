#include "platform/disctracks/TrackSubchannel.h"

#include <algorithm>

namespace Tessaron
{

namespace
{

std::uint8_t controlOf(const DiscTrack &track)
{
    std::uint8_t control = track.isAudio() ? 0 : SubchannelControl::data;
    if (track.hasPreEmphasis)
        control |= SubchannelControl::preEmphasis;
    if (track.copyState == CopyState::CopyrightFree)
        control |= SubchannelControl::copyPermitted;
    if (track.hasFourChannels)
        control |= SubchannelControl::fourChannels;
    return control;
}

} // namespace

TrackSubchannel::TrackSubchannel(const DiscTrack &track, BlockAddress start)
    : m_control(controlOf(track))
    , m_number(std::uint8_t(track.number))
    , m_indexPoints(track.indexPoints)
    , m_start(start)
{
}

std::uint8_t TrackSubchannel::indexAt(std::int64_t blocksFromStart) const
{
    if (blocksFromStart < 0)
        return 0;
    const auto passed = std::ranges::upper_bound(m_indexPoints, std::uint64_t(blocksFromStart));
    return std::uint8_t(1 + (passed - m_indexPoints.begin()));
}

std::array<std::uint8_t, subchannelSize> TrackSubchannel::bytesAt(BlockAddress address) const
{
    const std::int64_t fromStart = address - m_start;
    SubchannelPosition position;
    position.control = m_control;
    position.track = m_number;
    position.index = indexAt(fromStart);
    // In a pregap the time runs down, to 0 in its last sector.
    position.relativeFrames = fromStart < 0 ? -fromStart - 1 : fromStart;
    position.address = address;
    std::array<std::uint8_t, subchannelSize> channels{};
    const SubchannelQ q = subchannelQ(position);
    constexpr std::uint8_t marked = 0xFF;
    if (position.index == 0)
        std::fill_n(channels.begin(), q.size(), marked);
    std::ranges::copy(q, channels.begin() + q.size());
    std::array<std::uint8_t, subchannelSize> raw;
    interleaveSubchannels(channels.data(), raw.data());
    return raw;
}

} // namespace Tessaron
