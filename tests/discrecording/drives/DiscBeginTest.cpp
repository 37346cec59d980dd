#include "platform/discrecording/drives/DiscBegin.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <string_view>

namespace Tessaron::Testing
{

namespace
{

constexpr std::size_t blockSize = 2048;

/// A begin of a disc: descriptors of these identifiers and types from block 16 on.
struct Descriptor {
    std::string_view identifier;
    std::uint8_t type = 1;
};

std::vector<std::uint8_t> discBegin(const std::vector<Descriptor> &descriptors, std::uint8_t fill)
{
    std::vector<std::uint8_t> disc(blocksOfDiscBegin * blockSize, fill);
    std::size_t at = 16 * blockSize;
    for (const Descriptor &descriptor : descriptors) {
        disc[at] = descriptor.type;
        std::memcpy(&disc[at + 1], descriptor.identifier.data(), descriptor.identifier.size());
        at += blockSize;
    }
    return disc;
}

bool isBlock(const std::vector<std::uint8_t> &disc, std::size_t block, const std::vector<std::uint8_t> &other)
{
    return std::memcmp(&disc[block * blockSize], &other[block * blockSize], blockSize) == 0;
}

bool isZero(const std::vector<std::uint8_t> &disc, std::size_t block)
{
    const auto begin = disc.begin() + std::ptrdiff_t(block * blockSize);
    return std::all_of(begin, begin + blockSize, [](std::uint8_t byte) { return byte == 0; });
}

} // namespace

TEST(DiscBegin, grown_hasTheNewDescriptors_andWhatIsNoDescriptorStays)
{
    const auto now =
        discBegin({{"CD001", 1}, {"CD001", 2}, {"CD001", 255}, {"BEA01", 0}, {"NSR02", 0}, {"TEA01", 0}}, 'o');
    const auto added = discBegin({{"CD001", 1}, {"CD001", 255}}, 'n');
    const auto grown = grownDiscBegin(now, added);
    ASSERT_EQ(grown.size(), now.size());
    for (std::size_t block = 0; block < 18; ++block)
        EXPECT_TRUE(isBlock(grown, block, added)) << block;
    for (std::size_t block = 18; block < 22; ++block)
        EXPECT_TRUE(isZero(grown, block)) << block; // the old end, and what says that there is UDF
    for (std::size_t block = 22; block < blocksOfDiscBegin; ++block)
        EXPECT_TRUE(isBlock(grown, block, now)) << block;
}

TEST(DiscBegin, moreDescriptorsThanBefore_takeTheirPlace)
{
    const auto now = discBegin({{"CD001", 1}, {"CD001", 255}}, 'o');
    const auto added = discBegin({{"CD001", 1}, {"CD001", 2}, {"CD001", 255}}, 'n');
    const auto grown = grownDiscBegin(now, added);
    for (std::size_t block = 0; block < 19; ++block)
        EXPECT_TRUE(isBlock(grown, block, added)) << block;
    EXPECT_TRUE(isBlock(grown, 19, now));
}

TEST(DiscBegin, noWholeSet_isNoBegin)
{
    const auto now = discBegin({{"CD001", 1}, {"CD001", 255}}, 'o');
    EXPECT_TRUE(grownDiscBegin(now, discBegin({}, 'n')).empty());
    EXPECT_TRUE(grownDiscBegin(now, discBegin({{"CD001", 1}, {"CD001", 2}}, 'n')).empty());
    EXPECT_TRUE(grownDiscBegin(now, discBegin(std::vector<Descriptor>(16, {"CD001", 1}), 'n')).empty());
}

} // namespace Tessaron::Testing
