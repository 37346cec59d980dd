#include "platform/dvdplayback/DVDPlayback.h"
#include "platform/dvdplayback/DVDVideoFrames.h"
#include "tests/dvdplayback/DiscInTime.h"
#include "tests/support/RunProgram.h"

#include <QFile>
#include <QFileInfo>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <thread>

namespace Tessaron::Testing
{

namespace
{

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr std::size_t channels = 2;

using Frame = std::array<float, channels>;

std::vector<Frame> framesIn(const QByteArray &bytes)
{
    std::vector<Frame> frames(std::size_t(bytes.size()) / sizeof(Frame));
    std::memcpy(frames.data(), bytes.constData(), frames.size() * sizeof(Frame));
    return frames;
}

/// Without silence, which a device plays whenever it is not given anything: on a busy machine that may be anywhere.
std::vector<Frame> withoutSilence(std::vector<Frame> frames)
{
    std::erase(frames, Frame{});
    return frames;
}

/// Sound of title 1 of a disc as another program decodes it. Of "ntsc", stream 0 is AC-3, 1 is LPCM.
std::vector<Frame> soundOfTitle(const QByteArray &disc, const QByteArray &stream)
{
    const ProgramRun run = runProgram("ffmpeg",
                                      {"-nostdin", "-v", "error", "-i", disc + "/VIDEO_TS/VTS_01_1.VOB", "-map",
                                       "0:a:" + stream, "-ac", "2", "-f", "f32le", "-"});
    EXPECT_EQ(run.status, 0) << run.errors.constData();
    return framesIn(run.output);
}

/// A session whose sound goes into a file.
class SoundPlaying : public DiscTest
{
protected:
    SoundPlaying()
    {
        qputenv("SDL_AUDIODRIVER", "disk");
        qputenv("SDL_DISKAUDIOFILE", m_tree.path("captured"));
        EXPECT_EQ(DVDInitialize(), noErr);
    }
    ~SoundPlaying() override { DVDDispose(); }

