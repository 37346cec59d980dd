#include "platform/discrecording/objects/DRStorageReport.h"
#include "tests/imaging/jobs/JobRun.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/DiscImageJob.h>
#include <TessaronClasses/DiscJobErrors.h>
#include <TessaronClasses/DiscPlanJob.h>
#include <TessaronClasses/KRFileHierarchyItem.h>
#include <TessaronClasses/KRFileReference.h>

#include <gtest/gtest.h>

namespace Tessaron::Testing
{

namespace
{

class DiscPlanJobs : public testing::Test
{
protected:
    DiscPlanJobs()
    {
        m_tree.makeFile("readme.txt", "read me");
        m_tree.makeFile("numbers", QByteArray(300'000, '1'));
    }

    [[nodiscard]] std::shared_ptr<KRFileHierarchyItem> arranged() const
    {
        auto root = KRFileHierarchyItem::fileHierarchyItemWithFileReference(
            KRFileReference::virtualFolderWithName(QStringLiteral("disc")));
        for (const char *const name : {"readme.txt", "numbers"})
            root->addItem(KRFileHierarchyItem::fileHierarchyItemWithFileReference(
                KRFileReference::initWithPath(m_tree.pathText(name))));
        // 150 characters, and Joliet has 103.
        root->items().front()->fileReference()->setDesiredName(QString(146, u'n') + QStringLiteral(".txt"));
        return root;
    }
    [[nodiscard]] DiscPlanOrder order() const
    {
        DiscPlanOrder order;
        order.tree = arranged();
        order.volumeName = QStringLiteral("Plan");
        return order;
    }

    const TemporaryTree m_tree;
};

} // namespace

TEST_F(DiscPlanJobs, size_isThatOfTheImage_toTheByte)
{
    DiscPlanJob job(order());
    const JobRun<DiscPlanJob, DiscPlanResult> run(job);
    ASSERT_FALSE(run.result.error) << run.result.error.localizedDescription().toStdString();
    EXPECT_EQ(run.endings, 1);
    EXPECT_EQ(run.result.files, 2u);
    EXPECT_EQ(run.result.folders, 0u);

    DiscImageOrder making;
    making.tree = arranged();
    making.volumeName = QStringLiteral("Plan");
    making.output = m_tree.path("disc.iso");
    DiscImageJob image(making);
    const JobRun<DiscImageJob, DiscImageResult> made(image);
    ASSERT_FALSE(made.result.error) << made.result.error.localizedDescription().toStdString();
    EXPECT_EQ(run.result.bytes, made.result.bytes);
    EXPECT_EQ(std::uint64_t(m_tree.contents("disc.iso").size()), made.result.bytes);
    ASSERT_TRUE(run.result.report && made.result.report);
    EXPECT_EQ(run.result.report->count(), made.result.report->count());
}

TEST_F(DiscPlanJobs, names_areThoseThatFilesystemsWillGive)
{
    DiscPlanJob job(order());
    const JobRun<DiscPlanJob, DiscPlanResult> run(job);
    ASSERT_TRUE(run.result.report);
    EXPECT_EQ(run.result.report->lostCount(), 0u);
    QString inJoliet;
    for (std::size_t index = 0; index < run.result.report->count(); ++index) {
        const DRStorageReportItem item = run.result.report->item(index);
        if (item.tree == DRDiscTree::Joliet && item.kind == DRStorageReportItem::Kind::Renamed)
            inJoliet = item.nameGiven;
    }
    EXPECT_EQ(inJoliet, QString(99, u'n') + QStringLiteral(".txt"));
}

TEST_F(DiscPlanJobs, tree_isNeeded)
{
    DiscPlanJob job((DiscPlanOrder()));
    const JobRun<DiscPlanJob, DiscPlanResult> run(job);
    EXPECT_TRUE(isDiscJobError(run.result.error, DiscJobErrorCode::InvalidOrder));
}

TEST_F(DiscPlanJobs, cancel_endsIt_wheneverItComes)
{
    DiscPlanJob job(order());
    QObject::connect(&job, &DiscJob::phaseChanged, &job, [&job] { job.cancel(); });
    const JobRun<DiscPlanJob, DiscPlanResult> run(job);
    EXPECT_EQ(run.endings, 1);
    EXPECT_TRUE(isDiscJobError(run.result.error, DiscJobErrorCode::Cancelled));
    DiscPlanJob neverBegun(order());
    neverBegun.cancel();
    const JobRun<DiscPlanJob, DiscPlanResult> secondRun(neverBegun);
    EXPECT_EQ(secondRun.endings, 1);
    EXPECT_TRUE(isDiscJobError(secondRun.result.error, DiscJobErrorCode::Cancelled));
    DiscPlanJob destroyed(order());
    destroyed.start(); // and goes while it runs
}

} // namespace Tessaron::Testing
