#include "platform/discrecording/objects/DRFolder.h"
#include "tests/filemodel/tree/LayoutRecorder.h"
#include "tests/support/EventLoop.h"
#include "tests/support/TemporaryTree.h"

#include <QThread>

#include <gtest/gtest.h>

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

/// A root with the given number of folders, each with the given number of files.
std::shared_ptr<KRFileHierarchyItem> rootWithFolders(const TemporaryTree &tree, int folders, int filesEach)
{
    const FSRef folder = [&] {
        FSRef ref;
        EXPECT_EQ(FSPathMakeRef(tree.makeFile("file", "x"), &ref, nullptr), noErr);
        return ref;
    }();
    auto root = virtualFolderItem(QStringLiteral("disc"));
    for (int index = 0; index < folders; ++index) {
        const auto inner = virtualFolderItem(QStringLiteral("folder %1").arg(index));
        for (int file = 0; file < filesEach; ++file)
            inner->addItem(knownFileItem(folder));
        root->addItem(inner);
    }
    return root;
}

} // namespace

TEST(LayoutCancel, cancel_isFalse_whenNothingRuns)
{
    const auto root = virtualFolderItem(QStringLiteral("disc"));
    LayoutRecorder recorder;
    EXPECT_FALSE(root->cancelDRLayoutCreationNotifyTarget(recorder.target()));
    ASSERT_TRUE(recorder.run(*root));
    EXPECT_FALSE(root->cancelDRLayoutCreationNotifyTarget(recorder.target()));
    EXPECT_EQ(recorder.calls, (std::vector<std::string>{"finished"}));
}

TEST(LayoutCancel, cancel_isReportedToTheNewTarget)
{
    const TemporaryTree tree;
    const auto root = rootWithFolders(tree, 200, 500);
    LayoutRecorder first;
    LayoutRecorder second;
    ASSERT_TRUE(root->createDRLayoutAsyncNotifyProgressToTarget(first.target()));
    EXPECT_TRUE(root->cancelDRLayoutCreationNotifyTarget(second.target()));
    EXPECT_TRUE(second.waitForEnd());
    EXPECT_TRUE(first.calls.empty());
    EXPECT_EQ(second.calls.back(), "cancelled");
    EXPECT_EQ(std::ranges::count(second.calls, "cancelled"), 1);
    EXPECT_EQ(std::ranges::count(second.calls, "finished"), 0);
}

TEST(LayoutCancel, cancel_completesTheChildThatHasBegun)
{
    const TemporaryTree tree;
    constexpr int filesEach = 3000;
    const auto root = rootWithFolders(tree, 100, filesEach);
    LayoutRecorder recorder;
    bool isCancelled = false;
    recorder.onProgress = [&](KRFileHierarchyItem &item) {
        if (!std::exchange(isCancelled, true)) {
            EXPECT_TRUE(item.cancelDRLayoutCreationNotifyTarget(recorder.target()));
        }
    };
    ASSERT_TRUE(root->createDRLayoutAsyncNotifyProgressToTarget(recorder.target()));
    ASSERT_TRUE(recorder.waitForEnd());
    EXPECT_EQ(recorder.calls.back(), "cancelled");
    const auto files = recorder.progress.size();
    EXPECT_EQ(files % filesEach, 0u) << "whole folders only";
    EXPECT_GE(files, std::size_t(filesEach));
    EXPECT_LT(files, 100u * filesEach);
    EXPECT_FALSE(recorder.folder);
}

TEST(LayoutCancel, cancel_isTooLate_onceTheWorkerHasEnded)
{
    const auto root = virtualFolderItem(QStringLiteral("disc"));
    LayoutRecorder recorder;
    ASSERT_TRUE(root->createDRLayoutAsyncNotifyProgressToTarget(recorder.target()));
    QThread::msleep(200); // the worker of an empty tree has long ended; its end waits for the event loop
    EXPECT_TRUE(root->cancelDRLayoutCreationNotifyTarget(recorder.target()));
    EXPECT_TRUE(recorder.waitForEnd());
    EXPECT_EQ(recorder.calls, (std::vector<std::string>{"finished"}));
}

