#include "platform/discrecording/names/HfsPlusNameRules.h"
#include "platform/discrecording/names/JolietNameRules.h"
#include "platform/discrecording/names/UdfNameRules.h"
#include "platform/discrecording/names/Utf8Names.h"

#include <QString>

#include <gtest/gtest.h>

using namespace Tessaron;

TEST(Utf8Names, nameCharacterAt_agreesWithQt_onEveryCodePoint)
{
    for (char32_t codePoint = 1; codePoint <= 0x10FFFF; ++codePoint) {
        if (codePoint >= 0xD800 && codePoint <= 0xDFFF)
            continue;
        const char32_t text[] = {U'x', codePoint}; // Qt would take U+FEFF at the start for a byte-order mark
        const QByteArray bytes = QString::fromUcs4(text, 2).toUtf8();
        const NameCharacter character = nameCharacterAt(std::string_view(bytes.data(), std::size_t(bytes.size())), 1);
        ASSERT_EQ(character.byteCount, std::uint32_t(bytes.size() - 1)) << std::uint32_t(codePoint);
        ASSERT_EQ(character.codePoint, codePoint);
    }
}

TEST(Utf8Names, nameCharacterAt_takesOneByte_whereItIsNotUtf8)
{
    for (const std::string_view bytes : {"\x80", "\xC0\xAF", "\xE0\x80\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xFF",
                                         "\xC3", "\xE2\x82", "\xF0\x9F\x98"}) {
        EXPECT_EQ(nameCharacterAt(bytes, 0).byteCount, 1u) << bytes;
        EXPECT_EQ(nameCharacterAt(bytes, 0).codePoint, char32_t(0xFFFD)) << bytes;
    }
}

TEST(JolietNames, jolietName_replacesWhatJolietRefuses)
{
    EXPECT_EQ(jolietName("a*b/c:d;e?f\\g\nh", false), u"a_b_c_d_e_f_g_h");
    EXPECT_EQ(jolietName("Stra\xC3\x9F"
                         "e \xE2\x82\xAC.txt",
                         false),
              u"Straße €.txt");
    EXPECT_EQ(jolietName("bad\xFF\xFE.txt", false), u"bad__.txt");
    EXPECT_EQ(jolietName("\xF0\x9F\x98\x80.txt", false), u"\xD83D\xDE00.txt");
    EXPECT_EQ(jolietName("", false), u"_");
    EXPECT_EQ(jolietName(".", true), u"_");
    EXPECT_EQ(jolietName("..", true), u"__");
    EXPECT_EQ(jolietName(".hidden", false), u".hidden");
}

TEST(JolietNames, jolietName_keepsTheExtension_whenItCuts)
{
    const std::u16string cut = jolietName(std::string(200, 'a') + ".flac", false);
    EXPECT_EQ(cut, std::u16string(98, u'a') + u".flac");
    EXPECT_EQ(jolietName(std::string(200, 'a') + ".flac", true), std::u16string(103, u'a'));
    EXPECT_EQ(jolietName(std::string(103, 'a'), false), std::u16string(103, u'a'));
    EXPECT_EQ(jolietName("a." + std::string(200, 'b'), false), u"a." + std::u16string(101, u'b'));
}

TEST(JolietNames, jolietName_neverCutsASurrogatePair)
{
    std::string raw;
    for (int count = 0; count < 80; ++count)
        raw += "\xF0\x9F\x98\x80";
    const std::u16string name = jolietName(raw, false);
    EXPECT_EQ(name.size(), 102u);
    EXPECT_EQ(name.back(), char16_t(0xDE00));
    EXPECT_EQ(jolietName("x" + raw, false).size(), 103u);
}

TEST(JolietNames, jolietVolumeName_hasSixteenUnits)
{
    EXPECT_EQ(jolietVolumeName("My holiday: 2024 and more"), u"My holiday_ 2024");
    EXPECT_EQ(jolietVolumeName(""), u"");
}

TEST(UdfNames, udfName_allowsTwiceAsMuch_belowU0100)
{
    EXPECT_EQ(udfName(std::string(255, 'a'), true).size(), 254u);
    std::string euros;
    for (int count = 0; count < 85; ++count)
        euros += "\xE2\x82\xAC";
    EXPECT_EQ(udfName(euros, false).size(), 85u);
    EXPECT_EQ(udfName(euros + std::string(100, 'a') + ".txt", false).size(), 127u);
    EXPECT_EQ(udfName("a/b\xFF", false), u"a_b_");
    EXPECT_EQ(udfName("what? *me*", false), u"what? *me*");
}

TEST(HfsPlusNames, hfsPlusName_decomposesAndExchangesTheSeparator)
{
    EXPECT_EQ(hfsPlusName("\xC3\xA9t\xC3\xA9", false), u"e\x0301te\x0301");
    EXPECT_EQ(hfsPlusName("a:b/c", false), u"a/b_c");
    EXPECT_EQ(hfsPlusName("", true), u"_");
    EXPECT_EQ(hfsPlusNameKey(u"ReadMe"), hfsPlusNameKey(u"README"));
}
