#include "platform/discrecording/names/HfsPlusCaseFolding.h"

#include "platform/discrecording/hfsplus/HfsPlusDates.h"
#include "platform/discrecording/names/HfsPlusDecomposition.h"
#include "platform/discrecording/names/HfsPlusNameRules.h"
#include "tests/discrecording/hfsplus/HfsPlusImageReader.h"

#include <gtest/gtest.h>

namespace Tessaron::Testing
{

TEST(HfsPlusCaseFolding, table_followsFromTheUnicodeFacts_onEveryUnit)
{
    for (std::uint32_t unit = 0; unit <= 0xFFFF; ++unit) {
        const std::u16string name(1, static_cast<char16_t>(unit));
        ASSERT_EQ(hfsPlusFoldedName(name), HfsPlusImageReader::folded(name)) << std::hex << unit;
    }
}

TEST(HfsPlusCaseFolding, foldedUnit_isAsTheFormatFixedIt)
{
    EXPECT_EQ(hfsPlusFoldedUnit(u'A'), u'a');
    EXPECT_EQ(hfsPlusFoldedUnit(u'Æ'), u'æ');
    EXPECT_EQ(hfsPlusFoldedUnit(u'Σ'), u'σ');
    EXPECT_EQ(hfsPlusFoldedUnit(u'ς'), u'ς');
    EXPECT_EQ(hfsPlusFoldedUnit(u'Ж'), u'ж');
    EXPECT_EQ(hfsPlusFoldedUnit(0x10A0), 0x10D0) << "not the small letters of later times";
    EXPECT_EQ(hfsPlusFoldedUnit(0x2160), 0x2170);
    EXPECT_EQ(hfsPlusFoldedUnit(0x24B6), 0x24B6) << "circled letters have no case here";
    EXPECT_EQ(hfsPlusFoldedUnit(0x200D), 0) << "ignored";
    EXPECT_EQ(hfsPlusFoldedUnit(0xFEFF), 0);
    EXPECT_EQ(hfsPlusFoldedUnit(0), 0xFFFF) << "last";
    EXPECT_EQ(hfsPlusFoldedUnit(u'ß'), u'ß');
}

TEST(HfsPlusDecomposition, text_isDecomposedOutsideOfTheExceptedRanges)
{
    EXPECT_EQ(hfsPlusDecomposed(u"plain"), u"plain");
    EXPECT_EQ(hfsPlusDecomposed(u"é"), u"e\x0301");
    EXPECT_EQ(hfsPlusDecomposed(u"\x1E69"), u"s\x0323\x0307") << "twice, and in canonical order";
    EXPECT_EQ(hfsPlusDecomposed(u"한"), u"\x1112\x1161\x11AB");
    EXPECT_EQ(hfsPlusDecomposed(u"\x212B\x2260\x2126"), u"\x212B\x2260\x2126");
    EXPECT_EQ(hfsPlusDecomposed(u"\xF900"), u"\xF900");
    EXPECT_EQ(hfsPlusDecomposed(u"\xFB1D"), u"\x05D9\x05B4");
    EXPECT_EQ(hfsPlusDecomposed(u"\xD834\xDD5E"), u"\xD834\xDD5E") << "beyond the first plane";
    EXPECT_EQ(hfsPlusDecomposed(u"a\x0301\x0323\x212Bé"),
              u"a\x0323\x0301\x212B"
              u"e\x0301");
}

TEST(HfsPlusNames, nameOfNothingThatCounts_getsAnotherOne)
{
    EXPECT_EQ(hfsPlusName("\xE2\x80\x8D", false), u"_");
    EXPECT_EQ(hfsPlusName("\xEF\xBF\xBF", false), u"_") << "U+FFFF counts as NUL";
    EXPECT_EQ(hfsPlusName("a\xE2\x80\x8D", false), u"a\x200D");
}

TEST(HfsPlusDates, dates_countFrom1904_andAreClamped)
{
    EXPECT_EQ(hfsPlusDate({0, 0}), 2'082'844'800u);
    EXPECT_EQ(hfsPlusDate({-2'082'844'801, 0}), 0u);
    EXPECT_EQ(hfsPlusDate({2'212'122'495, 0}), 0xFFFFFFFFu);
    EXPECT_TRUE(fitsHfsPlusDate({2'212'122'495, 0}));
    EXPECT_FALSE(fitsHfsPlusDate({2'212'122'496, 0}));
    EXPECT_FALSE(fitsHfsPlusDate({-2'082'844'801, 0}));
    EXPECT_EQ(hfsPlusDate({2'212'122'496, 0}), 0xFFFFFFFFu);
}

} // namespace Tessaron::Testing
