#include "platform/dvdplayback/DVDPlayback.h"
#include "platform/dvdplayback/DVDSession.h"
#include "platform/dvdplayback/DVDVideoFrames.h"
#include "tests/dvdplayback/DiscFixture.h"

#include <QFile>

#include <array>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <random>
#include <thread>
#include <vector>

namespace Tessaron::Testing
{

namespace
{

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr QRgb titleMenu = 0x404040, rootMenu1 = 0x206060, rootMenu2 = 0x602060;
constexpr std::array<QRgb, 4> chapters = {0xa00000, 0x008000, 0x0000c0, 0x806000};
constexpr std::array<QRgb, 3> angles = {0x007070, 0x700070, 0x905000};

struct Event {
    std::uint32_t code = 0, value1 = 0, value2 = 0;
};

/// A session that plays, what it tells, and the picture that is seen.
class Playing : public DiscTest
{
protected:
    Playing()
    {
        EXPECT_EQ(DVDInitialize(), noErr);
        const std::array<std::uint32_t, 7> codes = {7, 24, 11, 2, 1, 20, 12};
        std::uint32_t identifier = 0;
        EXPECT_EQ(DVDRegisterEventCallBack(hearEvent, codes.data(), codes.size(), this, &identifier), noErr);
        EXPECT_EQ(DVDSetTimeEventRate(100), noErr);
        const DVDRect bounds = {0, 0, 480, 720};
        EXPECT_EQ(DVDSetVideoBounds(&bounds), noErr);
        setDVDFrameHearer([this] {
            const std::lock_guard lock(m_mutex);
            ++m_frames;
            m_changed.notify_all();
        });
    }
    ~Playing() override
    {
        setDVDFrameHearer({});
        DVDDispose();
    }

    static void open(const QByteArray &path)
    {
        FSRef ref;
        ASSERT_EQ(FSPathMakeRef(path, &ref, nullptr), noErr);
        ASSERT_EQ(DVDOpenMediaFile(&ref), noErr);
    }
    static void openAndPlay(std::uint16_t title, std::uint16_t chapter)
    {
        open(disc());
        ASSERT_EQ(DVDSetChapter(title, chapter), noErr);
    }

    /// Waits until the condition holds; tested whenever something is seen or told.
    [[nodiscard]] bool waitUntil(const std::function<bool()> &condition, seconds atMost = seconds(20))
    {
        const auto end = std::chrono::steady_clock::now() + atMost;
        while (!condition()) {
            std::unique_lock lock(m_mutex);
            if (std::chrono::steady_clock::now() >= end)
                return false;
            m_changed.wait_for(lock, milliseconds(20));
        }
        return true;
    }
    /// Takes the newest picture; true when the place, outside of buttons, has about that colour.
    [[nodiscard]] bool isSeen(QRgb colour, int x = 60, int y = 60)
    {
        static_cast<void>(takeDVDFrame(&m_picture));
        if (m_picture.isNull())
            return false;
        const QRgb pixel = m_picture.pixel(x, y);
        constexpr int tolerance = 12;
        return std::abs(qRed(pixel) - qRed(colour)) <= tolerance
            && std::abs(qGreen(pixel) - qGreen(colour)) <= tolerance
            && std::abs(qBlue(pixel) - qBlue(colour)) <= tolerance;
    }
    [[nodiscard]] bool waitForColour(QRgb colour)
    {
        return waitUntil([&] { return isSeen(colour); });
    }
    [[nodiscard]] bool waitForState(std::uint32_t wanted)
    {
        return waitUntil([&] { return state() == wanted; });
    }
    [[nodiscard]] static std::uint32_t state()
    {
        std::uint32_t state = 0;
        EXPECT_EQ(DVDGetState(&state), noErr);
        return state;
    }
    [[nodiscard]] static bool isOnMenu()
    {
        bool isOnMenu = false;
        EXPECT_EQ(DVDIsOnMenu(&isOnMenu), noErr);
        return isOnMenu;
    }
    [[nodiscard]] static std::pair<int, int> chapter()
    {
        std::uint16_t title = 0, chapter = 0;
        EXPECT_EQ(DVDGetChapter(&title, &chapter), noErr);
        return {title, chapter};
    }
    [[nodiscard]] static std::uint32_t elapsed()
    {
        std::uint32_t elapsed = 0, length = 0;
        EXPECT_EQ(DVDGetTitleTime(&elapsed, &length), noErr);
        return elapsed;
    }
    [[nodiscard]] std::vector<Event> events(std::uint32_t code)
    {
        const std::lock_guard lock(m_mutex);
        std::vector<Event> wanted;
        std::copy_if(m_events.begin(), m_events.end(), std::back_inserter(wanted),
                     [code](const Event &event) { return event.code == code; });
        return wanted;
    }
    [[nodiscard]] int frames()
    {
        const std::lock_guard lock(m_mutex);
        return m_frames;
    }

