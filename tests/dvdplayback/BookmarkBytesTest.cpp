#include "platform/dvdplayback/DVDBookmarkBytes.h"

#include <gtest/gtest.h>

namespace Tessaron
{

namespace
{

const QByteArray disc("\1\2\3\4\5\6\7\0", 8);

PlayerPlace somePlace()
{
    return {2, 3, 1, 4, 0x12345678, 4321, 61'500, 3};
}

TEST(BookmarkBytes, placeOfBookmark_isThePlaceThatWasSet)
{
    const QByteArray bytes = bookmarkBytes(disc, somePlace());
    EXPECT_EQ(std::size_t(bytes.size()), bookmarkSize);
    EXPECT_EQ(placeOfBookmark(bytes, disc), somePlace());
}

TEST(BookmarkBytes, placeOfBookmark_isAbsent_forAnotherDisc)
{
    const QByteArray other("\1\2\3\4\5\6\7\1", 8);
    EXPECT_FALSE(placeOfBookmark(bookmarkBytes(other, somePlace()), disc));
}

TEST(BookmarkBytes, placeOfBookmark_isAbsent_whenAnyBitIsFlipped)
{
    const QByteArray sound = bookmarkBytes(disc, somePlace());
    for (int bit = 0; bit < 8 * int(sound.size()); ++bit) {
        QByteArray flipped = sound;
        flipped[bit / 8] = char(flipped[bit / 8] ^ (1 << bit % 8));
        EXPECT_FALSE(placeOfBookmark(flipped, disc)) << bit;
    }
}

TEST(BookmarkBytes, placeOfBookmark_isAbsent_forAnotherLength)
{
    const QByteArray sound = bookmarkBytes(disc, somePlace());
    for (qsizetype length = 0; length < sound.size(); ++length)
        EXPECT_FALSE(placeOfBookmark(sound.first(length), disc)) << length;
    EXPECT_FALSE(placeOfBookmark(sound + '\0', disc));
}

} // namespace

} // namespace Tessaron
