#include "platform/dvdplayback/DVDPlayback.h"
#include "platform/dvdplayback/DVDSession.h"
#include "platform/foundation/NSAssertionHandler.h"
#include "tests/dvd/LoggedLines.h"
#include "tests/dvdplayback/DiscFixture.h"

#include <QKeyEvent>
#include <QScreen>
#include <QTest>

#include <TessaronClassesUI/VideoWindow.h>

namespace Tessaron::Testing
{

namespace
{

class VideoWindowTest : public DiscTest
{
protected:
    VideoWindowTest() { EXPECT_EQ(DVDInitialize(), noErr); }
    ~VideoWindowTest() override { DVDDispose(); }

    static void openAndPlay(std::uint16_t title)
    {
        FSRef ref;
        ASSERT_EQ(FSPathMakeRef(disc(), &ref, nullptr), noErr);
        ASSERT_EQ(DVDOpenMediaFile(&ref), noErr);
        ASSERT_EQ(DVDSetChapter(title, 1), noErr);
    }
    /// Shows the disc's first menu in the window.
    static void openMenu(VideoWindow *window)
    {
        FSRef ref;
        ASSERT_EQ(FSPathMakeRef(disc(), &ref, nullptr), noErr);
        ASSERT_EQ(DVDOpenMediaFile(&ref), noErr);
        ASSERT_EQ(DVDPlay(), noErr);
        window->show();
        window->resize(640, 480);
        window->setupVideoWindow();
        std::uint32_t state = 0;
        ASSERT_TRUE(QTest::qWaitFor(
            [&] { return DVDGetState(&state) == noErr && state == std::uint32_t(kDVDStatePlayingStill); }, 20'000));
    }
};

TEST_F(VideoWindowTest, sizes_followTheShapeOfTheTitle)
{
    VideoWindow window;
    EXPECT_EQ(window.getVideoSize(), QSizeF(double(1.3333334F) * 480, 480)) << "without media";
    openAndPlay(1);
    EXPECT_FLOAT_EQ(window.titleAspectRatio(), 1.3333334F);
    window.setWindowSize(2);
    EXPECT_EQ(window.size(), QSize(640, 480));
    window.setWindowSize(1);
    EXPECT_EQ(window.size(), QSize(320, 240));
    openAndPlay(2);
    EXPECT_FLOAT_EQ(window.titleAspectRatio(), 1.7777778F);
    window.setWindowSize(0);
    EXPECT_EQ(window.size(), QSize(427, 240));
    window.setWindowSize(7);
    EXPECT_EQ(window.size(), QSize(427, 240));
    window.setWindowSize(3);
    const QRectF visible = window.screen()->availableGeometry();
    const double ratio = 16.0 / 9;
    const QSizeF largest = visible.width() / visible.height() >= ratio
        ? QSizeF(ratio * visible.height(), visible.height())
        : QSizeF(visible.width(), visible.width() / ratio);
    EXPECT_EQ(window.size(), largest.toSize());
    EXPECT_EQ(window.frameGeometry().topLeft(), visible.topLeft().toPoint());
}

TEST_F(VideoWindowTest, largestSize_isThatOfEachScreen)
{
    ASSERT_EQ(QGuiApplication::screens().size(), 2);
    openAndPlay(2);
    VideoWindow window;
    window.setWindowSize(3);
    EXPECT_EQ(window.size(), QSize(1280, 720));
    EXPECT_EQ(window.frameGeometry().topLeft(), QPoint(0, 0));
    window.setScreen(QGuiApplication::screens()[1]);
    window.move(1400, 300);
    window.setWindowSize(3);
    EXPECT_EQ(window.size(), QSize(1024, 576));
    EXPECT_EQ(window.frameGeometry().topLeft(), QPoint(1280, 0));
    window.move(1500, 200);
    window.setWindowSize(1);
    EXPECT_EQ(window.frameGeometry().topLeft(), QPoint(1500, 200)) << "it shrinks downward";
}

TEST_F(VideoWindowTest, otherScreen_isToldToTheSession_onceItIsAwake)
{
    VideoWindow window;
    window.show();
    const auto moveTo = [&](qsizetype screen) {
        window.setScreen(QGuiApplication::screens()[screen]);
        window.move(QGuiApplication::screens()[screen]->geometry().topLeft() + QPoint(100, 100));
        QTest::qWait(50);
    };
    const QString told = QStringLiteral("Step 3: Set Video Display");
    const LoggedLines log;
    moveTo(1);
    EXPECT_FALSE(log.lines().contains(told));
    window.setupVideoWindow();
    EXPECT_EQ(log.lines().count(told), 1);
    EXPECT_EQ(DVDSession::instance().settings().display, 2U);
    window.awakeFromNib();
    window.move(1500, 300);
    QTest::qWait(50);
    EXPECT_EQ(log.lines().count(told), 1) << "the same screen";
    moveTo(0);
    EXPECT_TRUE(QTest::qWaitFor([&] { return log.lines().count(told) == 2; }));
    EXPECT_EQ(DVDSession::instance().settings().display, 1U);
}

TEST_F(VideoWindowTest, screenThatIsNotSupported_isLogged_andNotRemembered)
{
    DVDSession::instance().setSettings([](DVDSession::Settings *settings) { settings->unsupportedDisplay = 2; });
    VideoWindow window;
    window.awakeFromNib();
    window.setupVideoWindow();
    window.show();
    const LoggedLines log;
    const QString refused = QStringLiteral("video display 2 not supported");
    window.move(1400, 300);
    EXPECT_TRUE(QTest::qWaitFor([&] { return log.lines().contains(refused); })) << qPrintable(log.lines().join(u'\n'));
    EXPECT_EQ(DVDSession::instance().settings().display, 1U);
    const qsizetype before = log.lines().count(refused);
    window.move(1500, 300);
    EXPECT_TRUE(QTest::qWaitFor([&] { return log.lines().count(refused) > before; })) << "it asks again";
    const QString told = QStringLiteral("Step 3: Set Video Display");
    const qsizetype asked = log.lines().count(told);
    window.move(100, 100);
    QTest::qWait(50);
    EXPECT_EQ(log.lines().count(told), asked) << "the number of before is remembered still";
}

TEST_F(VideoWindowTest, moveOfAnotherVideoWindow_isHeardByTheAwakeOnes)
{
    VideoWindow awake;
    awake.awakeFromNib();
    VideoWindow other;
    other.show();
    other.setScreen(QGuiApplication::screens()[1]);
    other.move(1400, 300);
    EXPECT_TRUE(QTest::qWaitFor([&] { return DVDSession::instance().settings().display == 2; }));
}

TEST_F(VideoWindowTest, firstScreen_isToldToo_andOnlyOnce)
{
    VideoWindow window;
    const LoggedLines log;
    window.setupVideoWindow();
    window.setupVideoWindow();
    EXPECT_EQ(log.lines().count(QStringLiteral("Step 2: Set Video Window")), 2);
    EXPECT_EQ(log.lines().count(QStringLiteral("Step 3: Set Video Display")), 1);
    EXPECT_EQ(DVDSession::instance().settings().display, 1U);
}

TEST_F(VideoWindowTest, bounds_areMeasuredFromTheTopOfTheFrame)
{
    VideoWindow window(QRect(100, 100, 640, 480));
    window.awakeFromNib();
    window.show();
    window.setupVideoWindow();
    const double above = window.frameGeometry().height() - window.height();
    EXPECT_GT(above, 0) << "the platform gives frames";
    EXPECT_EQ(DVDSession::instance().settings().bounds, QRectF(0, above, 640, 480));
    window.resize(300, 240);
    EXPECT_TRUE(QTest::qWaitFor([&] { return DVDSession::instance().settings().bounds == QRectF(0, above, 320, 240); }))
        << "it has taken the shape of the title again";
    EXPECT_EQ(window.size(), QSize(320, 240));
}

TEST_F(VideoWindowTest, viewOfAnotherWindow_changesNothing)
{
    VideoWindow window(QRect(100, 100, 500, 480));
    const VideoWindow other;
    window.frameDidChange(*other.contentView());
    EXPECT_EQ(window.size(), QSize(500, 480));
    window.frameDidChange(*window.contentView());
    EXPECT_EQ(window.size(), QSize(640, 480));
}

TEST_F(VideoWindowTest, failureWhileItIsResized_endsThere)
{
    VideoWindow window;
    window.awakeFromNib();
    window.show();
    ASSERT_EQ(DVDDispose(), noErr);
    const LoggedLines log;
    window.resize(400, 360);
    EXPECT_TRUE(QTest::qWaitFor(
        [&] { return log.lines().join(u'\n').contains(QStringLiteral("DVDSetVideoBounds returned -70003")); }));
}

TEST_F(VideoWindowTest, keys_areTheDelegatesFirst)
{
    VideoWindow window;
    int asked = 0;
    VideoWindowDelegate delegate;
    delegate.onKeyDown = [&](const QKeyEvent &event) {
        ++asked;
        return event.key() == Qt::Key_Space;
    };
    window.setDelegate(delegate);
    QKeyEvent space(QEvent::KeyPress, Qt::Key_Space, Qt::NoModifier, QStringLiteral(" "));
    QKeyEvent other(QEvent::KeyPress, Qt::Key_X, Qt::NoModifier, QStringLiteral("x"));
    QCoreApplication::sendEvent(&window, &space);
    QCoreApplication::sendEvent(&window, &other);
    EXPECT_EQ(asked, 2);
    EXPECT_TRUE(space.isAccepted());
    EXPECT_FALSE(other.isAccepted());
    // What waits behind a key that was taken is discarded; behind one that was not it stays.
    const auto askedBehind = [&](QKeyEvent *event) {
        QCoreApplication::postEvent(&window, new QKeyEvent(QEvent::KeyPress, Qt::Key_Y, Qt::NoModifier));
        QCoreApplication::sendEvent(&window, event);
        const int before = asked;
        QCoreApplication::sendPostedEvents(&window);
        return asked - before;
    };
    EXPECT_EQ(askedBehind(&space), 0);
    EXPECT_EQ(askedBehind(&other), 1);
}

TEST_F(VideoWindowTest, pointer_isAHandOverAButtonOfAMenu)
{
    VideoWindow window(QRect(100, 100, 720, 480));
    window.awakeFromNib();
    openMenu(&window);
    QTest::mouseMove(window.windowHandle(), QPoint(300, 240));
    EXPECT_TRUE(QTest::qWaitFor([&] { return window.cursor().shape() == Qt::PointingHandCursor; }));
    QTest::mouseMove(window.windowHandle(), QPoint(20, 20));
    EXPECT_TRUE(QTest::qWaitFor([&] { return window.cursor().shape() == Qt::ArrowCursor; }));
    QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, QPoint(300, 240));
    std::uint16_t title = 0, chapter = 0;
    EXPECT_TRUE(QTest::qWaitFor([&] { return DVDGetChapter(&title, &chapter) == noErr && title == 2; }, 20'000));
}

TEST_F(VideoWindowTest, secondOfTwoQuickClicks_pressesToo_andADragDoesNot)
{
    VideoWindow window(QRect(100, 100, 640, 480));
    window.awakeFromNib();
    openMenu(&window);
    const auto send = [&](QEvent::Type type, QPointF place, Qt::MouseButton button, Qt::MouseButtons buttons) {
        QMouseEvent event(type, place, window.mapToGlobal(place), button, buttons, {});
        QCoreApplication::sendEvent(&window, &event);
    };
    send(QEvent::MouseMove, {300, 240}, Qt::NoButton, Qt::NoButton);
    EXPECT_EQ(window.cursor().shape(), Qt::PointingHandCursor);
    send(QEvent::MouseMove, {300, 240}, Qt::NoButton, Qt::LeftButton);
    EXPECT_EQ(window.cursor().shape(), Qt::ArrowCursor) << "it drags";
    send(QEvent::MouseMove, {300, 240}, Qt::NoButton, Qt::NoButton);
    EXPECT_EQ(window.cursor().shape(), Qt::PointingHandCursor);
    QKeyEvent key(QEvent::KeyPress, Qt::Key_X, Qt::NoModifier);
    QCoreApplication::sendEvent(&window, &key);
    EXPECT_EQ(window.cursor().shape(), Qt::ArrowCursor) << "any other event";
    send(QEvent::MouseButtonPress, {300, 240}, Qt::RightButton, Qt::RightButton);
    send(QEvent::MouseButtonPress, {20, 20}, Qt::LeftButton, Qt::LeftButton);
    EXPECT_EQ(window.cursor().shape(), Qt::ArrowCursor);
    send(QEvent::MouseButtonDblClick, {300, 240}, Qt::LeftButton, Qt::LeftButton);
    std::uint16_t title = 0, chapter = 0;
    EXPECT_TRUE(QTest::qWaitFor([&] { return DVDGetChapter(&title, &chapter) == noErr && title == 2; }, 20'000));
}

TEST_F(VideoWindowTest, failures_areReported)
{
    VideoWindow window;
    ASSERT_EQ(DVDDispose(), noErr);
    const auto reportOf = [&](void (VideoWindow::*call)()) -> std::string {
        try {
            (window.*call)();
        } catch (const NSInternalInconsistencyException &exception) {
            return exception.what();
        }
        return "nothing";
    };
    EXPECT_EQ(reportOf(&VideoWindow::setupVideoWindow), "DVDSetVideoWindowID returned -70003");
    EXPECT_EQ(reportOf(&VideoWindow::setVideoDisplay), "DVDSwitchToDisplay returned -70003");
    EXPECT_EQ(reportOf(&VideoWindow::setVideoBounds), "DVDSetVideoBounds returned -70003");
}

TEST_F(VideoWindowTest, awakeWindow_isBlackWithoutAPicture)
{
    VideoWindow window(QRect(100, 100, 60, 40));
    EXPECT_NE(window.palette().color(QPalette::Window), QColor(Qt::black));
    window.awakeFromNib();
    EXPECT_EQ(window.palette().color(QPalette::Window), QColor(Qt::black));
    const QImage seen = window.grab().toImage().convertToFormat(QImage::Format_RGB32);
    for (const QPoint place : {QPoint(0, 0), seen.rect().center(), seen.rect().bottomRight()})
        EXPECT_EQ(seen.pixelColor(place), QColor(Qt::black)) << place.x();
}

} // namespace

} // namespace Tessaron::Testing
