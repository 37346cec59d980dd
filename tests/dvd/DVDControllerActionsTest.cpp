#include "platform/dvdplayback/DVDPlayback.h"
#include "tests/dvd/ControllerFixture.h"

#include <QAction>
#include <QApplication>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QSlider>

#include <TessaronClassesUI/ControlWindow.h>
#include <TessaronClassesUI/DVDEvent.h>
#include <TessaronClassesUI/PlaybackTime.h>
#include <TessaronClassesUI/VideoWindow.h>
#include <array>
#include <mutex>
#include <utility>
#include <vector>

namespace Tessaron::Testing
{

namespace
{

/// The times of the title that the session tells while it scans.
class TimesOfScan
{
public:
    /// On the session's thread, in the order of what happened.
    static void hear(std::uint32_t code, std::uint32_t value1, std::uint32_t /*value2*/, void *reference)
    {
        auto *const times = static_cast<TimesOfScan *>(reference);
        const std::lock_guard lock(times->m_mutex);
        if (code == kDVDEventPlayback)
            times->m_isScanning = value1 == kDVDStateScanning;
        else if (times->m_isScanning)
            times->m_times.push_back(value1);
    }
    [[nodiscard]] std::size_t count() const
    {
        const std::lock_guard lock(m_mutex);
        return m_times.size();
    }
    [[nodiscard]] std::vector<double> take()
    {
        const std::lock_guard lock(m_mutex);
        return std::exchange(m_times, {});
    }

private:
    mutable std::mutex m_mutex; ///< guards the members below
    bool m_isScanning = false;
    std::vector<double> m_times;
};

class Actions : public ControllerTest
{
protected:
    /// Lets the controller believe that the session has told this.
    void tellState(std::uint32_t state) const { controller->handleDVDEvent(DVDEvent::initWithData(11, state, 0)); }
    [[nodiscard]] bool waitForColour(QRgb colour) const
    {
        return waitUntil([&] {
            const QRgb pixel = controller->outlets().mVideoWindow->grab().toImage().pixel(40, 40);
            return std::abs(qRed(pixel) - qRed(colour)) < 14 && std::abs(qGreen(pixel) - qGreen(colour)) < 14
                && std::abs(qBlue(pixel) - qBlue(colour)) < 14;
        });
    }
    [[nodiscard]] static int angle()
    {
        std::uint16_t angle = 0;
        EXPECT_EQ(DVDGetAngle(&angle), noErr);
        return angle;
    }
    [[nodiscard]] static int volume()
    {
        std::uint16_t volume = 0;
        EXPECT_EQ(DVDGetAudioVolumeInfo(nullptr, &volume, nullptr), noErr);
        return volume;
    }
    /// Whether the action, asked for in each of these states, leaves the session alone: every call would be reported.
    void expectSilence(const QString &action, const std::vector<std::uint32_t> &states)
    {
        for (const std::uint32_t one : states) {
            tellState(one);
            EXPECT_TRUE(controller->performAction(action, nullptr));
            EXPECT_EQ(reports->descriptions, QStringList()) << action.toStdString() << " in state " << one;
            reports->descriptions.clear();
        }
    }
    void expectReport(const QString &action, std::uint32_t state, const QString &report)
    {
        tellState(state);
        EXPECT_TRUE(controller->performAction(action, nullptr));
        EXPECT_EQ(reports->descriptions, QStringList(report)) << action.toStdString() << " in state " << state;
        reports->descriptions.clear();
    }
};

} // namespace

// Gates: which action reaches the session in which state. Without media, each call that does is a report.

TEST_F(Actions, eachReachesTheSession_onlyInItsStates)
{
    keepReports();
    controller->beginSession();
    const std::vector<std::uint32_t> all = {0, 1, 2, 3, 4, 5, 6}, notPlaying = {0, 2, 3, 4, 5, 6};
    for (const char *const withMedia : {"onPlay", "onPause", "onStop", "onEject", "onNextBookmark"})
        expectSilence(text(withMedia), all);
    for (const char *const whenPlaying :
         {"onScanForward", "onScanBackward", "onPreviousScene", "onNextScene", "onNextAngle"})
        expectSilence(text(whenPlaying), notPlaying);
    expectReport(text("onScanForward"), 1, text("DVDScan returned -70015"));
    expectReport(text("onScanBackward"), 1, text("DVDScan returned -70015"));
    expectReport(text("onPreviousScene"), 1, text("DVDPreviousChapter returned -70015"));
    expectReport(text("onNextScene"), 1, text("DVDNextChapter returned -70015"));
    expectReport(text("onNextAngle"), 1, text("DVDSetAngle returned -70015"));
    expectSilence(text("onToggleMenu"), {0, 4, 5, 6});
    for (const std::uint32_t menuState : {1, 2, 3}) {
        tellState(menuState);
        controller->onToggleMenu();
        EXPECT_EQ(reports->descriptions,
                  QStringList({text("DVDIsOnMenu returned -70015"), text("DVDGoToMenu returned -70015")}));
        reports->descriptions.clear();
    }
    expectSilence(text("onNewBookmark"), {0, 3, 4, 5, 6});
    EXPECT_TRUE(controller->bookmarks().empty());
    expectSilence(text("onNewBookmark"), {1, 2});
    EXPECT_EQ(controller->bookmarks().size(), 2U) << "without a place, which is a line in the log";
    EXPECT_TRUE(lines().contains(text("DVDGetBookmark returned -70015")));
}

// Playing.

TEST_F(Actions, playPauseAndStop_followTheSession)
{
    ASSERT_TRUE(openAndPlay(1, 1));
    controller->onPlay();
    EXPECT_FALSE(steps().contains(text("Step 6: Play"))) << "it plays already";
    controller->onPause();
    ASSERT_TRUE(waitForState(kDVDStatePaused));
    controller->onPause();
    EXPECT_EQ(state(), std::uint32_t(kDVDStatePaused));
    controller->onPlay();
    ASSERT_TRUE(waitForState(kDVDStatePlaying));
    EXPECT_EQ(steps().count(text("Step 6: Play")), 1);
    ASSERT_TRUE(waitUntil([&] { return title() == text("1") && scene() == text("1"); }));
    controller->onStop();
    ASSERT_TRUE(waitForState(kDVDStateStopped));
    controller->handleDVDEvent(DVDEvent::initWithData(2, 3, 0));
    controller->onStop();
    EXPECT_EQ(title() + scene() + controller->outlets().mTimeText->text(), text("--00:00:00"));
    EXPECT_EQ(state(), std::uint32_t(kDVDStateStopped));
}

TEST_F(Actions, stop_whileStoppedAlready_stopsAllTheSame)
{
    ASSERT_TRUE(openAndPlay(1, 1));
    tellState(kDVDStateStopped); // which the disc is not
    controller->onStop();
    EXPECT_EQ(title() + scene(), text("--"));
    EXPECT_EQ(state(), std::uint32_t(kDVDStateStopped));
}

TEST_F(Actions, whatTheDiscForbids_isReported)
{
    ASSERT_TRUE(controller->openMedia(QString::fromUtf8(copyThatForbids()), false));
    ASSERT_EQ(DVDSetChapter(1, 1), noErr);
    ASSERT_TRUE(waitForState(kDVDStatePlaying));
    keepReports();
    expectReport(text("onPause"), kDVDStatePlaying, text("DVDPause returned -70011"));
    expectReport(text("onStop"), kDVDStatePlaying, text("DVDStop returned -70011"));
    expectReport(text("onToggleMenu"), kDVDStatePlaying, text("DVDGoToMenu returned -70011"));
    EXPECT_EQ(state(), std::uint32_t(kDVDStatePlaying));
    controller->machineWillSleep();
    EXPECT_EQ(reports->descriptions, QStringList()) << "the machine sleeps all the same";
    EXPECT_EQ(state(), std::uint32_t(kDVDStatePaused));
    controller->machineDidWake();
    EXPECT_EQ(reports->descriptions, QStringList());
    EXPECT_EQ(state(), std::uint32_t(kDVDStatePlaying));
}

TEST_F(Actions, returnToATitle_isReported_whereNoneWasLeft)
{
    ASSERT_TRUE(openAndShowMenu());
    keepReports();
    expectReport(text("onToggleMenu"), kDVDStatePlayingStill, text("DVDReturnToTitle returned -70011"));
    EXPECT_TRUE(isOnMenu());
}

TEST_F(Actions, play_isReported_whereTheTablesAreGone)
{
    ASSERT_TRUE(controller->openMedia(QString::fromUtf8(copyOfDisc()), false));
    for (const char *const table : {"disc/VIDEO_TS/VIDEO_TS.IFO", "disc/VIDEO_TS/VIDEO_TS.BUP"})
        m_tree.remove(table);
    keepReports();
    expectReport(text("onPlay"), kDVDStateStopped, text("DVDPlay returned -70191"));
}

TEST_F(Actions, play_showsTheDiscsFirstMenu)
{
    ASSERT_TRUE(openAndShowMenu());
    EXPECT_EQ(steps().last(), text("Step 6: Play"));
    EXPECT_TRUE(isOnMenu());
    EXPECT_TRUE(waitForColour(0x404040)) << "the picture is in the window";
}

TEST_F(Actions, scan_runsFourTimesAsFast)
{
    // A picture is shown, and its time told, every 200 ms.
    constexpr double step = 4 * 200, unit = 435;
    TimesOfScan times;
    ASSERT_TRUE(openAndPlay(1, 1));
    std::uint32_t registration = 0;
    const std::array<std::uint32_t, 2> codes = {kDVDEventPlayback, kDVDEventTitleTime};
    ASSERT_EQ(DVDRegisterEventCallBack(TimesOfScan::hear, codes.data(), codes.size(), &times, &registration), noErr);
    for (const bool isBackward : {false, true}) {
        isBackward ? controller->onScanBackward() : controller->onScanForward();
        ASSERT_TRUE(waitUntil([&] { return times.count() >= 6; }));
        const std::vector<double> told = times.take();
        const double mean = (told[5] - told[0]) / 5;
        EXPECT_NEAR(mean, isBackward ? -step : step, unit / 5 + 1) << isBackward;
        ASSERT_EQ(DVDSetChapter(1, 4), noErr);
        ASSERT_TRUE(waitForState(kDVDStatePlaying));
    }
    EXPECT_EQ(DVDUnregisterEventCallBack(registration), noErr);
}

TEST_F(Actions, scan_goesBothWays)
{
    ASSERT_TRUE(openAndPlay(1, 2));
    controller->onScanForward();
    ASSERT_TRUE(waitForState(kDVDStateScanning));
    EXPECT_TRUE(waitUntil([&] { return chapter() == std::pair<int, int>(1, 4); }));
    ASSERT_EQ(DVDPlay(), noErr);
    ASSERT_TRUE(waitForState(kDVDStatePlaying));
    controller->onScanBackward();
    ASSERT_TRUE(waitForState(kDVDStateScanning));
    EXPECT_TRUE(waitUntil([&] { return chapter() == std::pair<int, int>(1, 2); }));
    controller->onScanForward();
    EXPECT_TRUE(waitUntil([&] { return chapter() == std::pair<int, int>(1, 1); })) << "it does not play, but scans";
}

TEST_F(Actions, scenes_goToAndFro)
{
    ASSERT_TRUE(openAndPlay(1, 2));
    controller->onNextScene();
    EXPECT_TRUE(waitUntil([&] { return chapter() == std::pair<int, int>(1, 3) && scene() == text("3"); }));
    controller->onPreviousScene();
    EXPECT_TRUE(waitUntil([&] { return chapter() == std::pair<int, int>(1, 2) && scene() == text("2"); }));
}

TEST_F(Actions, toggleMenu_goesToTheRootMenuAndBack)
{
    ASSERT_TRUE(openAndPlay(1, 2));
    controller->onToggleMenu();
    ASSERT_TRUE(waitUntil([] { return isOnMenu(); }));
    ASSERT_TRUE(waitUntil([&] { return title() == text("0"); }));
    EXPECT_TRUE(waitForColour(0x206060)) << "not the title menu";
    ASSERT_TRUE(controller->dvdState() == 1 || controller->dvdState() == 2);
    controller->onToggleMenu();
    ASSERT_TRUE(waitUntil([] { return !isOnMenu() && chapter() == std::pair<int, int>(1, 2); }));
    controller->onPause();
    ASSERT_TRUE(waitForState(kDVDStatePaused));
    controller->onToggleMenu();
    EXPECT_TRUE(waitUntil([] { return isOnMenu(); })) << "from a pause, too";
}

TEST_F(Actions, nextAngle_comesAroundBehindTheLastOne)
{
    ASSERT_TRUE(openAndPlay(2, 1));
    ASSERT_TRUE(waitUntil([] { return angle() == 1; }));
    for (const int expected : {2, 3, 1}) {
        controller->onNextAngle();
        ASSERT_TRUE(waitUntil([expected] { return angle() == expected; })) << expected;
    }
}

TEST_F(Actions, nextAngle_isTheFirst_withOneAngle)
{
    ASSERT_TRUE(openAndPlay(1, 1));
    keepReports();
    controller->onNextAngle();
    EXPECT_EQ(angle(), 1);
}

// Sound.

TEST_F(Actions, volume_goesInSixteenSteps_withinItsRange)
{
    controller->beginSession();
    QSlider *const slider = controller->outlets().mAudioControl;
    ASSERT_EQ(DVDSetAudioVolume(250), noErr);
    controller->onVolumeUp();
    EXPECT_EQ(volume(), 255);
    EXPECT_EQ(slider->value(), 255);
    controller->onVolumeDown();
    EXPECT_EQ(volume(), 239);
    EXPECT_EQ(slider->value(), 239);
    EXPECT_EQ(controller->setAudioVolume(false), 223);
    EXPECT_EQ(slider->value(), 239) << "only the two actions show it";
    ASSERT_EQ(DVDSetAudioVolume(10), noErr);
    controller->onVolumeDown();
    EXPECT_EQ(volume(), 0);
    EXPECT_EQ(controller->setAudioVolume(false), 0);
    EXPECT_EQ(controller->setAudioVolume(true), 16);
}

TEST_F(Actions, volumeSlider_setsTheVolume)
{
    controller->beginSession();
    controller->outlets().mAudioControl->setValue(77);
    EXPECT_EQ(volume(), 77);
    QObject sender;
    sender.setProperty("value", 99.9F);
    controller->onAudioVolume(&sender);
    EXPECT_EQ(volume(), 99) << "truncated";
    keepReports();
    sender.setProperty("value", 65'536.0F + 40);
    controller->onAudioVolume(&sender);
    EXPECT_EQ(volume(), 40) << "16 bits of it";
    sender.setProperty("value", 300.0F);
    controller->onAudioVolume(&sender);
    EXPECT_EQ(reports->descriptions, QStringList(text("DVDSetAudioVolume returned -70016")));
}

TEST_F(Actions, mute_turnsOnAndOff)
{
    controller->beginSession();
    controller->onMute();
    EXPECT_TRUE(isMuted());
    controller->onMute();
    EXPECT_FALSE(isMuted());
}

// Windows.

TEST_F(Actions, videoSizes_areThoseOfTheWindow)
{
    ASSERT_TRUE(openAndPlay(1, 1));
    VideoWindow *const window = controller->outlets().mVideoWindow;
    controller->onVideoSmall();
    EXPECT_EQ(window->size(), QSize(320, 240));
    controller->onVideoNormal();
    EXPECT_EQ(window->size(), QSize(640, 480));
    controller->onVideoMax();
    EXPECT_GT(window->height(), 480);
}

TEST_F(Actions, showController_showsAndHides)
{
    ControlWindow *const window = controller->outlets().mControlWindow;
    ASSERT_TRUE(window->isVisible());
    controller->onShowController();
    EXPECT_FALSE(window->isVisible());
    controller->onShowController();
    EXPECT_TRUE(window->isVisible());
}

TEST_F(Actions, controllerWithoutWindows_doesTheRest)
{
    const DVDControllerOutlets none;
    controller->applicationWillTerminate();
    controller = DVDController::initWithOutlets(none);
    ASSERT_TRUE(openAndShowMenu());
    controller->onVolumeDown();
    controller->onShowController();
    controller->onVideoMax();
    controller->onStop();
    EXPECT_TRUE(waitForState(kDVDStateStopped));
    controller->onStop();
    controller->closeMedia();
    QAction item;
    item.setProperty("action", text("onShowController"));
    EXPECT_TRUE(controller->validateMenuItem(item));
    EXPECT_EQ(item.text(), text("Show Controller"));
}

// Media.

TEST_F(Actions, mediaFolder_asksForAFolder_andClosesIt)
{
    controller->beginSession();
    int asked = 0;
    QString wanted;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &timer, [&] {
        auto *const panel = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
        if (!panel)
            return;
        EXPECT_EQ(panel->fileMode(), QFileDialog::Directory);
        EXPECT_TRUE(panel->testOption(QFileDialog::ShowDirsOnly));
        auto *const name = panel->findChild<QLineEdit *>(text("fileNameEdit"));
        if (++asked > 50 || wanted.isEmpty() || !name) {
            panel->reject();
            return;
        }
        name->setText(wanted);
        QMetaObject::invokeMethod(panel, "accept");
    });
    timer.start(10);
    controller->onMediaFolder();
    EXPECT_EQ(asked, 1);
    EXPECT_FALSE(controller->hasMedia()) << "nothing chosen";
    wanted = path();
    AlertCloser busy; // the first media begins the session again
    controller->onMediaFolder();
    ASSERT_TRUE(controller->hasMedia());
    EXPECT_TRUE(controller->volumePath().isNull());
    asked = 0;
    controller->onMediaFolder();
    EXPECT_FALSE(controller->hasMedia());
    EXPECT_EQ(asked, 0);
}

TEST_F(Actions, eject_closesAVolume_andSaysWhatFails)
{
    ASSERT_TRUE(controller->openMedia(path(), false));
    controller->onEject();
    EXPECT_TRUE(controller->hasMedia()) << "a folder";
    const QString copy = QString::fromUtf8(copyOfDisc());
    ASSERT_TRUE(controller->openMedia(copy, true));
    controller->onEject();
    EXPECT_FALSE(controller->hasMedia());
    EXPECT_TRUE(controller->volumePath().isNull());
    EXPECT_TRUE(waitUntil([&] { return lines().last().contains(text("could not be ejected")); }));
    EXPECT_TRUE(lines().last().contains(copy));
}

} // namespace Tessaron::Testing
