#include "tests/imaging/jobs/JobRun.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/DiscImageJob.h>
#include <TessaronClasses/DiscJobErrors.h>
#include <TessaronClasses/ImageVerification.h>
#include <TessaronClasses/InspectJob.h>
#include <TessaronClasses/KRFileHierarchyItem.h>
#include <TessaronClasses/KRFileReference.h>
#include <TessaronClasses/VerifyJob.h>

#include <chrono>
#include <gtest/gtest.h>
#include <stop_token>
#include <thread>

namespace Tessaron::Testing
{

namespace
{

class VerificationJobs : public testing::Test
{
protected:
    void makeImage() const
    {
        m_tree.makeFile("source/readme.txt", "read me");
        m_tree.makeFile("source/folder/numbers", QByteArray(3 << 20, '1'));
        makeImageOfSource();
    }

    void makeImageOfSource() const
    {
        DiscImageOrder order;
        order.sources = {m_tree.path("source")};
        order.output = m_tree.path("disc.iso");
        DiscImageJob job(order);
        const JobRun<DiscImageJob, DiscImageResult> run(job);
        ASSERT_FALSE(run.result.error) << run.result.error.localizedDescription().toStdString();
    }

    [[nodiscard]] std::shared_ptr<KRFileHierarchyItem> item(const QByteArray &relative) const
    {
        return KRFileHierarchyItem::fileHierarchyItemWithFileReference(
            KRFileReference::initWithPath(m_tree.pathText(relative)));
    }

