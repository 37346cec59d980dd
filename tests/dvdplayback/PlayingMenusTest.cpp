#include "platform/dvdplayback/DVDPlayback.h"
#include "tests/dvdplayback/PlayingFixture.h"

namespace Tessaron::Testing
{

namespace
{

TEST_F(Playing, play_beginsWithTheTitleMenu_whichStands)
{
    open(disc());
    EXPECT_EQ(state(), kDVDStateStopped);
    ASSERT_EQ(DVDPlay(), noErr);
    EXPECT_TRUE(waitForColour(titleMenu));
    EXPECT_TRUE(waitForState(kDVDStatePlayingStill));
    EXPECT_TRUE(isOnMenu());
    EXPECT_EQ(chapter(), std::pair(0, 0));
    bool isPlaying = false;
    EXPECT_EQ(DVDIsPlaying(&isPlaying), noErr);
    EXPECT_TRUE(isPlaying);
}

TEST_F(Playing, selection_isDrawn_andMovesWithTheKeys)
{
    constexpr QRgb yellow = 0xffff00;
    const std::array edges = {112, 212, 312}; // upper edges of the buttons
    open(disc());
    ASSERT_EQ(DVDPlay(), noErr);
    ASSERT_TRUE(waitForState(kDVDStatePlayingStill));
    for (const int selected : {0, 1, 2, 0}) {
        for (int button = 0; button < int(edges.size()); ++button)
            EXPECT_TRUE(waitUntil([&] {
                return isSeen(button == selected ? yellow : titleMenu, 300, edges[std::size_t(button)]);
            })) << selected
                << button << ' ' << std::hex << m_picture.pixel(300, edges[std::size_t(button)]);
        EXPECT_EQ(DVDDoUserNavigation(2), noErr);
    }
    for (const auto &[navigation, selected] : {std::pair(1, 0), std::pair(3, 2), std::pair(3, 2), std::pair(4, 0)}) {
        EXPECT_EQ(DVDDoUserNavigation(std::uint32_t(navigation)), noErr);
        const int edge = edges[std::size_t(selected)];
        EXPECT_TRUE(waitUntil([&, edge] { return isSeen(yellow, 300, edge); })) << navigation;
    }
}

TEST_F(Playing, enter_activatesTheSelectedButton)
{
    open(disc());
    ASSERT_EQ(DVDPlay(), noErr);
    ASSERT_TRUE(waitForState(kDVDStatePlayingStill));
    EXPECT_EQ(DVDDoUserNavigation(2), noErr);
    EXPECT_EQ(DVDDoUserNavigation(2), noErr);
    EXPECT_EQ(DVDDoUserNavigation(5), noErr);
    EXPECT_TRUE(waitForColour(chapters[2]));
    EXPECT_TRUE(waitUntil([] { return chapter() == std::pair(1, 3); }));
    EXPECT_FALSE(isOnMenu());
    EXPECT_EQ(state(), kDVDStatePlaying);
    ASSERT_TRUE(waitUntil([&] { return !events(kDVDEventPTT).empty(); }));
    ASSERT_EQ(events(kDVDEventTitle).size(), 1U);
    EXPECT_EQ(events(kDVDEventTitle)[0].value1, 1U);
    EXPECT_EQ(events(kDVDEventPTT)[0].value1, 3U);
}

TEST_F(Playing, mouse_selectsAndActivates)
{
    open(disc());
    ASSERT_EQ(DVDPlay(), noErr);
    ASSERT_TRUE(waitForState(kDVDStatePlayingStill));
    std::int32_t button = 0;
    const DVDPoint outside = {60, 60}, second = {240, 300}, third = {340, 300};
    EXPECT_EQ(DVDDoMenuMouseOver(&outside, &button), noErr);
    EXPECT_EQ(button, -1);
    EXPECT_EQ(DVDDoMenuMouseOver(&third, &button), noErr);
    EXPECT_EQ(button, 2);
    EXPECT_TRUE(waitUntil([&] { return isSeen(0xffff00, 300, 312); }));
    EXPECT_EQ(DVDDoMenuClick(&outside, &button), noErr);
    EXPECT_EQ(button, -1);
    EXPECT_EQ(DVDDoMenuClick(&second, &button), noErr);
    EXPECT_EQ(button, 1);
    EXPECT_TRUE(waitForColour(angles[0]));
    EXPECT_TRUE(waitUntil([] { return chapter() == std::pair(2, 1); }));
    EXPECT_EQ(DVDDoMenuMouseOver(&third, &button), noErr);
    EXPECT_EQ(button, -1) << "there are no buttons in a title";
}

TEST_F(Playing, points_areThoseOfTheVideoInItsWindow)
{
    open(disc());
    ASSERT_EQ(DVDPlay(), noErr);
    ASSERT_TRUE(waitForState(kDVDStatePlayingStill));
    const DVDRect bounds = {20, 0, 260, 360}; // half as large, below a title bar
    ASSERT_EQ(DVDSetVideoBounds(&bounds), noErr);
    std::int32_t button = -1;
    const DVDPoint second = {140, 150}, none = {10, 150};
    EXPECT_EQ(DVDDoMenuMouseOver(&second, &button), noErr);
    EXPECT_EQ(button, 1);
    EXPECT_EQ(DVDDoMenuMouseOver(&none, &button), noErr);
    EXPECT_EQ(button, -1);
}

TEST_F(Playing, menu_isCalled_andLeftAgain)
{
    openAndPlay(1, 2);
    EXPECT_TRUE(waitForColour(chapters[1]));
    EXPECT_EQ(DVDGoToMenu(1), noErr);
    EXPECT_TRUE(waitForColour(rootMenu1));
    EXPECT_TRUE(isOnMenu());
    EXPECT_EQ(DVDReturnToTitle(), noErr);
    EXPECT_TRUE(waitForColour(chapters[1]));
    EXPECT_FALSE(isOnMenu());
    EXPECT_EQ(DVDGoToMenu(0), noErr);
    EXPECT_TRUE(waitForColour(titleMenu));
    EXPECT_EQ(DVDSetChapter(2, 1), noErr);
    EXPECT_TRUE(waitForColour(angles[0]));
    EXPECT_EQ(DVDGoToMenu(1), noErr);
    EXPECT_TRUE(waitForColour(rootMenu2));
    EXPECT_EQ(DVDGoToMenu(kDVDMenuAngle), kDVDErrorUserActionNoOp) << "there is none";
}

TEST_F(Playing, movingMenu_answersItsButtons)
{
    openAndPlay(1, 1);
    EXPECT_TRUE(waitForColour(chapters[0]));
    EXPECT_EQ(DVDGoToMenu(1), noErr);
    EXPECT_TRUE(waitForColour(rootMenu1));
    EXPECT_TRUE(waitUntil([&] { return isSeen(0xffff00, 300, 112); }));
    EXPECT_EQ(DVDDoUserNavigation(2), noErr);
    EXPECT_TRUE(waitUntil([&] { return isSeen(0xffff00, 300, 212); }));
    EXPECT_EQ(DVDDoUserNavigation(5), noErr);
    EXPECT_TRUE(waitForColour(angles[0]));
}

TEST_F(Playing, firstTitle_endsInTheMenu)
{
    openAndPlay(1, 4);
    EXPECT_TRUE(waitForColour(chapters[3]));
    EXPECT_TRUE(waitForColour(titleMenu));
    EXPECT_TRUE(isOnMenu());
}

} // namespace

} // namespace Tessaron::Testing
