#include "platform/dvdplayback/DVDBookmarkBytes.h"
#include "platform/dvdplayback/DVDPlayback.h"
#include "platform/dvdplayback/PlayerProtocol.h"
#include "tests/dvd/ControllerFixture.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QFileDialog>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QSlider>
#include <QTest>

#include <TessaronClassesUI/ControlWindow.h>
#include <TessaronClassesUI/DVDBookmark.h>
#include <TessaronClassesUI/DVDEvent.h>
#include <TessaronClassesUI/PlaybackTime.h>
#include <TessaronClassesUI/VideoWindow.h>
#include <array>
#include <optional>
#include <random>
#include <stdexcept>
#include <vector>

namespace Tessaron::Testing
{

namespace
{

class Actions : public ControllerTest
{
protected:
    /// Lets the controller believe that the session has told this.
    void tellState(std::uint32_t state) const { controller->handleDVDEvent(DVDEvent::initWithData(11, state, 0)); }
    [[nodiscard]] static std::uint32_t state()
    {
        std::uint32_t state = 0;
        EXPECT_EQ(DVDGetState(&state), noErr);
        return state;
    }
    [[nodiscard]] static std::uint32_t elapsed()
    {
        std::uint32_t elapsed = 0, length = 0;
        EXPECT_EQ(DVDGetTitleTime(&elapsed, &length), noErr);
        return elapsed;
    }
    [[nodiscard]] static bool isOnMenu()
    {
        bool isOnMenu = false;
        EXPECT_EQ(DVDIsOnMenu(&isOnMenu), noErr);
        return isOnMenu;
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
    [[nodiscard]] static bool isMuted()
    {
        bool isMuted = false;
        EXPECT_EQ(DVDIsMuted(&isMuted), noErr);
        return isMuted;
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
    [[nodiscard]] QAction *menuItem(const QString &action) const
    {
        for (QAction *const item : controller->outlets().mVideoWindow->actions()) {
            if (item->property("action").toString() == action)
                return item;
        }
        ADD_FAILURE() << action.toStdString();
        return nullptr;
    }
};

QString text(const char *ascii)
{
    return QString::fromLatin1(ascii);
}

QKeyEvent press(int key, const QString &characters = {})
{
    return {QEvent::KeyPress, key, Qt::NoModifier, characters};
}

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

TEST_F(Actions, play_showsTheDiscsFirstMenu)
{
    ASSERT_TRUE(openAndShowMenu());
    EXPECT_EQ(steps().last(), text("Step 6: Play"));
    EXPECT_TRUE(isOnMenu());
    EXPECT_TRUE(waitUntil([&] {
        const QRgb pixel = controller->outlets().mVideoWindow->grab().toImage().pixel(40, 40);
        return std::abs(qRed(pixel) - 0x40) < 14 && std::abs(qGreen(pixel) - 0x40) < 14;
    })) << "the picture is in the window";
}

TEST_F(Actions, scan_runsFourTimesAsFast_inBothDirections)
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

// Bookmarks.

TEST_F(Actions, bookmarks_areVisitedInTurn)
{
    ASSERT_TRUE(openAndPlay(1, 1));
    for (const std::uint16_t one : {4, 2, 3}) {
        ASSERT_EQ(DVDSetChapter(1, one), noErr);
        ASSERT_TRUE(waitUntil([one] { return chapter() == std::pair<int, int>(1, one) && elapsed() > 0; }));
        controller->onNewBookmark();
    }
    ASSERT_EQ(controller->bookmarks().size(), 3U);
    for (const int expected : {4, 2, 3, 4}) {
        controller->onNextBookmark();
        ASSERT_TRUE(waitUntil([expected] { return chapter() == std::pair<int, int>(1, expected); })) << expected;
    }
}

/// That it does so within a video unit is shown with the session's own tests.
TEST_F(Actions, bookmark_leadsBackToItsPlace_fromAnotherTitle)
{
    ASSERT_TRUE(openAndPlay(1, 1));
    ASSERT_TRUE(waitUntil([] { return elapsed() >= 5'000; }));
    controller->onNewBookmark();
    DVDDescription description;
    ASSERT_EQ(DVDCopyDescription(&description), noErr);
    const std::optional<PlayerPlace> place =
        placeOfBookmark(controller->bookmarks().front()->data(), description.identity);
    ASSERT_TRUE(place);
    EXPECT_GE(place->chapter, 2);
    ASSERT_EQ(DVDSetChapter(2, 1), noErr);
    ASSERT_TRUE(waitUntil([] { return chapter().first == 2; }));
    controller->onNextBookmark();
    int firstChapter = 0;
    ASSERT_TRUE(waitUntil([&] {
        const auto [title, chapterOfTitle] = chapter();
        firstChapter = title == 1 ? chapterOfTitle : 0;
        return firstChapter != 0;
    }));
    EXPECT_GE(firstChapter, int(place->chapter)) << "not by way of the title's begin";
    EXPECT_TRUE(waitUntil([&] { return elapsed() >= place->elapsed; }));
}

TEST_F(Actions, bookmarkCursor_outlivesMedia)
{
    ASSERT_TRUE(openAndPlay(1, 1));
    controller->onNewBookmark();
    controller->onNewBookmark();
    controller->onNewBookmark();
    controller->onNextBookmark();
    controller->onNextBookmark();
    controller->closeMedia();
    EXPECT_TRUE(controller->bookmarks().empty());
    controller->onNextBookmark();
    ASSERT_TRUE(openAndPlay(1, 1));
    controller->onNewBookmark();
    EXPECT_THROW(controller->onNextBookmark(), std::out_of_range) << "the third one's turn, of one";
    EXPECT_THROW(controller->onNextBookmark(), std::out_of_range) << "and so it stays";
    menuItem(text("onNextBookmark"))->trigger();
    EXPECT_TRUE(lines().last().startsWith(text("*** What an event asked for was not done")))
        << "the event loop is spared";
    controller->onNewBookmark();
    controller->onNewBookmark();
    controller->onNextBookmark();
    controller->onNextBookmark();
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

// Keys.

TEST_F(Actions, keys_leadThroughTheMenus)
{
    ASSERT_TRUE(openAndShowMenu());
    VideoWindow *const window = controller->outlets().mVideoWindow;
    QTest::keyClick(window, Qt::Key_Down); // from title 1 to title 2
    QTest::keyClick(window, Qt::Key_Return);
    EXPECT_TRUE(waitUntil([&] { return title() == text("2"); }));
    EXPECT_EQ(reports->descriptions, QStringList());
}

TEST_F(Actions, keys_ofTheControlWindow_areTheSame)
{
    ASSERT_TRUE(openAndShowMenu());
    ControlWindow *const window = controller->outlets().mControlWindow;
    QTest::keyClick(window, Qt::Key_Up); // comes around, to chapter 3 of title 1
    QTest::keyClick(window, Qt::Key_Enter);
    EXPECT_TRUE(waitUntil([] { return chapter() == std::pair<int, int>(1, 3); }));
}

TEST_F(Actions, keys_eachAsksForItsNavigation)
{
    struct Row {
        int key = 0;
        bool isTaken = false;
        QString characters;
        QString report;
    };
    const Row rows[] = {
        {Qt::Key_Up, true, {}, text("DVDDoUserNavigation returned -70015")},
        {Qt::Key_Down, true, {}, text("DVDDoUserNavigation returned -70015")},
        {Qt::Key_Left, true, {}, text("DVDDoUserNavigation returned -70015")},
        {Qt::Key_Right, true, {}, text("DVDDoUserNavigation returned -70015")},
        {Qt::Key_Return, true, text("\r"), text("DVDDoUserNavigation returned -70015")},
        {Qt::Key_Enter, true, text("\r"), text("DVDDoUserNavigation returned -70015")},
        {0, true, QString(QChar(3)), text("DVDDoUserNavigation returned -70015")},
        {Qt::Key_Space, true, text(" "), {}},
        {Qt::Key_A, false, text("a"), {}},
        {Qt::Key_F1, false, {}, {}},
        {Qt::Key_Escape, false, text("\x1b"), {}},
    };
    controller->beginSession();
    keepReports();
    for (const auto &row : rows) {
        EXPECT_EQ(controller->onKeyDown(press(row.key, row.characters)), row.isTaken) << row.key;
        EXPECT_EQ(reports->descriptions, row.report.isEmpty() ? QStringList() : QStringList(row.report)) << row.key;
        reports->descriptions.clear();
    }
    NSAssertionHandler::setCurrentHandler(nullptr);
    EXPECT_THROW(controller->onKeyDown(press(Qt::Key_Up)), NSInternalInconsistencyException);
    QKeyEvent event = press(Qt::Key_Up);
    QCoreApplication::sendEvent(controller->outlets().mVideoWindow, &event);
    EXPECT_TRUE(event.isAccepted()) << "the exception ends in front of the event loop";
}

TEST_F(Actions, spaceBar_pausesAndGoesOn)
{
    ASSERT_TRUE(openAndPlay(1, 1));
    EXPECT_TRUE(controller->onKeyDown(press(Qt::Key_Space)));
    ASSERT_TRUE(waitForState(kDVDStatePaused));
    EXPECT_TRUE(controller->onKeyDown(press(Qt::Key_Space)));
    ASSERT_TRUE(waitForState(kDVDStatePlaying));
    controller->onStop();
    ASSERT_TRUE(waitForState(kDVDStateStopped));
    EXPECT_TRUE(controller->onKeyDown(press(Qt::Key_Space)));
    EXPECT_EQ(state(), std::uint32_t(kDVDStateStopped)) << "neither plays nor pauses";
}

// Menu items.

TEST_F(Actions, menuItems_tellWhatTheyDo)
{
    QAction media, mute, show, other;
    media.setProperty("action", text("onMediaFolder"));
    mute.setProperty("action", text("onMute"));
    show.setProperty("action", text("onShowController"));
    other.setProperty("action", text("onPlay"));
    other.setText(text("Play"));
    const auto validate = [&] {
        for (QAction *const item : {&media, &mute, &show, &other})
            EXPECT_TRUE(controller->validateMenuItem(*item));
    };
    controller->beginSession();
    validate();
    EXPECT_EQ(media.text(), text("Open Media Folder..."));
    EXPECT_EQ(media.shortcut(), QKeySequence(text("Ctrl+O")));
    EXPECT_FALSE(mute.isChecked());
    EXPECT_EQ(show.text(), text("Hide Controller"));
    EXPECT_EQ(other.text(), text("Play"));
    AlertCloser busy; // the first media begins the session again
    ASSERT_TRUE(controller->openMedia(path(), false));
    controller->onMute();
    controller->onShowController();
    validate();
    EXPECT_EQ(media.text(), text("Close Media Folder"));
    EXPECT_EQ(media.shortcut(), QKeySequence(text("Ctrl+W")));
    EXPECT_TRUE(mute.isChecked());
    EXPECT_EQ(show.text(), text("Show Controller"));
    controller->closeMedia();
    validate();
    EXPECT_EQ(media.text(), text("Open Media Folder..."));
}

TEST_F(Actions, menuItemsOfTheWindowFile_areKeptUpToDate_andWork)
{
    ASSERT_TRUE(controller->openMedia(path(), false));
    QAction *const media = menuItem(text("onMediaFolder")), *const mute = menuItem(text("onMute"));
    EXPECT_EQ(media->text(), text("Close Media Folder"));
    EXPECT_EQ(media->shortcut(), QKeySequence(text("Ctrl+W")));
    mute->trigger();
    EXPECT_TRUE(isMuted());
    EXPECT_TRUE(mute->isChecked());
    ASSERT_EQ(DVDMute(false), noErr);
    const auto menus = controller->outlets().mControlWindow->findChildren<QMenu *>();
    QStringList titles;
    for (QMenu *const menu : menus) {
        titles << (menu->actions().isEmpty() ? QString() : menu->title());
        Q_EMIT menu->aboutToShow();
    }
    for (const char *const title : {"Disc", "Controls", "Window"})
        EXPECT_TRUE(titles.contains(text(title))) << title;
    EXPECT_FALSE(mute->isChecked());
    media->trigger();
    EXPECT_FALSE(controller->hasMedia());
    EXPECT_EQ(media->text(), text("Open Media Folder..."));
}

/// TESSARON_CALLS asks for more of them.
TEST_F(Actions, anyInAnyOrder_neverHang)
{
    keepReports(); // what the disc refuses
    ASSERT_TRUE(openAndShowMenu());
    std::mt19937 random(3); // the same in every run
    const auto below = [&](std::size_t limit) { return std::size_t(random()) % limit; };
    constexpr std::array actions = {
        "onPlay",      "onPause",      "onStop",           "onScanForward", "onScanBackward", "onPreviousScene",
        "onNextScene", "onToggleMenu", "onNextAngle",      "onNewBookmark", "onNextBookmark", "onVolumeDown",
        "onVolumeUp",  "onMute",       "onShowController", "onVideoMax",    "onVideoNormal",  "onVideoSmall",
    };
    constexpr std::array keys = {Qt::Key_Up, Qt::Key_Down, Qt::Key_Left, Qt::Key_Right, Qt::Key_Return, Qt::Key_Space};
    QWidget *const view = controller->outlets().mVideoWindow->contentView();
    const int asked = qEnvironmentVariableIntValue("TESSARON_CALLS");
    for (int call = 0; call < (asked > 0 ? asked : 600); ++call) {
        const QPoint place(int(below(std::size_t(view->width()))), int(below(std::size_t(view->height()))));
        switch (below(6)) {
        case 0:
            QTest::keyClick(controller->outlets().mVideoWindow.data(), keys[below(keys.size())]);
            break;
        case 1:
            QTest::mouseMove(view, place);
            break;
        case 2:
            QTest::mouseClick(view, Qt::LeftButton, {}, place);
            break;
        default:
            EXPECT_TRUE(controller->performAction(text(actions[below(actions.size())]), nullptr));
        }
        if (below(4) == 0)
            QTest::qWait(int(below(10)));
    }
    EXPECT_EQ(controller->fatalError(), noErr);
    EXPECT_TRUE(controller->hasMedia());
    ASSERT_EQ(DVDSetChapter(1, 2), noErr);
    EXPECT_TRUE(waitUntil([&] { return chapter() == std::pair(1, 2) && scene() == text("2"); }));
}

TEST_F(Actions, buttons_work_andDoNotTakeKeys)
{
    ASSERT_TRUE(controller->openMedia(path(), false));
    QTest::mouseClick(controller->outlets().mPlayButton.data(), Qt::LeftButton);
    EXPECT_TRUE(waitForState(kDVDStatePlayingStill));
    for (const QWidget *const control : controller->outlets().mControlWindow->findChildren<QWidget *>()) {
        const bool doesSomething = control->property("action").isValid();
        EXPECT_TRUE(!doesSomething || control->focusPolicy() == Qt::NoFocus) << control->objectName().toStdString();
    }
    controller->closeMedia();
    QTest::mouseClick(controller->outlets().mPlayButton.data(), Qt::LeftButton);
    ASSERT_EQ(DVDDispose(), noErr);
    QTest::mouseClick(controller->outlets().mPlayButton.data(), Qt::LeftButton);
    EXPECT_TRUE(lines().last().contains(text("DVDHasMedia returned -70003"))) << "reported, and no more";
}

} // namespace Tessaron::Testing
