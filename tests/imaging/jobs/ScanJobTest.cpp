#include "tests/imaging/jobs/JobRun.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/DiscJobErrors.h>
#include <TessaronClasses/KRFileHierarchyItem.h>
#include <TessaronClasses/ScanJob.h>

#include <QCoreApplication>
#include <QEvent>

#include <cerrno>
#include <gtest/gtest.h>
#include <unistd.h>

namespace Tessaron
{

namespace
{

using ScanRun = Testing::JobRun<ScanJob, ScanResult>;

class ScanJobs : public testing::Test
{
protected:
    const Testing::TemporaryTree m_tree;
};

TEST_F(ScanJobs, job_countsEachSource)
{
    m_tree.makeFile("one/a", "a");
    m_tree.makeFile("one/inner/b", "b");
    m_tree.makeFile("two", QByteArray(5000, 't'));
    ScanJob job({m_tree.path("one"), m_tree.path("two")});
    const ScanRun run(job);
    EXPECT_EQ(run.endings, 1);
    ASSERT_FALSE(run.result.error);
    ASSERT_EQ(run.result.sources.size(), 2u);
    EXPECT_EQ(run.result.sources[0].path, m_tree.path("one"));
    EXPECT_EQ(run.result.sources[0].files, 2u);
    EXPECT_EQ(run.result.sources[0].folders, 1u);
    EXPECT_EQ(run.result.sources[0].tree->numberOfItems(), 2u);
    EXPECT_EQ(run.result.sources[1].files, 1u);
    EXPECT_GE(run.result.sources[1].sizeOnDisk, 5000u);
    EXPECT_TRUE(run.result.unreadable.empty());
    EXPECT_EQ(run.phases.back(), DiscJobPhase::Done);
}

TEST_F(ScanJobs, cancelBeforeTheStart_endsIt_andASecondStartDoesNothing)
{
    m_tree.makeFile("one/a", "a");
    ScanJob job({m_tree.path("one")});
    job.cancel();
    const ScanRun run(job);
    EXPECT_EQ(run.endings, 1);
    EXPECT_TRUE(isDiscJobError(run.result.error, DiscJobErrorCode::Cancelled));
    EXPECT_TRUE(run.result.sources.empty());
    job.start();
    EXPECT_FALSE(job.isRunning());
}

/// Counts what the main thread is sent.
class PostedEvents final : public QObject
{
public:
    PostedEvents() { QCoreApplication::instance()->installEventFilter(this); }
    bool eventFilter(QObject *, QEvent *) override
    {
        ++count;
        return false;
    }

    int count = 0;
};

TEST_F(ScanJobs, filesInARow_areGatheredWithoutAnEventForEach)
{
    constexpr int fileCount = 2000;
    QList<QByteArray> paths;
    for (int number = 0; number < fileCount; ++number)
        paths.append(m_tree.makeFile("file" + QByteArray::number(number)));
    m_tree.makeFile("folder/inner");
    paths.insert(fileCount / 2, m_tree.path("folder"));
    ScanJob job(paths);
    const PostedEvents events;
    const ScanRun run(job);
    ASSERT_FALSE(run.result.error);
    ASSERT_EQ(run.result.sources.size(), std::size_t(fileCount) + 1);
    EXPECT_EQ(run.result.sources[0].path, paths[0]);
    EXPECT_EQ(run.result.sources[fileCount / 2].files, 1u);
    EXPECT_EQ(run.result.sources[fileCount / 2].path, m_tree.path("folder"));
    EXPECT_EQ(run.result.sources.back().path, paths.back());
    EXPECT_LT(events.count, 100);
}

TEST_F(ScanJobs, job_fails_whenAPathIsMissing)
{
    ScanJob job({m_tree.path("missing")});
    const ScanRun run(job);
    EXPECT_TRUE(isDiscJobError(run.result.error, DiscJobErrorCode::Source));
    EXPECT_TRUE(run.result.sources.empty());
}

TEST_F(ScanJobs, job_namesFoldersThatCannotBeListed)
{
    m_tree.makeFile("source/open/file");
    m_tree.makeFolder("source/closed");
    m_tree.setMode("source/closed", 0);
    m_tree.setMode({}, 0755);
    {
        const Testing::WithoutRootRights withoutRootRights;
        ScanJob job({m_tree.path("source")});
        const ScanRun run(job);
        EXPECT_FALSE(run.result.error);
        ASSERT_EQ(run.result.unreadable.size(), 1u);
        EXPECT_EQ(run.result.unreadable[0].path, m_tree.path("source/closed"));
        EXPECT_EQ(run.result.unreadable[0].errnoValue, EACCES);
    }
    m_tree.setMode("source/closed", 0755);
}

TEST_F(ScanJobs, start_isHeardOnce)
{
    m_tree.makeFile("source/a");
    ScanJob job({m_tree.path("source")});
    const ScanRun first(job);
    EXPECT_EQ(first.endings, 1);
    EXPECT_FALSE(job.isRunning());
    const ScanRun second(job);
    EXPECT_EQ(second.endings, 0);
}

} // namespace

} // namespace Tessaron
