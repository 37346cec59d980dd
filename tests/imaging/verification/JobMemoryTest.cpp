#include "platform/discrecording/objects/DRStorageReport.h"
#include "tests/imaging/jobs/JobRun.h"
#include "tests/support/FailingAllocations.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/DiscImageJob.h>
#include <TessaronClasses/DiscJobErrors.h>
#include <TessaronClasses/InspectJob.h>
#include <TessaronClasses/ScanJob.h>
#include <TessaronClasses/VerifyJob.h>

#include <algorithm>
#include <functional>

namespace Tessaron::Testing
{

namespace
{

/// Jobs whose workers get no memory, each time at another place.
class JobMemory : public testing::Test
{
protected:
    JobMemory()
    {
        for (int number = 0; number < 20; ++number)
            tree.makeFile("source/folder/" + QByteArray::number(number), "contents " + QByteArray::number(number));
        tree.makeFile("source/gr\xC3\xBC\xC3\x9F"
                      "e?",
                      QByteArray(100'000, 'x'));
        tree.makeSymbolicLink("source/link", "folder");
    }

    [[nodiscard]] DiscImageOrder imageOrder() const
    {
        DiscImageOrder order;
        order.sources = {tree.path("source")};
        order.output = tree.path("disc.iso");
        order.isSynchronized = false;
        return order;
    }

    /// Calls `run` with ever later failures until none happens any more; the first ones one by one. `run` answers
    /// whether the failure was told.
    static void failEachPlace(const std::function<bool()> &run)
    {
        int told = 0;
        int calls = 0;
        for (std::int64_t call = 0;; call += 1 + call / 50, ++calls) {
            SCOPED_TRACE(call);
            const FailingAllocation failing(call);
            told += run() ? 1 : 0;
            if (!failing.hasFailed())
                break;
        }
        EXPECT_GT(calls, 50);
        EXPECT_GT(told, calls / 4);
    }

    static void expectMemoryError(const NSError &error)
    {
        EXPECT_EQ(error.userInfo().value(DiscJobUnderlyingStatusKey).toInt(), memFullErr)
            << error.localizedDescription().toStdString();
    }

    const TemporaryTree tree;
};

TEST_F(JobMemory, imageJob_endsWithAnError)
{
    failEachPlace([this] {
        DiscImageJob job(imageOrder());
        const JobRun<DiscImageJob, DiscImageResult> run(job);
        EXPECT_EQ(run.endings, 1);
        if (!run.result.error) {
            const bool isTold = !run.result.unreadable.empty();
            EXPECT_TRUE(isTold || run.result.files == 22) << run.result.files;
            EXPECT_TRUE(tree.exists("disc.iso"));
            tree.remove("disc.iso");
            return isTold;
        }
        EXPECT_FALSE(run.result.error.localizedDescription().isEmpty());
        EXPECT_FALSE(tree.exists("disc.iso"));
        return true;
    });
}

TEST_F(JobMemory, scanJob_endsWithAnError)
{
    failEachPlace([this] {
        ScanJob job({tree.path("source")});
        const JobRun<ScanJob, ScanResult> run(job);
        EXPECT_EQ(run.endings, 1);
        const bool isTold = run.result.error || !run.result.unreadable.empty();
        EXPECT_TRUE(isTold || (run.result.sources.size() == 1 && run.result.sources.front().files == 22));
        return isTold;
    });
}

TEST_F(JobMemory, verifyJob_endsWithAnError)
{
    {
        DiscImageJob job(imageOrder());
        const JobRun<DiscImageJob, DiscImageResult> run(job);
        ASSERT_FALSE(run.result.error);
    }
    failEachPlace([this] {
        VerifyJob job({tree.path("disc.iso"), {tree.path("source")}, {}});
        const JobRun<VerifyJob, VerificationResult> run(job);
        EXPECT_EQ(run.endings, 1);
        if (!run.result.error) {
            EXPECT_EQ(run.result.differences.count(), 0u);
            return false;
        }
        expectMemoryError(run.result.error);
        return true;
    });
    failEachPlace([this] {
        InspectJob job(tree.path("disc.iso"));
        const JobRun<InspectJob, ImageInspection> run(job);
        EXPECT_EQ(run.endings, 1);
        if (!run.result.error) {
            EXPECT_EQ(run.result.problemCount, 0u);
            return false;
        }
        expectMemoryError(run.result.error);
        return true;
    });
}

} // namespace

} // namespace Tessaron::Testing