TEST(LayoutCancel, cancel_withoutTarget_endsInSilence)
{
    const TemporaryTree tree;
    const auto root = rootWithFolders(tree, 100, 500);
    LayoutRecorder recorder;
    ASSERT_TRUE(root->createDRLayoutAsyncNotifyProgressToTarget(recorder.target()));
    EXPECT_TRUE(root->cancelDRLayoutCreationNotifyTarget({}));
    LayoutRecorder next;
    ASSERT_TRUE(runEventLoopUntil([&] { return root->createDRLayoutAsyncNotifyProgressToTarget(next.target()); }));
    EXPECT_TRUE(next.waitForEnd());
    EXPECT_TRUE(recorder.calls.empty());
    EXPECT_EQ(next.calls.back(), "finished");
}

TEST(LayoutCancel, anotherOne_canBeStartedFromTheCancelledCallback)
{
    const TemporaryTree tree;
    const auto root = rootWithFolders(tree, 100, 200);
    LayoutRecorder first;
    LayoutRecorder second;
    first.onEnd = [&](KRFileHierarchyItem &item) {
        EXPECT_TRUE(item.createDRLayoutAsyncNotifyProgressToTarget(second.target()));
    };
    ASSERT_TRUE(root->createDRLayoutAsyncNotifyProgressToTarget(first.target()));
    root->cancelDRLayoutCreationNotifyTarget(first.target());
    ASSERT_TRUE(first.waitForEnd());
    EXPECT_EQ(first.calls.back(), "cancelled");
    ASSERT_TRUE(second.waitForEnd());
    EXPECT_EQ(second.calls.back(), "finished");
    EXPECT_EQ(second.progress.size(), 20'000u);
}

TEST(LayoutCancel, cancelAtEveryMoment_givesOneEnd)
{
    const TemporaryTree tree;
    const auto root = rootWithFolders(tree, 20, 50);
    int cancelledRuns = 0;
    for (int delay = 0; delay < 60; ++delay) {
        LayoutRecorder recorder;
        ASSERT_TRUE(root->createDRLayoutAsyncNotifyProgressToTarget(recorder.target()));
        QThread::usleep(static_cast<unsigned long>(delay) * 20);
        EXPECT_TRUE(root->cancelDRLayoutCreationNotifyTarget(recorder.target()));
        ASSERT_TRUE(recorder.waitForEnd());
        drainEventLoop();
        EXPECT_EQ(std::ranges::count_if(recorder.calls, [](const auto &call) { return call != "progress"; }), 1);
        EXPECT_EQ(recorder.progress.size() % 50, 0u);
        cancelledRuns += recorder.calls.back() == "cancelled" ? 1 : 0;
        EXPECT_EQ(recorder.calls.back() == "finished", recorder.folder != nullptr);
    }
    EXPECT_GT(cancelledRuns, 0);
}

TEST(LayoutCancel, destructor_endsTheWorkerInTheMiddleOfAFolder)
{
    const TemporaryTree tree;
    for (int delay = 0; delay < 20; ++delay) {
        auto root = rootWithFolders(tree, 1, 20'000);
        LayoutRecorder recorder;
        ASSERT_TRUE(root->createDRLayoutAsyncNotifyProgressToTarget(recorder.target()));
        QThread::usleep(static_cast<unsigned long>(delay) * 100);
        const std::weak_ptr<KRFileHierarchyItem> watched = root;
        root.reset();
        EXPECT_TRUE(watched.expired());
        drainEventLoop();
        EXPECT_TRUE(recorder.calls.empty());
    }
}

TEST(LayoutCancel, cancel_showsAfterTheNextDirectChild_alsoWhenThatIsAFile)
{
    const TemporaryTree tree;
    FSRef ref;
    ASSERT_EQ(FSPathMakeRef(tree.makeFile("file", "x"), &ref, nullptr), noErr);
    const auto root = virtualFolderItem(QStringLiteral("disc"));
    constexpr std::size_t files = 200'000;
    for (std::size_t index = 0; index < files; ++index)
        root->addItem(knownFileItem(ref));
    LayoutRecorder recorder;
    ASSERT_TRUE(root->createDRLayoutAsyncNotifyProgressToTarget(recorder.target()));
    ASSERT_TRUE(root->cancelDRLayoutCreationNotifyTarget(recorder.target()));
    ASSERT_TRUE(recorder.waitForEnd());
    EXPECT_EQ(recorder.calls.back(), "cancelled");
    EXPECT_LT(recorder.progress.size(), files);
}
