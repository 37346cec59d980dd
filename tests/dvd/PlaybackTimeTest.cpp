#include <QDropEvent>
#include <QImage>
#include <QMimeData>
#include <QMouseEvent>
#include <QTest>

#include <TessaronClassesUI/PlaybackTime.h>
#include <TessaronClassesUI/WhiteView.h>
#include <gtest/gtest.h>

using namespace Tessaron;

namespace
{

std::string textAfter(std::uint32_t elapsed, std::uint32_t remaining, int clicks)
{
    PlaybackTime time;
    time.setTimeElapsed(elapsed, remaining);
    time.show();
    for (int click = 0; click < clicks; ++click)
        QTest::mouseClick(&time, Qt::LeftButton);
    return time.text().toStdString();
}

} // namespace

TEST(PlaybackTimeTest, text_isToTheNearestSecond)
{
    EXPECT_EQ(textAfter(0, 0, 0), "00:00:00");
    EXPECT_EQ(textAfter(59'499, 0, 0), "00:00:59");
    EXPECT_EQ(textAfter(59'500, 0, 0), "00:01:00");
    EXPECT_EQ(textAfter(3'599'499, 0, 0), "00:59:59");
    EXPECT_EQ(textAfter(3'599'500, 0, 0), "01:00:00");
    EXPECT_EQ(textAfter(100 * 3'600'000U, 0, 0), "100:00:00");
}

TEST(PlaybackTimeTest, click_switchesBetweenElapsedAndRemainingAtOnce)
{
    EXPECT_EQ(textAfter(61'500, 3'538'500, 0), "00:01:02");
    EXPECT_EQ(textAfter(61'500, 3'538'500, 1), "-00:58:59");
    EXPECT_EQ(textAfter(61'500, 3'538'500, 2), "00:01:02");
    EXPECT_EQ(textAfter(61'500, 3'538'500, 3), "-00:58:59");
}

TEST(PlaybackTimeTest, otherButtons_changeNothing)
{
    PlaybackTime time;
    time.setTimeElapsed(61'500, 3'538'500);
    time.show();
    for (const Qt::MouseButton button : {Qt::RightButton, Qt::MiddleButton}) {
        QTest::mouseClick(&time, button);
        EXPECT_FALSE(time.timeBase());
        EXPECT_EQ(time.text(), QStringLiteral("00:01:02"));
    }
}

TEST(PlaybackTimeTest, secondOfTwoQuickClicks_countsToo)
{
    PlaybackTime time;
    time.setTimeElapsed(61'500, 3'538'500);
    time.show();
    QTest::mouseClick(&time, Qt::LeftButton);
    EXPECT_TRUE(time.timeBase());
    QMouseEvent second(QEvent::MouseButtonDblClick, QPointF(1, 1), QPointF(1, 1), Qt::LeftButton, Qt::LeftButton, {});
    QCoreApplication::sendEvent(&time, &second);
    EXPECT_FALSE(time.timeBase());
    EXPECT_EQ(time.text(), QStringLiteral("00:01:02"));
}

TEST(PlaybackTimeTest, newTimes_keepTheBase)
{
    PlaybackTime time;
    EXPECT_FALSE(time.timeBase());
    EXPECT_TRUE(time.text().isEmpty());
    time.setTimeElapsed(1000, 2000);
    QTest::mouseClick(&time, Qt::LeftButton);
    time.setTimeElapsed(1500, 1500);
    EXPECT_EQ(time.timeElapsed(), 1500U);
    EXPECT_EQ(time.timeRemaining(), 1500U);
    EXPECT_EQ(time.text(), QStringLiteral("-00:00:02"));
}

TEST(PlaybackTimeTest, remainingTimeBelowZero_showsZero)
{
    EXPECT_EQ(textAfter(5000, std::uint32_t(4700 - 5000), 1), "-00:00:00");
}

TEST(WhiteViewTest, ground_isWhite_underTheRingOfADrag)
{
    WhiteView view;
    view.resize(40, 30);
    QImage picture = view.grab().toImage();
    EXPECT_EQ(picture.pixelColor(0, 0), QColor(Qt::white));
    EXPECT_EQ(picture.pixelColor(20, 15), QColor(Qt::white));
    const QMimeData data;
    const QDropEvent drag(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    view.draggingEntered(drag);
    picture = view.grab().toImage();
    EXPECT_NE(picture.pixelColor(1, 1), QColor(Qt::white));
    EXPECT_EQ(picture.pixelColor(20, 15), QColor(Qt::white));
}
