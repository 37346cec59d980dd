#include "platform/dvdplayback/DVDPlayback.h"
#include "platform/dvdplayback/DVDSession.h"
#include "platform/foundation/NSAssertionHandler.h"
#include "tests/dvd/LoggedLines.h"
#include "tests/dvdplayback/DiscFixture.h"

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

class DVDReaderTest : public DiscTest
{
protected:
    ~DVDReaderTest() override { DVDReader::appWillTerminate(); }

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
    DVDReader::play();
    EXPECT_TRUE(window()->isVisible());
    EXPECT_EQ(window()->frameSize(), QSize(720, 480));
    EXPECT_TRUE(waitForColour(titleMenu));
    DVDReader::play();
    EXPECT_TRUE(waitForColour(titleMenu)) << "playing already";
    DVDReader::stop();
    std::uint32_t state = 0;
    EXPECT_EQ(DVDGetState(&state), noErr);
    EXPECT_EQ(state, std::uint32_t(kDVDStateStopped));
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
    DVDReader::appWillTerminate();
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
    DVDReader::appWillTerminate();
    ASSERT_EQ(DVDInitialize(), noErr);
    testing::internal::CaptureStdout();
    EXPECT_FALSE(DVDReader::openMedia(path(), false));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "DVD Error -70002\n");
    EXPECT_EQ(DVDDispose(), noErr);
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

TEST_F(DVDReaderTest, isMediaOpen_reportsASessionThatIsGone)
{
    class Keeper : public NSAssertionHandler
    {
    public:
        void handleFailureInMethod(const QString &method, const void * /*object*/, const QString &file,
                                   int /*lineNumber*/, const QString &description) override
        {
            reports << method << file << description;
        }
        QStringList reports;
    };
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
    DVDReader::appWillTerminate();
    NSAssertionHandler::setCurrentHandler(nullptr);
}

TEST_F(DVDReaderTest, screenThatIsNotSupported_isLogged)
{
    ASSERT_TRUE(DVDReader::openMedia(path(), false));
    DVDSession::instance().setSettings([](DVDSession::Settings *settings) { settings->unsupportedDisplay = 1; });
    window()->move(1400, 300);
    window()->show();
    const LoggedLines log;
    EXPECT_EQ(DVDReader::setVideoDisplay(), noErr);
    EXPECT_EQ(DVDReader::setVideoDisplay(), noErr);
    EXPECT_EQ(log.lines().count(QStringLiteral("video display 1 not supported")), 2) << "it is not remembered";
}

TEST_F(DVDReaderTest, openMediaTwice_opensAnew)
{
    ASSERT_TRUE(DVDReader::openMedia(path(), false));
    DVDReader::play();
    EXPECT_TRUE(waitForColour(titleMenu));
    ASSERT_TRUE(DVDReader::openMedia(path(), false));
    std::uint32_t state = 0;
    EXPECT_EQ(DVDGetState(&state), noErr);
    EXPECT_EQ(state, std::uint32_t(kDVDStateStopped)) << "the same disc, opened again";
    DVDReader::play();
    EXPECT_TRUE(waitForColour(titleMenu));
}

TEST_F(DVDReaderTest, setVideoDisplay_answersZero_forTheDisplayInUse)
{
    ASSERT_TRUE(DVDReader::openMedia(path(), false));
    EXPECT_EQ(DVDReader::setVideoDisplay(), noErr);
    EXPECT_EQ(DVDReader::setVideoBounds(), noErr);
}

} // namespace

} // namespace Tessaron::Testing
