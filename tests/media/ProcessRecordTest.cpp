#include "media/ProcessRecord.h"

#include "tests/support/TemporaryTree.h"

#include <gtest/gtest.h>

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

constexpr const char *behindName = " S 7 12 12 0 -1 4194560 1 2 3 4 5 6 7 8 20 -5 1 0 100 200 300\n";

QByteArray stat(const QByteArray &number, const QByteArray &name)
{
    return number + " (" + name + ")" + behindName;
}

} // namespace

TEST(ProcessRecord, stat_isReadWhateverTheName)
{
    for (const QByteArray &name :
         {QByteArray("sh"), QByteArray("a) S 1 (b"), QByteArray("a\n("), QByteArray("\xff"), QByteArray()}) {
        const auto record = processRecord(stat("12", name));
        ASSERT_TRUE(record) << name.constData();
        EXPECT_EQ(record->p_pid, 12);
        EXPECT_EQ(record->p_comm, name);
        EXPECT_EQ(record->e_ppid, 7);
        EXPECT_EQ(record->p_nice, -5);
    }
}

TEST(ProcessRecord, stat_isRefused_whenItIsCutOrNone)
{
    const QByteArray whole = stat("12", "sh");
    for (const QByteArray &bytes :
         {QByteArray(), QByteArray("12"), QByteArray("12 (sh"), QByteArray(") ("), QByteArray("12 (sh)"),
          whole.first(30), stat("x", "sh"), QByteArray("12 ()"), QByteArray(5000, ' ')})
        EXPECT_FALSE(processRecord(bytes)) << bytes.constData();
}

TEST(ProcessRecord, records_areThoseOfTheFoldersNumbers)
{
    const TemporaryTree tree;
    tree.makeFile("12/stat", stat("12", "one"));
    tree.makeFile("self/stat", stat("13", "no"));
    tree.makeFile("14x/stat", stat("14", "no"));
    tree.makeFolder("15"); // gone by now
    tree.makeFile("16/stat", "nonsense");
    const auto records = processRecords(tree.path());
    ASSERT_TRUE(records);
    ASSERT_EQ(records->size(), 1u);
    EXPECT_EQ(records->front().p_comm, "one");
    EXPECT_FALSE(processRecords(tree.path("missing")));
}