    QImage m_picture;

private:
    static void hearEvent(std::uint32_t code, std::uint32_t value1, std::uint32_t value2, void *reference)
    {
        auto *const test = static_cast<Playing *>(reference);
        const std::lock_guard lock(test->m_mutex);
        test->m_events.push_back({code, value1, value2});
        test->m_changed.notify_all();
    }

    std::mutex m_mutex; ///< guards the members below
    std::condition_variable m_changed;
    std::vector<Event> m_events;
    int m_frames = 0;
};

TEST_F(Playing, play_beginsWithTheTitleMenu_whichStands)
{
    open(disc());
    EXPECT_EQ(state(), kDVDStateStopped);
    ASSERT_EQ(DVDPlay(), noErr);
    EXPECT_TRUE(waitForColour(titleMenu));
    EXPECT_TRUE(waitForState(kDVDStatePlayingStill));
    EXPECT_TRUE(isOnMenu());
    EXPECT_EQ(chapter(), std::pair(0, 0));
    bool isPlaying = false;
    EXPECT_EQ(DVDIsPlaying(&isPlaying), noErr);
    EXPECT_TRUE(isPlaying);
}

TEST_F(Playing, selection_isDrawn_andMovesWithTheKeys)
{
    constexpr QRgb yellow = 0xffff00;
    const std::array edges = {112, 212, 312}; // upper edges of the buttons
    open(disc());
    ASSERT_EQ(DVDPlay(), noErr);
    ASSERT_TRUE(waitForState(kDVDStatePlayingStill));
    for (const int selected : {0, 1, 2, 0}) {
        for (int button = 0; button < int(edges.size()); ++button)
            EXPECT_TRUE(waitUntil([&] {
                return isSeen(button == selected ? yellow : titleMenu, 300, edges[std::size_t(button)]);
            })) << selected
                << button << ' ' << std::hex << m_picture.pixel(300, edges[std::size_t(button)]);
        EXPECT_EQ(DVDDoUserNavigation(2), noErr);
    }
    EXPECT_EQ(DVDDoUserNavigation(1), noErr);
    EXPECT_TRUE(waitUntil([&] { return isSeen(yellow, 300, edges[0]); }));
}

TEST_F(Playing, enter_activatesTheSelectedButton)
{
    open(disc());
    ASSERT_EQ(DVDPlay(), noErr);
    ASSERT_TRUE(waitForState(kDVDStatePlayingStill));
    EXPECT_EQ(DVDDoUserNavigation(2), noErr);
    EXPECT_EQ(DVDDoUserNavigation(2), noErr);
    EXPECT_EQ(DVDDoUserNavigation(5), noErr);
    EXPECT_TRUE(waitForColour(chapters[2]));
    EXPECT_TRUE(waitUntil([] { return chapter() == std::pair(1, 3); }));
    EXPECT_FALSE(isOnMenu());
    EXPECT_EQ(state(), kDVDStatePlaying);
    ASSERT_TRUE(waitUntil([&] { return !events(kDVDEventPTT).empty(); }));
    ASSERT_EQ(events(kDVDEventTitle).size(), 1U);
    EXPECT_EQ(events(kDVDEventTitle)[0].value1, 1U);
    EXPECT_EQ(events(kDVDEventPTT)[0].value1, 3U);
}

TEST_F(Playing, mouse_selectsAndActivates)
{
    open(disc());
    ASSERT_EQ(DVDPlay(), noErr);
    ASSERT_TRUE(waitForState(kDVDStatePlayingStill));
    std::int32_t button = 0;
    const DVDPoint outside = {60, 60}, second = {240, 300}, third = {340, 300};
    EXPECT_EQ(DVDDoMenuMouseOver(&outside, &button), noErr);
    EXPECT_EQ(button, -1);
    EXPECT_EQ(DVDDoMenuMouseOver(&third, &button), noErr);
    EXPECT_EQ(button, 2);
    EXPECT_TRUE(waitUntil([&] { return isSeen(0xffff00, 300, 312); }));
    EXPECT_EQ(DVDDoMenuClick(&outside, &button), noErr);
    EXPECT_EQ(button, -1);
    EXPECT_EQ(DVDDoMenuClick(&second, &button), noErr);
    EXPECT_EQ(button, 1);
    EXPECT_TRUE(waitForColour(angles[0]));
    EXPECT_TRUE(waitUntil([] { return chapter() == std::pair(2, 1); }));
    EXPECT_EQ(DVDDoMenuMouseOver(&third, &button), noErr);
    EXPECT_EQ(button, -1) << "there are no buttons in a title";
}

TEST_F(Playing, points_areThoseOfTheVideoInItsWindow)
{
    open(disc());
    ASSERT_EQ(DVDPlay(), noErr);
    ASSERT_TRUE(waitForState(kDVDStatePlayingStill));
    const DVDRect bounds = {20, 0, 260, 360}; // half as large, below a title bar
    ASSERT_EQ(DVDSetVideoBounds(&bounds), noErr);
    std::int32_t button = -1;
    const DVDPoint second = {140, 150}, none = {10, 150};
    EXPECT_EQ(DVDDoMenuMouseOver(&second, &button), noErr);
    EXPECT_EQ(button, 1);
    EXPECT_EQ(DVDDoMenuMouseOver(&none, &button), noErr);
    EXPECT_EQ(button, -1);
}

TEST_F(Playing, chapters_followEachOther_andAreStepped)
{
    openAndPlay(1, 1);
    EXPECT_TRUE(waitForColour(chapters[0]));
    EXPECT_EQ(DVDNextChapter(), noErr);
    EXPECT_TRUE(waitForColour(chapters[1]));
    EXPECT_TRUE(waitForColour(chapters[2])) << "by itself";
    EXPECT_EQ(chapter(), std::pair(1, 3));
    EXPECT_EQ(DVDPreviousChapter(), noErr);
    EXPECT_TRUE(waitForColour(chapters[1]));
    EXPECT_EQ(DVDSetChapter(1, 4), noErr);
    EXPECT_TRUE(waitForColour(chapters[3]));
    EXPECT_EQ(DVDNextChapter(), kDVDErrorUserActionNoOp);
    EXPECT_EQ(DVDSetChapter(1, 5), kDVDErrorWrongParam);
    EXPECT_EQ(DVDSetChapter(3, 1), kDVDErrorWrongParam);
}

TEST_F(Playing, angles_areChosen)
{
    openAndPlay(2, 1);
    EXPECT_TRUE(waitForColour(angles[0]));
    std::uint16_t count = 0, angle = 0;
    EXPECT_EQ(DVDGetNumAngles(&count), noErr);
    EXPECT_EQ(count, 3);
    EXPECT_EQ(DVDSetAngle(2), noErr);
    EXPECT_TRUE(waitForColour(angles[1]));
    EXPECT_TRUE(waitUntil([&] { return DVDGetAngle(&angle) == noErr && angle == 2; }));
    EXPECT_EQ(DVDSetAngle(4), kDVDErrorWrongParam);
    EXPECT_EQ(DVDSetAngle(0), kDVDErrorWrongParam);
}

TEST_F(Playing, menu_isCalled_andLeftAgain)
{
    openAndPlay(1, 2);
    EXPECT_TRUE(waitForColour(chapters[1]));
    EXPECT_EQ(DVDGoToMenu(1), noErr);
    EXPECT_TRUE(waitForColour(rootMenu1));
    EXPECT_TRUE(isOnMenu());
    EXPECT_EQ(DVDReturnToTitle(), noErr);
    EXPECT_TRUE(waitForColour(chapters[1]));
    EXPECT_FALSE(isOnMenu());
    EXPECT_EQ(DVDGoToMenu(0), noErr);
    EXPECT_TRUE(waitForColour(titleMenu));
    EXPECT_EQ(DVDSetChapter(2, 1), noErr);
    EXPECT_TRUE(waitForColour(angles[0]));
    EXPECT_EQ(DVDGoToMenu(1), noErr);
    EXPECT_TRUE(waitForColour(rootMenu2));
    EXPECT_EQ(DVDGoToMenu(kDVDMenuAngle), kDVDErrorUserActionNoOp) << "there is none";
}

TEST_F(Playing, movingMenu_answersItsButtons)
{
    openAndPlay(1, 1);
    EXPECT_TRUE(waitForColour(chapters[0]));
    EXPECT_EQ(DVDGoToMenu(1), noErr);
    EXPECT_TRUE(waitForColour(rootMenu1));
    EXPECT_TRUE(waitUntil([&] { return isSeen(0xffff00, 300, 112); }));
    EXPECT_EQ(DVDDoUserNavigation(2), noErr);
    EXPECT_TRUE(waitUntil([&] { return isSeen(0xffff00, 300, 212); }));
    EXPECT_EQ(DVDDoUserNavigation(5), noErr);
    EXPECT_TRUE(waitForColour(angles[0]));
}

TEST_F(Playing, pause_holdsThePicture)
{
    openAndPlay(1, 1);
    EXPECT_TRUE(waitForColour(chapters[0]));
    EXPECT_EQ(DVDPause(), noErr);
    EXPECT_EQ(state(), kDVDStatePaused);
    const int before = frames();
    std::this_thread::sleep_for(milliseconds(300));
    EXPECT_LE(frames(), before + 1);
    EXPECT_EQ(DVDPlay(), noErr);
    EXPECT_EQ(state(), kDVDStatePlaying);
    EXPECT_TRUE(waitForColour(chapters[1]));
}

/// On the system's clock: the driver for tests is as late as the machine is busy, and pictures follow it.
TEST_F(Playing, pictures_comeInTime_withoutADevice)
{
    qputenv("SDL_AUDIODRIVER", "none");
    openAndPlay(1, 1);
    EXPECT_TRUE(waitForColour(chapters[0]));
    const int before = frames();
    const auto begin = std::chrono::steady_clock::now();
    std::this_thread::sleep_for(seconds(3));
    const double time = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    EXPECT_NEAR((frames() - before) / time, 29.97, 1.5);
}

TEST_F(Playing, reasonForSilence_isTold_withoutADevice)
{
    qputenv("SDL_AUDIODRIVER", "none");
    openAndPlay(1, 1);
    EXPECT_TRUE(waitForColour(chapters[1])) << "it plays";
    QString why;
    EXPECT_EQ(DVDCopySoundFailure(&why), noErr);
    EXPECT_FALSE(why.isEmpty());
    EXPECT_EQ(DVDCloseMediaFile(), noErr);
    EXPECT_EQ(DVDCopySoundFailure(&why), kDVDErrorNoValidMedia);
    EXPECT_EQ(DVDCopySoundFailure(nullptr), kDVDErrorWrongParam);
}

TEST_F(Playing, reasonForSilence_isEmpty_withADevice)
{
    openAndPlay(1, 1);
    EXPECT_TRUE(waitForColour(chapters[0]));
    QString why = QStringLiteral("before");
    EXPECT_EQ(DVDCopySoundFailure(&why), noErr);
    EXPECT_TRUE(why.isEmpty()) << why.toStdString();
}

TEST_F(Playing, titleTime_isToldAsOftenAsAsked)
{
    openAndPlay(1, 1);
    EXPECT_TRUE(waitForColour(chapters[1]));
    const std::vector<Event> times = events(kDVDEventTitleTime);
    EXPECT_GE(times.size(), 12U);
    for (std::size_t index = 1; index < times.size(); ++index) {
        EXPECT_GE(times[index].value1 + 50, times[index - 1].value1);
        EXPECT_EQ(times[index].value2, 8698U);
    }
    EXPECT_NEAR(double(times.back().value1), 2100, 300);
}

TEST_F(Playing, disc_stopsAtItsEnd)
{
    openAndPlay(2, 2);
    EXPECT_TRUE(waitForState(kDVDStateStopped));
    EXPECT_TRUE(waitUntil([&] { return events(kDVDEventPlayback).back().value1 == 4; }));
    EXPECT_EQ(DVDPlay(), noErr);
    EXPECT_TRUE(waitForColour(titleMenu));
}

TEST_F(Playing, firstTitle_endsInTheMenu)
{
    openAndPlay(1, 4);
    EXPECT_TRUE(waitForColour(chapters[3]));
    EXPECT_TRUE(waitForColour(titleMenu));
    EXPECT_TRUE(isOnMenu());
}

TEST_F(Playing, stop_isTheBegin)
{
    openAndPlay(1, 3);
    EXPECT_TRUE(waitForColour(chapters[2]));
    EXPECT_EQ(DVDStop(), noErr);
    EXPECT_EQ(state(), kDVDStateStopped);
    EXPECT_EQ(chapter(), std::pair(0, 0));
    EXPECT_EQ(DVDStop(), noErr);
    EXPECT_EQ(DVDPause(), kDVDErrorUserActionNoOp);
    EXPECT_EQ(DVDPlay(), noErr);
    EXPECT_TRUE(waitForColour(titleMenu));
}

TEST_F(Playing, soundStreams_areChosen)
{
    std::uint16_t count = 9, stream = 9;
    openAndPlay(1, 1);
    EXPECT_TRUE(waitForColour(chapters[0]));
    EXPECT_EQ(DVDGetNumAudioStreams(&count), noErr);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(DVDGetAudioStream(&stream), noErr);
    EXPECT_EQ(stream, 1);
    EXPECT_EQ(DVDSetAudioStream(2), noErr);
    EXPECT_TRUE(waitUntil([&] { return DVDGetAudioStream(&stream) == noErr && stream == 2; }));
    EXPECT_TRUE(waitForColour(chapters[1])) << "nothing else changes";
    EXPECT_EQ(DVDSetAudioStream(3), kDVDErrorWrongParam);
    EXPECT_EQ(DVDSetAudioStream(0), kDVDErrorWrongParam);
    EXPECT_EQ(DVDGoToMenu(1), noErr);
    EXPECT_TRUE(waitForColour(rootMenu1));
    EXPECT_EQ(DVDGetNumAudioStreams(&count), noErr);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(DVDSetAudioStream(1), kDVDErrorUserActionNoOp);
}

TEST_F(Playing, subtitles_areShownAndHidden)
{
    constexpr QRgb white = 0xffffff;
    constexpr int x = 360, y = 382; // on the frame that is the subtitle
    std::uint16_t count = 9, stream = 9;
    openAndPlay(1, 1);
    EXPECT_TRUE(waitForColour(chapters[0]));
    EXPECT_EQ(DVDGetNumSubPictureStreams(&count), noErr);
    EXPECT_EQ(count, 1);
    EXPECT_EQ(DVDSetSubPictureStream(1), noErr);
    EXPECT_TRUE(waitUntil([&] { return isSeen(white, x, y); }));
    EXPECT_TRUE(waitUntil([&] { return DVDGetSubPictureStream(&stream) == noErr && stream == 1; }));
    EXPECT_EQ(DVDSetSubPictureStream(0), noErr);
    EXPECT_TRUE(waitUntil([&] { return DVDGetSubPictureStream(&stream) == noErr && stream == 0; }));
    EXPECT_TRUE(waitForColour(chapters[2]));
    EXPECT_TRUE(waitUntil([] { return elapsed() > 5200; })) << "where the third one would be seen";
    EXPECT_TRUE(isSeen(chapters[2], x, y));
    EXPECT_EQ(DVDSetSubPictureStream(2), kDVDErrorWrongParam);
}

TEST_F(Playing, titleTime_isGoneTo)
{
    openAndPlay(1, 1);
    EXPECT_TRUE(waitForColour(chapters[0]));
    EXPECT_EQ(DVDSetTitleTime(5000), noErr);
    EXPECT_NEAR(double(elapsed()), 5000, 700) << "a video unit is 434 ms long";
    EXPECT_EQ(chapter(), std::pair(1, 3));
    EXPECT_TRUE(waitForColour(chapters[2]));
    EXPECT_EQ(DVDSetTitleTime(9000), kDVDErrorWrongParam) << "beyond the end";
}

TEST_F(Playing, titleTime_isGoneTo_alongTheAngleThatWasChosen)
{
    openAndPlay(2, 1);
    EXPECT_EQ(DVDSetAngle(3), noErr);
    EXPECT_EQ(DVDSetTitleTime(300), noErr) << "before the angle was seen";
    EXPECT_EQ(DVDPause(), noErr);
    bool isChosenSeen = false;
    for (int step = 0; step < 60 && !isChosenSeen; ++step) {
        EXPECT_EQ(DVDStepFrame(), noErr);
        isChosenSeen = isSeen(angles[2]);
    }
    EXPECT_TRUE(isChosenSeen);
    std::uint16_t angle = 0;
    EXPECT_EQ(DVDGetAngle(&angle), noErr);
    EXPECT_EQ(angle, 3);
}

TEST_F(Playing, step_showsOnePicture)
{
    openAndPlay(1, 1);
    EXPECT_TRUE(waitForColour(chapters[0]));
    EXPECT_EQ(DVDPause(), noErr);
    EXPECT_TRUE(waitForState(kDVDStatePaused));
    const int before = frames();
    for (int step = 1; step <= 80; ++step) {
        EXPECT_EQ(DVDStepFrame(), noErr);
        EXPECT_TRUE(waitUntil([&] { return frames() == before + step; })) << step << ' ' << frames() - before;
    }
    EXPECT_EQ(state(), kDVDStatePaused);
    EXPECT_TRUE(isSeen(chapters[1])) << "a chapter has 65 pictures";
    EXPECT_EQ(DVDPlay(), noErr);
    EXPECT_TRUE(waitForColour(chapters[2]));
}

TEST_F(Playing, slowly_timeRunsSlower)
{
    openAndPlay(1, 1);
    EXPECT_TRUE(waitForColour(chapters[0]));
    EXPECT_EQ(DVDPlaySlowly(3), kDVDErrorWrongParam);
    EXPECT_EQ(DVDPlaySlowly(4), noErr);
    EXPECT_EQ(state(), kDVDStatePlaying);
    const std::uint32_t before = elapsed();
    std::this_thread::sleep_for(seconds(2));
    EXPECT_LT(elapsed(), before + 1000);
    EXPECT_EQ(DVDPlay(), noErr);
    EXPECT_TRUE(waitForColour(chapters[1]));
}

/// Each operation that title 1 forbids, in the third to the first byte of its program chain's prohibitions.
TEST_F(Playing, operationsThatTheDiscForbids_areRefused)
{
    const QByteArray copy = copyOfDisc();
    const QByteArray tables = m_tree.contents("disc/VIDEO_TS/VTS_01_0.IFO");
    const auto number = [&](qint64 offset) {
        qint64 value = 0;
        for (qint64 byte = offset; byte < offset + 4; ++byte)
            value = value << 8 | std::uint8_t(tables[byte]);
        return value;
    };
    const qint64 chains = number(0xcc) * 2048, forbidden = chains + number(chains + 12) + 8;
    const std::array<std::uint8_t, 4> bits = {0x00, 0x38, 0x0b, 0xe8};
    for (std::size_t byte = 0; byte < bits.size(); ++byte)
        patchTable("VTS_01_0", forbidden + qint64(byte), char(bits[byte]));
    open(copy);
    ASSERT_EQ(DVDSetChapter(1, 1), noErr) << "a disc that is stopped forbids nothing";
    EXPECT_TRUE(waitForColour(chapters[0]));
    EXPECT_EQ(DVDPause(), kDVDErrorUserActionNoOp);
    EXPECT_EQ(DVDStop(), kDVDErrorUserActionNoOp);
    EXPECT_EQ(DVDNextChapter(), kDVDErrorUserActionNoOp);
    EXPECT_EQ(DVDPreviousChapter(), kDVDErrorUserActionNoOp);
    EXPECT_EQ(DVDSetChapter(1, 3), kDVDErrorUserActionNoOp);
    EXPECT_EQ(DVDSetTitleTime(3000), kDVDErrorUserActionNoOp);
    EXPECT_EQ(DVDScan(4, 0), kDVDErrorUserActionNoOp);
    EXPECT_EQ(DVDScan(4, 1), kDVDErrorUserActionNoOp);
    EXPECT_EQ(DVDGoToMenu(1), kDVDErrorUserActionNoOp);
    EXPECT_EQ(DVDSetAudioStream(2), kDVDErrorUserActionNoOp);
    EXPECT_EQ(DVDSetSubPictureStream(1), kDVDErrorUserActionNoOp);
    EXPECT_EQ(state(), kDVDStatePlaying);
    EXPECT_EQ(DVDGoToMenu(0), noErr) << "which is allowed";
    EXPECT_TRUE(waitForColour(titleMenu));
    EXPECT_EQ(DVDSetChapter(2, 1), noErr);
    EXPECT_TRUE(waitForColour(angles[0]));
    EXPECT_EQ(DVDPause(), noErr) << "the other title";
}

TEST_F(Playing, scan_runsBothWays)
{
    openAndPlay(1, 1);
    EXPECT_TRUE(waitForColour(chapters[0]));
    EXPECT_EQ(DVDScan(3, 0), kDVDErrorWrongParam);
    EXPECT_EQ(DVDScan(8, 2), kDVDErrorWrongParam);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(DVDScan(4, 0), noErr);
    EXPECT_EQ(state(), kDVDStateScanning);
    EXPECT_TRUE(waitForColour(chapters[2]));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, milliseconds(2500)) << "four times as fast as playing";
    EXPECT_EQ(DVDScan(4, 1), noErr);
    EXPECT_TRUE(waitForColour(chapters[1]));
    EXPECT_EQ(DVDPlay(), noErr);
    EXPECT_EQ(state(), kDVDStatePlaying);
    EXPECT_TRUE(waitForColour(chapters[2]));
}

TEST_F(Playing, bookmark_isFoundAgain_inAnotherSession)
{
    std::uint32_t size = 0;
    openAndPlay(1, 2);
    EXPECT_TRUE(waitForColour(chapters[2]));
    EXPECT_TRUE(waitUntil([] { return elapsed() > 5200; }));
    EXPECT_EQ(DVDPause(), noErr);
    const std::uint32_t place = elapsed();
    ASSERT_EQ(DVDGetBookmark(nullptr, &size), noErr);
    std::vector<std::uint8_t> bookmark(size);
    ASSERT_EQ(DVDGetBookmark(bookmark.data(), &size), noErr);
    ASSERT_EQ(DVDDispose(), noErr);

    ASSERT_EQ(DVDInitialize(), noErr);
    open(disc("pal"));
    EXPECT_EQ(DVDGotoBookmark(bookmark.data(), size), kDVDErrorWrongParam) << "of another disc";
    open(disc());
    ASSERT_EQ(DVDGotoBookmark(bookmark.data(), size), noErr);
    EXPECT_EQ(chapter(), std::pair(1, 3));
    EXPECT_NEAR(double(elapsed()), double(place), 500) << "a video unit is 434 ms long";
    EXPECT_TRUE(waitForColour(chapters[2]));
}

TEST_F(Playing, sleep_pausesUntilTheMachineWakes)
{
    openAndPlay(1, 1);
    EXPECT_TRUE(waitForColour(chapters[0]));
    EXPECT_EQ(DVDSleep(), noErr);
    EXPECT_EQ(state(), kDVDStatePaused);
    EXPECT_EQ(DVDWakeUp(), noErr);
    EXPECT_EQ(state(), kDVDStatePlaying);
}

TEST_F(Playing, imageOfRawSectors_isPlayed)
{
    open(rawImageOf(imageOfDisc(disc())));
    ASSERT_EQ(DVDSetChapter(1, 2), noErr);
    EXPECT_TRUE(waitForColour(chapters[1]));
    EXPECT_TRUE(waitForColour(chapters[2]));
    EXPECT_EQ(DVDGoToMenu(1), noErr);
    EXPECT_TRUE(waitForColour(rootMenu1));
}

TEST_F(Playing, missingTitleSet_leavesTheOthersToBePlayed)
{
    const QByteArray copy = copyOfDisc();
    m_tree.remove("disc/VIDEO_TS/VTS_02_0.IFO");
    m_tree.remove("disc/VIDEO_TS/VTS_02_0.BUP");
    open(copy);
    EXPECT_EQ(DVDSetChapter(2, 1), kDVDErrorWrongParam) << "it has no chapters that are known";
    ASSERT_EQ(DVDSetChapter(1, 2), noErr);
    EXPECT_TRUE(waitForColour(chapters[1]));
}

TEST_F(Playing, pal_hasItsSizeAndStandard)
{
    open(disc("pal"));
    ASSERT_EQ(DVDSetChapter(2, 1), noErr);
    EXPECT_TRUE(waitForColour(angles[0]));
    EXPECT_EQ(m_picture.size(), QSize(720, 576));
    std::int16_t ratio = 0;
    std::uint16_t width = 0, height = 0;
    EXPECT_EQ(DVDGetAspectRatio(&ratio), noErr);
    EXPECT_EQ(ratio, 3);
    EXPECT_EQ(DVDGetNativeVideoSize(&width, &height), noErr);
    EXPECT_EQ(width, 720);
    EXPECT_EQ(height, 576);
    EXPECT_EQ(events(kDVDEventVideoStandard).back().value1, std::uint32_t(kDVDFormatPAL));
}

TEST_F(Playing, anyCallsInAnyOrder_neverHang)
{
    open(disc());
    std::mt19937 random(5); // the same calls in every run
    const auto below = [&](std::uint32_t limit) { return random() % limit; };
    const int asked = qEnvironmentVariableIntValue("TESSARON_CALLS");
    for (int call = 0; call < (asked > 0 ? asked : 1500); ++call) {
        std::int32_t button = 0;
        const DVDPoint point = {std::int16_t(below(480)), std::int16_t(below(720))};
        switch (below(17)) {
        case 0:
            DVDPlay();
            break;
        case 1:
            DVDPause();
            break;
        case 2:
            if (below(8) == 0)
                DVDStop();
            break;
        case 3:
            DVDSetChapter(std::uint16_t(below(4)), std::uint16_t(below(6)));
            break;
        case 4:
            DVDNextChapter();
            break;
        case 5:
            DVDPreviousChapter();
            break;
        case 6:
            DVDSetAngle(std::uint16_t(below(5)));
            break;
        case 7:
            DVDGoToMenu(below(7));
            break;
        case 8:
            DVDReturnToTitle();
            break;
        case 9:
            DVDDoUserNavigation(below(7));
            break;
        case 10:
            DVDDoMenuClick(&point, &button);
            break;
        case 11:
            DVDStepFrame();
            break;
        case 12:
            DVDPlaySlowly(std::int16_t(1 << below(4)));
            break;
        case 13:
            DVDSetTitleTime(below(10'000));
            break;
        case 14:
            DVDSetAudioStream(std::uint16_t(below(4)));
            break;
        case 15:
            DVDSetSubPictureStream(std::uint16_t(below(3)));
            break;
        default:
            DVDScan(std::int16_t(1 << below(6)), std::int8_t(below(2)));
        }
        if (below(20) == 0)
            std::this_thread::sleep_for(milliseconds(5));
    }
    bool hasMedia = false;
    EXPECT_EQ(DVDHasMedia(&hasMedia), noErr);
    EXPECT_TRUE(hasMedia) << "the helper has ended";
    EXPECT_TRUE(events(kDVDEventError).empty());
    EXPECT_EQ(DVDSetChapter(1, 1), noErr);
    EXPECT_TRUE(waitForColour(chapters[0]));
}

TEST_F(Playing, damagedContents_endInAnErrorOrGoOn)
{
    const QByteArray copy = copyOfDisc();
    std::mt19937 random(11);
    for (int round = 0; round < 4; ++round) {
        QFile contents(m_tree.pathText("disc/VIDEO_TS/VTS_01_1.VOB"));
        ASSERT_TRUE(contents.open(QIODevice::ReadWrite));
        for (int flip = 0; flip < 4000; ++flip) {
            contents.seek(qint64(random() % std::uint32_t(contents.size())));
            contents.putChar(char(random()));
        }
        contents.close();
        open(copy);
        const OSStatus status = DVDSetChapter(1, 1);
        if (status == noErr) {
            EXPECT_TRUE(waitUntil([&] {
                bool hasMedia = false;
                return DVDHasMedia(&hasMedia) == noErr && (!hasMedia || frames() > 30 * (round + 1));
            }));
        }
    }
    open(disc());
    ASSERT_EQ(DVDSetChapter(1, 1), noErr);
    EXPECT_TRUE(waitForColour(chapters[0]));
}

} // namespace

} // namespace Tessaron::Testing
