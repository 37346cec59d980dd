#include "platform/discrecording/hfsplus/BTree.h"

#include "platform/foundation/ByteOrder.h"
#include "tests/discrecording/hfsplus/HfsPlusBTreeReader.h"

#include <gtest/gtest.h>

namespace Tessaron::Testing
{

namespace
{

/// Records with keys of 4 to 44 bytes, which are numbers with padding.
class NumberedRecords final : public BTreeRecords
{
public:
    explicit NumberedRecords(std::uint32_t count)
        : m_count(count)
    {
    }

    [[nodiscard]] bool isEmpty() const override { return m_count == 0; }
    [[nodiscard]] BTreePosition first() const override { return {}; }
    [[nodiscard]] bool advance(BTreePosition *position) const override { return ++position->item < m_count; }
    [[nodiscard]] std::size_t keySize(BTreePosition position) const override { return 6 + 2 * (position.item % 20); }
    [[nodiscard]] std::size_t recordSize(BTreePosition position) const override { return keySize(position) + 10; }
    void storeKey(BTreePosition position, std::uint8_t *to) const override
    {
        storeBigEndian<std::uint16_t>(to, static_cast<std::uint16_t>(keySize(position) - 2));
        storeBigEndian<std::uint32_t>(to + 2, position.item);
    }
    void storeRecord(BTreePosition position, std::uint8_t *to) const override
    {
        storeKey(position, to);
        storeBigEndian<std::uint32_t>(to + keySize(position) + 6, position.item ^ 0xFFFFu);
    }

private:
    const std::uint32_t m_count;
};

constexpr BTreeTraits smallNodes{512, 60, BTreeTraits::HasBigKeys | BTreeTraits::HasVariableIndexKeys};

struct MadeTree {
    explicit MadeTree(std::uint32_t count, std::uint32_t reserved = 0)
        : records(count)
        , tree(records, smallNodes)
    {
        const std::function<void(double)> report;
        EXPECT_TRUE(tree.measure(PlanProgress({}, report)));
        if (reserved > 0)
            tree.reserveNodes(reserved);
        bytes.resize(tree.byteCount());
        tree.fill(0, bytes);
    }
    [[nodiscard]] HfsPlusBTreeReader read() const
    {
        return HfsPlusBTreeReader(bytes, QStringLiteral("tree"),
                                  [](Bytes one, Bytes other) { return big32(one, 0) < big32(other, 0); });
    }

    NumberedRecords records;
    BTree tree;
    std::vector<std::uint8_t> bytes;
};

} // namespace

TEST(BTree, tree_isSound_atEverySize)
{
    for (const std::uint32_t count : {1u, 2u, 11u, 12u, 13u, 150u, 1000u, 5000u, 40'000u, 100'000u}) {
        const MadeTree made(count);
        const HfsPlusBTreeReader reader = made.read();
        EXPECT_EQ(reader.problems(), QStringList()) << count;
        ASSERT_EQ(reader.records().size(), count);
        EXPECT_EQ(big32(reader.records().back().data, 6), (count - 1) ^ 0xFFFFu);
    }
}

TEST(BTree, emptyTree_hasNoRoot)
{
    const MadeTree made(0);
    const HfsPlusBTreeReader reader = made.read();
    EXPECT_EQ(reader.problems(), QStringList());
    EXPECT_EQ(reader.depth(), 0u);
    EXPECT_EQ(reader.nodeCount(), 1u);
}

TEST(BTree, bigTree_hasSeveralMapNodes)
{
    // A header node of 512 bytes has bits for 2048 nodes, each map node for 3936 more.
    const HfsPlusBTreeReader reader = MadeTree(100'000).read();
    EXPECT_GE(reader.mapNodeCount(), 2u);
    EXPECT_GE(reader.depth(), 4u);
    EXPECT_EQ(reader.freeNodeCount(), 0u);
}

TEST(BTree, reservedNodes_areFree)
{
    const MadeTree made(30, 5000);
    const HfsPlusBTreeReader reader = made.read();
    EXPECT_EQ(reader.problems(), QStringList());
    EXPECT_EQ(reader.nodeCount(), 5000u + 1);
    EXPECT_EQ(reader.mapNodeCount(), 1u);
    EXPECT_GT(reader.freeNodeCount(), 4900u);
}

TEST(BTree, fill_givesTheSameBytes_inPiecesOfAnySize)
{
    const MadeTree made(3000);
    for (const std::size_t size : {100u, 512u, 700u, 4096u}) {
        std::vector<std::uint8_t> again(made.bytes.size());
        for (std::size_t at = 0; at < again.size(); at += size)
            made.tree.fill(at, std::span(again).subspan(at, std::min(size, again.size() - at)));
        EXPECT_EQ(again, made.bytes) << size;
    }
}

TEST(BTree, measure_stops_whenCancelled)
{
    const NumberedRecords records(10);
    BTree tree(records, smallNodes);
    std::stop_source stopper;
    stopper.request_stop();
    const std::function<void(double)> report;
    EXPECT_FALSE(tree.measure(PlanProgress(stopper.get_token(), report)));
}

} // namespace Tessaron::Testing
