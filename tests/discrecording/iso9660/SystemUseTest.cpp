#include "platform/discrecording/iso9660/SystemUse.h"

#include "platform/foundation/ByteOrder.h"

#include <gtest/gtest.h>

using namespace Tessaron;

namespace
{

void addEntries(SystemUse &use, std::size_t count, std::size_t size)
{
    for (std::size_t index = 0; index < count; ++index)
        use.add("NM", size)[0] = static_cast<std::uint8_t>(index);
}

} // namespace

TEST(SystemUse, divide_keepsAllInTheRecord_whenItFitsExactly)
{
    SystemUse use;
    addEntries(use, 4, 50);
    use.divide(200);
    EXPECT_EQ(use.inRecord().size(), 200u);
    EXPECT_TRUE(use.continuation().empty());
}

TEST(SystemUse, divide_leavesRoomForTheWayToTheContinuation_whenOneByteIsMissing)
{
    SystemUse use;
    addEntries(use, 4, 50);
    use.divide(199);
    EXPECT_EQ(use.inRecord().size(), std::size_t{3} * 50 + SystemUse::continuationEntrySize);
    EXPECT_EQ(use.continuation().size(), 50u);
    use.setContinuationPlace({1000, 12});
    const auto entry = use.inRecord().last(SystemUse::continuationEntrySize);
    EXPECT_EQ(entry[0], 'C');
    EXPECT_EQ(entry[1], 'E');
    EXPECT_EQ(entry[2], 28);
    EXPECT_EQ(loadLittleEndian<std::uint32_t>(&entry[4]), 1000u);
    EXPECT_EQ(loadBigEndian<std::uint32_t>(&entry[8]), 1000u);
    EXPECT_EQ(loadLittleEndian<std::uint32_t>(&entry[12]), 12u);
    EXPECT_EQ(loadLittleEndian<std::uint32_t>(&entry[20]), 50u);
}

TEST(SystemUse, divide_keepsTheContinuationInOneBlock_whenItJustFits)
{
    SystemUse use;
    addEntries(use, 8, 256 - 1);
    use.add("NM", 8);
    use.divide(28);
    EXPECT_EQ(use.inRecord().size(), 28u);
    EXPECT_EQ(use.continuation().size(), 8u * 255 + 8);
}

TEST(SystemUse, divide_chainsBlocks_whenTheContinuationIsLonger)
{
    SystemUse use;
    addEntries(use, 20, 255);
    use.divide(30);
    use.setContinuationPlace({500, 0});
    // Seven entries and the way on fit into a block.
    const auto area = use.continuation();
    ASSERT_EQ(area.size(), 2 * 2048u + 6 * 255);
    EXPECT_EQ(loadLittleEndian<std::uint32_t>(&use.inRecord()[20]), 7u * 255 + 28);
    const std::uint8_t *const first = &area[std::size_t{7} * 255];
    EXPECT_EQ(first[0], 'C');
    EXPECT_EQ(loadLittleEndian<std::uint32_t>(first + 4), 501u);
    EXPECT_EQ(loadLittleEndian<std::uint32_t>(first + 12), 0u);
    EXPECT_EQ(loadLittleEndian<std::uint32_t>(first + 20), 7u * 255 + 28);
    const std::uint8_t *const second = &area[2048 + 7 * 255];
    EXPECT_EQ(loadLittleEndian<std::uint32_t>(second + 4), 502u);
    EXPECT_EQ(loadLittleEndian<std::uint32_t>(second + 20), 6u * 255);
    EXPECT_EQ(area[4096 + 4], 14) << "the entries go on in their order";
}

TEST(SystemUse, clear_forgetsTheContinuation)
{
    SystemUse use;
    addEntries(use, 20, 255);
    use.divide(30);
    use.clear();
    use.divide(100);
    EXPECT_TRUE(use.inRecord().empty());
    EXPECT_TRUE(use.continuation().empty());
}
