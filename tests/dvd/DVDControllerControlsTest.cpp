#include "platform/dvdplayback/DVDPlayback.h"
#include "tests/dvd/ControllerFixture.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QKeyEvent>
#include <QMenu>
#include <QTest>
#include <QTimer>
#include <QWindow>

#include <TessaronClassesUI/ControlWindow.h>
#include <TessaronClassesUI/DVDEvent.h>
#include <TessaronClassesUI/VideoWindow.h>
#include <array>
#include <random>
#include <utility>

namespace Tessaron::Testing
{

namespace
{

/// Keys, menu items and buttons, which lead to the actions.
using Controls = ControllerTest;

QKeyEvent press(int key, const QString &characters = {})
{
    return {QEvent::KeyPress, key, Qt::NoModifier, characters};
}

} // namespace

// Keys.

TEST_F(Controls, keys_leadThroughTheMenus)
{
    ASSERT_TRUE(openAndShowMenu());
    VideoWindow *const window = controller->outlets().mVideoWindow;
    QTest::keyClick(window, Qt::Key_Down); // from title 1 to title 2
    QTest::keyClick(window, Qt::Key_Return);
    EXPECT_TRUE(waitUntil([&] { return title() == text("2"); }));
    EXPECT_EQ(reports->descriptions, QStringList());
}

TEST_F(Controls, leftKey_selectsWhatLiesThere)
{
    ASSERT_TRUE(openAndShowMenu());
    QTest::keyClick(controller->outlets().mVideoWindow.data(), Qt::Key_Left); // to chapter 3 of title 1
    QTest::keyClick(controller->outlets().mVideoWindow.data(), Qt::Key_Return);
    ASSERT_TRUE(waitUntil([] { return chapter().first == 1; }));
    EXPECT_GE(chapter().second, 3) << "not the title's begin, from which it would get there, too";
}

TEST_F(Controls, rightKey_selectsWhatLiesThere)
{
    ASSERT_TRUE(openAndShowMenu());
    QTest::keyClick(controller->outlets().mVideoWindow.data(), Qt::Key_Down); // to title 2
    QTest::keyClick(controller->outlets().mVideoWindow.data(), Qt::Key_Right); // to title 1
    QTest::keyClick(controller->outlets().mVideoWindow.data(), Qt::Key_Return);
    EXPECT_TRUE(waitUntil([] { return chapter() == std::pair<int, int>(1, 1); }));
}

TEST_F(Controls, keys_ofTheControlWindow_areTheSame)
{
    ASSERT_TRUE(openAndShowMenu());
    ControlWindow *const window = controller->outlets().mControlWindow;
    QTest::keyClick(window, Qt::Key_Up); // comes around, to chapter 3 of title 1
    QTest::keyClick(window, Qt::Key_Enter);
    ASSERT_TRUE(waitUntil([] { return chapter().first == 1; }));
    EXPECT_GE(chapter().second, 3) << "not the title's begin, from which it would get there, too";
}

TEST_F(Controls, keys_eachAsksForItsNavigation)
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

TEST_F(Controls, spaceBar_pausesAndGoesOn)
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

TEST_F(Controls, spaceBar_doesNothing_inOtherStates)
{
    ASSERT_TRUE(openAndShowMenu());
    EXPECT_TRUE(controller->onKeyDown(press(Qt::Key_Space)));
    EXPECT_EQ(state(), std::uint32_t(kDVDStatePlayingStill));
    const auto pressWhenTold = [&](std::uint32_t told) {
        controller->handleDVDEvent(DVDEvent::initWithData(kDVDEventPlayback, told, 0));
        EXPECT_TRUE(controller->onKeyDown(press(Qt::Key_Space)));
    };
    for (const std::uint32_t told : {0, 2, 4, 5, 6}) {
        pressWhenTold(told);
        EXPECT_EQ(state(), std::uint32_t(kDVDStatePlayingStill)) << told;
    }
    ASSERT_EQ(DVDPause(), noErr);
    ASSERT_TRUE(waitForState(kDVDStatePaused));
    for (const std::uint32_t told : {0, 2, 4, 5, 6}) {
        pressWhenTold(told);
        EXPECT_EQ(state(), std::uint32_t(kDVDStatePaused)) << told;
    }
}

// Menu items.

TEST_F(Controls, menuItems_tellWhatTheyDo)
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

TEST_F(Controls, menuItemsOfTheWindowFile_areKeptUpToDate_andWork)
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

TEST_F(Controls, menuItemsOfTheWindowFile_areUpToDate_beforeASessionIsBegun)
{
    EXPECT_EQ(menuItem(text("onShowController"))->text(), text("Hide Controller"));
    QAction *const mute = menuItem(text("onMute"));
    mute->trigger();
    EXPECT_FALSE(mute->isChecked()) << "there is nothing to mute";
    EXPECT_TRUE(lines().last().contains(text("DVDMute returned -70003")));
    const qsizetype before = lines().size();
    menuItem(text("onShowController"))->trigger();
    EXPECT_FALSE(controller->outlets().mControlWindow->isVisible());
    EXPECT_EQ(menuItem(text("onShowController"))->text(), text("Show Controller"));
    EXPECT_EQ(menuItem(text("onMediaFolder"))->text(), text("Open Media Folder..."));
    EXPECT_EQ(lines().size(), before) << "nothing is asked of the session that it would have to refuse";
}

TEST_F(Controls, menuOfTheVideo_tellsWhatItsItemsDo)
{
    ASSERT_TRUE(controller->openMedia(path(), false));
    controller->outlets().mControlWindow->close(); // by its own button
    QStringList shown;
    QTimer closer;
    QObject::connect(&closer, &QTimer::timeout, &closer, [&] {
        auto *const menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        if (!menu)
            return;
        for (const QAction *const item : menu->actions())
            shown << item->text();
        menu->close();
    });
    closer.start(10);
    QTest::mouseClick(controller->outlets().mVideoWindow->windowHandle(), Qt::RightButton, {}, QPoint(20, 20));
    ASSERT_TRUE(waitUntil([&] { return !shown.isEmpty(); }));
    EXPECT_TRUE(shown.contains(text("Show Controller"))) << shown.join(u'\n').toStdString();
    EXPECT_TRUE(shown.contains(text("Close Media Folder")));
}

/// TESSARON_CALLS asks for more of them.
TEST_F(Controls, anyInAnyOrder_neverHang)
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

TEST_F(Controls, buttons_work_andDoNotTakeKeys)
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
