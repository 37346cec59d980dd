#include "platform/disctracks/BlockAddress.h"

#include <gtest/gtest.h>

using namespace Tessaron;

TEST(BlockAddress, atMSF_isZeroTwoSecondsFromTheStart)
{
    EXPECT_EQ(BlockAddress::atMSF({0, 2, 0}), BlockAddress(0));
    EXPECT_EQ(BlockAddress::atMSF({0, 0, 0}), BlockAddress(-150));
    EXPECT_EQ(BlockAddress::atMSF({1, 2, 3}), BlockAddress((1 * 60 + 2) * 75 + 3 - 150));
    EXPECT_EQ(BlockAddress::atMSF({89, 59, 74}), BlockAddress(404849));
}

TEST(BlockAddress, atMSF_isNegative_whenThePlaceLiesInTheLeadIn)
{
    EXPECT_EQ(BlockAddress::atMSF({90, 0, 0}), BlockAddress(-45150));
    EXPECT_EQ(BlockAddress::atMSF({99, 59, 74}), BlockAddress(-151));
}

TEST(BlockAddress, msf_leadsBack)
{
    for (std::int64_t number = -45150; number < 404850; number += 7)
        ASSERT_EQ(BlockAddress::atMSF(BlockAddress(number).msf()), BlockAddress(number)) << number;
}

TEST(BlockAddress, arithmetic_countsBlocks)
{
    const BlockAddress address(16);
    EXPECT_EQ(address + 4, BlockAddress(20));
    EXPECT_EQ(address - 20, BlockAddress(-4));
    EXPECT_EQ(BlockAddress(20) - address, 4);
    EXPECT_LT(address, BlockAddress(17));
    // 2^40 blocks: nothing is cut to 32 bits.
    EXPECT_EQ((address + (std::int64_t(1) << 40)).number(), (std::int64_t(1) << 40) + 16);
}

TEST(MSF, fromText_readsThreeNumbers)
{
    EXPECT_EQ(MSF::fromText("01:02:03"), (MSF{1, 2, 3}));
    EXPECT_EQ(MSF::fromText("123:5:7"), (MSF{123, 5, 7}));
    EXPECT_EQ(MSF::fromText("00:99:99"), (MSF{0, 99, 99}));
    EXPECT_FALSE(MSF::fromText("00:99:99")->isRegular());
    EXPECT_EQ(MSF::fromText("999999999:999999999:999999999")->totalFrames(), std::int64_t(999999999) * (4500 + 75 + 1));
}

TEST(MSF, fromText_hasNoValue_whenTheTextIsAnythingElse)
{
    for (const char *const text : {"", ":", "::", "1:2", "1:2:", ":2:3", "1:2:3:4", "1::2:3", " 1:2:3", "1:2:3 ",
                                   "-1:2:3", "+1:2:3", "a:b:c", "1.2.3", "1:2:3x", "9999999999:0:0"})
        EXPECT_FALSE(MSF::fromText(text)) << text;
}

TEST(MSF, text_hasTwoDigitsAtLeast)
{
    EXPECT_EQ(MSF::ofFrames(0).text(), QStringLiteral("00:00:00"));
    EXPECT_EQ(MSF::ofFrames(100).text(), QStringLiteral("00:01:25"));
    EXPECT_EQ(MSF::ofFrames(100 * 4500 + 59 * 75 + 74).text(), QStringLiteral("100:59:74"));
}
