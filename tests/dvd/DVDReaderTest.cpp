#include "platform/dvdplayback/DVDPlayback.h"
#include "platform/dvdplayback/DVDSession.h"
#include "platform/foundation/NSAssertionHandler.h"
#include "tests/dvd/LoggedLines.h"
#include "tests/dvdplayback/SessionFixture.h"

#include <QApplication>
#include <QSignalSpy>
#include <QTest>

#include <TessaronClassesUI/DVDReader.h>
#include <TessaronClassesUI/VideoWindow.h>

namespace Tessaron::Testing
{

namespace
{

constexpr QRgb titleMenu = 0x404040;
constexpr int patience = 20'000;

class DVDReaderTest : public SessionFixture
{
protected:
    ~DVDReaderTest() override { DVDReader().appWillTerminate(); }

    [[nodiscard]] static QString path(const QByteArray &standard = "ntsc") { return QString::fromUtf8(disc(standard)); }
    /// The preview window; null when none is shown or hidden.
    [[nodiscard]] static VideoWindow *window()
    {
        for (QWidget *const widget : QApplication::topLevelWidgets()) {
            if (auto *const found = qobject_cast<VideoWindow *>(widget))
                return found;
        }
        return nullptr;
    }
    [[nodiscard]] static bool waitForColour(QRgb colour)
    {
        return QTest::qWaitFor(
            [&] {
                VideoWindow *const shown = window();
                if (!shown || !shown->isVisible())
                    return false;
                const QRgb pixel = shown->grab().toImage().pixel(40, 40);
                return std::abs(qRed(pixel) - qRed(colour)) < 14 && std::abs(qGreen(pixel) - qGreen(colour)) < 14
                    && std::abs(qBlue(pixel) - qBlue(colour)) < 14;
            },
            patience);
    }
};

TEST_F(DVDReaderTest, play_showsTheDiscInItsOwnSize)
{
    EXPECT_FALSE(DVDReader::isMediaOpen());
    ASSERT_TRUE(DVDReader::openMedia(path(), false));
    EXPECT_TRUE(DVDReader::isMediaOpen());
    ASSERT_NE(window(), nullptr);
    EXPECT_FALSE(window()->isVisible());
    EXPECT_EQ(window()->geometry(), QRect(100, 100, 300, 300));
    const Qt::WindowFlags flags = window()->windowFlags();
    EXPECT_TRUE(flags.testFlag(Qt::WindowTitleHint) && flags.testFlag(Qt::WindowCloseButtonHint));
    EXPECT_FALSE(flags.testAnyFlags(Qt::WindowMinMaxButtonsHint | Qt::FramelessWindowHint));
    DVDReader::play();
    EXPECT_TRUE(window()->isVisible());
    EXPECT_EQ(window()->frameSize(), QSize(720, 480));
    EXPECT_TRUE(waitForColour(titleMenu));
    DVDReader::stop();
    EXPECT_EQ(state(), std::uint32_t(kDVDStateStopped));
}

TEST_F(DVDReaderTest, play_centresTheFrame)
{
    ASSERT_TRUE(DVDReader::openMedia(path(), false));
    DVDReader::play();
    ASSERT_TRUE(QTest::qWaitFor([] { return window()->frameSize().height() > window()->height(); }))
        << "the platform gives frames";
    DVDReader::stop();
    window()->move(7, 9);
    DVDReader::play();
    EXPECT_EQ(window()->frameSize(), QSize(720, 480));
    EXPECT_EQ(window()->frameGeometry().topLeft(),
              window()->screen()->availableGeometry().center() - QPoint(720, 480) / 2);
}

TEST_F(DVDReaderTest, play_whilePlaying_onlyBringsTheWindowForward)
{
    ASSERT_TRUE(DVDReader::openMedia(path(), false));
    DVDReader::play();
    EXPECT_TRUE(waitForColour(titleMenu));
    ASSERT_EQ(DVDSetChapter(1, 2), noErr);
    EXPECT_TRUE(waitForColour(0x008000));
    window()->setGeometry(220, 130, 500, 400);
    QWidget other;
    other.show();
    other.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    DVDReader::play();
    EXPECT_TRUE(QTest::qWaitForWindowActive(window()));
    EXPECT_EQ(window()->geometry(), QRect(220, 130, 500, 400));
    EXPECT_EQ(chapter().first, 1);
}

TEST_F(DVDReaderTest, openMedia_closesTheOlderPreview)
{
    ASSERT_TRUE(DVDReader::openMedia(path(), false));
    DVDReader::play();
    EXPECT_TRUE(waitForColour(titleMenu));
    const QPointer<VideoWindow> first = window();
    ASSERT_TRUE(DVDReader::openMedia(path("pal"), true));
    EXPECT_TRUE(DVDReader::isMediaOpen());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(first.isNull());
    std::uint16_t width = 0, height = 0;
    EXPECT_EQ(DVDGetNativeVideoSize(&width, &height), noErr);
    EXPECT_EQ(height, 576);
}

TEST_F(DVDReaderTest, closedWindow_closesMedia_butNotTheSession)
{
    ASSERT_TRUE(DVDReader::openMedia(path(), false));
    DVDReader::play();
    window()->close();
    EXPECT_FALSE(DVDReader::isMediaOpen());
    bool hasMedia = true;
    EXPECT_EQ(DVDHasMedia(&hasMedia), noErr) << "the session is held";
    EXPECT_FALSE(hasMedia);
    DVDReader().appWillTerminate();
    EXPECT_EQ(DVDHasMedia(&hasMedia), kDVDErrorUninitializedLib);
}

TEST_F(DVDReaderTest, openMedia_printsWhatFails)
{
    testing::internal::CaptureStdout();
    EXPECT_FALSE(DVDReader::openMedia(QString::fromUtf8(m_tree.makeFolder("empty")), false));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "DVD Error -70015\n");
    testing::internal::CaptureStdout();
    EXPECT_FALSE(DVDReader::openMedia(m_tree.pathText("missing"), false));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "DVD Error -70015\n");
    DVDReader().appWillTerminate();
    ASSERT_EQ(DVDInitialize(), noErr);
    testing::internal::CaptureStdout();
    EXPECT_FALSE(DVDReader::openMedia(path(), false));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "DVD Error -70002\n");
    EXPECT_EQ(DVDDispose(), noErr);
}

