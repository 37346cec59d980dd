#include "platform/discrecording/udf/UdfFields.h"

#include "platform/discrecording/names/UdfNameRules.h"
#include "platform/discrecording/udf/UdfAllocation.h"
#include "platform/discrecording/udf/UdfCompressedText.h"
#include "platform/discrecording/udf/UdfLinkTarget.h"
#include "platform/discrecording/udf/UdfTag.h"

#include <array>
#include <gtest/gtest.h>
#include <string_view>

using namespace Tessaron;

namespace
{

std::span<const std::uint8_t> bytesOf(std::string_view text)
{
    return {reinterpret_cast<const std::uint8_t *>(text.data()), text.size()};
}

} // namespace

TEST(UdfTag, udfCrc_isThatOfTheStandard)
{
    EXPECT_EQ(udfCrc(bytesOf("\x70\x6A\x77")), 0x3299); // the example of ECMA-167 3/7.2.6
    EXPECT_EQ(udfCrc(bytesOf("123456789")), 0x31C3); // the usual check value of this polynomial begun with 0
    EXPECT_EQ(udfCrc({}), 0);
}

TEST(UdfTag, udfCrc_isTheSame_howeverManyBytesRemainBehindWholeSteps)
{
    std::string text = "abcdefgh";
    std::uint16_t expected[9] = {};
    for (std::size_t length = 0; length <= text.size(); ++length) {
        unsigned int crc = 0;
        for (std::size_t at = 0; at < length; ++at) {
            crc ^= static_cast<unsigned int>(text[at]) << 8;
            for (int bit = 0; bit < 8; ++bit)
                crc = ((crc << 1) ^ ((crc & 0x8000) != 0 ? 0x1021u : 0u)) & 0xFFFF;
        }
        expected[length] = static_cast<std::uint16_t>(crc);
        EXPECT_EQ(udfCrc(bytesOf(std::string_view(text).substr(0, length))), expected[length]) << length;
    }
}

TEST(UdfFields, storeUdfText_putsTheLengthLast_andCutsWholeCharacters)
{
    std::array<std::uint8_t, 8> field{};
    storeUdfText(field, u"ab");
    EXPECT_EQ(field, (std::array<std::uint8_t, 8>{8, 'a', 'b', 0, 0, 0, 0, 3}));
    field.fill(0);
    storeUdfText(field, u"abcdefgh");
    EXPECT_EQ(field, (std::array<std::uint8_t, 8>{8, 'a', 'b', 'c', 'd', 'e', 'f', 7}));
    field.fill(0);
    storeUdfText(field, u"\u20AC\u20AD\xD83D\xDE00");
    EXPECT_EQ(field, (std::array<std::uint8_t, 8>{16, 0x20, 0xAC, 0x20, 0xAD, 0, 0, 5}));
    field.fill(0);
    storeUdfText(field, u"");
    EXPECT_EQ(field, (std::array<std::uint8_t, 8>{}));
}

TEST(UdfCompressedText, text_isWhatWasRecorded)
{
    UdfCompressedText name;
    for (const std::u16string text : {u"plain", u"\u00FCber", u"\u65E5\u672C", u"\xD83D\xDE00"}) {
        name.assign(text);
        EXPECT_EQ(name.text(), text);
        UdfCompressedText copy;
        copy.assignRecorded(name.view());
        EXPECT_EQ(copy.text(), text);
    }
    EXPECT_TRUE(name.assignPlain("plain"));
    EXPECT_EQ(name.text(), u"plain");
    for (const std::string_view other : {"", ".", "..", "a/b", "\xC3\xBC"})
        EXPECT_FALSE(name.assignPlain(other)) << other;
    EXPECT_FALSE(name.assignPlain(std::string(255, 'x')));
}

TEST(UdfNames, udfVolumeName_isCutToWhatItsFieldHolds)
{
    EXPECT_EQ(udfVolumeName("a/b"), u"a/b");
    EXPECT_EQ(udfVolumeName(std::string(200, 'x')), std::u16string(126, u'x'));
    EXPECT_EQ(udfVolumeName("\xE2\x82\xAC" + std::string(200, 'x')), u"\u20AC" + std::u16string(62, u'x'));
    EXPECT_EQ(udfVolumeName(""), u"");
}

TEST(UdfAllocation, extentCount_isTheLeastThatHoldsAllDescriptors)
{
    const auto extents = [](std::uint64_t descriptors) {
        return UdfAllocation{0, descriptors * UdfAllocation::longestPart}.extentCount();
    };
    EXPECT_EQ(extents(0), 0u);
    EXPECT_EQ(extents(234), 0u);
    EXPECT_EQ(extents(235), 1u);
    EXPECT_EQ(extents(233 + 253), 1u);
    EXPECT_EQ(extents(233 + 254), 2u);
    EXPECT_EQ(extents(233 + 252 + 253), 2u);
    EXPECT_EQ(extents(233 + 252 + 254), 3u);
}

TEST(UdfLinkTarget, udfLinkTarget_makesOneComponentOfEachName)
{
    using namespace std::string_view_literals;
    EXPECT_EQ(udfLinkTarget("/a/../.").components,
              "\2\0\0\0\5\2\0\0\x08"
              "a\3\0\0\0\4\0\0\0"sv);
    EXPECT_FALSE(udfLinkTarget("/a/../.").isSimplified);
    EXPECT_TRUE(udfLinkTarget("//a").isSimplified);
    EXPECT_TRUE(udfLinkTarget("a/").isSimplified);
    EXPECT_TRUE(udfLinkTarget("\xFF").hasChangedNames);
    EXPECT_TRUE(udfLinkTarget(std::string(255, 'x')).hasChangedNames);
    EXPECT_FALSE(udfLinkTarget(std::string(254, 'x')).hasChangedNames);
}
