#include "platform/disctracks/vant/Crc32.h"

#include <gtest/gtest.h>

using namespace Tessaron;

TEST(Crc32, crc32_givesTheCheckValue_forTheNineDigits)
{
    EXPECT_EQ(crc32(0, "123456789", 9), 0xCBF43926u); // the check value that catalogues of CRCs give
}

TEST(Crc32, crc32_isZero_forNoBytes)
{
    EXPECT_EQ(crc32(0, nullptr, 0), 0u);
}

TEST(Crc32, crc32_isTheSame_whenComputedInPieces)
{
    EXPECT_EQ(crc32(crc32(0, "1234", 4), "56789", 5), 0xCBF43926u);
}
