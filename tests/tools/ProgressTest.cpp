#include "tools/tessaron/ProgressBar.h"
#include "tools/tessaron/ProgressDisplay.h"
#include <TessaronClasses/TransferRate.h>

#include <gtest/gtest.h>

namespace Tessaron::Tool
{

namespace
{

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr std::uint64_t megabyte = 1 << 20;

DiscJobProgress writing(std::uint64_t bytes, std::uint64_t total)
{
    DiscJobProgress progress;
    progress.phase = DiscJobPhase::Writing;
    progress.bytesDone = bytes;
    progress.bytesTotal = total;
    return progress;
}

TEST(DiscJobProgress, percent_isRoundedDownAndFullOnlyAtTheEnd)
{
    EXPECT_EQ(DiscJobProgress().percent(), 0);
    EXPECT_EQ(writing(0, 0).percent(), 0);
    EXPECT_EQ(writing(1, 3).percent(), 33.3);
    EXPECT_EQ(writing(2, 3).percent(), 66.6);
    EXPECT_EQ(writing(3, 3).percent(), 99.9);
    DiscJobProgress done = writing(3, 3);
    done.phase = DiscJobPhase::Done;
    EXPECT_EQ(done.percent(), 100);
}

TEST(TransferRate, rate_isUnknown_untilEnoughWasSeen)
{
    TransferRate rate;
    EXPECT_FALSE(rate.bytesPerSecond());
    const TransferRate::Time start;
    rate.add(start, 0);
    rate.add(start + milliseconds(100), megabyte);
    EXPECT_FALSE(rate.bytesPerSecond());
    EXPECT_FALSE(rate.remaining(megabyte));
}

TEST(TransferRate, rate_followsTheLastSeconds)
{
    TransferRate rate;
    const TransferRate::Time start;
    for (int second = 0; second <= 10; ++second) // 100 MB/s at first, then 1 MB/s
        rate.add(start + seconds(second),
                 (second <= 2 ? std::uint64_t(second) * 100 : std::uint64_t(200 + second - 2)) * megabyte);
    ASSERT_TRUE(rate.bytesPerSecond());
    EXPECT_EQ(*rate.bytesPerSecond(), double(megabyte));
    EXPECT_EQ(rate.remaining(308 * megabyte), seconds(100));
}

TEST(TransferRate, remaining_isUnknown_whenNothingMoves)
{
    TransferRate rate;
    const TransferRate::Time start;
    rate.add(start, megabyte);
    rate.add(start + seconds(1), megabyte);
    EXPECT_EQ(rate.bytesPerSecond(), 0.0);
    EXPECT_FALSE(rate.remaining(2 * megabyte));
}

TEST(ProgressLine, writing_showsAllThatFits)
{
    DiscJobProgress progress = writing(8 * megabyte, 32 * megabyte);
    progress.bytesPerSecond = 8 * megabyte;
    progress.remaining = seconds(3);
    EXPECT_EQ(progressLine(progress, 79),
              "[=======>                       ]  25 %  8.0 MB of 32.0 MB  8.0 MB/s  0:03 left");
    EXPECT_EQ(progressLine(progress, 30), " 25 %  8.0 MB of 32.0 MB");
    EXPECT_EQ(progressLine(progress, 20), "[===>        ]  25 %");
    EXPECT_EQ(progressLine(progress, 3), " 25");
    for (int width = 0; width < 200; ++width)
        EXPECT_LE(progressLine(progress, width).size(), width);
}

TEST(ProgressLine, scanning_showsCounts)
{
    DiscJobProgress progress;
    progress.files = 12;
    progress.folders = 1;
    EXPECT_EQ(progressLine(progress, 79), "Scanning: 12 files, 1 folder");
}

TEST(FileProgressLine, name_standsBehindThePercentage_asFarAsItFits)
{
    EXPECT_EQ(fileProgressLine({"/music/song.flac", 0.429}, 79), "   42 %  song.flac");
    EXPECT_EQ(fileProgressLine({"song.flac", 1}, 13), "  100 %  song");
    EXPECT_EQ(fileProgressLine({"a\nb", 0}, 79), "    0 %  a\\nb");
    EXPECT_EQ(fileProgressLine({"\xE5\xB2\xA1\xE6\x9C\xAC.mp3", 0}, 13), "    0 %  \xE5\xB2\xA1\xE6\x9C\xAC")
        << "two columns each";
}

TEST(DurationText, time_isShownAsOnAClock)
{
    EXPECT_EQ(durationText(seconds(7)), "0:07");
    EXPECT_EQ(durationText(seconds(754)), "12:34");
    EXPECT_EQ(durationText(seconds(3723)), "1:02:03");
}

} // namespace

} // namespace Tessaron::Tool
