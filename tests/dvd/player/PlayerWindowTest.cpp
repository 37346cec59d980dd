#include "dvd/player/PlayerWindow.h"

#include "dvd/VideoView.h"
#include "dvd/player/ControlBar.h"
#include "dvd/player/TimeSlider.h"

#include "platform/dvdplayback/DVDSession.h"
#include "platform/workspace/NSWorkspace.h"
#include "tests/dvdplayback/DiscFixture.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QLabel>
#include <QMenu>
#include <QScreen>
#include <QSignalSpy>
#include <QSlider>
#include <QTest>
#include <QToolButton>
#include <QWheelEvent>

#include <algorithm>
#include <array>
#include <csignal>
#include <random>

namespace Tessaron::Testing
{

namespace
{

using std::chrono::milliseconds;

constexpr int patience = 20'000;
constexpr QRgb titleMenu = 0x404040;

class PlayerWindowTest : public DiscTest
{
protected:
    PlayerWindowTest()
    {
        m_window.connect(&m_playback, &DiscPlayback::failedToOpen, &m_window,
                         [this](const QString &why) { m_failure = why; });
        m_window.connect(&m_playback, &DiscPlayback::failed, &m_window,
                         [this](const QString &why) { m_failure = why; });
    }

    void open(std::optional<std::uint16_t> title = {}, std::uint16_t chapter = 1)
    {
        QSignalSpy opened(&m_playback, &DiscPlayback::opened);
        m_playback.open(disc(), PlaybackStart{title, chapter});
        ASSERT_TRUE(QTest::qWaitFor([&] { return !opened.isEmpty() || !m_failure.isEmpty(); }, patience));
        ASSERT_TRUE(m_failure.isEmpty()) << m_failure.toStdString();
        m_window.show();
        m_window.activateWindow();
    }
    [[nodiscard]] bool waitForChapter(int title, int chapter) const
    {
        return QTest::qWaitFor([&] { return m_playback.now().title == title && m_playback.now().chapter == chapter; },
                               patience);
    }
    [[nodiscard]] bool waitForState(std::uint32_t state) const
    {
        return QTest::qWaitFor([&] { return m_playback.now().state == state; }, patience);
    }
    [[nodiscard]] bool waitForColour(QRgb colour) const
    {
        return QTest::qWaitFor(
            [&] {
                const QImage picture = m_window.findChild<VideoView *>()->picture();
                if (picture.isNull())
                    return false;
                const QRgb pixel = picture.pixel(40, 40);
                return std::abs(qRed(pixel) - qRed(colour)) < 14 && std::abs(qGreen(pixel) - qGreen(colour)) < 14
                    && std::abs(qBlue(pixel) - qBlue(colour)) < 14;
            },
            patience);
    }
    template <typename Widget = QToolButton>
    [[nodiscard]] Widget *control(const char *name) const
    {
        return m_window.controls()->findChild<Widget *>(QString::fromLatin1(name));
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) { QTest::keyClick(&m_window, key, modifiers); }
    /// A point of the picture, which is 720 by 480, in the window.
    [[nodiscard]] QPoint onPicture(int x, int y) const
    {
        const QRect picture = m_window.pictureRect();
        return picture.topLeft() + QPoint(x * picture.width() / 720, y * picture.height() / 480);
    }
    /// Chooses an item of a button's menu by its place.
    void choose(const char *name, int item) const
    {
        QMenu *const menu = control(name)->menu();
        Q_EMIT menu->aboutToShow();
        ASSERT_GT(menu->actions().size(), item);
        menu->actions()[item]->trigger();
    }
    /// What the label "message" or "note" says; empty while it is hidden.
    [[nodiscard]] QString shownBy(const char *name) const
    {
        const auto *const label = m_window.findChild<QLabel *>(QString::fromLatin1(name));
        return label->isVisible() ? label->text() : QString();
    }
    [[nodiscard]] QString message() const { return shownBy("message"); }
    [[nodiscard]] bool waitForNote(const QString &begin) const
    {
        return QTest::qWaitFor([&] { return shownBy("note").startsWith(begin); }, patience);
    }

