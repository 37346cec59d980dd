#include "platform/dvdplayback/DVDBookmarkBytes.h"
#include "platform/dvdplayback/DVDPlayback.h"
#include "platform/dvdplayback/PlayerProtocol.h"
#include "tests/dvd/ControllerFixture.h"

#include <QAction>

#include <TessaronClassesUI/DVDBookmark.h>
#include <optional>
#include <stdexcept>
#include <utility>

namespace Tessaron::Testing
{

namespace
{

using Bookmarks = ControllerTest;

} // namespace

TEST_F(Bookmarks, areVisitedInTurn)
{
    ASSERT_TRUE(openAndPlay(1, 1));
    for (const std::uint16_t one : {4, 2, 3}) {
        ASSERT_EQ(DVDSetChapter(1, one), noErr);
        ASSERT_TRUE(waitUntil([one] { return chapter() == std::pair<int, int>(1, one) && elapsed() > 0; }));
        controller->onNewBookmark();
    }
    ASSERT_EQ(controller->bookmarks().size(), 3U);
    for (const int expected : {4, 2, 3, 4}) {
        controller->onNextBookmark();
        ASSERT_TRUE(waitUntil([expected] { return chapter() == std::pair<int, int>(1, expected); })) << expected;
    }
}

/// That it does so within a video unit is shown with the session's own tests.
TEST_F(Bookmarks, leadBackToTheirPlaces_fromAnotherTitle)
{
    ASSERT_TRUE(openAndPlay(1, 1));
    ASSERT_TRUE(waitUntil([] { return elapsed() >= 5'000; }));
    controller->onNewBookmark();
    DVDDescription description;
    ASSERT_EQ(DVDCopyDescription(&description), noErr);
    const std::optional<PlayerPlace> place =
        placeOfBookmark(controller->bookmarks().front()->data(), description.identity);
    ASSERT_TRUE(place);
    EXPECT_GE(place->chapter, 2);
    ASSERT_EQ(DVDSetChapter(2, 1), noErr);
    ASSERT_TRUE(waitUntil([] { return chapter().first == 2; }));
    controller->onNextBookmark();
    int firstChapter = 0;
    ASSERT_TRUE(waitUntil([&] {
        const auto [title, chapterOfTitle] = chapter();
        firstChapter = title == 1 ? chapterOfTitle : 0;
        return firstChapter != 0;
    }));
    EXPECT_GE(firstChapter, int(place->chapter)) << "not by way of the title's begin";
    EXPECT_TRUE(waitUntil([&] { return elapsed() >= place->elapsed; }));
}

TEST_F(Bookmarks, cursor_outlivesMedia)
{
    ASSERT_TRUE(openAndPlay(1, 1));
    controller->onNewBookmark();
    controller->onNewBookmark();
    controller->onNewBookmark();
    controller->onNextBookmark();
    controller->onNextBookmark();
    controller->closeMedia();
    EXPECT_TRUE(controller->bookmarks().empty());
    controller->onNextBookmark();
    ASSERT_TRUE(openAndPlay(1, 1));
    controller->onNewBookmark();
    EXPECT_THROW(controller->onNextBookmark(), std::out_of_range) << "the third one's turn, of one";
    EXPECT_THROW(controller->onNextBookmark(), std::out_of_range) << "and so it stays";
    menuItem(text("onNextBookmark"))->trigger();
    EXPECT_TRUE(lines().last().startsWith(text("*** What an event asked for was not done")))
        << "the event loop is spared";
    controller->onNewBookmark();
    controller->onNewBookmark();
    controller->onNextBookmark();
    controller->onNextBookmark();
}

} // namespace Tessaron::Testing
