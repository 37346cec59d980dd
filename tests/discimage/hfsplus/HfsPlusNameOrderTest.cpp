#include "platform/discimage/hfsplus/HfsPlusNameOrder.h"

#include "platform/discrecording/names/HfsPlusCaseFolding.h"
#include "platform/foundation/ByteOrder.h"

#include <gtest/gtest.h>
#include <random>

namespace Tessaron::Testing
{

namespace
{

std::vector<std::uint8_t> stored(std::u16string_view name)
{
    std::vector<std::uint8_t> bytes(2 * name.size());
    for (std::size_t index = 0; index < name.size(); ++index)
        storeBigEndian<std::uint16_t>(&bytes[2 * index], name[index]);
    return bytes;
}

int compare(std::u16string_view one, std::u16string_view other)
{
    return compareHfsPlusNames(stored(one), stored(other));
}

} // namespace

TEST(HfsPlusNameOrder, letters_areTheSameInBothCases)
{
    EXPECT_EQ(compare(u"ReadMe", u"README"), 0);
    EXPECT_EQ(compare(u"Æther Σ Ж Ⅷ", u"æther σ ж ⅷ"), 0);
    EXPECT_NE(compare(u"ß", u"ẞ"), 0);
    EXPECT_LT(compare(u"a", u"B"), 0);
    EXPECT_LT(compare(u"_", u"Z"), 0) << "small letters count, which come behind";
}

TEST(HfsPlusNameOrder, shorterName_comesFirst_andIgnoredCharactersDoNotCount)
{
    EXPECT_LT(compare(u"ab", u"abc"), 0);
    EXPECT_LT(compare(u"", u"a"), 0);
    EXPECT_EQ(compare(u"a\u200Db\uFEFF", u"ab"), 0);
    EXPECT_EQ(compare(u"\u200D", u""), 0);
    EXPECT_GT(compare(std::u16string_view(u"\0", 1), u"\uFFFD"), 0) << "NUL comes last";
}

TEST(HfsPlusNameOrder, orderOfCaseSensitiveVolumes_isThatOfTheUnits)
{
    EXPECT_LT(compareHfsxNames(stored(u"B"), stored(u"a")), 0);
    EXPECT_LT(compareHfsxNames(stored(u"a"), stored(u"ab")), 0);
    EXPECT_GT(compareHfsxNames(stored(u"\u0100"), stored(u"\u00FF")), 0);
    EXPECT_EQ(compareHfsxNames(stored(u"é"), stored(u"é")), 0);
}

TEST(HfsPlusNameOrder, facts_agreeWithTheTableOfTheWriter_onEveryUnit)
{
    for (std::uint32_t unit = 0; unit <= 0xFFFF; ++unit) {
        const std::u16string name{u'x', static_cast<char16_t>(unit)};
        ASSERT_EQ(compare(name, hfsPlusFoldedName(name)), unit == 0 ? compare(name, u"x\uFFFF") : 0) << unit;
    }
    std::mt19937 random(4711);
    for (int round = 0; round < 20'000; ++round) {
        std::u16string names[2];
        for (std::u16string &name : names) {
            for (int length = int(random() % 4); length >= 0; --length)
                name += static_cast<char16_t>(random() % 0x2200);
        }
        const int order = hfsPlusFoldedName(names[0]).compare(hfsPlusFoldedName(names[1]));
        const int expected = order == 0 ? 0 : order < 0 ? -1 : 1;
        ASSERT_EQ(compare(names[0], names[1]), expected) << round;
    }
}

} // namespace Tessaron::Testing
