#include "dvd/player/TimeSlider.h"

#include <QSignalSpy>
#include <QTest>
#include <QToolTip>

#include <gtest/gtest.h>

using namespace Tessaron;
using std::chrono::milliseconds;

namespace
{

class TimeSliderTest : public testing::Test
{
protected:
    TimeSliderTest()
    {
        m_slider.resize(416, 22); // 400 points of groove
        m_slider.setChapters({milliseconds(0), milliseconds(10'000), milliseconds(30'000)});
        m_slider.setTime(milliseconds(0), milliseconds(40'000));
        QObject::connect(&m_slider, &TimeSlider::wanted, &m_slider,
                         [this](milliseconds time) { m_wanted << time.count(); });
        m_slider.show();
    }
    [[nodiscard]] static QPoint at(int x) { return {x, 11}; }

    TimeSlider m_slider;
    QList<qint64> m_wanted;
};

} // namespace

TEST_F(TimeSliderTest, placesAndTimes_areEachOthersReverse)
{
    EXPECT_DOUBLE_EQ(m_slider.placeOf(milliseconds(0)), 8);
    EXPECT_DOUBLE_EQ(m_slider.placeOf(milliseconds(10'000)), 108);
    EXPECT_DOUBLE_EQ(m_slider.placeOf(milliseconds(40'000)), 408);
    EXPECT_DOUBLE_EQ(m_slider.placeOf(milliseconds(90'000)), 408);
    EXPECT_EQ(m_slider.timeAt(108), milliseconds(10'000));
    EXPECT_EQ(m_slider.timeAt(-5), milliseconds(0));
    EXPECT_EQ(m_slider.timeAt(1000), milliseconds(40'000));
}

TEST_F(TimeSliderTest, chapters_beginWhereTheyBegin)
{
    EXPECT_EQ(m_slider.chapterAt(milliseconds(0)), 1);
    EXPECT_EQ(m_slider.chapterAt(milliseconds(9'999)), 1);
    EXPECT_EQ(m_slider.chapterAt(milliseconds(10'000)), 2);
    EXPECT_EQ(m_slider.chapterAt(milliseconds(39'999)), 3);
    m_slider.setChapters({});
    EXPECT_EQ(m_slider.chapterAt(milliseconds(39'999)), 0);
}

TEST_F(TimeSliderTest, marks_areDrawnWhereChaptersBegin)
{
    const auto columnIsMarked = [this](int x) {
        const QImage picture = m_slider.grab().toImage();
        return picture.pixel(x, 7) != picture.pixel(x + 20, 7);
    };
    EXPECT_TRUE(columnIsMarked(108));
    EXPECT_TRUE(columnIsMarked(308));
    EXPECT_FALSE(columnIsMarked(208));
    m_slider.setChapters({milliseconds(0), milliseconds(20'000)});
    EXPECT_FALSE(columnIsMarked(108));
    EXPECT_TRUE(columnIsMarked(208));
}

TEST_F(TimeSliderTest, click_goesThere)
{
    QTest::mouseClick(&m_slider, Qt::LeftButton, {}, at(208));
    EXPECT_EQ(m_wanted, QList<qint64>{20'000});
    QTest::mouseClick(&m_slider, Qt::RightButton, {}, at(308));
    EXPECT_EQ(m_wanted.size(), 1);
}

TEST_F(TimeSliderTest, drag_goesThereWhenItEnds_andIsNotDisturbed)
{
    QTest::mousePress(&m_slider, Qt::LeftButton, {}, at(58));
    QTest::mouseMove(&m_slider, at(258));
    EXPECT_TRUE(m_wanted.isEmpty());
    m_slider.setTime(milliseconds(6'000), milliseconds(40'000));
    EXPECT_EQ(m_slider.sliderPosition(), 25'000);
    QTest::mouseRelease(&m_slider, Qt::LeftButton, {}, at(258));
    EXPECT_EQ(m_wanted, QList<qint64>{25'000});
    EXPECT_FALSE(m_slider.isSliderDown());
    m_slider.setTime(milliseconds(26'000), milliseconds(40'000));
    EXPECT_EQ(m_slider.value(), 26'000);
}

TEST_F(TimeSliderTest, mouseOverIt_tellsTimeAndChapter)
{
    QTest::mouseMove(&m_slider, at(158));
    EXPECT_TRUE(QTest::qWaitFor([] { return QToolTip::text() == QStringLiteral("0:15, chapter 2"); }))
        << QToolTip::text().toStdString();
}

TEST_F(TimeSliderTest, withoutLength_nothingCanBeWanted)
{
    m_slider.setTime(milliseconds(0), milliseconds(0));
    EXPECT_FALSE(m_slider.isEnabled());
    QTest::mouseClick(&m_slider, Qt::LeftButton, {}, at(208));
    EXPECT_TRUE(m_wanted.isEmpty());
}