TEST_F(DVDReaderTest, openMedia_printsThatTheWindowCannotBeBound)
{
    ASSERT_TRUE(DVDReader::openMedia(path(), false));
    window()->close();
    ASSERT_EQ(DVDDispose(), noErr) << "the session that the preview takes for its own";
    testing::internal::CaptureStdout();
    EXPECT_FALSE(DVDReader::openMedia(path(), false));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "DVD Error -70003\n");
    EXPECT_FALSE(DVDReader::isMediaOpen());
}

TEST_F(DVDReaderTest, openMedia_afterOneThatFailed_hasAWindowThatStays)
{
    testing::internal::CaptureStdout();
    EXPECT_FALSE(DVDReader::openMedia(QString::fromUtf8(m_tree.makeFolder("empty")), false));
    testing::internal::GetCapturedStdout();
    const QPointer<VideoWindow> failed = window();
    EXPECT_FALSE(failed.isNull());
    ASSERT_TRUE(DVDReader::openMedia(path(), false));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(failed.isNull());
    DVDReader::play();
    ASSERT_NE(window(), nullptr);
    EXPECT_TRUE(window()->isVisible());
    EXPECT_TRUE(waitForColour(titleMenu));
}

/// A window gets its frame from the system when it is shown.
TEST_F(DVDReaderTest, points_areThoseOfTheFrameThatTheWindowHas)
{
    ASSERT_TRUE(DVDReader::openMedia(path(), false));
    DVDReader::play();
    EXPECT_TRUE(waitForColour(titleMenu));
    const QSize frame = window()->frameSize();
    const QSize content = window()->size();
    ASSERT_GT(frame.height(), content.height()) << "the platform gives frames";
    QTest::mouseMove(window()->windowHandle(), QPoint(20, 20));
    EXPECT_TRUE(QTest::qWaitFor([&] {
        return DVDSession::instance().settings().bounds
            == QRectF(0, frame.height() - content.height(), content.width(), frame.height());
    }));
}

TEST_F(DVDReaderTest, callsWithoutAWindow_areHarmless)
{
    EXPECT_EQ(DVDReader::setVideoBounds(), kDVDErrorUninitializedLib);
    EXPECT_EQ(DVDReader::setVideoDisplay(), noErr);
    DVDReader::play();
    DVDReader::stop();
    ASSERT_TRUE(DVDReader::openMedia(path(), false));
    window()->close();
    EXPECT_EQ(DVDReader::setVideoBounds(), noErr);
    EXPECT_EQ(DVDSession::instance().settings().bounds, QRectF(0, 0, 0, 0));
    EXPECT_EQ(DVDReader::setVideoDisplay(), noErr);
}

/// As one does that ends with the widget it was made a child of.
TEST_F(DVDReaderTest, windowThatEndsWithoutBeingClosed_isNotPlayedInto)
{
    ASSERT_TRUE(DVDReader::openMedia(path(), false));
    delete window();
    DVDReader::play();
    EXPECT_EQ(state(), std::uint32_t(kDVDStateStopped));
    ASSERT_TRUE(DVDReader::openMedia(path(), false));
    DVDReader::play();
    EXPECT_TRUE(waitForColour(titleMenu));
}

