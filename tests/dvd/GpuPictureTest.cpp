#include "dvd/GpuPicture.h"

#include "tests/support/RunProgram.h"

#include <QTest>

#include <array>
#include <gtest/gtest.h>
#include <unistd.h>
#include <vector>

namespace Tessaron::Testing
{

namespace
{

bool isAbout(QRgb pixel, QRgb colour)
{
    constexpr int tolerance = 3;
    return std::abs(qRed(pixel) - qRed(colour)) <= tolerance && std::abs(qGreen(pixel) - qGreen(colour)) <= tolerance
        && std::abs(qBlue(pixel) - qBlue(colour)) <= tolerance;
}

/// What the next test runs with a screen.
TEST(GpuPictureTest, DISABLED_drawsOnTheScreenThatIsThere)
{
    ASSERT_TRUE(GpuPicture::isToBeUsed()) << "asked for by hand, even where software imitates it";
    // Lines are farther apart than they are long, as those of a session's pictures can be.
    constexpr int width = 704, height = 480, pixelsOfLine = 720;
    constexpr std::array<QRgb, 4> colours = {0xffa01020, 0xff20b030, 0xff3040c0, 0xff807010};
    std::vector<QRgb> pixels(std::size_t(pixelsOfLine) * height, 0xffffffff);
    const auto paint = [&](std::size_t turn) {
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x)
                pixels[std::size_t(y) * pixelsOfLine + std::size_t(x)] =
                    colours[(std::size_t(y < height / 2 ? 0 : 2) + std::size_t(x < width / 2 ? 0 : 1) + turn) % 4];
        }
    };
    QImage picture;
    GpuPicture view(&picture, nullptr);
    view.resize(352, 240);
    view.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
    ASSERT_TRUE(view.isValid());
    EXPECT_TRUE(isAbout(view.grabFramebuffer().pixel(10, 10), 0xff000000)) << "before the first one";
    for (std::size_t turn = 0; turn < 2; ++turn) {
        paint(turn);
        picture = QImage(reinterpret_cast<const uchar *>(pixels.data()), width, height, qsizetype(pixelsOfLine) * 4,
                         QImage::Format_RGB32);
        view.takePicture();
        const QImage drawn = view.grabFramebuffer();
        const std::array<QPoint, 4> places = {
            {{0, 0}, {drawn.width() - 1, 0}, {0, drawn.height() - 1}, {drawn.width() - 1, drawn.height() - 1}}};
        for (std::size_t place = 0; place < places.size(); ++place)
            EXPECT_TRUE(isAbout(drawn.pixel(places[place]), colours[(place + turn) % 4])) << turn << ' ' << place;
    }
}

TEST(GpuPictureTest, drawsThePictureUpright_inItsColours)
{
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "what orders the threads of the software renderer is not seen by ThreadSanitizer";
#endif
    std::array<char, 4096> program{};
    ASSERT_GT(::readlink("/proc/self/exe", program.data(), program.size() - 1), 0);
    const ProgramRun run =
        runProgram("xvfb-run",
                   {"-a", "-s", "-screen 0 1024x768x24", "env", "QT_QPA_PLATFORM=xcb", "TESSARON_VIDEO=gpu",
                    "LSAN_OPTIONS=detect_leaks=0", program.data(), "--gtest_also_run_disabled_tests",
                    "--gtest_filter=GpuPictureTest.DISABLED_drawsOnTheScreenThatIsThere"});
    EXPECT_EQ(run.status, 0) << run.output.constData() << run.errors.constData();
    EXPECT_TRUE(run.output.contains("[  PASSED  ] 1 test.")) << run.output.constData();
}

TEST(GpuPictureTest, isNotUsed_whenQPainterIsAskedFor)
{
    qputenv("TESSARON_VIDEO", "raster");
    EXPECT_FALSE(GpuPicture::isToBeUsed());
}

} // namespace

} // namespace Tessaron::Testing
