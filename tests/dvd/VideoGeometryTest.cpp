#include "dvd/VideoGeometry.h"

#include <gtest/gtest.h>

using namespace Tessaron;

namespace
{

constexpr double wide = double(1.7777778F);
constexpr double old = double(1.3333334F);

/// To the point that the window has then.
QSize points(std::uint32_t code, double ratio, const QSizeF &visible, const QSizeF &content = {640, 480},
             const QSizeF &disc = {640, 480})
{
    return videoContentSize(code, ratio, visible, content, disc).toSize();
}

} // namespace

TEST(VideoGeometryTest, ratio_isThatOfWidePicturesAlsoInALetterbox)
{
    for (const std::int16_t aspect : {3, 4})
        EXPECT_EQ(ratioOfAspect(aspect), 1.7777778F) << aspect;
    for (const std::int16_t aspect : {-1, 0, 1, 2, 5})
        EXPECT_EQ(ratioOfAspect(aspect), 1.3333334F) << aspect;
}

TEST(VideoGeometryTest, maximum_isAsLargeAsTheScreenLetsIt)
{
    EXPECT_EQ(points(MaximumVideo, wide, {1280, 778}), QSize(1280, 720));
    EXPECT_EQ(points(MaximumVideo, wide, {1024, 1000}), QSize(1024, 576));
    EXPECT_EQ(points(MaximumVideo, old, {1280, 778}), QSize(1037, 778));
    EXPECT_EQ(points(MaximumVideo, old, {1024, 1000}), QSize(1024, 768));
}

TEST(VideoGeometryTest, refit_takesTheWidthThatGoesWithTheHeight)
{
    EXPECT_EQ(points(RefitVideo, old, {1280, 778}, {10, 480}), QSize(640, 480));
    EXPECT_EQ(points(RefitVideo, wide, {1280, 778}, {10, 480}), QSize(853, 480));
    EXPECT_EQ(points(RefitVideo, wide, {800, 600}, {10, 480}), QSize(800, 450)) << "a narrow screen";
    EXPECT_EQ(points(RefitVideo, wide, {800, 600}, QSizeF(points(RefitVideo, wide, {800, 600}))), QSize(800, 450));
}

TEST(VideoGeometryTest, smallAndNormal_areThoseOfTheDisc)
{
    const QSizeF disc(wide * 480, 480);
    EXPECT_EQ(points(NormalVideo, wide, {640, 480}, {10, 10}, disc), QSize(853, 480));
    EXPECT_EQ(points(SmallVideo, wide, {640, 480}, {10, 10}, disc), QSize(427, 240));
}

TEST(VideoGeometryTest, anyOtherCode_leavesTheSize)
{
    EXPECT_EQ(points(4, wide, {1280, 778}, {123, 45}), QSize(123, 45));
    EXPECT_EQ(points(0xffffffff, old, {1280, 778}, {123, 45}), QSize(123, 45));
}