    const QString m_state = m_tree.pathText("state/");
    DiscPlayback m_playback{ResumeStore(m_state)};
    PlayerWindow m_window{&m_playback};
    QString m_failure;
};

TEST_F(PlayerWindowTest, picture_hasTheShapeOfTheTitle)
{
    open(1);
    EXPECT_EQ(m_window.size(), QSize(640, 480)) << "both titles have the same length: the first one counts";
    EXPECT_EQ(m_window.pictureRect(), QRect(0, 0, 640, 480));
    m_window.resize(800, 480);
    EXPECT_EQ(m_window.pictureRect(), QRect(80, 0, 640, 480));
    ASSERT_TRUE(waitForColour(0xa00000));
    EXPECT_EQ(m_window.grab().toImage().pixelColor(10, 10), QColor(Qt::black));
    m_playback.goToChapter(2, 1);
    ASSERT_TRUE(waitForChapter(2, 1));
    EXPECT_EQ(m_window.pictureRect(), QRect(0, 15, 800, 450));
    m_window.resize(1000, 480);
    EXPECT_EQ(m_window.pictureRect(), QRect(73, 0, 853, 480));
}

TEST_F(PlayerWindowTest, controls_haveRoomInTheSmallestWindow)
{
    open(2);
    ASSERT_TRUE(waitForChapter(2, 1));
    m_window.resize(m_window.minimumSize());
    QTest::mouseMove(&m_window, QPoint(50, 50));
    ASSERT_TRUE(QTest::qWaitFor([&] { return m_window.controls()->isVisible(); }));
    for (const QToolButton *const button : m_window.controls()->findChildren<QToolButton *>()) {
        if (button->isHidden())
            continue;
        EXPECT_GE(button->width(), button->sizeHint().width()) << button->objectName().toStdString();
    }
}

TEST_F(PlayerWindowTest, menu_answersKeysAndMouse)
{
    open();
    ASSERT_TRUE(waitForState(kDVDStatePlayingStill));
    EXPECT_TRUE(waitForColour(titleMenu));
    EXPECT_TRUE(m_playback.now().isOnMenu);
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    EXPECT_TRUE(waitForChapter(2, 1)) << "the second button is title 2";
    press(Qt::Key_D);
    ASSERT_TRUE(QTest::qWaitFor([&] { return m_playback.now().isOnMenu; }, patience));
    QTest::mouseMove(&m_window, onPicture(350, 330));
    EXPECT_TRUE(QTest::qWaitFor([&] { return m_window.cursor().shape() == Qt::PointingHandCursor; }));
    QTest::mouseMove(&m_window, onPicture(20, 20));
    EXPECT_TRUE(QTest::qWaitFor([&] { return m_window.cursor().shape() == Qt::ArrowCursor; }));
    QTest::mouseClick(&m_window, Qt::LeftButton, {}, onPicture(350, 330));
    EXPECT_TRUE(waitForChapter(1, 3)) << "the third button is chapter 3 of title 1";
}

TEST_F(PlayerWindowTest, keys_playPauseAndStep)
{
    open(1);
    ASSERT_TRUE(waitForState(kDVDStatePlaying));
    press(Qt::Key_Space);
    EXPECT_TRUE(waitForState(kDVDStatePaused));
    press(Qt::Key_Space);
    EXPECT_TRUE(waitForState(kDVDStatePlaying));
    press(Qt::Key_PageDown);
    EXPECT_TRUE(waitForChapter(1, 2));
    press(Qt::Key_PageUp);
    EXPECT_TRUE(waitForChapter(1, 1));
    press(Qt::Key_Right, Qt::ShiftModifier);
    EXPECT_TRUE(waitForState(kDVDStateScanning));
    press(Qt::Key_P);
    EXPECT_TRUE(waitForState(kDVDStatePlaying));
    press(Qt::Key_P);
    EXPECT_TRUE(waitForState(kDVDStatePaused));
    press(Qt::Key_X);
    EXPECT_TRUE(waitForState(kDVDStateStopped));
    press(Qt::Key_Home);
    EXPECT_TRUE(waitForColour(titleMenu));
}

TEST_F(PlayerWindowTest, space_doesNothing_onAStillAndWhenStopped)
{
    const auto expectNothing = [&](std::uint32_t state) {
        ASSERT_TRUE(waitForState(state));
        press(Qt::Key_Space);
        ASSERT_TRUE(QTest::qWaitFor([&] { return !m_playback.isBusy(); }, patience));
        std::uint32_t now = 0;
        EXPECT_EQ(DVDGetState(&now), noErr);
        EXPECT_EQ(now, state);
    };
    open();
    expectNothing(kDVDStatePlayingStill);
    m_playback.stop();
    expectNothing(kDVDStateStopped);
}

TEST_F(PlayerWindowTest, angle_isTheNextOne)
{
    open(2);
    ASSERT_TRUE(waitForChapter(2, 1));
    EXPECT_TRUE(control("angles")->isVisible());
    press(Qt::Key_A);
    EXPECT_TRUE(QTest::qWaitFor([&] { return m_playback.now().angle == 2; }, patience));
    choose("angles", 2);
    EXPECT_TRUE(QTest::qWaitFor([&] { return m_playback.now().angle == 3; }, patience));
    m_playback.goToChapter(1, 1);
    ASSERT_TRUE(waitForChapter(1, 1));
    EXPECT_FALSE(control("angles")->isVisible());
}

TEST_F(PlayerWindowTest, streams_canBeChosen)
{
    open(1);
    ASSERT_TRUE(waitForChapter(1, 1));
    ASSERT_TRUE(QTest::qWaitFor([&] { return m_playback.audioStream() == 1; }, patience));
    EXPECT_TRUE(control("audio")->isVisible());
    EXPECT_TRUE(control("subtitles")->isVisible());
    choose("audio", 1);
    EXPECT_TRUE(QTest::qWaitFor([&] { return m_playback.audioStream() == 2; }, patience));
    press(Qt::Key_L);
    EXPECT_EQ(shownBy("note"), QStringLiteral("English, Dolby Digital stereo"));
    EXPECT_TRUE(QTest::qWaitFor([&] { return m_playback.audioStream() == 1; }, patience));
    m_playback.goToChapter(1, 1); // the title must not come to its end on a busy machine
    choose("subtitles", 1);
    EXPECT_TRUE(QTest::qWaitFor([&] { return m_playback.subtitleStream() == 1; }, patience));
    press(Qt::Key_S);
    EXPECT_EQ(shownBy("note"), QStringLiteral("No subtitles"));
    EXPECT_TRUE(QTest::qWaitFor([&] { return m_playback.subtitleStream() == 0; }, patience));
    m_playback.goToChapter(1, 1);
    press(Qt::Key_S);
    EXPECT_EQ(shownBy("note"), QStringLiteral("English"));
    EXPECT_TRUE(QTest::qWaitFor([&] { return m_playback.subtitleStream() == 1; }, patience));
}

TEST_F(PlayerWindowTest, whatTheDiscRefuses_isSaid)
{
    open(1);
    ASSERT_TRUE(waitForChapter(1, 1));
    m_playback.goToChapter(1, 9);
    EXPECT_TRUE(waitForNote(QStringLiteral("The disc does not allow that now")));
    EXPECT_EQ(m_playback.now().chapter, 1);
    EXPECT_EQ(m_playback.now().title, 1);
}

TEST_F(PlayerWindowTest, discWithoutDevice_playsOnAndSaysSo)
{
    qputenv("SDL_AUDIODRIVER", "none");
    open(1);
    EXPECT_TRUE(waitForNote(QStringLiteral("There is no sound, since no device for it can be opened (")));
    EXPECT_TRUE(waitForChapter(1, 2)) << "it plays on";
}

TEST_F(PlayerWindowTest, sleepOfTheMachine_pausesTheDisc)
{
    open(1);
    ASSERT_TRUE(waitForState(kDVDStatePlaying));
    NSNotificationCenter &center = NSWorkspace::sharedWorkspace().notificationCenter();
    center.postNotificationName(NSWorkspaceWillSleepNotification);
    EXPECT_TRUE(waitForState(kDVDStatePaused));
    center.postNotificationName(NSWorkspaceDidWakeNotification);
    EXPECT_TRUE(waitForState(kDVDStatePlaying));
}

TEST_F(PlayerWindowTest, contextMenu_offersWhatTheButtonsDo)
{
    open(2);
    ASSERT_TRUE(waitForChapter(2, 1));
    QContextMenuEvent event(QContextMenuEvent::Keyboard, QPoint(100, 100), m_window.mapToGlobal(QPoint(100, 100)));
    QApplication::sendEvent(&m_window, &event);
    auto *const menu = m_window.findChild<QMenu *>(QString(), Qt::FindDirectChildrenOnly);
    ASSERT_TRUE(menu);
    EXPECT_TRUE(menu->isVisible());
    const auto itemOf = [menu](const char *text) {
        const QList<QAction *> actions = menu->actions();
        const auto found = std::find_if(actions.begin(), actions.end(), [text](const QAction *action) {
            return action->text() == QString::fromLatin1(text);
        });
        return found == actions.end() ? nullptr : *found;
    };
    ASSERT_TRUE(itemOf("Angle (A)"));
    itemOf("Angle (A)")->menu()->actions().at(2)->trigger();
    EXPECT_TRUE(QTest::qWaitFor([&] { return m_playback.now().angle == 3; }, patience));
    ASSERT_TRUE(itemOf("Mute (M)"));
    itemOf("Mute (M)")->trigger();
    EXPECT_TRUE(m_playback.isMuted());
}

TEST_F(PlayerWindowTest, slider_followsTheDiscAndLeadsIt)
{
    open(1);
    ASSERT_TRUE(waitForState(kDVDStatePlaying));
    auto *const slider = control<TimeSlider>("time");
    ASSERT_TRUE(slider->isEnabled());
    EXPECT_NEAR(slider->maximum(), 8675, 40);
    const int before = slider->value();
    EXPECT_TRUE(QTest::qWaitFor([&] { return slider->value() >= before + 500; }, patience)) << slider->value();
    EXPECT_EQ(slider->chapterAt(milliseconds(7'000)), 4);
    QTest::mouseClick(slider, Qt::LeftButton, {}, QPoint(int(slider->placeOf(milliseconds(7'300))), 11));
    EXPECT_TRUE(waitForChapter(1, 4));
    EXPECT_TRUE(waitForColour(0x806000));
    EXPECT_GE(slider->value(), 6'500);
}

TEST_F(PlayerWindowTest, titlesAndChapters_canBeChosen)
{
    open(1);
    ASSERT_TRUE(waitForChapter(1, 1));
    EXPECT_EQ(control("chapters")->text(), QStringLiteral("Title 1, chapter 1"));
    QMenu *const menu = control("chapters")->menu();
    Q_EMIT menu->aboutToShow();
    ASSERT_EQ(menu->actions().size(), 2);
    QMenu *const second = menu->actions()[1]->menu();
    ASSERT_TRUE(second);
    ASSERT_EQ(second->actions().size(), 2);
    second->actions()[1]->trigger();
    EXPECT_TRUE(waitForChapter(2, 2));
    EXPECT_EQ(control("chapters")->text(), QStringLiteral("Title 2, chapter 2"));
}

TEST_F(PlayerWindowTest, sound_getsLouderSofterAndMute)
{
    open(1);
    EXPECT_EQ(m_playback.volume(), 255);
    press(Qt::Key_Minus);
    EXPECT_EQ(m_playback.volume(), 239);
    EXPECT_EQ(control<QSlider>("volume")->value(), 239);
    press(Qt::Key_Plus);
    press(Qt::Key_Plus);
    EXPECT_EQ(m_playback.volume(), 255);
    QWheelEvent wheel(QPointF(50, 50), m_window.mapToGlobal(QPointF(50, 50)), QPoint(), QPoint(0, -120), Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&m_window, &wheel);
    EXPECT_EQ(m_playback.volume(), 239);
    press(Qt::Key_M);
    EXPECT_TRUE(m_playback.isMuted());
    QTest::mouseClick(control("mute"), Qt::LeftButton);
    EXPECT_FALSE(m_playback.isMuted());
    control<QSlider>("volume")->setValue(10);
    EXPECT_EQ(m_playback.volume(), 10);
}

TEST_F(PlayerWindowTest, controls_hideWhileTheDiscMoves)
{
    open(1);
    ASSERT_TRUE(waitForState(kDVDStatePlaying));
    QTest::mouseMove(&m_window, QPoint(100, 40));
    EXPECT_TRUE(m_window.controls()->isVisible());
    EXPECT_TRUE(QTest::qWaitFor([&] { return !m_window.controls()->isVisible(); }, patience));
    EXPECT_EQ(m_window.cursor().shape(), Qt::BlankCursor);
    QTest::mouseMove(&m_window, QPoint(120, 50));
    EXPECT_TRUE(QTest::qWaitFor([&] { return m_window.controls()->isVisible(); }, patience));
    EXPECT_EQ(m_window.cursor().shape(), Qt::ArrowCursor);
    press(Qt::Key_Space);
    ASSERT_TRUE(waitForState(kDVDStatePaused));
    QTest::qWait(4'000); // longer than they stay
    EXPECT_TRUE(m_window.controls()->isVisible());
}

TEST_F(PlayerWindowTest, fullScreen_comesAndGoes)
{
    open(1);
    ASSERT_TRUE(waitForState(kDVDStatePlaying));
    const QSize before = m_window.size();
    press(Qt::Key_F);
    EXPECT_TRUE(m_window.isFullScreen());
    EXPECT_TRUE(QTest::qWaitFor([&] { return m_window.size() == m_window.screen()->size(); }));
    const QRect picture = m_window.pictureRect();
    EXPECT_EQ(picture.height(), m_window.height());
    EXPECT_EQ(picture.width(), (m_window.height() * 4 + 1) / 3);
    press(Qt::Key_Escape);
    EXPECT_FALSE(m_window.isFullScreen());
    EXPECT_TRUE(QTest::qWaitFor([&] { return m_window.size() == before; }));
    QTest::mouseDClick(&m_window, Qt::LeftButton, {}, QPoint(100, 100));
    EXPECT_TRUE(m_window.isFullScreen());
    QTest::mouseClick(control("fullScreen"), Qt::LeftButton);
    EXPECT_FALSE(m_window.isFullScreen());
}

TEST_F(PlayerWindowTest, disc_goesOnWhereItWasLeft)
{
    open(1, 4);
    ASSERT_TRUE(waitForChapter(1, 4));
    ASSERT_TRUE(waitForColour(0x806000));
    m_playback.close();
    const QStringList kept = QDir(m_state).entryList(QDir::Files);
    ASSERT_EQ(kept.size(), 1);

    DiscPlayback again{ResumeStore(m_state)};
    PlayerWindow window(&again);
    QSignalSpy opened(&again, &DiscPlayback::opened), resumed(&again, &DiscPlayback::resumed);
    again.open(disc(), {});
    ASSERT_TRUE(QTest::qWaitFor([&] { return !opened.isEmpty(); }, patience));
    EXPECT_EQ(resumed.size(), 1);
    EXPECT_TRUE(QTest::qWaitFor([&] { return again.now().title == 1 && again.now().chapter == 4; }, patience));
    EXPECT_GE(again.now().elapsed, milliseconds(6'000));
    // Behind the title comes the menu, where there is no place: the old one stays.
    ASSERT_TRUE(QTest::qWaitFor([&] { return again.now().isOnMenu; }, patience));
    again.close();
    EXPECT_EQ(QDir(m_state).entryList(QDir::Files), kept);
}

TEST_F(PlayerWindowTest, placeThatCannotBeKept_isSaidOnce)
{
    m_tree.makeFile("state", "no folder");
    QSignalSpy lost(&m_playback, &DiscPlayback::placeLost);
    open(1, 4);
    EXPECT_TRUE(waitForNote(QStringLiteral("The disc's place cannot be kept: ")));
    m_playback.close();
    EXPECT_EQ(lost.size(), 1);
}

TEST_F(PlayerWindowTest, discThatCameToItsEnd_beginsAnew)
{
    m_tree.makeFile("state/" + QByteArray("unused"), "");
    open(2, 2);
    ASSERT_TRUE(waitForChapter(2, 2));
    EXPECT_TRUE(waitForState(kDVDStateStopped));
    EXPECT_TRUE(QTest::qWaitFor([&] { return message() == QStringLiteral("The disc has come to its end"); }));
    EXPECT_EQ(QDir(m_state).entryList(QDir::Files), QStringList{QStringLiteral("unused")});
    press(Qt::Key_P);
    EXPECT_TRUE(waitForColour(titleMenu));
    EXPECT_TRUE(message().isEmpty());
}

TEST_F(PlayerWindowTest, titleThatIsNotThere_isSaid)
{
    m_playback.open(disc(), PlaybackStart{std::uint16_t(9), 1});
    EXPECT_TRUE(QTest::qWaitFor([&] { return !m_failure.isEmpty(); }, patience));
    EXPECT_EQ(m_failure, QStringLiteral("the disc cannot play title 9 from chapter 1 on"));
}

TEST_F(PlayerWindowTest, titleWhoseContentsAreDamaged_isSaid_withTheDamage)
{
    const QByteArray copy = copyOfDisc();
    QFile contents(m_tree.pathText("disc/VIDEO_TS/VTS_02_1.VOB"));
    ASSERT_TRUE(contents.open(QIODevice::ReadWrite));
    ASSERT_EQ(contents.write(QByteArray(int(contents.size()), '\0')), contents.size());
    contents.close();
    m_playback.open(copy, PlaybackStart{std::uint16_t(2), 1});
    EXPECT_TRUE(QTest::qWaitFor([&] { return !m_failure.isEmpty(); }, patience));
    const QString begin = QStringLiteral("the disc cannot play title 2 from chapter 1 on: ");
    EXPECT_TRUE(m_failure.startsWith(begin) && m_failure.size() > begin.size()) << m_failure.toStdString();
}

/// TESSARON_CALLS asks for more of them.
TEST_F(PlayerWindowTest, anyInputInAnyOrder_neverHangs)
{
    open();
    std::mt19937 random(9); // the same input in every run
    const auto below = [&](int limit) { return int(random() % std::uint32_t(limit)); };
    constexpr std::array keys = {Qt::Key_Up,    Qt::Key_Down,   Qt::Key_Left,     Qt::Key_Right, Qt::Key_Return,
                                 Qt::Key_Space, Qt::Key_PageUp, Qt::Key_PageDown, Qt::Key_D,     Qt::Key_A,
                                 Qt::Key_L,     Qt::Key_S,      Qt::Key_M,        Qt::Key_Plus,  Qt::Key_Minus,
                                 Qt::Key_Home,  Qt::Key_F,      Qt::Key_Escape,   Qt::Key_X,     Qt::Key_P};
    constexpr std::array<Qt::KeyboardModifier, 3> modifiers = {Qt::NoModifier, Qt::ShiftModifier, Qt::ControlModifier};
    constexpr std::array menus = {"audio", "subtitles", "angles"};
    const int asked = qEnvironmentVariableIntValue("TESSARON_CALLS");
    for (int call = 0; call < (asked > 0 ? asked : 600); ++call) {
        const QPoint place(below(m_window.width()), below(m_window.height()));
        switch (below(8)) {
        case 0:
        case 1:
        case 2:
            press(keys[std::size_t(below(int(keys.size())))], modifiers[below(2) == 0 ? 0 : std::size_t(below(3))]);
            break;
        case 3:
            QTest::mouseMove(&m_window, place);
            break;
        case 4:
            QTest::mouseClick(&m_window, Qt::LeftButton, {}, place);
            break;
        case 5:
            if (auto *const slider = control<TimeSlider>("time"); slider->isEnabled())
                QTest::mouseClick(slider, Qt::LeftButton, {}, QPoint(below(slider->width()), 11));
            break;
        case 6:
            if (QMenu *const menu = control(menus[std::size_t(below(3))])->menu()) {
                Q_EMIT menu->aboutToShow();
                if (!menu->actions().isEmpty())
                    menu->actions()[below(int(menu->actions().size()))]->trigger();
            }
            break;
        default:
            m_playback.goToChapter(1 + below(3), 1 + below(5));
        }
        // Some of it comes while the disc still answers what came before.
        if (below(4) == 0)
            QTest::qWait(below(10));
    }
    m_window.setFullScreen(false);
    EXPECT_TRUE(m_failure.isEmpty()) << m_failure.toStdString();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !m_playback.isBusy(); }, patience));
    m_playback.goToChapter(1, 1);
    EXPECT_TRUE(waitForChapter(1, 1));
    m_playback.play();
    EXPECT_TRUE(waitForColour(0xa00000));
}

TEST_F(PlayerWindowTest, playerThatIsKilled_isSaidInTheWindow)
{
    open(1);
    ASSERT_TRUE(waitForState(kDVDStatePlaying));
    ::kill(DVDSession::instance().helperProcess(), SIGKILL);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !message().isEmpty(); }, patience));
    EXPECT_EQ(message(), m_failure);
    EXPECT_FALSE(control("play")->isEnabled());
    press(Qt::Key_Space);
    press(Qt::Key_Return);
    QTest::mouseClick(&m_window, Qt::LeftButton, {}, QPoint(100, 100));
}

} // namespace

} // namespace Tessaron::Testing
