#include "platform/discrecording/drives/BlockFifo.h"

#include <gtest/gtest.h>
#include <numeric>
#include <thread>
#include <vector>

namespace Tessaron
{

namespace
{

using Bytes = std::vector<std::uint8_t>;
constexpr std::chrono::milliseconds noPatience(0);
constexpr std::chrono::milliseconds patience(100);

Bytes numbered(std::size_t count)
{
    Bytes bytes(count);
    std::iota(bytes.begin(), bytes.end(), std::uint8_t(0));
    return bytes;
}

TEST(BlockFifo, take_givesTheBytesInTheirOrder_acrossTheEndOfTheRing)
{
    BlockFifo fifo(10);
    const Bytes bytes = numbered(17);
    ASSERT_EQ(fifo.put({bytes.data(), 8}, noPatience), 8u);
    Bytes out(6);
    ASSERT_TRUE(fifo.take(out));
    EXPECT_EQ(out, Bytes(bytes.begin(), bytes.begin() + 6));
    ASSERT_EQ(fifo.put({bytes.data() + 8, 9}, noPatience), 8u); // as much as there is room for
    ASSERT_TRUE(fifo.take(out));
    EXPECT_EQ(out, Bytes(bytes.begin() + 6, bytes.begin() + 12));
    EXPECT_EQ(fifo.filled(), 4u);
}

TEST(BlockFifo, put_takesNothing_whileItIsFull)
{
    BlockFifo fifo(4);
    const Bytes bytes = numbered(4);
    ASSERT_EQ(fifo.put(bytes, noPatience), 4u);
    EXPECT_EQ(fifo.put(bytes, noPatience), 0u);
}

TEST(BlockFifo, take_saysThatThereIsNoMore_onlyAfterTheEnd)
{
    BlockFifo fifo(8);
    const Bytes bytes = numbered(5);
    ASSERT_EQ(fifo.put(bytes, noPatience), 5u);
    fifo.end();
    Bytes out(3);
    EXPECT_TRUE(fifo.take(out));
    EXPECT_FALSE(fifo.take(out)); // two bytes are not a sector
    EXPECT_EQ(fifo.filled(), 2u);
}

TEST(BlockFifo, fail_endsBothSides_whateverLiesInIt)
{
    BlockFifo fifo(8);
    const Bytes bytes = numbered(8);
    ASSERT_EQ(fifo.put(bytes, noPatience), 8u);
    fifo.fail();
    Bytes out(2);
    EXPECT_FALSE(fifo.take(out));
    EXPECT_EQ(fifo.put(bytes, noPatience), 0u);
    EXPECT_TRUE(fifo.hasFailed());
}

TEST(BlockFifo, fail_wakesATakerThatWaits)
{
    BlockFifo fifo(8);
    bool isTaken = true;
    std::thread taker([&] {
        Bytes out(4);
        isTaken = fifo.take(out);
    });
    fifo.fail();
    taker.join();
    EXPECT_FALSE(isTaken);
}

TEST(BlockFifo, threads_passAllBytesOn_inOrder)
{
    constexpr std::size_t total = 300'000;
    constexpr std::size_t sector = 48;
    BlockFifo fifo(1'000);
    Bytes got;
    std::thread taker([&] {
        Bytes out(sector);
        while (fifo.take(out))
            got.insert(got.end(), out.begin(), out.end());
    });
    const Bytes bytes = numbered(total);
    for (std::span<const std::uint8_t> left(bytes); !left.empty();)
        left = left.subspan(fifo.put(left.first(std::min<std::size_t>(left.size(), 700)), patience));
    fifo.end();
    taker.join();
    EXPECT_EQ(got, bytes);
}

TEST(BlockFifo, restart_beginsAnew_afterAFailure)
{
    BlockFifo fifo(8);
    fifo.fail();
    fifo.restart();
    const Bytes bytes = numbered(4);
    ASSERT_EQ(fifo.put(bytes, noPatience), 4u);
    Bytes out(4);
    EXPECT_TRUE(fifo.take(out));
    EXPECT_EQ(out, bytes);
}

} // namespace

} // namespace Tessaron
