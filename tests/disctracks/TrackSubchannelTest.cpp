#include "platform/disctracks/TrackSubchannel.h"

#include <algorithm>
#include <gtest/gtest.h>

using namespace Tessaron;

namespace
{

struct Channels {
    std::array<std::uint8_t, subchannelSize> bytes;

    [[nodiscard]] bool isPregapMarked() const { return bytes[0] == 0xFF; }
    [[nodiscard]] std::optional<SubchannelPosition> position() const
    {
        SubchannelQ q;
        std::copy_n(bytes.begin() + q.size(), q.size(), q.begin());
        return positionOfSubchannelQ(q);
    }
};

Channels channelsAt(const TrackSubchannel &subchannel, std::int64_t block)
{
    Channels channels;
    const std::array<std::uint8_t, subchannelSize> raw = subchannel.bytesAt(BlockAddress(block));
    deinterleaveSubchannels(raw.data(), channels.bytes.data());
    return channels;
}

} // namespace

TEST(TrackSubchannel, bytes_sayTrackIndexAndTimes)
{
    DiscTrack track;
    track.number = 7;
    track.kind = TrackKind::Audio;
    track.blockSize = 2352;
    track.length = 500;
    track.pregap = {150, true};
    track.indexPoints = {100, 300};
    track.hasPreEmphasis = true;
    track.copyState = CopyState::CopyrightFree;
    const TrackSubchannel subchannel(track, BlockAddress(1000));
    constexpr std::uint8_t control = SubchannelControl::preEmphasis | SubchannelControl::copyPermitted;
    struct Expected {
        std::int64_t block;
        std::uint8_t index;
        std::int64_t relative;
    };
    for (const Expected &expected : {Expected{850, 0, 149},
                                     {999, 0, 0},
                                     {1000, 1, 0},
                                     {1099, 1, 99},
                                     {1100, 2, 100},
                                     {1300, 3, 300},
                                     {1499, 3, 499}}) {
        const Channels channels = channelsAt(subchannel, expected.block);
        EXPECT_EQ(channels.position(),
                  (SubchannelPosition{control, 7, expected.index, expected.relative, BlockAddress(expected.block)}))
            << expected.block;
        EXPECT_EQ(channels.isPregapMarked(), expected.index == 0) << expected.block;
        EXPECT_TRUE(std::all_of(channels.bytes.begin() + 24, channels.bytes.end(), [](int byte) { return byte == 0; }));
    }
}

TEST(TrackSubchannel, control_saysWhatTheTrackIs)
{
    DiscTrack data;
    data.length = 10;
    EXPECT_EQ(channelsAt(TrackSubchannel(data, BlockAddress(0)), 5).position()->control, SubchannelControl::data);
    DiscTrack four;
    four.kind = TrackKind::Audio;
    four.hasFourChannels = true;
    EXPECT_EQ(channelsAt(TrackSubchannel(four, BlockAddress(0)), 5).position()->control,
              SubchannelControl::fourChannels);
}
