#include "platform/dvdplayback/player/PlaybackClock.h"

#include "platform/dvdplayback/player/Timeline.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <numeric>

namespace Tessaron
{

namespace
{

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr std::int64_t second = 90'000;
constexpr std::size_t frames = 480; ///< a hundredth of a second
constexpr std::int64_t ticks = second / 100; ///< of as many frames
constexpr std::uint32_t latency = 960;

/// A clock, and a device that the test lets take sound by the hundredth of a second.
class PlaybackClockTest : public testing::Test
{
protected:
    PlaybackClockTest()
    {
        Result<std::unique_ptr<SharedSound>> created = SharedSound::create();
        EXPECT_TRUE(created);
        device = *std::move(created);
        Result<std::unique_ptr<SharedSound>> attached =
            SharedSound::attach(UniqueDescriptor(::fcntl(device->descriptor(), F_DUPFD_CLOEXEC, 3)));
        EXPECT_TRUE(attached);
        sound = *std::move(attached);
        clock.emplace(sound.get());
    }
    void openDevice() { device->tellOpen({48'000, 2}, latency); }

    /// A second of sound, of which each sample is that value.
    void add(std::optional<std::int64_t> time, float value, std::size_t count = 48'000)
    {
        clock->add({std::vector<float>(count * 2, value), time});
    }
    /// Lets the given number of hundredths of a second pass. Returns what was played, one value for each.
    std::vector<float> play(int steps, bool isDry = false)
    {
        std::vector<float> played;
        for (int step = 0; step < steps; ++step) {
            clock->advance(now, isDry);
            std::vector<float> samples(frames * 2);
            device->take(samples, now);
            played.push_back(std::accumulate(samples.begin(), samples.end(), 0.0F) / float(samples.size()));
            now += milliseconds(10);
        }
        return played;
    }

    std::unique_ptr<SharedSound> device, sound;
    std::optional<PlaybackClock> clock;
    PlaybackClock::Clock::time_point now{std::chrono::hours(5)};
};

TEST_F(PlaybackClockTest, withoutADevice_timeIsSteady)
{
    device->tellAbsent("none");
    clock->begin(1000, now);
    EXPECT_FALSE(clock->takesSound(now));
    EXPECT_FALSE(clock->isWaitingForDevice(now));
    now += seconds(2);
    EXPECT_EQ(clock->time(now), 1000 + 2 * second);
    clock->setPaused(true, now);
    now += seconds(7);
    EXPECT_EQ(clock->time(now), 1000 + 2 * second);
    clock->setPaused(false, now);
    now += seconds(1);
    EXPECT_EQ(clock->time(now), 1000 + 3 * second);
    clock->setSlowness(4, now);
    now += seconds(4);
    EXPECT_EQ(clock->time(now), 1000 + 4 * second);
}

TEST_F(PlaybackClockTest, device_isWaitedForForAWhile)
{
    EXPECT_TRUE(clock->isWaitingForDevice(now));
    now += seconds(2);
    EXPECT_TRUE(clock->isWaitingForDevice(now));
    now += seconds(2);
    EXPECT_FALSE(clock->isWaitingForDevice(now));
    EXPECT_FALSE(clock->takesSound(now));
    openDevice();
    EXPECT_TRUE(clock->takesSound(now)) << "late is better than never";
}

TEST_F(PlaybackClockTest, time_isThatOfWhatIsHeard)
{
    openDevice();
    add(5000, 0.5F);
    clock->begin(5000, now);
    static_cast<void>(play(1));
    EXPECT_TRUE(clock->followsSound());
    EXPECT_EQ(clock->time(now), 5000) << "the device holds two hundredths back";
    static_cast<void>(play(2));
    EXPECT_EQ(clock->time(now), 5000 + ticks);
    static_cast<void>(play(50));
    EXPECT_EQ(clock->time(now), 5000 + 51 * ticks);
}

TEST_F(PlaybackClockTest, time_waitsForSoundThatIsLate)
{
    openDevice();
    add(0, 0.5F, 10 * frames);
    clock->begin(0, now);
    static_cast<void>(play(40));
    EXPECT_EQ(clock->time(now), 10 * ticks);
    add(10 * ticks, 0.25F, 10 * frames);
    const std::vector<float> played = play(5);
    EXPECT_EQ(played.front(), 0.25F);
    EXPECT_EQ(clock->time(now), 13 * ticks);
}

TEST_F(PlaybackClockTest, time_goesOnAlone_whenNoMoreSoundComes)
{
    openDevice();
    add(0, 0.5F, 10 * frames);
    clock->begin(0, now);
    static_cast<void>(play(40, true));
    EXPECT_FALSE(clock->followsSound());
    EXPECT_NEAR(double(clock->time(now)), double(38 * ticks), double(2 * ticks));
    const std::int64_t before = clock->time(now);
    add(before + 10 * ticks, 0.25F);
    const std::vector<float> played = play(20);
    EXPECT_TRUE(clock->followsSound());
    EXPECT_EQ(std::count(played.begin(), played.end(), 0.0F), 10) << "sound that begins later is heard later";
    EXPECT_EQ(played.back(), 0.25F);
}

TEST_F(PlaybackClockTest, gaps_becomeSilence_andOverlapsAreLeftOut)
{
    openDevice();
    add(0, 0.5F, 10 * frames);
    add(15 * ticks, 0.25F, 10 * frames); // five are missing
    add(20 * ticks, 0.125F, 10 * frames); // five are there twice
    add(31 * ticks, 0.75F, 10 * frames); // too little to be worth a gap
    clock->begin(0, now);
    std::vector<float> expected(10, 0.5F);
    expected.insert(expected.end(), 5, 0.0F);
    expected.insert(expected.end(), 10, 0.25F);
    expected.insert(expected.end(), 5, 0.125F);
    expected.insert(expected.end(), 10, 0.75F);
    EXPECT_EQ(play(40), expected);
}

TEST_F(PlaybackClockTest, beginOfARun_isExact)
{
    openDevice();
    add(ticks, 0.5F, 10 * frames);
    clock->begin(0, now);
    const std::vector<float> played = play(3);
    EXPECT_EQ(played, (std::vector<float>{0, 0.5F, 0.5F}));
}

TEST_F(PlaybackClockTest, timesThatAreFarOff_areNotBelieved)
{
    openDevice();
    add(0, 0.5F, 2 * frames);
    add(1000 * second, 0.25F, 2 * frames);
    add(-1000 * second, 0.125F, 2 * frames);
    clock->begin(0, now);
    EXPECT_EQ(play(7), (std::vector<float>{0.5F, 0.5F, 0.25F, 0.25F, 0.125F, 0.125F, 0}));
}

TEST_F(PlaybackClockTest, forget_leavesNothingToBeHeard)
{
    openDevice();
    add(0, 0.5F);
    clock->begin(0, now);
    static_cast<void>(play(5));
    clock->forget();
    EXPECT_TRUE(clock->isHeld());
    EXPECT_EQ(play(1).front(), 0.0F);
    EXPECT_EQ(clock->soundAhead(now), 0);
    add(100 * second, 0.25F);
    clock->begin(100 * second, now);
    EXPECT_EQ(play(1).front(), 0.25F);
    static_cast<void>(play(4));
    EXPECT_EQ(clock->time(now), 100 * second + 3 * ticks);
}

TEST_F(PlaybackClockTest, pause_losesAndRepeatsNothing)
{
    openDevice();
    for (int piece = 0; piece < 10; ++piece)
        add(piece * ticks, float(piece + 1), frames);
    clock->begin(0, now);
    std::vector<float> played = play(4);
    clock->setPaused(true, now);
    const std::int64_t time = clock->time(now);
    EXPECT_EQ(play(30), std::vector<float>(30, 0.0F));
    EXPECT_EQ(clock->time(now), time);
    clock->setPaused(false, now);
    const std::vector<float> rest = play(6);
    played.insert(played.end(), rest.begin(), rest.end());
    EXPECT_EQ(played, (std::vector<float>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));
}

TEST_F(PlaybackClockTest, deviceThatDoesNotAskAnyMore_isAsGoodAsAbsent)
{
    openDevice();
    add(0, 0.5F);
    clock->begin(0, now);
    static_cast<void>(play(10));
    for (int step = 0; step < 500; ++step) {
        clock->advance(now, false);
        now += milliseconds(10);
    }
    EXPECT_FALSE(clock->followsSound());
    EXPECT_FALSE(clock->takesSound(now));
    const std::int64_t before = clock->time(now);
    now += seconds(1);
    EXPECT_EQ(clock->time(now), before + second);
    std::vector<float> samples(frames * 2);
    device->take(samples, now);
    EXPECT_TRUE(clock->takesSound(now)) << "it is back";
}

TEST_F(PlaybackClockTest, slowly_thereIsNoSound)
{
    openDevice();
    add(0, 0.5F);
    clock->begin(0, now);
    static_cast<void>(play(10));
    const std::int64_t before = clock->time(now);
    clock->setSlowness(2, now);
    EXPECT_FALSE(clock->takesSound(now));
    EXPECT_EQ(play(100), std::vector<float>(100, 0.0F));
    EXPECT_EQ(clock->time(now), before + second / 2);
    clock->setSlowness(1, now);
    EXPECT_TRUE(clock->takesSound(now));
}

TEST(TimelineTest, units_followOnEachOther_whateverTheirTimes)
{
    Timeline line;
    EXPECT_EQ(line.at(100), std::nullopt);
    line.follow(10'000, 55'000);
    EXPECT_EQ(line.begin(), 0);
    EXPECT_EQ(line.at(12'000), 2000);
    EXPECT_EQ(line.at(std::nullopt), std::nullopt);
    line.follow(55'000, 100'000);
    EXPECT_EQ(line.begin(), 45'000);
    line.follow(2000, 47'000); // the next cell counts anew
    EXPECT_EQ(line.begin(), 90'000);
    EXPECT_EQ(line.at(2000), 90'000);
    line.forget();
    EXPECT_EQ(line.at(2000), std::nullopt);
    line.follow(700'000, 745'000);
    EXPECT_EQ(line.at(700'000), 135'000);
    line.follow(0xfffffff0, 5); // a unit that makes no sense takes no time
    line.follow(1000, 46'000);
    EXPECT_EQ(line.begin(), 180'000);
}

} // namespace

} // namespace Tessaron
