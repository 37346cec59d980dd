#include "platform/dvdplayback/DVDPlayback.h"
#include "tests/dvdplayback/PlayingFixture.h"

#include <thread>

namespace Tessaron::Testing
{

namespace
{

using std::chrono::milliseconds;
using std::chrono::seconds;

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

/// Step by step, so that the film does not run on while the machine is busy.
TEST_F(Playing, angles_areChosen)
{
    openAndPlay(2, 1);
    ASSERT_EQ(DVDPause(), noErr);
    EXPECT_TRUE(stepToColour(angles[0], 1));
    std::uint16_t count = 0, angle = 0;
    EXPECT_EQ(DVDGetNumAngles(&count), noErr);
    EXPECT_EQ(count, 3);
    EXPECT_EQ(DVDSetAngle(2), noErr);
    EXPECT_TRUE(stepToColour(angles[1], 60)) << "a chapter has 65 pictures";
    EXPECT_TRUE(waitUntil([&] { return DVDGetAngle(&angle) == noErr && angle == 2; }));
    EXPECT_EQ(DVDSetAngle(4), kDVDErrorWrongParam);
    EXPECT_EQ(DVDSetAngle(0), kDVDErrorWrongParam);
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

/// How often in the time of the film, the tests in a time of their own say.
TEST_F(Playing, titleTime_isToldAsOftenAsAsked)
{
    openAndPlay(1, 1);
    EXPECT_TRUE(waitUntil([&] { return events(kDVDEventTitleTime).size() >= 12; }));
    const std::vector<Event> times = events(kDVDEventTitleTime);
    for (std::size_t index = 1; index < times.size(); ++index) {
        EXPECT_GE(times[index].value1 + 50, times[index - 1].value1);
        EXPECT_EQ(times[index].value2, 8698U);
    }
    ASSERT_EQ(DVDSetTimeEventRate(3'600'000), noErr);
    const std::size_t before = events(kDVDEventTitleTime).size();
    // A while later, however late it is in the film by now.
    ASSERT_EQ(DVDSetChapter(1, 3), noErr);
    EXPECT_TRUE(waitForColour(chapters[3]));
    EXPECT_LE(events(kDVDEventTitleTime).size(), before + 1) << "one may have been on its way";
}

TEST_F(Playing, disc_stopsAtItsEnd)
{
    openAndPlay(2, 2);
    EXPECT_TRUE(waitForState(kDVDStateStopped));
    EXPECT_TRUE(waitUntil([&] { return events(kDVDEventPlayback).back().value1 == 4; }));
    EXPECT_EQ(DVDPlay(), noErr);
    EXPECT_TRUE(waitForColour(titleMenu));
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
    EXPECT_TRUE(stepToColour(angles[2], 60));
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

TEST_F(Playing, slowly_knowsItsSpeeds_andGoesBackToTheUsualOne)
{
    openAndPlay(1, 1);
    EXPECT_TRUE(waitForColour(chapters[0]));
    for (const std::int16_t times : {0, 1, 3, 16, -2})
        EXPECT_EQ(DVDPlaySlowly(times), kDVDErrorWrongParam) << times;
    EXPECT_EQ(DVDPlaySlowly(4), noErr);
    EXPECT_EQ(state(), kDVDStatePlaying);
    EXPECT_EQ(DVDPlay(), noErr);
    EXPECT_TRUE(waitForColour(chapters[1]));
}

TEST_F(Playing, operationsThatTheDiscForbids_areRefused)
{
    open(copyThatForbids());
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
    for (const std::int16_t rate : {0, 3, 64, -4})
        EXPECT_EQ(DVDScan(rate, 0), kDVDErrorWrongParam) << rate;
    EXPECT_EQ(DVDScan(8, 2), kDVDErrorWrongParam);
    EXPECT_EQ(DVDScan(4, 0), noErr);
    EXPECT_EQ(state(), kDVDStateScanning);
    EXPECT_TRUE(waitForColour(chapters[2]));
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

TEST_F(Playing, failure_isToldInWords_untilOtherMediaIsOpened)
{
    QString why = QStringLiteral("unset");
    EXPECT_EQ(DVDCopyMediaFailure(nullptr), kDVDErrorWrongParam);
    open(disc());
    EXPECT_EQ(DVDCopyMediaFailure(&why), noErr);
    EXPECT_TRUE(why.isEmpty());
    const QByteArray copy = copyOfDisc();
    m_tree.remove("disc/VIDEO_TS/VTS_01_1.VOB");
    open(copy);
    EXPECT_EQ(DVDSetChapter(1, 1), kDVDErrorDamagedMedia);
    EXPECT_EQ(DVDCopyMediaFailure(&why), noErr);
    EXPECT_EQ(why, QStringLiteral("the contents of title set 1 are missing or cannot be opened"));
    open(disc());
    EXPECT_EQ(DVDCopyMediaFailure(&why), noErr);
    EXPECT_TRUE(why.isEmpty());
    ASSERT_EQ(DVDDispose(), noErr);
    EXPECT_EQ(DVDCopyMediaFailure(&why), kDVDErrorUninitializedLib);
    ASSERT_EQ(DVDInitialize(), noErr);
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

TEST_F(Playing, sleep_pausesADiscThatForbidsUsersToPause)
{
    open(copyThatForbids());
    ASSERT_EQ(DVDSetChapter(1, 1), noErr);
    EXPECT_TRUE(waitForColour(chapters[0]));
    EXPECT_EQ(DVDPause(), kDVDErrorUserActionNoOp);
    EXPECT_EQ(DVDSleep(), noErr);
    EXPECT_EQ(state(), kDVDStatePaused);
    EXPECT_EQ(DVDWakeUp(), noErr);
    EXPECT_EQ(state(), kDVDStatePlaying);
}

TEST_F(Playing, wakeUp_leavesAloneWhatWasStoppedMeanwhile)
{
    openAndPlay(1, 1);
    EXPECT_TRUE(waitForColour(chapters[0]));
    EXPECT_EQ(DVDSleep(), noErr);
    EXPECT_EQ(DVDStop(), noErr);
    EXPECT_EQ(DVDWakeUp(), noErr);
    EXPECT_EQ(state(), kDVDStateStopped);
}

} // namespace

} // namespace Tessaron::Testing
