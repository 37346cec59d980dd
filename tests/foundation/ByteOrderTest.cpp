#include "platform/foundation/ByteOrder.h"

#include <array>
#include <gtest/gtest.h>

using namespace Tessaron;

TEST(ByteOrder, store_writesBytesInTheOrderNamed)
{
    std::array<std::uint8_t, 8> bytes{};
    storeLittleEndian<std::uint32_t>(bytes.data(), 0x01020304);
    storeBigEndian<std::uint32_t>(bytes.data() + 4, 0x01020304);
    EXPECT_EQ(bytes, (std::array<std::uint8_t, 8>{4, 3, 2, 1, 1, 2, 3, 4}));
}

TEST(ByteOrder, load_readsBackWhatStoreWrote_atAnUnalignedAddress)
{
    std::array<std::uint8_t, 9> bytes{};
    storeLittleEndian<std::uint64_t>(bytes.data() + 1, 0x8899AABBCCDDEEFF);
    EXPECT_EQ(loadLittleEndian<std::uint64_t>(bytes.data() + 1), 0x8899AABBCCDDEEFF);
    EXPECT_EQ(loadBigEndian<std::uint64_t>(bytes.data() + 1), 0xFFEEDDCCBBAA9988);
    EXPECT_EQ(loadBigEndian<std::uint16_t>(bytes.data() + 1), 0xFFEE);
    EXPECT_EQ(loadBigEndian<std::uint8_t>(bytes.data() + 1), 0xFF);
}
