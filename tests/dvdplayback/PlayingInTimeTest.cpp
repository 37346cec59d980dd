#include "platform/dvdplayback/DVDPlayback.h"
#include "tests/dvdplayback/DiscInTime.h"
#include "tests/dvdplayback/PlayingFixture.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace Tessaron::Testing
{

namespace
{

using std::chrono::milliseconds;
using std::chrono::seconds;

/// Of a video unit of the disc, which times and places are exact to.
constexpr milliseconds unit(434);

using InTime = DiscInTime;

TEST_F(InTime, pictures_comeEvenly)
{
    ASSERT_EQ(player->playChapter(1, 1), noErr);
    play(seconds(8));
    ASSERT_GT(shown.size(), 200U);
    for (std::size_t index = 12; index < 200; ++index) {
        const auto between = shown[index].when - shown[index - 1].when;
        EXPECT_GE(between, milliseconds(32)) << index;
        EXPECT_LE(between, milliseconds(35)) << index;
    }
}

class InTimeWithoutADevice : public DiscInTime
{
protected:
    InTimeWithoutADevice()
        : DiscInTime("ntsc", Device::Absent)
    {
    }
};

TEST_F(InTimeWithoutADevice, pictures_comeEvenly_allOfThem)
{
    ASSERT_EQ(player->playChapter(1, 1), noErr);
    play(seconds(8));
    ASSERT_NEAR(double(shown.size()), 8 * 29.97, 2);
    for (std::size_t index = 2; index < shown.size(); ++index) {
        const auto between = shown[index].when - shown[index - 1].when;
        EXPECT_GE(between, milliseconds(33)) << index;
        EXPECT_LE(between, milliseconds(34)) << index;
    }
}

TEST_F(InTime, titleTime_isToldInTime_whateverPicturesTake)
{
    player->setTimeRate(milliseconds(210)); // seven pictures are 234 milliseconds
    ASSERT_EQ(player->playChapter(1, 1), noErr);
    play(seconds(6));
    ASSERT_GT(timesTold.size(), 25U);
    for (std::size_t index = 2; index < timesTold.size(); ++index) {
        const milliseconds due = milliseconds(210) * int(index - 1);
        const auto late =
            std::chrono::duration_cast<milliseconds>(timesTold[index].when - timesTold[1].when - due).count();
        EXPECT_LE(std::abs(late), 35) << index;
    }
}

TEST_F(InTime, titleTime_isThatOfThePictureThatIsSeen)
{
    player->setTimeRate(milliseconds(100));
    ASSERT_EQ(player->playChapter(1, 1), noErr);
    play(seconds(8));
    ASSERT_FALSE(shown.empty());
    ASSERT_GT(timesTold.size(), 70U);
    for (const Told &told : timesTold) {
        const auto seen = std::chrono::duration_cast<milliseconds>(told.when - shown[1].when + milliseconds(33));
        EXPECT_NEAR(double(told.elapsed), double(seen.count()), 50);
    }
}

TEST_F(InTime, chapter_isReached_fromAMenuThatStands)
{
    ASSERT_EQ(player->play(), noErr);
    play(seconds(3));
    ASSERT_EQ(state.playback, std::uint32_t(kDVDStatePlayingStill));
    ASSERT_EQ(player->playChapter(1, 3), noErr);
    play(milliseconds(300));
    EXPECT_TRUE(firstShown(chapters[2]));
    EXPECT_EQ(state.chapter, 3);
    EXPECT_EQ(state.playback, std::uint32_t(kDVDStatePlaying));
}

TEST_F(InTime, slowly_eachPictureStaysAsManyTimesAsLong)
{
    ASSERT_EQ(player->playChapter(1, 1), noErr);
    play(milliseconds(500));
    for (const int times : {2, 4, 8}) {
        ASSERT_EQ(player->playSlowly(times), noErr);
        const std::size_t from = shown.size() + 1;
        play(milliseconds(40 * 6 * times));
        ASSERT_GT(shown.size(), from + 3);
        for (std::size_t index = from + 1; index < shown.size(); ++index) {
            const auto between =
                std::chrono::duration_cast<std::chrono::microseconds>(shown[index].when - shown[index - 1].when);
            EXPECT_NEAR(double(between.count()) / 1000, times * 1001.0 / 30, 1.1) << times << ' ' << index;
        }
    }
}

/// Takes one of the speeds that scanning has, and a direction.
class ScanInTime : public DiscInTime, public testing::WithParamInterface<std::tuple<int, bool>>
{
};

TEST_P(ScanInTime, place_movesAsManyTimesAsFast)
{
    const auto [rate, isBackward] = GetParam();
    constexpr milliseconds step(200);
    const int steps = std::min(5, 32 / rate); // not beyond the title's ends
    const std::uint32_t from = isBackward ? 8000 : 700;
    ASSERT_EQ(player->playChapter(1, 1), noErr);
    play(milliseconds(100));
    ASSERT_EQ(player->goToTime(from), noErr);
    play(milliseconds(100));
    const auto before = std::int64_t(state.elapsed);
    const std::size_t seen = shown.size();
    ASSERT_EQ(player->scan(rate, isBackward), noErr);
    EXPECT_EQ(state.playback, std::uint32_t(kDVDStateScanning));
    play(step * steps);
    EXPECT_EQ(shown.size() - seen, std::size_t(steps)) << "a picture at each step";
    const auto moved = std::int64_t(state.elapsed) - before;
    const double due = double(rate) * double((step * steps).count()) * (isBackward ? -1 : 1);
    EXPECT_NEAR(double(moved), due, double(unit.count()) + 100);
    // What is seen is what is there.
    const std::size_t chapter = std::min<std::size_t>(std::size_t(state.elapsed) * 30 / 1001 / 65, 3);
    EXPECT_TRUE(isAbout(shown.back().colour, chapters[chapter])) << std::hex << shown.back().colour;
    ASSERT_EQ(player->play(), noErr);
    const std::size_t last = shown.size();
    play(milliseconds(1000));
    EXPECT_EQ(state.playback, std::uint32_t(kDVDStatePlaying));
    EXPECT_GT(shown.size(), last + 20) << "it plays on from there";
}

INSTANTIATE_TEST_SUITE_P(Speeds, ScanInTime, testing::Combine(testing::Values(1, 2, 4, 8, 16, 32), testing::Bool()));

/// Titles of pictures that stand.
class StillsInTime : public DiscInTime
{
protected:
    StillsInTime()
        : DiscInTime("stills")
    {
    }
    /// Until a state of playing comes; how long it took.
    [[nodiscard]] milliseconds playUntil(std::uint32_t playback)
    {
        const auto since = now;
        while (state.playback != playback && now - since < seconds(10))
            play(milliseconds(1));
        return std::chrono::duration_cast<milliseconds>(now - since);
    }
};

TEST_F(StillsInTime, menu_standsForItsSeconds_andThenGoesOn)
{
    ASSERT_EQ(player->play(), noErr);
    static_cast<void>(playUntil(kDVDStatePlayingStill));
    EXPECT_TRUE(state.isOnMenu);
    EXPECT_TRUE(isAbout(shown.back().colour, titleMenu));
    const milliseconds stood = playUntil(kDVDStatePlaying);
    EXPECT_NEAR(double(stood.count()), 3000, 40);
    play(milliseconds(100));
    EXPECT_FALSE(state.isOnMenu);
    EXPECT_EQ(state.title, 1);
}

TEST_F(StillsInTime, eachPicture_standsForItsSeconds)
{
    ASSERT_EQ(player->playChapter(1, 1), noErr);
    for (std::size_t picture = 0; picture < 3; ++picture) {
        static_cast<void>(playUntil(kDVDStatePlayingStill));
        ASSERT_EQ(state.playback, std::uint32_t(kDVDStatePlayingStill)) << picture;
        EXPECT_TRUE(isAbout(shown.back().colour, chapters[picture])) << picture;
        EXPECT_EQ(state.chapter, picture + 1);
        // Pausing makes it stand for longer by as much, and no less.
        const std::uint32_t next = picture < 2 ? kDVDStatePlaying : kDVDStateStopped;
        const milliseconds stood = playUntil(next);
        EXPECT_NEAR(double(stood.count()), 2000, 40) << picture;
    }
}

TEST_F(StillsInTime, nextChapter_leavesAStill)
{
    ASSERT_EQ(player->playChapter(1, 1), noErr);
    static_cast<void>(playUntil(kDVDStatePlayingStill));
    ASSERT_EQ(player->stepChapter(1), noErr);
    play(milliseconds(200));
    EXPECT_TRUE(firstShown(chapters[1]));
    EXPECT_EQ(state.chapter, 2);
    static_cast<void>(playUntil(kDVDStatePlayingStill));
    EXPECT_EQ(state.chapter, 2) << "whose picture stands as well";
    EXPECT_NEAR(double(playUntil(kDVDStatePlaying).count()), 2000, 40);
}

/// A film, of 24 pictures a second, of which each has a luminance of its own; every other one stays for three half
/// pictures. Wide, with LPCM.
class FilmInTime : public DiscInTime
{
protected:
    FilmInTime()
        : DiscInTime("film")
    {
    }
};

TEST_F(FilmInTime, pictures_stayForTwoAndThreeHalfPicturesInTurn)
{
    ASSERT_EQ(player->playChapter(1, 1), noErr);
    play(seconds(5));
    ASSERT_GT(shown.size(), 110U);
    for (std::size_t index = 0; index < 110; ++index) {
        const double luminance = 16 + qGreen(shown[index].colour) * 219.0 / 255;
        EXPECT_EQ(int(std::lround((luminance - 40) / 3)), int(index % 48)) << "none is left out, " << index;
    }
    for (std::size_t index = 13; index < 110; ++index) {
        const auto stayed =
            std::chrono::duration_cast<std::chrono::microseconds>(shown[index].when - shown[index - 1].when);
        const double halfPicture = 1001.0 / 60;
        EXPECT_NEAR(double(stayed.count()) / 1000, (index % 2 == 1 ? 3 : 2) * halfPicture, 1.1) << index;
    }
    EXPECT_EQ(state.aspect, kDVDAspectRatio16x9);
}

} // namespace

} // namespace Tessaron::Testing
