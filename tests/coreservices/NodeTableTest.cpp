#include "platform/coreservices/NodeTable.h"

#include "tests/support/MeasurableMemory.h"

#include <QByteArray>
#include <QFile>

#include <array>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

namespace Tessaron
{

namespace
{

/// Bytes of memory that the process uses.
std::int64_t residentBytes()
{
    QFile file(QStringLiteral("/proc/self/statm"));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll().split(' ').at(1).toLongLong() * 4096;
}

} // namespace

TEST(NodeTable, intern_givesTheSameNode_forTheSameParentAndName)
{
    NodeTable &table = NodeTable::shared();
    const std::uint32_t one = table.intern(NodeTable::root, "node-table-test");
    const std::uint32_t child = table.intern(one, "child");
    EXPECT_NE(one, NodeTable::none);
    EXPECT_EQ(table.intern(NodeTable::root, "node-table-test"), one);
    EXPECT_EQ(table.intern(one, "child"), child);
    EXPECT_NE(table.intern(child, "child"), child);
    EXPECT_EQ(table.parentOf(child), one);
    EXPECT_EQ(table.nameOf(child), "child");
    EXPECT_EQ(table.nameOf(child).data()[5], '\0');
}

TEST(NodeTable, intern_refuses_whatIsNoNameOrNoParent)
{
    NodeTable &table = NodeTable::shared();
    EXPECT_EQ(table.intern(NodeTable::root, ""), NodeTable::none);
    EXPECT_EQ(table.intern(NodeTable::none, "x"), NodeTable::none);
    EXPECT_EQ(table.intern(UINT32_MAX, "x"), NodeTable::none);
    EXPECT_EQ(table.intern(NodeTable::root, std::string(NodeTable::longestName + 1, 'x')), NodeTable::none);
    EXPECT_NE(table.intern(NodeTable::root, std::string(NodeTable::longestName, 'x')), NodeTable::none);
}

TEST(NodeTable, queries_giveNothing_forNumbersThatAreNoNodes)
{
    const NodeTable &table = NodeTable::shared();
    for (const std::uint32_t number : {NodeTable::none, table.count() + 1000, UINT32_MAX}) {
        EXPECT_EQ(table.parentOf(number), NodeTable::none);
        EXPECT_TRUE(table.nameOf(number).empty());
        EXPECT_EQ(table.noteOf(number), 0u);
    }
    EXPECT_EQ(table.nameOf(NodeTable::root), "/");
    EXPECT_EQ(table.parentOf(NodeTable::root), NodeTable::none);
}

TEST(NodeTable, names_staySeparate_whenManyHaveTheSameParent)
{
    NodeTable &table = NodeTable::shared();
    const std::uint32_t folder = table.intern(NodeTable::root, "many");
    std::vector<std::uint32_t> nodes;
    nodes.reserve(20000);
    for (int number = 0; number < 20000; ++number)
        nodes.push_back(table.intern(folder, std::to_string(number)));
    for (int number = 0; number < 20000; ++number) {
        ASSERT_EQ(table.nameOf(nodes[static_cast<std::size_t>(number)]), std::to_string(number));
        ASSERT_EQ(table.intern(folder, std::to_string(number)), nodes[static_cast<std::size_t>(number)]);
    }
}

TEST(NodeTable, intern_givesAllThreadsTheSameNodes_whenTheyInternTheSameNames)
{
    NodeTable &table = NodeTable::shared();
    std::array<std::vector<std::uint32_t>, 4> nodes;
    {
        std::vector<std::jthread> threads;
        threads.reserve(nodes.size());
        for (std::vector<std::uint32_t> &own : nodes) {
            threads.emplace_back([&table, &own] {
                for (int folder = 0; folder < 20; ++folder) {
                    const std::uint32_t parent = table.intern(NodeTable::root, "threads" + std::to_string(folder));
                    for (int number = 0; number < 500; ++number) {
                        own.push_back(table.intern(parent, "file" + std::to_string(number)));
                        if (table.nameOf(own.back()) != "file" + std::to_string(number))
                            own.push_back(0);
                    }
                }
            });
        }
    }
    EXPECT_EQ(nodes[0].size(), 10000u);
    for (const std::vector<std::uint32_t> &own : nodes)
        EXPECT_EQ(own, nodes[0]);
}

TEST(NodeTable, aMillionNames_costAbout40BytesEach)
{
    if (!Testing::memoryIsMeasurable)
        GTEST_SKIP() << "a sanitizer adds memory of its own";
    NodeTable &table = NodeTable::shared();
    const std::int64_t before = residentBytes();
    for (int folder = 0; folder < 1000; ++folder) {
        const std::uint32_t parent = table.intern(NodeTable::root, "million" + std::to_string(folder));
        for (int number = 0; number < 1000; ++number)
            ASSERT_NE(table.intern(parent, "file-" + std::to_string(100000 + number)), NodeTable::none);
    }
    const double bytesPerName = double(residentBytes() - before) / 1e6;
    RecordProperty("bytesPerName", std::to_string(bytesPerName));
    EXPECT_LT(bytesPerName, 55);
}

} // namespace Tessaron