    /// A folder of the disc's own with a file for UDF and HFS+ alone, a renamed file and a long name that some
    /// filesystems have to cut.
    [[nodiscard]] std::shared_ptr<KRFileHierarchyItem> arrangedTree() const
    {
        if (!m_tree.exists("source")) { // made once: files that are written again have other times
            m_tree.makeFile("source/readme.txt", "read me");
            m_tree.makeFile("source/numbers", QByteArray(300'000, '1'));
            m_tree.makeFile("source/" + QByteArray(90, 'n'), "long");
        }
        auto root = KRFileHierarchyItem::fileHierarchyItemWithFileReference(
            KRFileReference::virtualFolderWithName(QStringLiteral("disc")));
        const auto mine = KRFileHierarchyItem::fileHierarchyItemWithFileReference(
            KRFileReference::virtualFolderWithName(QStringLiteral("mine")));
        root->addItem(mine);
        mine->addItem(item("source/readme.txt"));
        mine->items().back()->fileReference()->setDesiredName(QStringLiteral("first.txt"));
        mine->addItem(item("source/numbers"));
        mine->items().back()->fileReference()->tessaronAttributes()->hasBasicFSInclusion = 1;
        mine->items().back()->fileReference()->tessaronAttributes()->basicFSInclusion = 1;
        root->addItem(item("source"));
        root->items().back()->addItem(item("source/" + QByteArray(90, 'n')));
        return root;
    }

    void makeImageOf(const std::shared_ptr<KRFileHierarchyItem> &tree) const
    {
        DiscImageOrder order;
        order.tree = tree;
        order.output = m_tree.path("disc.iso");
        DiscImageJob job(order);
        const JobRun<DiscImageJob, DiscImageResult> run(job);
        ASSERT_FALSE(run.result.error) << run.result.error.localizedDescription().toStdString();
    }

    [[nodiscard]] VerificationResult resultOf(const std::shared_ptr<KRFileHierarchyItem> &tree) const
    {
        VerifyOrder order = {m_tree.path("disc.iso"), {}, allDiscFilesystems};
        order.tree = tree;
        VerifyJob job(order);
        const JobRun<VerifyJob, VerificationResult> run(job);
        EXPECT_FALSE(run.result.error) << run.result.error.localizedDescription().toStdString();
        for (const ImageDifference &difference : run.result.differences.items())
            std::printf("%s: %s\n", difference.path.constData(), qPrintable(difference.message));
        return run.result;
    }

    [[nodiscard]] VerifyOrder verifyOrder() const { return {m_tree.path("disc.iso"), {m_tree.path("source")}, {}}; }

    TemporaryTree m_tree;
};

TEST_F(VerificationJobs, verifyJob_tellsPhasesBytesAndResult)
{
    makeImage();
    VerifyJob job(verifyOrder());
    const JobRun<VerifyJob, VerificationResult> run(job);
    EXPECT_EQ(run.endings, 1);
    EXPECT_FALSE(run.result.error);
    EXPECT_EQ(run.result.differences.count(), 0u);
    EXPECT_EQ(run.result.volumes.size(), 5u);
    EXPECT_EQ(run.result.bytesCompared, (3u << 20) + 7);
    ASSERT_FALSE(run.phases.empty());
    EXPECT_EQ(run.phases.back(), DiscJobPhase::Done);
    EXPECT_EQ(run.told.back().bytesDone, run.told.back().bytesTotal);
    EXPECT_EQ(run.told.back().files, 2u);
}

TEST_F(VerificationJobs, tree_agreesWithItsImage_withNamesOptionsAndFoldersOfTheDiscsOwn)
{
    makeImageOf(arrangedTree());
    const VerificationResult result = resultOf(arrangedTree());
    EXPECT_EQ(result.differences.count(), 0u);
    EXPECT_EQ(result.files, 3u);
    EXPECT_EQ(result.folders, 2u);
    EXPECT_EQ(result.bytesCompared, 300'000u + 7 + 4);
}

TEST_F(VerificationJobs, tree_differs_whereAFileHasChangedOrAnotherOneIsWanted)
{
    makeImageOf(arrangedTree());
    m_tree.makeFile("more", "more");
    const std::shared_ptr<KRFileHierarchyItem> longer = arrangedTree();
    longer->items().front()->addItem(item("more"));
    const VerificationResult missing = resultOf(longer);
    EXPECT_EQ(missing.differences.count(), 5u); // in each view
    for (const ImageDifference &difference : missing.differences.items())
        EXPECT_EQ(difference.path, "/mine/more");

    m_tree.makeFile("source/readme.txt", "READ ME");
    const VerificationResult changed = resultOf(arrangedTree());
    ASSERT_GT(changed.differences.count(), 0u);
    for (const ImageDifference &difference : changed.differences.items())
        EXPECT_EQ(difference.path, "/mine/first.txt");
}

TEST_F(VerificationJobs, tree_differs_whereAFileIsMissingInAFilesystemThatItIsMeantFor)
{
    makeImageOf(arrangedTree());
    const std::shared_ptr<KRFileHierarchyItem> tree = arrangedTree();
    tree->items().front()->items().back()->fileReference()->tessaronAttributes()->basicFSInclusion = 0;
    const VerificationResult result = resultOf(tree);
    EXPECT_EQ(result.differences.count(), 3u); // ISO 9660 with and without Rock Ridge, Joliet
}

TEST_F(VerificationJobs, verifyJob_namesWhatCannotBeRead)
{
    makeImage();
    VerifyOrder missing = verifyOrder();
    missing.sources = {m_tree.path("missing")};
    VerifyJob job(missing);
    const JobRun<VerifyJob, VerificationResult> run(job);
    EXPECT_TRUE(isDiscJobError(run.result.error, DiscJobErrorCode::Source));
    EXPECT_TRUE(run.result.error.localizedDescription().contains(QStringLiteral("missing")));
}

TEST_F(VerificationJobs, cancel_endsTheComparisonSoon_andDestroyingSilencesIt)
{
    m_tree.makeSparseFile("source/big", qint64(3) << 30);
    makeImageOfSource();
    VerifyJob job(verifyOrder());
    std::chrono::steady_clock::time_point cancelled;
    QObject::connect(&job, &DiscJob::progressed, &job, [&](const DiscJobProgress &progress) {
        if (progress.phase != DiscJobPhase::Comparing || job.isCancelled())
            return;
        cancelled = std::chrono::steady_clock::now();
        job.cancel();
    });
    const JobRun<VerifyJob, VerificationResult> run(job);
    EXPECT_TRUE(isDiscJobError(run.result.error, DiscJobErrorCode::Cancelled));
    EXPECT_LT(std::chrono::steady_clock::now() - cancelled, std::chrono::seconds(2)); // a tenth on an idle machine

    int endings = 0;
    QEventLoop loop;
    {
        VerifyJob dropped(verifyOrder());
        QObject::connect(&dropped, &VerifyJob::finished, &loop, [&endings] { ++endings; });
        QObject::connect(&dropped, &DiscJob::phaseChanged, &loop, [&loop](DiscJobPhase phase) {
            if (phase == DiscJobPhase::Comparing)
                loop.quit();
        });
        dropped.start();
        loop.exec();
    }
    loop.processEvents();
    EXPECT_EQ(endings, 0);
}

TEST_F(VerificationJobs, cancel_isHeard_amongNamesThatHaveNothingInCommon)
{
    constexpr int count = 4000;
    for (int number = 0; number < count; ++number)
        m_tree.makeFile("source/image?" + QByteArray::number(number), "i");
    makeImageOfSource();
    for (int number = 0; number < count; ++number)
        m_tree.makeFile("others/name?of?another" + QByteArray::number(number), "i");
    VerificationRequest request;
    request.image = DiscImageSource::sourceWithFile(m_tree.pathText("disc.iso")).source;
    request.volumes = volumesInImage(request.image);
    DiscSource source;
    source.path = m_tree.path("others");
    source.isFolder = true;
    request.sources = {source};

    std::stop_source stop;
    std::chrono::steady_clock::time_point cancelled;
    std::jthread canceller;
    const VerificationResult result = verifyImage(request, stop.get_token(), [&](const DiscJobProgress &progress) {
        if (progress.phase != DiscJobPhase::Planning || canceller.joinable())
            return;
        canceller = std::jthread([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            cancelled = std::chrono::steady_clock::now();
            stop.request_stop();
        });
    });
    const auto ended = std::chrono::steady_clock::now();
    canceller.join();
    EXPECT_TRUE(isDiscJobError(result.error, DiscJobErrorCode::Cancelled));
    EXPECT_LT(ended - cancelled, std::chrono::seconds(2)); // a tenth on an idle machine
}

TEST_F(VerificationJobs, inspectJob_countsEveryVolume)
{
    makeImage();
    InspectJob job(m_tree.path("disc.iso"));
    const JobRun<InspectJob, ImageInspection> run(job);
    EXPECT_FALSE(run.result.error);
    ASSERT_TRUE(run.result.image);
    ASSERT_EQ(run.result.censuses.size(), 5u);
    for (const VolumeCensus &census : run.result.censuses) {
        EXPECT_EQ(census.files, 2u);
        EXPECT_EQ(census.folders, 1u);
        EXPECT_EQ(census.bytes, (3u << 20) + 7);
    }
    InspectJob other(m_tree.path("missing.iso"));
    const JobRun<InspectJob, ImageInspection> failed(other);
    EXPECT_TRUE(isDiscJobError(failed.result.error, DiscJobErrorCode::Source));
    EXPECT_FALSE(failed.result.image);
}

} // namespace

} // namespace Tessaron::Testing
