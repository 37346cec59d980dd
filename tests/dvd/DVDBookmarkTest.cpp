#include "platform/dvdplayback/DVDPlayback.h"
#include "tests/dvd/LoggedLines.h"
#include "tests/dvdplayback/DiscFixture.h"

#include <QTest>

#include <TessaronClassesUI/DVDBookmark.h>

namespace Tessaron::Testing
{

namespace
{

constexpr int patience = 20'000;

class DVDBookmarkTest : public DiscTest
{
protected:
    DVDBookmarkTest() { EXPECT_EQ(DVDInitialize(), noErr); }
    ~DVDBookmarkTest() override { DVDDispose(); }

    static void open(const QByteArray &standard = "ntsc")
    {
        FSRef ref;
        ASSERT_EQ(FSPathMakeRef(disc(standard), &ref, nullptr), noErr);
        ASSERT_EQ(DVDOpenMediaFile(&ref), noErr);
    }
    /// Waits until a chapter plays.
    [[nodiscard]] static bool waitFor(std::uint16_t wantedTitle, std::uint16_t wantedChapter)
    {
        return QTest::qWaitFor(
            [&] {
                std::uint16_t title = 0, chapter = 0;
                return DVDGetChapter(&title, &chapter) == noErr && title == wantedTitle && chapter == wantedChapter;
            },
            patience);
    }
};

TEST_F(DVDBookmarkTest, gotoBookmark_playsFromThePlaceOn)
{
    open();
    ASSERT_EQ(DVDSetChapter(1, 3), noErr);
    ASSERT_TRUE(waitFor(1, 3));
    const std::shared_ptr<DVDBookmark> bookmark = DVDBookmark::init();
    EXPECT_GT(bookmark->size(), 0U);
    EXPECT_EQ(bookmark->size(), std::uint32_t(bookmark->data().size()));
    ASSERT_EQ(DVDSetChapter(2, 1), noErr);
    ASSERT_TRUE(waitFor(2, 1));
    const LoggedLines log;
    bookmark->gotoBookmark();
    EXPECT_TRUE(waitFor(1, 3));
    EXPECT_TRUE(log.lines().isEmpty()) << log.lines().join(u'\n').toStdString();
}

TEST_F(DVDBookmarkTest, init_logsWhatFails_andHasNoData)
{
    {
        const LoggedLines log;
        const std::shared_ptr<DVDBookmark> bookmark = DVDBookmark::init();
        ASSERT_TRUE(bookmark);
        EXPECT_EQ(bookmark->size(), 0U);
        EXPECT_EQ(log.lines(), QStringList{QStringLiteral("DVDGetBookmark returned -70015")});
    }
    // Stopped, there is media, but no place.
    open();
    const LoggedLines log;
    const std::shared_ptr<DVDBookmark> bookmark = DVDBookmark::init();
    EXPECT_EQ(bookmark->size(), 0U);
    bookmark->gotoBookmark();
    EXPECT_EQ(log.lines(),
              (QStringList{QStringLiteral("DVDGetBookmark returned -70011"),
                           QStringLiteral("DVDGotoBookmark returned -70016")}));
}

TEST_F(DVDBookmarkTest, gotoBookmark_ofAnotherDisc_isLogged)
{
    open();
    ASSERT_EQ(DVDSetChapter(1, 2), noErr);
    ASSERT_TRUE(waitFor(1, 2));
    const std::shared_ptr<DVDBookmark> bookmark = DVDBookmark::init();
    ASSERT_EQ(DVDCloseMediaFile(), noErr);
    open("pal");
    const LoggedLines log;
    bookmark->gotoBookmark();
    EXPECT_EQ(log.lines(), QStringList{QStringLiteral("DVDGotoBookmark returned -70016")});
}

} // namespace

} // namespace Tessaron::Testing
