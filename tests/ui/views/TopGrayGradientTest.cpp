#include "platform/foundation/NSBundle.h"

#include <QImage>

#include <TessaronClassesUI/TopGrayGradient.h>
#include <gtest/gtest.h>

using namespace Tessaron;

namespace
{

QImage drawn(TopGrayGradient &view, qreal ratio = 1)
{
    QImage picture(view.size() * ratio, QImage::Format_ARGB32);
    picture.setDevicePixelRatio(ratio);
    picture.fill(Qt::white);
    view.render(&picture, {}, {}, {});
    return picture;
}

} // namespace

TEST(TopGrayGradient, image_isAResourceOfTheFrameworksBundle)
{
    const std::shared_ptr<NSBundle> bundle = NSBundle::bundleWithIdentifier(frameworkBundleIdentifier);
    ASSERT_NE(bundle, nullptr);
    EXPECT_FALSE(QImage(bundle->pathForResource(QStringLiteral("gray"), QStringLiteral("png"))).isNull());
}

TEST(TopGrayGradient, strip_is41PointsHighAtTheTopAcrossTheWholeWidth)
{
    EXPECT_EQ(TopGrayGradient::height(), 41.0);
    TopGrayGradient view;
    view.resize(300, 100);
    const QImage picture = drawn(view);
    for (const int x : {0, 150, 299}) {
        for (int y = 0; y < 41; ++y)
            ASSERT_NE(picture.pixelColor(x, y), QColor(Qt::white)) << x << ", " << y;
        for (int y = 41; y < 100; ++y)
            ASSERT_EQ(picture.pixelColor(x, y), QColor(Qt::white)) << x << ", " << y;
    }
}

TEST(TopGrayGradient, wholeImage_isStretchedIntoTheStrip)
{
    TopGrayGradient view;
    view.resize(20, 41);
    const QImage picture = drawn(view);
    EXPECT_LT(picture.pixelColor(10, 38).lightness(), picture.pixelColor(10, 1).lightness()) << "darker downwards";
    EXPECT_LT(picture.pixelColor(10, 40).lightness(), picture.pixelColor(10, 38).lightness()) << "a line at the end";
}

TEST(TopGrayGradient, strip_is41PointsHigh_whereAPointHasMorePixels)
{
    TopGrayGradient view;
    view.resize(20, 60);
    const QImage picture = drawn(view, 2);
    EXPECT_NE(picture.pixelColor(10, 81), QColor(Qt::white));
    EXPECT_EQ(picture.pixelColor(10, 82), QColor(Qt::white));
}

TEST(TopGrayGradient, strip_isCut_whereTheViewIsLower)
{
    TopGrayGradient view;
    view.resize(20, 10);
    EXPECT_NE(drawn(view).pixelColor(10, 9), QColor(Qt::white));
}

TEST(TopGrayGradient, initWithFrame_placesTheViewInItsParent)
{
    QWidget parent;
    const TopGrayGradient *const view = TopGrayGradient::initWithFrame({1, 2, 30, 40}, &parent);
    EXPECT_EQ(view->parentWidget(), &parent);
    EXPECT_EQ(view->geometry(), QRect(1, 2, 30, 40));
}