/// Keeps what is reported, and returns.
class Keeper : public NSAssertionHandler
{
public:
    void handleFailureInMethod(const QString &method, const void * /*object*/, const QString &file, int /*lineNumber*/,
                               const QString &description) override
    {
        reports << method << file << description;
    }
    QStringList reports;
};

TEST_F(DVDReaderTest, openMedia_reportsTheOlderPreviewsSessionThatIsGone)
{
    ASSERT_TRUE(DVDReader::openMedia(path(), false));
    ASSERT_EQ(DVDDispose(), noErr);
    const QPointer<VideoWindow> older = window();
    EXPECT_THROW(DVDReader::openMedia(path(), false), NSInternalInconsistencyException);
    EXPECT_EQ(window(), older.data()) << "it stays";
    older->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_THROW(DVDReader::openMedia(path(), false), NSInternalInconsistencyException)
        << "its closing has never come to an end";
    const auto keeper = std::make_shared<Keeper>();
    NSAssertionHandler::setCurrentHandler(keeper);
    testing::internal::CaptureStdout();
    EXPECT_FALSE(DVDReader::openMedia(path(), false)) << "the preview takes the session for its own still";
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "DVD Error -70003\n");
    EXPECT_EQ(keeper->reports.count(QStringLiteral("DVDHasMedia returned -70003")), 1);
    DVDReader().appWillTerminate();
    NSAssertionHandler::setCurrentHandler(nullptr);
    EXPECT_TRUE(DVDReader::openMedia(path(), false));
}

TEST_F(DVDReaderTest, isMediaOpen_reportsASessionThatIsGone)
{
    ASSERT_TRUE(DVDReader::openMedia(path(), false));
    ASSERT_EQ(DVDDispose(), noErr);
    EXPECT_THROW(static_cast<void>(DVDReader::isMediaOpen()), NSInternalInconsistencyException);
    EXPECT_NO_THROW(window()->close()) << "nothing passes through the event loop";
    const auto keeper = std::make_shared<Keeper>();
    NSAssertionHandler::setCurrentHandler(keeper);
    EXPECT_FALSE(DVDReader::isMediaOpen());
    EXPECT_EQ(keeper->reports,
              (QStringList{QStringLiteral("isMediaOpen"), QStringLiteral("DVDReader"),
                           QStringLiteral("DVDHasMedia returned -70003")}));
    DVDReader().appWillTerminate();
    NSAssertionHandler::setCurrentHandler(nullptr);
}

TEST_F(DVDReaderTest, screenThatIsNotSupported_isLogged)
{
    ASSERT_TRUE(DVDReader::openMedia(path(), false));
    DVDSession::instance().setSettings([](DVDSession::Settings *settings) { settings->unsupportedDisplay = 2; });
    window()->move(1400, 300);
    window()->show();
    const LoggedLines log;
    EXPECT_EQ(DVDReader::setVideoDisplay(), noErr);
    EXPECT_EQ(DVDReader::setVideoDisplay(), noErr);
    EXPECT_EQ(log.lines().count(QStringLiteral("video display 2 not supported")), 2) << "it is not remembered";
}

TEST_F(DVDReaderTest, openMediaTwice_opensAnew)
{
    ASSERT_TRUE(DVDReader::openMedia(path(), false));
    DVDReader::play();
    EXPECT_TRUE(waitForColour(titleMenu));
    ASSERT_TRUE(DVDReader::openMedia(path(), false));
    EXPECT_EQ(state(), std::uint32_t(kDVDStateStopped)) << "the same disc, opened again";
    DVDReader::play();
    EXPECT_TRUE(waitForColour(titleMenu));
}

TEST_F(DVDReaderTest, setVideoDisplay_asksNothing_forTheDisplayInUse)
{
    constexpr std::uint32_t untouched = 99;
    ASSERT_TRUE(DVDReader::openMedia(path(), false));
    EXPECT_EQ(DVDSession::instance().settings().display, 1U);
    DVDSession::instance().setSettings([](DVDSession::Settings *settings) { settings->display = untouched; });
    EXPECT_EQ(DVDReader::setVideoDisplay(), noErr);
    EXPECT_EQ(DVDSession::instance().settings().display, untouched);
    window()->move(1400, 300);
    window()->show();
    EXPECT_EQ(DVDReader::setVideoDisplay(), noErr);
    EXPECT_EQ(DVDSession::instance().settings().display, 2U) << "another one";
}

} // namespace

} // namespace Tessaron::Testing
