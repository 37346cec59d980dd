#include "platform/dvdplayback/DVDPlayback.h"
#include "platform/foundation/NSAssertionHandler.h"
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
}

TEST_F(VideoWindowTest, pointer_isAHandOverAButtonOfAMenu)
{
    VideoWindow window(QRect(100, 100, 720, 480));
    window.awakeFromNib();
    FSRef ref;
    ASSERT_EQ(FSPathMakeRef(disc(), &ref, nullptr), noErr);
    ASSERT_EQ(DVDOpenMediaFile(&ref), noErr);
    ASSERT_EQ(DVDPlay(), noErr);
    window.show();
    window.resize(640, 480);
    window.setupVideoWindow();
    std::uint32_t state = 0;
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return DVDGetState(&state) == noErr && state == std::uint32_t(kDVDStatePlayingStill); }, 20'000));
    QTest::mouseMove(window.windowHandle(), QPoint(300, 240));
    EXPECT_TRUE(QTest::qWaitFor([&] { return window.cursor().shape() == Qt::PointingHandCursor; }));
    QTest::mouseMove(window.windowHandle(), QPoint(20, 20));
    EXPECT_TRUE(QTest::qWaitFor([&] { return window.cursor().shape() == Qt::ArrowCursor; }));
    QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, QPoint(300, 240));
    std::uint16_t title = 0, chapter = 0;
    EXPECT_TRUE(QTest::qWaitFor([&] { return DVDGetChapter(&title, &chapter) == noErr && title == 2; }, 20'000));
}

TEST_F(VideoWindowTest, failure_isReported)
{
    VideoWindow window;
    ASSERT_EQ(DVDDispose(), noErr);
    try {
        window.setupVideoWindow();
        ADD_FAILURE() << "nothing was reported";
    } catch (const NSInternalInconsistencyException &exception) {
        EXPECT_STREQ(exception.what(), "DVDSetVideoWindowID returned -70003");
    }
}

} // namespace

} // namespace Tessaron::Testing
