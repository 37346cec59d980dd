#include "platform/disctracks/DiscTrack.h"

#include <gtest/gtest.h>

using namespace Tessaron;

namespace
{

RecordingNumbers numbersOf(TrackKind kind, std::uint32_t blockSize)
{
    DiscTrack track;
    track.kind = kind;
    track.blockSize = blockSize;
    return recordingNumbers(track);
}

} // namespace

TEST(DiscTrack, recordingNumbers_areTheUsualOnes_whenNothingIsStated)
{
    EXPECT_EQ(numbersOf(TrackKind::Audio, 2352), (RecordingNumbers{0, 0, 0, 0}));
    EXPECT_EQ(numbersOf(TrackKind::Mode1, 2048), (RecordingNumbers{4, 16, 8, 0}));
    EXPECT_EQ(numbersOf(TrackKind::Mode1, 2352), (RecordingNumbers{4, 17, 8, 0}));
    EXPECT_EQ(numbersOf(TrackKind::Mode2Formless, 2336), (RecordingNumbers{4, 48, 9, 32}));
    EXPECT_EQ(numbersOf(TrackKind::Mode2Form1, 2048), (RecordingNumbers{4, 32, 10, 32}));
    EXPECT_EQ(numbersOf(TrackKind::Mode2Form2, 2324), (RecordingNumbers{4, 32, 12, 32}));
    EXPECT_EQ(numbersOf(TrackKind::Mode2Mixed, 2352), (RecordingNumbers{4, 33, 12, 32}));
    EXPECT_EQ(numbersOf(TrackKind::Mode2Mixed, 2336), (RecordingNumbers{4, 32, 13, 32}));
    EXPECT_EQ(numbersOf(TrackKind::Unstated, 2048), RecordingNumbers{});
    EXPECT_EQ(numbersOf(TrackKind::Mode1, 512), RecordingNumbers{});
}

TEST(DiscTrack, recordingNumbers_areThoseStated_evenWhenTheyAreOdd)
{
    DiscTrack track;
    track.blockSize = 2352;
    track.recording.blockType = 12;
    track.recording.sessionFormat = 16;
    EXPECT_EQ(recordingNumbers(track), (RecordingNumbers{4, 17, 12, 16}));
}

TEST(DiscTrack, trackKindOfBlockType_needsTheSize_toTellForm2FromMixed)
{
    EXPECT_EQ(trackKindOfBlockType(0, 2352), TrackKind::Audio);
    EXPECT_EQ(trackKindOfBlockType(8, 2048), TrackKind::Mode1);
    EXPECT_EQ(trackKindOfBlockType(9, 2336), TrackKind::Mode2Formless);
    EXPECT_EQ(trackKindOfBlockType(10, 2048), TrackKind::Mode2Form1);
    EXPECT_EQ(trackKindOfBlockType(12, 2324), TrackKind::Mode2Form2);
    EXPECT_EQ(trackKindOfBlockType(12, 2352), TrackKind::Mode2Mixed);
    EXPECT_EQ(trackKindOfBlockType(13, 2336), TrackKind::Mode2Mixed);
    EXPECT_EQ(trackKindOfBlockType(7, 2048), TrackKind::Unstated);
    EXPECT_EQ(trackKindOfBlockType({}, 2048), TrackKind::Unstated);
}

TEST(DiscTrack, storedBlocks_countGapsThatLieInTheImage)
{
    DiscTrack track;
    track.length = 1000;
    track.pregap = {150, false};
    track.postgap = {75, true};
    EXPECT_EQ(track.storedBlocks(), 1000u);
    EXPECT_EQ(track.blocksOnDisc(), 1150u);
    track.pregap.isStored = true;
    EXPECT_EQ(track.storedBlocks(), 1150u);
    track.postgap.isStored = false;
    EXPECT_EQ(track.storedBlocks(), 1075u);
    EXPECT_EQ(track.storedBytes(), 1075u * 2048);
}