    static void openAndPlay(std::uint16_t title, std::uint16_t chapter)
    {
        FSRef ref;
        ASSERT_EQ(FSPathMakeRef(disc(), &ref, nullptr), noErr);
        ASSERT_EQ(DVDOpenMediaFile(&ref), noErr);
        ASSERT_EQ(DVDSetChapter(title, chapter), noErr);
    }
    /// Waits until this number of frames of sound has come out, silence not counted.
    [[nodiscard]] bool waitForSound(std::size_t count) const
    {
        const auto end = std::chrono::steady_clock::now() + seconds(60);
        while (std::chrono::steady_clock::now() < end) {
            if (captured().size() >= count)
                return true;
            std::this_thread::sleep_for(milliseconds(50));
        }
        return false;
    }
    /// What has come out so far; all of it once media is closed.
    [[nodiscard]] std::vector<Frame> capturedWithSilence() const
    {
        QFile file(m_tree.pathText("captured"));
        return file.open(QIODevice::ReadOnly) ? framesIn(file.readAll()) : std::vector<Frame>();
    }
    [[nodiscard]] std::vector<Frame> captured() const { return withoutSilence(capturedWithSilence()); }
};

TEST_F(SoundPlaying, sound_isThatOfTheStream)
{
    openAndPlay(1, 1);
    ASSERT_TRUE(waitForSound(72'000));
    ASSERT_EQ(DVDCloseMediaFile(), noErr);
    const std::vector<Frame> expected = withoutSilence(soundOfTitle(disc(), "0")), heard = captured();
    ASSERT_GE(expected.size(), heard.size());
    EXPECT_TRUE(std::equal(heard.begin(), heard.end(), expected.begin()));
}

/// When a picture comes, the device has been given the sound that goes with it, and no more. Each half picture of the
/// disc has a luminance of its own, which says where on the disc it is from. A program that has to wait for a processor
/// sees some of them late; of half of them that would be a fault.
TEST_F(SoundPlaying, pictureAndSound_leaveTogether)
{
    constexpr std::int64_t framesOfHalfPicture = 48'000 / 50, cycle = 48;
    constexpr std::int64_t framesOfPiece = 1024; ///< of what is written last, which takes its time like a device's
    struct Seen {
        std::int64_t sound = 0; ///< frames that had come out
        std::int64_t picture = 0;
    };
    std::vector<Seen> seen;
    QImage image;
    setDVDFrameHearer([&] {
        const std::int64_t sound = QFileInfo(m_tree.pathText("captured")).size() / std::int64_t(sizeof(Frame));
        if (!takeDVDFrame(&image))
            return;
        const double luminance = 16 + qGreen(image.pixel(60, 60)) * 219.0 / 255;
        const std::int64_t last = seen.empty() ? 0 : seen.back().picture;
        const auto within = std::int64_t(std::lround((luminance - 40) / 3));
        seen.push_back({sound, last + ((within - last) % cycle + cycle) % cycle});
    });
    FSRef ref;
    ASSERT_EQ(FSPathMakeRef(disc("interlaced"), &ref, nullptr), noErr);
    ASSERT_EQ(DVDOpenMediaFile(&ref), noErr);
    ASSERT_EQ(DVDSetChapter(1, 1), noErr);
    const bool hasCome = waitForSound(288'000);
    setDVDFrameHearer({}); // which refers to what ends with this function
    ASSERT_TRUE(hasCome);
    ASSERT_EQ(DVDCloseMediaFile(), noErr);
    // The time of the disc stands while the device has nothing to play but silence.
    const std::vector<Frame> all = capturedWithSilence();
    std::vector<std::int64_t> ofTheDisc = {0};
    for (const Frame &frame : all)
        ofTheDisc.push_back(ofTheDisc.back() + (frame == Frame{} ? 0 : 1));
    ASSERT_GT(seen.size(), 150U);
    std::vector<double> leads; ///< of the sound, milliseconds
    for (std::size_t index = 12; index < seen.size(); ++index) {
        const auto place = std::min(std::size_t(seen[index].sound), all.size());
        const std::int64_t heard = ofTheDisc[place] - framesOfPiece;
        leads.push_back(double(heard - seen[index].picture * framesOfHalfPicture) / 48);
    }
    const auto middle = leads.begin() + std::ptrdiff_t(leads.size() / 2);
    std::nth_element(leads.begin(), middle, leads.end());
    EXPECT_LE(std::abs(*middle), 40) << "milliseconds";
    std::printf("sound leads by %.1f ms\n", *middle);
}

TEST_F(SoundPlaying, pause_losesAndRepeatsNothing)
{
    openAndPlay(1, 1);
    ASSERT_TRUE(waitForSound(20'000));
    ASSERT_EQ(DVDPause(), noErr);
    const std::size_t before = captured().size();
    std::this_thread::sleep_for(milliseconds(300));
    EXPECT_LT(captured().size(), before + 12'000) << "a file is written late, not for long";
    ASSERT_EQ(DVDPlay(), noErr);
    ASSERT_TRUE(waitForSound(60'000));
    ASSERT_EQ(DVDCloseMediaFile(), noErr);
    const std::vector<Frame> expected = withoutSilence(soundOfTitle(disc(), "0")), heard = captured();
    EXPECT_TRUE(std::equal(heard.begin(), heard.end(), expected.begin()));
}

TEST_F(SoundPlaying, volume_isThatOfWhatComesOut)
{
    ASSERT_EQ(DVDSetAudioVolume(51), noErr);
    openAndPlay(1, 1);
    ASSERT_TRUE(waitForSound(24'000));
    ASSERT_EQ(DVDCloseMediaFile(), noErr);
    const std::vector<Frame> expected = withoutSilence(soundOfTitle(disc(), "0")), heard = captured();
    for (std::size_t frame = 0; frame < heard.size(); ++frame)
        ASSERT_NEAR(heard[frame][0], expected[frame][0] / 5, 1e-6) << frame;
}

TEST_F(SoundPlaying, muted_playsSilenceInTime)
{
    ASSERT_EQ(DVDMute(true), noErr);
    openAndPlay(1, 1);
    const auto end = std::chrono::steady_clock::now() + seconds(60);
    std::uint32_t elapsed = 0, length = 0;
    while (elapsed < 900 && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(milliseconds(20));
        ASSERT_EQ(DVDGetTitleTime(&elapsed, &length), noErr);
    }
    EXPECT_GE(elapsed, 900U);
    ASSERT_EQ(DVDCloseMediaFile(), noErr);
    EXPECT_TRUE(captured().empty());
}

class SoundInTime : public DiscInTime
{
protected:
    explicit SoundInTime(const QByteArray &standard = "ntsc")
        : DiscInTime(standard)
    {
    }

    /// Where on the disc half a second of sound is from, seconds: its tone has 400 hertz and 200 more for each second.
    [[nodiscard]] static double placeOfTone(const std::vector<Frame> &sound, std::size_t first)
    {
        int crossings = 0;
        for (std::size_t frame = first + 1; frame <= first + 24'000; ++frame)
            crossings += sound[frame - 1][0] < 0 && sound[frame][0] >= 0 ? 1 : 0;
        return (2.0 * crossings - 400) / 200;
    }
};

TEST_F(SoundInTime, soundAndPicture_areTogether)
{
    ASSERT_EQ(player->playChapter(1, 1), noErr);
    play(seconds(9));
    const std::vector<Frame> all = framesIn(heard), expected = soundOfTitle(disc(), "0");
    // Where in what was heard the title begins: its first sound that is not silence.
    const auto isSound = [](const Frame &frame) { return frame != Frame{}; };
    const auto firstHeard = std::find_if(all.begin(), all.end(), isSound);
    const auto firstExpected = std::find_if(expected.begin(), expected.end(), isSound);
    ASSERT_NE(firstHeard, all.end());
    const auto lead = (firstHeard - all.begin()) - (firstExpected - expected.begin());
    ASSERT_GE(lead, 0);
    EXPECT_TRUE(std::equal(expected.begin(), expected.end(), all.begin() + lead)) << "to the end of the title";
    // The sound of the stream begins with the picture, as its packets say.
    constexpr std::array<QRgb, 4> colours = {0xa00000, 0x008000, 0x0000c0, 0x806000};
    for (std::size_t chapter = 1; chapter < colours.size(); ++chapter) {
        const std::optional<std::size_t> seen = firstShown(colours[chapter]);
        ASSERT_TRUE(seen) << chapter;
        const auto frame = std::size_t(lead) + chapter * 65 * 48'048 / 30;
        const auto off = std::chrono::duration_cast<milliseconds>(shown[*seen].when - whenHeard(frame)).count();
        EXPECT_LE(std::abs(off), 40) << chapter;
    }
}

TEST_F(SoundInTime, seek_leavesNothingOfWhatWasBefore)
{
    ASSERT_EQ(player->playChapter(1, 1), noErr);
    play(milliseconds(1500));
    const qsizetype before = heard.size();
    ASSERT_EQ(player->playChapter(1, 3), noErr);
    play(milliseconds(1500));
    const std::vector<Frame> behind = withoutSilence(framesIn(heard.sliced(before)));
    ASSERT_GT(behind.size(), 48'000U);
    const double chapter = 2 * 65 * 1.001 / 30; // its begin
    EXPECT_NEAR(placeOfTone(behind, 2000), chapter + 14'000.0 / 48'000, 0.08);
}

TEST_F(SoundInTime, otherStream_followsWithoutAGap)
{
    ASSERT_EQ(player->playChapter(1, 1), noErr);
    play(seconds(1));
    ASSERT_EQ(player->setSoundStream(2), noErr);
    play(seconds(2));
    const std::vector<Frame> all = framesIn(heard), first = soundOfTitle(disc(), "0"),
                             second = soundOfTitle(disc(), "1");
    const auto isSound = [](const Frame &frame) { return frame != Frame{}; };
    const auto sounding = std::find_if(all.begin(), all.end(), isSound);
    const auto lead = (sounding - all.begin()) - (std::find_if(first.begin(), first.end(), isSound) - first.begin());
    // The samples of the second stream are known to the bit; it begins a little later than the first.
    std::ptrdiff_t best = 0;
    constexpr std::ptrdiff_t mostOff = 1920; // of 40 milliseconds
    for (std::ptrdiff_t off = -mostOff; off <= mostOff; ++off) {
        std::ptrdiff_t same = 0;
        for (auto at = std::ptrdiff_t(all.size()) - 1;
             at >= lead && at - lead + off >= 0 && at - lead + off < std::ptrdiff_t(second.size())
             && all[std::size_t(at)] == second[std::size_t(at - lead + off)];
             --at)
            ++same;
        best = std::max(best, same);
    }
    EXPECT_GT(best, 48'000) << "a second and more of the two since it was chosen";
    EXPECT_LT(std::count(sounding, all.end(), Frame{}), 48'000 / 50) << "of silence";
}

TEST_F(SoundInTime, pause_holdsBoth)
{
    ASSERT_EQ(player->playChapter(1, 1), noErr);
    play(seconds(1));
    ASSERT_EQ(player->pause(), noErr);
    const std::size_t before = shown.size();
    const qsizetype heardBefore = heard.size();
    play(seconds(1));
    EXPECT_EQ(shown.size(), before);
    EXPECT_TRUE(withoutSilence(framesIn(heard.sliced(heardBefore))).empty());
    ASSERT_EQ(player->play(), noErr);
    play(seconds(1));
    EXPECT_GT(shown.size(), before + 25);
    const std::vector<Frame> all = withoutSilence(framesIn(heard)),
                             expected = withoutSilence(soundOfTitle(disc(), "0"));
    EXPECT_TRUE(std::equal(all.begin(), all.end(), expected.begin()));
}

TEST_F(SoundInTime, menuThatStands_endsItsSound_andGoesOnFromThere)
{
    ASSERT_EQ(player->play(), noErr);
    play(seconds(3));
    EXPECT_EQ(state.playback, std::uint32_t(kDVDStatePlayingStill));
    const std::vector<Frame> menu = withoutSilence(framesIn(heard));
    EXPECT_GT(menu.size(), 15'000U) << "the menu has half a second of it";
    EXPECT_LT(menu.size(), 40'000U);
    ASSERT_EQ(player->navigate(kDVDUserNavigationEnter), noErr);
    const qsizetype before = heard.size();
    play(seconds(2));
    EXPECT_TRUE(firstShown(0xa00000));
    EXPECT_GT(withoutSilence(framesIn(heard.sliced(before))).size(), 48'000U);
}

/// A title of interlaced pictures, of which each half has a luminance of its own, with DTS in 5.1.
class InterlacedInTime : public SoundInTime
{
protected:
    InterlacedInTime()
        : SoundInTime("interlaced")
    {
    }
    /// Which half picture of the disc, of 48 that follow each other, a grey one is.
    [[nodiscard]] static int numberOf(QRgb colour)
    {
        const double luminance = 16 + qGreen(colour) * 219.0 / 255;
        return int(std::lround((luminance - 40) / 3));
    }
};

TEST_F(InterlacedInTime, eachHalfPicture_isAPictureAtItsTime)
{
    ASSERT_EQ(player->playChapter(1, 1), noErr);
    play(seconds(4));
    ASSERT_GT(shown.size(), 190U);
    for (std::size_t index = 0; index < 190; ++index)
        EXPECT_EQ(numberOf(shown[index].colour), int(index % 48)) << index << std::hex << ' ' << shown[index].colour;
    for (std::size_t index = 12; index < 190; ++index)
        EXPECT_EQ(shown[index].when - shown[index - 1].when, milliseconds(20)) << index;
    EXPECT_EQ(state.width, 352);
    EXPECT_EQ(state.height, 576);
}

TEST_F(InterlacedInTime, dts_isMixedToWhatTheDeviceHas)
{
    ASSERT_EQ(player->playChapter(1, 1), noErr);
    play(seconds(3));
    const ProgramRun run =
        runProgram("ffmpeg",
                   {"-nostdin", "-v", "error", "-i", disc("interlaced") + "/VIDEO_TS/VTS_01_1.VOB", "-map", "0:a:0",
                    "-af", "aresample=rematrix_maxval=1:ochl=stereo", "-t", "3", "-f", "f32le", "-"});
    ASSERT_EQ(run.status, 0) << run.errors.constData();
    const std::vector<Frame> expected = withoutSilence(framesIn(run.output)), all = withoutSilence(framesIn(heard));
    ASSERT_GT(all.size(), 120'000U);
    ASSERT_GE(expected.size(), 120'000U);
    EXPECT_TRUE(std::equal(all.begin(), all.begin() + 120'000, expected.begin()));
}

TEST_F(InterlacedInTime, soundOfPicturesSteppedOver_isNotHeard)
{
    ASSERT_EQ(player->playChapter(1, 1), noErr);
    play(milliseconds(500));
    const std::size_t seen = shown.size();
    constexpr int steps = 500;
    for (int step = 0; step < steps; ++step)
        ASSERT_EQ(player->stepPicture(), noErr) << step;
    EXPECT_EQ(shown.size(), seen + steps);
    const qsizetype before = heard.size();
    const double place = double(shown.size()) / 50;
    ASSERT_EQ(player->play(), noErr);
    play(seconds(1));
    const std::vector<Frame> behind = withoutSilence(framesIn(heard.sliced(before)));
    ASSERT_GT(behind.size(), 30'000U);
    EXPECT_NEAR(placeOfTone(behind, 2000), place + 14'000.0 / 48'000, 0.1);
}

} // namespace

} // namespace Tessaron::Testing
