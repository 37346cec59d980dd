#include "platform/disctracks/TableOfContents.h"

#include <gtest/gtest.h>

using namespace Tessaron;

namespace
{

DiscTrack audioTrack(std::uint64_t length, std::uint64_t pregap)
{
    DiscTrack track;
    track.kind = TrackKind::Audio;
    track.blockSize = 2352;
    track.length = length;
    track.pregap = {pregap, true};
    return track;
}

/// Two sessions: two audio tracks, then one of data.
TableOfContents mixedDisc()
{
    TableOfContents contents;
    DiscTrack data;
    data.length = 500;
    contents.sessions = {{BlockAddress(-150), {audioTrack(1000, 150), audioTrack(2000, 75)}},
                         {BlockAddress(14475), {data}}};
    contents.numberTracks();
    return contents;
}

} // namespace

TEST(TableOfContents, firstBlockOfTrack_isWhereIndexOneIs)
{
    const TableOfContents contents = mixedDisc();
    EXPECT_EQ(contents.firstBlockOfTrack(1), BlockAddress(0));
    EXPECT_EQ(contents.firstBlockOfTrack(2), BlockAddress(1075));
    EXPECT_EQ(contents.firstBlockOfTrack(3), BlockAddress(14475));
}

TEST(TableOfContents, tracks_keepTheirSessions)
{
    const TableOfContents contents = mixedDisc();
    EXPECT_EQ(contents.trackCount(), 3u);
    EXPECT_EQ(contents.tracks().size(), 3u);
    EXPECT_EQ(contents.sessions[1].tracks[0].number, 3u);
    EXPECT_EQ(contents.track(2)->length, 2000u);
    EXPECT_EQ(contents.track(4), nullptr);
    EXPECT_EQ(contents.storedBytes(), (1150 + 2075) * 2352u + 500 * 2048u);
    EXPECT_FALSE(contents.check());
}

TEST(TableOfContents, joinSessions_putsEachBehindTheOneBefore)
{
    TableOfContents contents = mixedDisc();
    contents.joinSessions();
    EXPECT_EQ(contents.sessions[0].firstBlock, BlockAddress(-150));
    EXPECT_EQ(contents.sessions[1].firstBlock, BlockAddress(3075));
}

TEST(TableOfContents, joinSessions_leavesLengthsThatCannotBeCounted_toTheCheck)
{
    for (const std::uint64_t length : {std::uint64_t(INT64_MAX), std::uint64_t(INT64_MAX) + 1, UINT64_MAX}) {
        TableOfContents contents = mixedDisc();
        contents.sessions[0].firstBlock = BlockAddress(150);
        contents.sessions[0].tracks[0].length = length;
        contents.joinSessions();
        EXPECT_EQ(DiscTracksErrorCode(contents.check().code()), DiscTracksErrorCode::TooLarge) << length;
    }
}

TEST(TableOfContents, check_refusesTablesThatMakeNoSense)
{
    const auto codeWhen = [](const auto &change) {
        TableOfContents contents = mixedDisc();
        change(contents);
        const NSError error = contents.check();
        EXPECT_TRUE(!error || !error.localizedFailureReason().isEmpty());
        return DiscTracksErrorCode(error.code());
    };
    using enum DiscTracksErrorCode;
    EXPECT_EQ(codeWhen([](TableOfContents &contents) { contents.sessions.clear(); }), NoTracks);
    EXPECT_EQ(codeWhen([](TableOfContents &contents) { contents.sessions[1].tracks.clear(); }), NoTracks);
    EXPECT_EQ(codeWhen([](TableOfContents &contents) { contents.sessions[1].tracks[0].number = 2; }), TrackNumber);
    EXPECT_EQ(codeWhen([](TableOfContents &contents) {
                  contents.sessions[1].tracks.resize(98);
                  contents.numberTracks();
              }),
              TrackNumber);
    const auto codeWhenTrack = [&](const auto &change) {
        return codeWhen([&](TableOfContents &contents) { change(contents.sessions[0].tracks[0]); });
    };
    EXPECT_EQ(codeWhenTrack([](DiscTrack &track) { track.blockSize = 0; }), TrackShape);
    EXPECT_EQ(codeWhenTrack([](DiscTrack &track) { track.postgap.length = 1001; }), TrackShape);
    EXPECT_EQ(codeWhenTrack([](DiscTrack &track) { track.indexPoints = {10, 10}; }), TrackShape);
    EXPECT_EQ(codeWhenTrack([](DiscTrack &track) { track.indexPoints = {1000}; }), TrackShape);
    EXPECT_EQ(codeWhenTrack([](DiscTrack &track) { track.length = ~std::uint64_t(0); }), TooLarge);
}
