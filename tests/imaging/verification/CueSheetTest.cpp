#include "imaging/verification/CueSheet.h"

#include <gtest/gtest.h>

namespace Tessaron
{

namespace
{

TEST(CueSheet, tracks_haveModeFileAndPlaces)
{
    const auto tracks = tracksOfCueSheet("REM GENRE none\r\nFILE \"a b.bin\" BINARY\r\n  TRACK 01 MODE2/2352\r\n"
                                         "    INDEX 01 00:00:00\r\n  TRACK 02 audio\r\n    PREGAP 00:02:00\r\n"
                                         "    INDEX 00 01:00:00\r\n    INDEX 01 01:02:03\r\n"
                                         "FILE second.wav WAVE\r\n  TRACK 03 AUDIO\r\n    INDEX 01 00:00:00\r\n");
    ASSERT_EQ(tracks.size(), 3u);
    EXPECT_EQ(tracks[0].mode, "MODE2/2352");
    EXPECT_TRUE(tracks[0].isData);
    EXPECT_EQ(tracks[0].dataOffset, 24u);
    EXPECT_EQ(tracks[0].fileName, "a b.bin");
    EXPECT_EQ(tracks[1].mode, "AUDIO");
    EXPECT_FALSE(tracks[1].isData);
    EXPECT_EQ(tracks[1].pregap, 150u);
    EXPECT_EQ(tracks[1].firstFrame, 4500);
    EXPECT_EQ(tracks[1].startFrame, 4653);
    EXPECT_EQ(tracks[2].fileName, "second.wav");
}

TEST(CueSheet, nonsense_isPassedOver)
{
    EXPECT_TRUE(tracksOfCueSheet("").empty());
    EXPECT_TRUE(tracksOfCueSheet("INDEX 01 00:00:00\nPREGAP 1:2\n\xff\xfe\n").empty());
    const auto tracks = tracksOfCueSheet("TRACK\nTRACK 1 NEW/9999\nINDEX 01 -1:00:00\nINDEX 01 1:2:3:4\n");
    ASSERT_EQ(tracks.size(), 2u);
    EXPECT_EQ(tracks[1].blockSize, 0u);
    EXPECT_EQ(tracks[1].startFrame, -1);
    QByteArray many;
    for (int number = 0; number < 500; ++number)
        many += "TRACK 01 AUDIO\n";
    EXPECT_EQ(tracksOfCueSheet(many).size(), 99u);
}

} // namespace

} // namespace Tessaron
