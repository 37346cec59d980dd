#include "platform/discrecording/objects/DRStorageReport.h"
#include "tests/imaging/jobs/JobRun.h"
#include "tests/support/RunProgram.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/BurnDiscJob.h>
#include <TessaronClasses/DiscJobErrors.h>
#include <TessaronClasses/KRFileHierarchyItem.h>
#include <TessaronClasses/KRFileReference.h>

#include <gtest/gtest.h>

namespace Tessaron::Testing
{

namespace
{

/// Discs that a program arranged as a tree, written to a file in the place of a drive.
class BurnTree : public testing::Test
{
protected:
    BurnTree()
    {
        m_tree.makeFile("source/readme.txt", "read me");
        m_tree.makeFile("source/numbers", QByteArray(300'000, '1'));
        m_tree.makeFolder("out");
    }

    [[nodiscard]] std::shared_ptr<KRFileHierarchyItem> file(const QByteArray &relative) const
    {
        return KRFileHierarchyItem::fileHierarchyItemWithFileReference(
            KRFileReference::initWithPath(m_tree.pathText(relative)));
    }
    [[nodiscard]] static std::shared_ptr<KRFileHierarchyItem> folder(const QString &name)
    {
        return KRFileHierarchyItem::fileHierarchyItemWithFileReference(KRFileReference::virtualFolderWithName(name));
    }

    /// "mine/first.txt" and "numbers".
    [[nodiscard]] std::shared_ptr<KRFileHierarchyItem> arranged() const
    {
        auto root = folder(QStringLiteral("disc"));
        root->addItem(folder(QStringLiteral("mine")));
        root->items().back()->addItem(file("source/readme.txt"));
        root->items().back()->items().back()->fileReference()->setDesiredName(QStringLiteral("first.txt"));
        root->addItem(file("source/numbers"));
        return root;
    }
    [[nodiscard]] BurnDiscOrder order() const
    {
        BurnDiscOrder order;
        order.tree = arranged();
        order.drive = "stdio:" + m_tree.path("out/disc.iso");
        return order;
    }
    [[nodiscard]] static BurnDiscResult burnt(const BurnDiscOrder &order)
    {
        BurnDiscJob job(order);
        const JobRun<BurnDiscJob, BurnDiscResult> run(job);
        EXPECT_EQ(run.endings, 1);
        return run.result;
    }
    [[nodiscard]] QByteArray contentsOf(const QByteArray &path) const
    {
        return runProgram("7z", {"x", "-so", m_tree.path("out/disc.iso"), path}).output;
    }

    const TemporaryTree m_tree;
};

} // namespace

TEST_F(BurnTree, disc_isWrittenAsItIsArranged_andCompared)
{
    BurnDiscOrder wanted = order();
    wanted.volumeName = QStringLiteral("Summer");
    wanted.verifies = true;
    const BurnDiscResult result = burnt(wanted);
    ASSERT_FALSE(result.error) << result.error.localizedDescription().toStdString();
    EXPECT_TRUE(result.isComplete());
    EXPECT_EQ(result.condition, QStringLiteral("written"));
    EXPECT_EQ(result.data.volumeName, QStringLiteral("Summer"));
    EXPECT_EQ(result.data.files, 2u);
    ASSERT_TRUE(result.verification);
    EXPECT_EQ(result.verification->differences.count(), 0u);
    EXPECT_EQ(result.verification->bytesCompared, 300'007u);
    EXPECT_EQ(contentsOf("mine/first.txt"), QByteArray("read me"));
    EXPECT_EQ(contentsOf("numbers"), QByteArray(300'000, '1'));
}

TEST_F(BurnTree, optionsOfAFile_countInTheComparison)
{
    BurnDiscOrder wanted = order();
    wanted.verifies = true;
    KRFileReference &forPCs = *wanted.tree->items().back()->fileReference();
    forPCs.tessaronAttributes()->hasBasicFSInclusion = 1;
    forPCs.tessaronAttributes()->basicFSInclusion = 2;
    const BurnDiscResult result = burnt(wanted);
    ASSERT_FALSE(result.error) << result.error.localizedDescription().toStdString();
    ASSERT_TRUE(result.verification);
    EXPECT_EQ(result.verification->differences.count(), 0u);
}

TEST_F(BurnTree, disc_isIncomplete_whenAFileOfTheTreeIsGone)
{
    const BurnDiscOrder wanted = order();
    m_tree.remove("source/numbers");
    const BurnDiscResult result = burnt(wanted);
    EXPECT_FALSE(result.isComplete());
    ASSERT_TRUE(result.data.report);
    EXPECT_EQ(result.data.report->lostCount(), 1u);
    bool isNamed = false;
    for (std::size_t item = 0; item < result.data.report->count(); ++item)
        isNamed = isNamed || result.data.report->item(item).path == u"/numbers";
    EXPECT_TRUE(isNamed);
}

TEST_F(BurnTree, file_thatIsOnTheDisc_isNotWrittenOver)
{
    BurnDiscOrder wanted = order();
    wanted.drive = "stdio:" + m_tree.path("source/numbers");
    const BurnDiscResult result = burnt(wanted);
    EXPECT_TRUE(isDiscJobError(result.error, DiscJobErrorCode::Destination));
    EXPECT_EQ(m_tree.contents("source/numbers"), QByteArray(300'000, '1'));
}

TEST_F(BurnTree, planAlone_saysWhatWouldCome_andWritesNothing)
{
    BurnDiscOrder wanted = order();
    wanted.isPlanOnly = true;
    wanted.verifies = true;
    const BurnDiscResult planned = burnt(wanted);
    EXPECT_FALSE(planned.error) << planned.error.localizedDescription().toStdString();
    EXPECT_EQ(planned.data.files, 2u);
    EXPECT_EQ(planned.tracks, 1u);
    EXPECT_FALSE(planned.verification);
    EXPECT_EQ(planned.condition, QStringLiteral("unchanged"));
    EXPECT_FALSE(m_tree.exists("out/disc.iso"));
    EXPECT_EQ(planned.data.bytes, burnt(order()).data.bytes);
}

TEST_F(BurnTree, cancelBeforeTheStart_endsItAsCancelled_andOpensNoDrive)
{
    BurnDiscJob job(order());
    job.cancel();
    EXPECT_TRUE(job.isCancelled());
    EXPECT_FALSE(job.isRunning());
    const JobRun<BurnDiscJob, BurnDiscResult> run(job);
    EXPECT_EQ(run.endings, 1);
    EXPECT_TRUE(isDiscJobError(run.result.error, DiscJobErrorCode::Cancelled));
    EXPECT_TRUE(run.result.driveName.isEmpty());
    EXPECT_FALSE(m_tree.exists("out/disc.iso"));
}

TEST_F(BurnTree, treeAndSources_areRefusedTogether_andSoIsAnEmptyTree)
{
    BurnDiscOrder both = order();
    both.sources = {m_tree.path("source")};
    EXPECT_TRUE(isDiscJobError(burnt(both).error, DiscJobErrorCode::InvalidOrder));
    BurnDiscOrder empty = order();
    empty.tree = folder(QStringLiteral("disc"));
    EXPECT_TRUE(isDiscJobError(burnt(empty).error, DiscJobErrorCode::InvalidOrder));
    EXPECT_FALSE(m_tree.exists("out/disc.iso"));
}

} // namespace Tessaron::Testing
