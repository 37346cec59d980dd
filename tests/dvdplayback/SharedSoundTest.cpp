#include "platform/dvdplayback/SharedSound.h"

#include <array>
#include <cmath>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <limits>
#include <numeric>
#include <random>
#include <sys/mman.h>
#include <vector>

namespace Tessaron
{

namespace
{

using std::chrono::milliseconds;

/// The three sides of the memory, with a device of two channels.
class SharedSoundTest : public testing::Test
{
protected:
    SharedSoundTest()
    {
        Result<std::unique_ptr<SharedSound>> created = SharedSound::create();
        EXPECT_TRUE(created);
        session = *std::move(created);
        helper = attached();
        player = attached();
        player->tellOpen({48'000, 2}, 1000);
    }
    [[nodiscard]] std::unique_ptr<SharedSound> attached() const
    {
        Result<std::unique_ptr<SharedSound>> sound =
            SharedSound::attach(UniqueDescriptor(::fcntl(session->descriptor(), F_DUPFD_CLOEXEC, 3)));
        EXPECT_TRUE(sound);
        return *std::move(sound);
    }
    /// Frames whose samples count up.
    [[nodiscard]] std::vector<float> counted(std::size_t frames)
    {
        std::vector<float> samples(frames * 2);
        std::iota(samples.begin(), samples.end(), m_next);
        m_next += float(samples.size());
        return samples;
    }
    [[nodiscard]] std::vector<float> taken(std::size_t frames) const
    {
        std::vector<float> samples(frames * 2, -1);
        player->take(samples, now);
        return samples;
    }

    std::unique_ptr<SharedSound> session, helper, player;
    SharedSound::Clock::time_point now{std::chrono::hours(5)};

private:
    float m_next = 1;
};

TEST_F(SharedSoundTest, device_isOpeningUntilItIsKnown)
{
    const Result<std::unique_ptr<SharedSound>> other = SharedSound::create();
    ASSERT_TRUE(other);
    EXPECT_EQ((*other)->device(), SoundDevice::Opening);
    (*other)->tellAbsent("no server");
    EXPECT_EQ((*other)->device(), SoundDevice::Absent);
    EXPECT_EQ((*other)->reason(), QStringLiteral("no server"));
    EXPECT_EQ(helper->device(), SoundDevice::Open);
    EXPECT_EQ(helper->form(), (SoundForm{48'000, 2}));
    player->tellOpen({48'000, 5}, 10);
    EXPECT_EQ(helper->device(), SoundDevice::Absent) << "a form that nothing is made for";
    EXPECT_EQ(session->reason(), QStringLiteral("it takes 48000 samples a second on 5 channels"));
}

TEST_F(SharedSoundTest, take_givesWhatWasGiven_andSilenceBehind)
{
    const std::vector<float> given = counted(100);
    EXPECT_EQ(helper->give(given), 100U);
    const std::vector<float> first = taken(60), second = taken(60);
    EXPECT_TRUE(std::equal(first.begin(), first.end(), given.begin()));
    EXPECT_TRUE(std::equal(second.begin(), second.begin() + 80, given.begin() + 120));
    EXPECT_EQ(std::vector<float>(second.begin() + 80, second.end()), std::vector<float>(40, 0.0F));
}

TEST_F(SharedSoundTest, give_takesNoMoreThanThereIsRoomFor_roundAndRound)
{
    const std::size_t room = helper->room();
    EXPECT_GT(room, 48'000U) << "a second at least";
    for (int round = 0; round < 5; ++round) {
        const std::vector<float> given = counted(room + 7);
        EXPECT_EQ(helper->give(given), room);
        EXPECT_EQ(helper->give(given), 0U);
        const std::vector<float> first = taken(1000), rest = taken(room - 1000);
        EXPECT_TRUE(std::equal(first.begin(), first.end(), given.begin()));
        EXPECT_TRUE(std::equal(rest.begin(), rest.end(), given.begin() + 2000));
        static_cast<void>(taken(100)); // ever another place to begin
    }
}

TEST_F(SharedSoundTest, drop_leavesOutWhatWasNotTaken)
{
    helper->give(counted(100));
    static_cast<void>(taken(10));
    helper->drop();
    const std::vector<float> later = counted(5);
    helper->give(later);
    const std::vector<float> got = taken(5);
    EXPECT_EQ(got, later);
}

TEST_F(SharedSoundTest, pause_takesNothing)
{
    const std::vector<float> given = counted(10);
    helper->give(given);
    helper->setPaused(true);
    EXPECT_EQ(taken(10), std::vector<float>(20, 0.0F));
    helper->setPaused(false);
    EXPECT_EQ(taken(10), given);
}

TEST_F(SharedSoundTest, gain_isApplied_inOneSlope)
{
    helper->give(std::vector<float>(4000, 1));
    EXPECT_EQ(taken(100), std::vector<float>(200, 1.0F));
    session->setGain(0.5F);
    const std::vector<float> slope = taken(100);
    for (std::size_t index = 2; index < slope.size(); ++index)
        EXPECT_NEAR(slope[index - 2] - slope[index], 0.005F, 0.001F);
    EXPECT_EQ(taken(100), std::vector<float>(200, 0.5F));
    session->setGain(0);
    static_cast<void>(taken(100));
    EXPECT_EQ(taken(100), std::vector<float>(200, 0.0F));
}

TEST_F(SharedSoundTest, heard_isBehindWhatWasTaken_byTheLatency)
{
    EXPECT_EQ(helper->heard(now), std::nullopt);
    helper->give(counted(20'000));
    static_cast<void>(taken(4800));
    EXPECT_EQ(helper->heard(now), -1000);
    now += milliseconds(100);
    EXPECT_EQ(helper->heard(now), 3800);
    static_cast<void>(taken(4800));
    EXPECT_EQ(helper->heard(now), 3800);
    EXPECT_EQ(helper->heard(now + milliseconds(50)), 6200);
    EXPECT_EQ(helper->heard(now + std::chrono::seconds(60)), 9600) << "no more than was taken";
    static_cast<void>(taken(10'400));
    for (int turn = 0; turn < 10; ++turn) {
        now += milliseconds(100);
        static_cast<void>(taken(4800));
    }
    EXPECT_EQ(helper->heard(now), 20'000) << "in the silence behind, all is heard";
    helper->give(counted(1000));
    EXPECT_EQ(helper->heard(now), 20'000) << "what is given now has not been taken yet";
    EXPECT_EQ(helper->lastAsked(), now);
}

TEST_F(SharedSoundTest, samplesThatAreNoNumbers_areSilence)
{
    helper->give(std::vector<float>{std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()});
    EXPECT_EQ(taken(1), std::vector<float>(2, 0.0F));
}

/// What any of the other sides may have written.
TEST_F(SharedSoundTest, numbersThatMakeNoSense_areNotBelieved)
{
    constexpr std::size_t numbers = 1024; // bytes: all that stands in front of the samples, and some of these
    void *const memory = ::mmap(nullptr, numbers, PROT_READ | PROT_WRITE, MAP_SHARED, session->descriptor(), 0);
    ASSERT_NE(memory, MAP_FAILED);
    const std::array<std::uint32_t, 7> words = {0, 1, 2, 6, 0x7fffffff, 0x80000000, 0xffffffff};
    std::mt19937 random(7);
    for (int round = 0; round < 2000; ++round) {
        std::array<std::uint32_t, numbers / sizeof(std::uint32_t)> nonsense;
        for (std::uint32_t &word : nonsense)
            word = random() % 4 == 0 ? std::uint32_t(random()) : words[random() % words.size()];
        std::memcpy(memory, nonsense.data(), sizeof(nonsense));
        for (const float sample : taken(500))
            ASSERT_TRUE(std::isfinite(sample)) << round;
        static_cast<void>(helper->device());
        EXPECT_LE(helper->room(), std::size_t(1) << 18) << round;
        EXPECT_LE(helper->give(std::vector<float>(600, 0.5F)), 600U) << round;
        EXPECT_LE(helper->heard(now).value_or(0), std::int64_t(helper->given())) << round;
        EXPECT_LE(session->reason().size(), 256) << round;
        static_cast<void>(helper->lastAsked());
    }
    ::munmap(memory, numbers);
}

TEST_F(SharedSoundTest, attach_refusesOtherMemory)
{
    EXPECT_FALSE(SharedSound::attach(UniqueDescriptor(::open("/dev/zero", O_RDWR))));
    EXPECT_FALSE(SharedSound::attach(UniqueDescriptor(-1)));
}

} // namespace

} // namespace Tessaron
