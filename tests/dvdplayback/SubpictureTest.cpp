#include "platform/dvdplayback/player/Subpicture.h"

#include <gtest/gtest.h>

namespace Tessaron
{

namespace
{

/// What a sub-picture covers of a black picture: white where it does, red where the button does.
class Covered
{
public:
    Covered(int width, int height)
        : m_width(width)
        , m_pixels(std::size_t(width) * std::size_t(height) * 4)
    {
        Subpicture subpicture;
        subpicture.area = {100, 200, 301, 401};
        subpicture.values.assign(std::size_t(201) * 201, 1);
        subpicture.colours.colour[1] = 0;
        subpicture.colours.cover[1] = 15;
        ButtonColours button;
        button.area = {200, 300, 240, 340};
        button.colours.colour[1] = 1;
        button.colours.cover[1] = 15;
        ColourTable table{};
        table[0] = 0x00eb8080; // white: luminance 235, and no colour
        table[1] = 0x0051f05a; // red
        layOver(subpicture, table, button, m_pixels.data(), std::size_t(width) * 4, width, height);
    }
    [[nodiscard]] bool isWhite(int x, int y) const { return blue(x, y) > 200 && red(x, y) > 200; }
    [[nodiscard]] bool isRed(int x, int y) const { return blue(x, y) < 50 && red(x, y) > 200; }
    [[nodiscard]] bool isBare(int x, int y) const { return blue(x, y) == 0 && red(x, y) == 0; }

private:
    [[nodiscard]] std::size_t place(int x, int y) const
    {
        return (std::size_t(y) * std::size_t(m_width) + std::size_t(x)) * 4;
    }
    [[nodiscard]] int blue(int x, int y) const { return m_pixels[place(x, y)]; }
    [[nodiscard]] int red(int x, int y) const { return m_pixels[place(x, y) + 2]; }

    const int m_width;
    std::vector<std::uint8_t> m_pixels;
};

TEST(SubpictureTest, layOver_coversItsArea_sampleBySample)
{
    const Covered covered(720, 480);
    EXPECT_TRUE(covered.isBare(99, 200));
    EXPECT_TRUE(covered.isBare(100, 199));
    EXPECT_TRUE(covered.isWhite(100, 200));
    EXPECT_TRUE(covered.isWhite(300, 400));
    EXPECT_TRUE(covered.isBare(301, 400));
    EXPECT_TRUE(covered.isBare(300, 401));
    EXPECT_TRUE(covered.isWhite(199, 300));
    EXPECT_TRUE(covered.isRed(200, 300));
    EXPECT_TRUE(covered.isRed(239, 339));
    EXPECT_TRUE(covered.isWhite(240, 339));
}

TEST(SubpictureTest, layOver_coversTheSamePartOfSmallerPictures)
{
    const Covered covered(352, 240);
    EXPECT_TRUE(covered.isBare(48, 100)) << "48 of 352 are 98 of 720";
    EXPECT_TRUE(covered.isWhite(49, 100)) << "49 are 100";
    EXPECT_TRUE(covered.isBare(49, 99));
    EXPECT_TRUE(covered.isWhite(147, 200));
    EXPECT_TRUE(covered.isBare(148, 200)) << "148 are 302";
    EXPECT_TRUE(covered.isBare(147, 201));
    EXPECT_TRUE(covered.isWhite(97, 150));
    EXPECT_TRUE(covered.isRed(98, 150));
    EXPECT_TRUE(covered.isRed(117, 169));
    EXPECT_TRUE(covered.isWhite(118, 169));
}

TEST(SubpictureTest, layOver_staysWithinAPicture)
{
    for (const int lines : {480, 576, 240, 288}) {
        for (const int samples : {720, 704, 352, 16}) {
            Subpicture subpicture;
            subpicture.area = {600, 400, 900, 700};
            subpicture.values.assign(std::size_t(300) * 300, 1);
            subpicture.colours.cover[1] = 15;
            std::vector<std::uint8_t> pixels(std::size_t(samples) * std::size_t(lines) * 4, 7);
            ColourTable table{};
            layOver(subpicture, table, std::nullopt, pixels.data(), std::size_t(samples) * 4, samples, lines);
            EXPECT_EQ(pixels[pixels.size() - 2], 0) << samples << 'x' << lines;
            EXPECT_EQ(pixels.front(), 7) << samples << 'x' << lines;
        }
    }
}

} // namespace

} // namespace Tessaron
