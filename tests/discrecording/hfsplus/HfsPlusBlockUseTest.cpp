#include "platform/discrecording/hfsplus/HfsPlusBlockUse.h"

#include "platform/discrecording/hfsplus/HfsPlusForkData.h"
#include "platform/discrecording/hfsplus/HfsWrapper.h"
#include "platform/foundation/ByteOrder.h"

#include <gtest/gtest.h>

namespace Tessaron::Testing
{

namespace
{

constexpr std::uint64_t start = hfsPlusVolumeStart;

std::vector<std::pair<std::uint32_t, std::uint32_t>> foreignExtents(const HfsPlusBlockUse &use)
{
    std::vector<std::pair<std::uint32_t, std::uint32_t>> result;
    if (use.isEmpty())
        return result;
    BTreePosition position = use.first();
    do {
        std::vector<std::uint8_t> record(use.recordSize(position));
        use.storeRecord(position, record.data());
        for (std::size_t at = 12; at < record.size(); at += 8)
            result.emplace_back(loadBigEndian<std::uint32_t>(&record[at]),
                                loadBigEndian<std::uint32_t>(&record[at + 4]));
    } while (use.advance(&position));
    while (!result.empty() && result.back().second == 0)
        result.pop_back();
    return result;
}

} // namespace

TEST(HfsPlusBlockUse, foreignRuns_areJoinedAndCutToTheVolume)
{
    HfsPlusBlockUse use;
    use.set(100,
            {{50 + start, 5}, {0, 12 + start}, {11 + start, 4}, {55 + start, 1}, {52 + start, 2}, {90 + start, 500}},
            {});
    const std::vector<std::pair<std::uint32_t, std::uint32_t>> expected = {{1, 14}, {50, 6}, {90, 9}};
    EXPECT_EQ(foreignExtents(use), expected);
}

TEST(HfsPlusBlockUse, eighthRun_isTheLastOfItsRecord)
{
    std::vector<BlockRun> runs;
    for (std::uint64_t run = 0; run < 9; ++run)
        runs.push_back({start + 10 * (run + 1), run + 1});
    HfsPlusBlockUse use;
    use.set(1000, runs, {});
    EXPECT_EQ(foreignExtents(use).size(), 9u);
    std::vector<std::uint8_t> key(12);
    use.storeKey({0, 1}, key.data());
    EXPECT_EQ(loadBigEndian<std::uint32_t>(&key[4]), 5u) << "the file of bad blocks";
    EXPECT_EQ(loadBigEndian<std::uint32_t>(&key[8]), 36u) << "blocks in the first record";
}

TEST(HfsPlusBlockUse, bitmap_hasABitForEachUsedBlock_inPieces)
{
    constexpr std::uint64_t blocks = std::uint64_t(3) * 16384 + 21;
    HfsPlusBlockUse use;
    use.set(blocks, {}, {{start + 16380, 10}, {start + 40'000, 1}, {start + blocks - 5, 300}});
    EXPECT_EQ(HfsPlusBlockUse::bitmapBlocks(blocks), 4u);
    EXPECT_EQ(use.unusedBlocks(), 15u) << "the last block is the header's";
    EXPECT_EQ(use.firstUnusedBlock(), 16380u);
    for (std::uint32_t piece = 0; piece < 4; ++piece) {
        std::vector<std::uint8_t> bits(2048);
        use.fillBitmap(piece, bits);
        for (std::uint64_t bit = 0; bit < 16384; ++bit) {
            const std::uint64_t block = piece * std::uint64_t{16384} + bit;
            const bool isUnused = (block >= 16380 && block < 16390) || block == 40'000
                || (block >= blocks - 5 && block < blocks - 1) || block >= blocks;
            ASSERT_EQ((bits[bit / 8] & (0x80u >> (bit % 8))) == 0, isUnused) << block;
        }
    }
}

TEST(HfsWrapper, unit_letsAnyVolumeBeCounted)
{
    EXPECT_EQ(hfsWrapperUnit(65534), 1u);
    EXPECT_EQ(hfsWrapperUnit(65535), 2u);
    EXPECT_EQ(hfsWrapperUnit(UINT32_MAX), 131072u);
}

} // namespace Tessaron::Testing
