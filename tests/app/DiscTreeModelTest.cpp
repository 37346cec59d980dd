#include "app/DiscTreeModel.h"

#include "tests/app/Nodes.h"
#include "tests/support/MeasurableMemory.h"
#include "tests/support/TemporaryTree.h"

#include <QAbstractItemModelTester>
#include <QElapsedTimer>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Tessaron;
using namespace Tessaron::Desktop;
using namespace Tessaron::Testing;

namespace
{

class DiscTreeModelTest : public testing::Test
{
protected:
    DiscTreeModelTest()
        : tester(&document.model(), QAbstractItemModelTester::FailureReportingMode::Fatal)
    {
        tree.makeFile("set/b10.txt", QByteArray(10, 'x'));
        tree.makeFile("set/b9.txt", QByteArray(9000, 'x'));
        tree.makeFile("set/A.txt");
        tree.makeFile("set/zebra/inner.txt");
        tree.setModificationTime("set/b10.txt", 1'000'000'000);
        tree.setModificationTime("set/b9.txt", 1'100'000'000);
        tree.setModificationTime("set/A.txt", 1'200'000'000);
        addTo(document, {tree.path("set")});
    }

    [[nodiscard]] DiscTreeModel &model() { return document.model(); }
    [[nodiscard]] QStringList rows(const QModelIndex &parent = {})
    {
        QStringList names;
        for (int row = 0; row < model().rowCount(parent); ++row)
            names << model().index(row, 0, parent).data().toString();
        return names;
    }
    [[nodiscard]] QModelIndex set() { return model().index(0, 0); }
    static QStringList names(std::initializer_list<const char *> list)
    {
        QStringList result;
        for (const char *const name : list)
            result << QString::fromUtf8(name);
        return result;
    }

    const TemporaryTree tree;
    DiscDocument document;
    QAbstractItemModelTester tester;
};

} // namespace

TEST_F(DiscTreeModelTest, rows_areSortedByName_numbersAsNumbers_foldersFirst)
{
    EXPECT_EQ(rows(set()), names({"zebra", "A.txt", "b9.txt", "b10.txt"}));
}

TEST_F(DiscTreeModelTest, sort_ordersBySizeAndTime_andKeepsIndexesWithTheirNodes)
{
    const QPersistentModelIndex b9 = model().index(2, 0, set());
    ASSERT_EQ(b9.data().toString(), QStringLiteral("b9.txt"));
    model().sort(DiscTreeModel::Size, Qt::DescendingOrder);
    EXPECT_EQ(rows(set()), names({"b9.txt", "b10.txt", "A.txt", "zebra"}));
    EXPECT_EQ(b9.row(), 0);
    EXPECT_EQ(b9.data().toString(), QStringLiteral("b9.txt"));
    model().sort(DiscTreeModel::Modified, Qt::AscendingOrder);
    EXPECT_EQ(rows(set()), names({"zebra", "b10.txt", "b9.txt", "A.txt"}));
    EXPECT_EQ(faultOf(model().root()), QString());
}

TEST_F(DiscTreeModelTest, insert_putsNodesWhereTheyBelong_andTellsViews)
{
    tree.makeFile("set 2/x");
    tree.makeFile("a");
    addTo(document, {tree.path("set 2"), tree.path("a")});
    EXPECT_EQ(rows(), names({"set", "set 2", "a"}));
}

TEST_F(DiscTreeModelTest, filter_showsAllMatchesInOneList_andFollowsChanges)
{
    model().setFilter(QStringLiteral(".TXT"));
    EXPECT_EQ(rows(), names({"inner.txt", "A.txt", "b9.txt", "b10.txt"}));
    EXPECT_EQ(model().index(0, DiscTreeModel::Place).data().toString(), QStringLiteral("/set/zebra"));
    document.remove({&model().nodeAt(model().index(2, 0))});
    EXPECT_EQ(rows(), names({"inner.txt", "A.txt", "b10.txt"}));
    document.undoStack().undo();
    EXPECT_EQ(rows().size(), 4);
    EXPECT_EQ(document.rename(model().nodeAt(model().index(1, 0)), QStringLiteral("gone")), QString());
    EXPECT_EQ(rows().size(), 3);
    model().setFilter(QString());
    EXPECT_EQ(rows(), names({"set"}));
}

TEST_F(DiscTreeModelTest, nodesAt_leavesOutWhatLiesBelowOthers)
{
    const QModelIndexList indexes = {model().index(0, 0, set()), set(), set(), model().index(1, 2, set())};
    const std::vector<DiscNode *> nodes = model().nodesAt(indexes);
    ASSERT_EQ(nodes.size(), 1u);
    EXPECT_EQ(nodes.front()->name, QStringLiteral("set"));
}

TEST_F(DiscTreeModelTest, data_marksUnreadableAndMarkedRows)
{
    const DiscNode &node = model().nodeAt(model().index(1, 0, set()));
    model().setMarks({{&node, {QStringLiteral("A.TXT in ISO 9660"), DiscMark::Severity::Changed}}});
    EXPECT_TRUE(model().index(1, 0, set()).data(Qt::ToolTipRole).toString().contains(QStringLiteral("ISO 9660")));
    EXPECT_EQ(model().markOf(model().nodeAt(set())).text, QString());
}

TEST(DiscTreeMemory, hundredThousandFiles_takeLessThanAKilobyteEach)
{
    if (!memoryIsMeasurable)
        GTEST_SKIP() << "a sanitizer adds memory of its own";
    constexpr int folderCount = 100;
    constexpr int filesInEach = 1000;
    const TemporaryTree tree;
    for (int folder = 0; folder < folderCount; ++folder) {
        const QByteArray path = tree.makeFolder("many/folder " + QByteArray::number(folder));
        for (int file = 0; file < filesInEach; ++file) {
            const QByteArray name = path + "/holiday picture " + QByteArray::number(file) + ".jpg";
            ASSERT_EQ(::mknod(name.constData(), S_IFREG | 0644, 0), 0);
        }
    }
    DiscDocument document;
    document.model().sort(DiscTreeModel::Name); // what a view does once
    ::malloc_trim(0);
    const std::size_t before = ::mallinfo2().uordblks;
    addTo(document, {tree.path("many")});
    ::malloc_trim(0);
    const std::size_t after = ::mallinfo2().uordblks;
    ASSERT_EQ(document.model().root().objects, 2u + folderCount + folderCount * filesInEach);
    const double each = double(after - before) / (folderCount * filesInEach);
    RecordProperty("bytesPerFile", int(each));
    std::printf("%.0f bytes for each file\n", each);
    EXPECT_LT(each, 1000);
}
