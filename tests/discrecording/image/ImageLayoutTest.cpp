#include "platform/discrecording/image/ImageLayout.h"

#include <gtest/gtest.h>

using Tessaron::blocksForBytes;
using Tessaron::ImageLayout;

TEST(ImageLayout, allocate_goesAroundFixedBlocks)
{
    ImageLayout layout;
    layout.reserve(0, 16, nullptr, 0);
    layout.reserve(16, 3, nullptr, 1);
    layout.reserve(256, 1, nullptr, 2);
    EXPECT_EQ(layout.allocate(200, nullptr, 3), 19u);
    EXPECT_EQ(layout.allocateExtent(37), 219u);
    EXPECT_EQ(layout.allocateExtent(1), 257u);
    EXPECT_EQ(layout.allocate(0, nullptr, 4), 258u);
}

TEST(ImageLayout, allocate_skipsAFixedBlockInTheMiddle_whenTheExtentIsLong)
{
    ImageLayout layout;
    layout.reserve(256, 1, nullptr, 0);
    EXPECT_EQ(layout.allocateExtent(1000), 257u);
}

TEST(ImageLayout, finish_roundsUpToUnits_withTailsAtTheVeryEnd)
{
    ImageLayout layout;
    layout.reserve(0, 16, nullptr, 0);
    layout.allocateExtent(16);
    layout.reserveTail(1, nullptr, 7);
    layout.reserveTail(2, nullptr, 8);
    layout.finish(0);
    EXPECT_EQ(layout.blockCount(), 48u);
    ASSERT_EQ(layout.regions().size(), 3u);
    EXPECT_EQ(layout.regions()[1].start, 46u);
    EXPECT_EQ(layout.regions()[1].tag, 8u);
    EXPECT_EQ(layout.regions()[2].start, 47u);
}

TEST(ImageLayout, finish_addsPaddingBeforeTheTail)
{
    ImageLayout layout;
    layout.allocateExtent(10);
    layout.finish(150);
    EXPECT_EQ(layout.blockCount(), 160u);
}

TEST(ImageLayout, finish_reachesBehindTheLastFixedBlock_whenThereIsLittleElse)
{
    ImageLayout layout;
    layout.reserve(256, 1, nullptr, 0);
    layout.allocateExtent(1);
    layout.finish(0);
    EXPECT_EQ(layout.blockCount(), 272u);
}

TEST(ImageLayout, blocksForBytes_countsTheLastPart)
{
    EXPECT_EQ(blocksForBytes(0), 0u);
    EXPECT_EQ(blocksForBytes(1), 1u);
    EXPECT_EQ(blocksForBytes(2048), 1u);
    EXPECT_EQ(blocksForBytes(2049), 2u);
    EXPECT_EQ(blocksForBytes(UINT64_MAX), (UINT64_MAX / 2048) + 1);
}
