#include "tests/imaging/jobs/JobRun.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/DiscImageJob.h>
#include <TessaronClasses/DiscJobErrors.h>
#include <TessaronClasses/DiscSplitJob.h>
#include <TessaronClasses/KRFileHierarchyItem.h>
#include <TessaronClasses/KRFileReference.h>
#include <TessaronClasses/ScanJob.h>

#include <gtest/gtest.h>

namespace Tessaron::Testing
{

namespace
{

/// What an image with all filesystems has besides its files is about 640 kB: room for one, two or three of these.
constexpr qsizetype part = 1'000'000;
constexpr std::uint64_t capacityOfTwo = 2'900'000;
constexpr std::uint64_t capacityOfThree = 3'900'000;

class DiscSplitJobs : public testing::Test
{
protected:
    void makeFiles(const QList<QByteArray> &names, qsizetype size = part) const
    {
        for (const QByteArray &name : names)
            m_tree.makeFile("source/" + name, QByteArray(size, 'x'));
    }
    [[nodiscard]] DiscSplitResult split(std::uint64_t capacity) const
    {
        ScanJob scan({m_tree.path("source")});
        const JobRun<ScanJob, ScanResult> scanned(scan);
        EXPECT_FALSE(scanned.result.error);
        DiscSplitOrder order;
        order.tree = scanned.result.sources.front().tree;
        order.capacity = capacity;
        order.volumeName = QStringLiteral("Photos");
        DiscSplitJob job(order);
        const JobRun<DiscSplitJob, DiscSplitResult> run(job);
        EXPECT_EQ(run.endings, 1);
        for (const DiscShare &disc : run.result.discs)
            EXPECT_LE(disc.bytes, capacity);
        return run.result;
    }
    const TemporaryTree m_tree;
};

QStringList linesOf(const DiscSplitResult &result)
{
    QStringList lines;
    for (const DiscShare &disc : result.discs)
        lines << disc.paths.join(u' ');
    return lines;
}

} // namespace

TEST_F(DiscSplitJobs, whatFits_isOnOneDisc_withTheNameAsItIs)
{
    makeFiles({"a/1", "a/2", "b"});
    const DiscSplitResult result = split(capacityOfThree);
    ASSERT_FALSE(result.error) << result.error.localizedDescription().toStdString();
    EXPECT_EQ(linesOf(result), QStringList{QStringLiteral("/a /b")});
    EXPECT_EQ(result.discs[0].volumeName, QStringLiteral("Photos"));
    EXPECT_EQ(result.discs[0].files, 3u);
}

TEST_F(DiscSplitJobs, folders_stayTogether_whereADiscHoldsThem)
{
    makeFiles({"a/1", "b/1", "b/2", "c/1", "d"});
    const DiscSplitResult result = split(capacityOfThree);
    // In the order of the names, which first come first served would tear: the folder of two goes with one of the
    // others.
    EXPECT_EQ(linesOf(result), (QStringList{QStringLiteral("/a /b"), QStringLiteral("/c /d")}));
    EXPECT_EQ(result.discs[1].volumeName, QStringLiteral("Photos 2"));
    EXPECT_EQ(linesOf(split(capacityOfThree)), linesOf(result)) << "again the same";
}

TEST_F(DiscSplitJobs, foldersThatAreTooLarge_goInPartsOntoAsFewAsTheyCan)
{
    makeFiles({"a/b/1", "a/b/2", "a/b/3", "a/c/1", "z"});
    const DiscSplitResult result = split(capacityOfTwo);
    EXPECT_EQ(linesOf(result),
              (QStringList{QStringLiteral("/a/b/1 /a/c"), QStringLiteral("/a/b/2 /a/b/3"), QStringLiteral("/z")}));
    // Each disc has the folders above what is on it.
    const DiscShare &first = result.discs[0];
    EXPECT_EQ(first.folders, 3u);
    DiscImageOrder order;
    order.tree = first.tree;
    order.volumeName = first.volumeName;
    order.output = m_tree.path("first.iso");
    DiscImageJob job(order);
    const JobRun<DiscImageJob, DiscImageResult> made(job);
    ASSERT_FALSE(made.result.error) << made.result.error.localizedDescription().toStdString();
    EXPECT_EQ(made.result.bytes, first.bytes) << "the size that was told is that of the image";
    EXPECT_EQ(made.result.files, 2u);
}

TEST_F(DiscSplitJobs, filesLargerThanADisc_areNamed_andTheRestSplit)
{
    makeFiles({"a/1", "a/2"});
    makeFiles({"a/film"}, 3 * part);
    const DiscSplitResult result = split(capacityOfTwo);
    ASSERT_FALSE(result.error);
    ASSERT_EQ(result.tooLarge.size(), 1u);
    EXPECT_EQ(result.tooLarge[0].path, QStringLiteral("/a/film"));
    EXPECT_GE(result.tooLarge[0].bytes, std::uint64_t(3 * part));
    EXPECT_EQ(linesOf(result), QStringList{QStringLiteral("/a/1 /a/2")});
}

TEST_F(DiscSplitJobs, manySmallFiles_takeWhatFilesystemsNeedForThem)
{
    for (int number = 0; number < 1200; ++number)
        m_tree.makeFile(
            "source/" + QByteArray::number(number / 300) + '/' + QByteArray(60, 'n') + QByteArray::number(number), "x");
    m_tree.makeFolder("source/empty");
    const DiscSplitResult result = split(3'000'000);
    ASSERT_FALSE(result.error) << result.error.localizedDescription().toStdString();
    std::uint64_t files = 0;
    for (const DiscShare &disc : result.discs)
        files += disc.files;
    EXPECT_EQ(files, 1200u);
    EXPECT_GE(result.discs.size(), 2u);
    EXPECT_TRUE(linesOf(result).join(u' ').contains(QStringLiteral("/empty")));
}

TEST_F(DiscSplitJobs, orders_thatMakeNoSense_areRefused)
{
    m_tree.makeFolder("source");
    EXPECT_TRUE(isDiscJobError(split(capacityOfTwo).error, DiscJobErrorCode::InvalidOrder)) << "an empty folder";
    DiscSplitJob job((DiscSplitOrder()));
    const JobRun<DiscSplitJob, DiscSplitResult> run(job);
    EXPECT_TRUE(isDiscJobError(run.result.error, DiscJobErrorCode::InvalidOrder));
}

TEST_F(DiscSplitJobs, cancel_endsIt)
{
    makeFiles({"a", "b", "c"}, 1000);
    ScanJob scan({m_tree.path("source")});
    const JobRun<ScanJob, ScanResult> scanned(scan);
    DiscSplitOrder order;
    order.tree = scanned.result.sources.front().tree;
    order.capacity = capacityOfTwo;
    DiscSplitJob job(order);
    QObject::connect(&job, &DiscJob::phaseChanged, &job, &DiscJob::cancel);
    const JobRun<DiscSplitJob, DiscSplitResult> run(job);
    EXPECT_TRUE(isDiscJobError(run.result.error, DiscJobErrorCode::Cancelled));
    EXPECT_TRUE(run.result.discs.empty());
    DiscSplitJob neverBegun(order);
    neverBegun.cancel();
    const JobRun<DiscSplitJob, DiscSplitResult> secondRun(neverBegun);
    EXPECT_EQ(secondRun.endings, 1);
    EXPECT_TRUE(isDiscJobError(secondRun.result.error, DiscJobErrorCode::Cancelled));
}

} // namespace Tessaron::Testing
