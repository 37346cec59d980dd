#include "platform/discrecording/objects/DRFolder.h"
#include "tests/filemodel/tree/LayoutRecorder.h"
#include "tests/support/EventLoop.h"
#include "tests/support/FailingAllocations.h"
#include "tests/support/TemporaryTree.h"
#include "tests/support/WithoutThreads.h"

#include <cerrno>
#include <gtest/gtest.h>

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

const QString disc = QStringLiteral("disc");

} // namespace

TEST(LayoutCreation, start_refusesATarget_thatLacksProgressOrFinished)
{
    const auto root = virtualFolderItem(disc);
    LayoutRecorder recorder;
    KRFileHierarchyItemLayoutTarget target = recorder.target();
    target.KRFileHierarchyItemDRLayoutCreationProgress = nullptr;
    EXPECT_FALSE(root->createDRLayoutAsyncNotifyProgressToTarget(target));
    target = recorder.target();
    target.KRFileHierarchyItemDRLayoutCreationFinished = nullptr;
    EXPECT_FALSE(root->createDRLayoutAsyncNotifyProgressToTarget(target));
    EXPECT_FALSE(root->createDRLayoutAsyncNotifyProgressToTarget({}));
    drainEventLoop();
    EXPECT_TRUE(recorder.calls.empty());
    target = recorder.target();
    target.KRFileHierarchyItemDRLayoutCreationDidCancel = nullptr; // not asked for at the start
    EXPECT_TRUE(root->createDRLayoutAsyncNotifyProgressToTarget(target));
    EXPECT_TRUE(recorder.waitForEnd());
}

TEST(LayoutCreation, start_refusesASecondTime_whileOneRuns)
{
    const auto root = virtualFolderItem(disc);
    LayoutRecorder recorder;
    LayoutRecorder second;
    ASSERT_TRUE(root->createDRLayoutAsyncNotifyProgressToTarget(recorder.target()));
    EXPECT_FALSE(root->createDRLayoutAsyncNotifyProgressToTarget(second.target()));
    EXPECT_TRUE(recorder.waitForEnd());
    EXPECT_EQ(recorder.calls, (std::vector<std::string>{"finished"}));
    EXPECT_TRUE(second.calls.empty());
}

TEST(LayoutCreation, finished_getsAnEmptyFolder_forAnEmptyVirtualRoot)
{
    const auto root = virtualFolderItem(disc);
    LayoutRecorder recorder;
    const auto folder = recorder.run(*root);
    ASSERT_TRUE(folder);
    EXPECT_EQ(folder->baseName(), disc);
    EXPECT_TRUE(folder->isVirtual());
    EXPECT_TRUE(folder->children().empty());
    EXPECT_EQ(recorder.calls, (std::vector<std::string>{"finished"}));
}

TEST(LayoutCreation, progress_isReportedOncePerFile_beforeTheEnd)
{
    const TemporaryTree tree;
    const auto root = virtualFolderItem(disc);
    const auto inner = virtualFolderItem(QStringLiteral("inner"));
    root->addItem(inner);
    for (const char *const name : {"one", "two", "three"})
        inner->addItem(itemAt(QString::fromUtf8(tree.makeFile(name, "x"))));
    LayoutRecorder recorder;
    const auto folder = recorder.run(*root);
    ASSERT_TRUE(folder);
    EXPECT_EQ(recorder.calls, (std::vector<std::string>{"progress", "progress", "progress", "finished"}));
    EXPECT_TRUE(std::ranges::is_sorted(recorder.progress));
    EXPECT_EQ(pathsBelow(*folder),
              (QStringList{QStringLiteral("inner/"), QStringLiteral("inner/one"), QStringLiteral("inner/two"),
                           QStringLiteral("inner/three")}));
}

TEST(LayoutCreation, progress_isMebibytesOverBytes)
{
    const TemporaryTree tree;
    const auto root = virtualFolderItem(disc);
    for (const char *const name : {"one", "two"})
        root->addItem(itemAt(QString::fromUtf8(tree.makeFile(name, QByteArray(qsizetype{5} * 1024 * 1024, 'x')))));
    ASSERT_EQ(root->contentsPhysicalSize(), 10u * 1024 * 1024) << "the temporary folder allocates as we expect";
    LayoutRecorder recorder;
    ASSERT_TRUE(recorder.run(*root));
    EXPECT_EQ(recorder.progress, (std::vector<float>{float(5.0 / 10485760), float(10.0 / 10485760)}));
}

TEST(LayoutCreation, progress_countsWholeUnitsOf10240Bytes)
{
    const TemporaryTree tree;
    const auto root = virtualFolderItem(disc);
    // Three of the system's pages are one unit and a bit, eight are three and a bit, one is none.
    for (const int pages : {3, 8, 1})
        root->addItem(itemAt(QString::fromUtf8(
            tree.makeFile("f" + QByteArray::number(pages), QByteArray(qsizetype(pages) * 4096, 'x')))));
    ASSERT_EQ(root->contentsPhysicalSize(), 12u * 4096) << "the temporary folder allocates as we expect";
    LayoutRecorder recorder;
    ASSERT_TRUE(recorder.run(*root));
    const double total = 12 * 4096;
    const double first = 1 / 102.4;
    const double second = first + 3 / 102.4;
    EXPECT_EQ(recorder.progress,
              (std::vector<float>{float(first / total), float(second / total), float((second + 0.0001) / total)}));
}

TEST(LayoutCreation, progress_countsALittle_forAnEmptyFile_andIsCappedAtOne)
{
    const TemporaryTree tree;
    const auto root = virtualFolderItem(disc);
    root->addItem(itemAt(QString::fromUtf8(tree.makeFile("empty"))));
    ASSERT_EQ(root->contentsPhysicalSize(), 0u);
    LayoutRecorder recorder;
    ASSERT_TRUE(recorder.run(*root));
    EXPECT_EQ(recorder.progress, (std::vector<float>{float(0.0001 / 0.01)}));

    for (int index = 0; index < 200; ++index)
        root->addItem(itemAt(QString::fromUtf8(tree.makeFile("empty" + QByteArray::number(index)))));
    LayoutRecorder many;
    ASSERT_TRUE(many.run(*root));
    ASSERT_EQ(many.progress.size(), 201u);
    EXPECT_LT(many.progress[98], 1.0f);
    EXPECT_EQ(many.progress.back(), 1.0f);
}

TEST(LayoutCreation, finished_getsNull_whenTheRootCannotBeMade)
{
    const TemporaryTree tree;
    LayoutRecorder withoutReference;
    EXPECT_FALSE(withoutReference.run(*KRFileHierarchyItem::fileHierarchyItemWithFileReference(nullptr)));
    EXPECT_EQ(withoutReference.calls, (std::vector<std::string>{"finished"}));
    LayoutRecorder icon;
    EXPECT_FALSE(icon.run(*itemAt(QString::fromUtf8(tree.makeFile("Icon\r")))));
    EXPECT_EQ(icon.calls, (std::vector<std::string>{"finished"}));
}

TEST(LayoutCreation, finished_getsTheFile_whenTheRootIsOne)
{
    const TemporaryTree tree;
    LayoutRecorder recorder;
    EXPECT_FALSE(recorder.run(*itemAt(QString::fromUtf8(tree.makeFile("file")))));
    EXPECT_EQ(recorder.calls, (std::vector<std::string>{"progress", "finished"}));
    ASSERT_TRUE(recorder.madeRoot);
    EXPECT_FALSE(recorder.madeRoot->isFolder());
    EXPECT_EQ(recorder.madeRoot->baseName(), QStringLiteral("file"));
}

TEST(LayoutCreation, start_isFalse_forATargetThatIsGone)
{
    const auto root = virtualFolderItem(QStringLiteral("disc"));
    LayoutRecorder recorder;
    KRFileHierarchyItemLayoutTarget target = recorder.target();
    auto context = std::make_shared<int>();
    target.context = CallbackContext(context);
    context.reset();
    EXPECT_FALSE(root->createDRLayoutAsyncNotifyProgressToTarget(target));
    ASSERT_TRUE(recorder.run(*root)) << "nothing was started";
}

TEST(LayoutCreation, anItemThatHoldsItself_isLaidOutOnce_andNullChildrenAreNone)
{
    const TemporaryTree tree;
    const auto root = virtualFolderItem(QStringLiteral("disc"));
    const auto inner = virtualFolderItem(QStringLiteral("inner"));
    root->addItem(inner);
    inner->addItem(itemAt(QString::fromUtf8(tree.makeFile("file", "x"))));
    const std::uint64_t size = root->contentsPhysicalSize();
    inner->items().push_back(root); // past the check of addItem()
    inner->items().push_back(inner);
    inner->items().push_back(nullptr);
    EXPECT_EQ(root->contentsPhysicalSize(), size);
    EXPECT_EQ(inner->visibleItems().size(), 3u);
    EXPECT_EQ(inner->numberOfVisibleItems(), 3u);
    EXPECT_FALSE(inner->childWithDesiredName(QStringLiteral("missing")));
    LayoutRecorder recorder;
    const auto folder = recorder.run(*root);
    ASSERT_TRUE(folder);
    EXPECT_EQ(pathsBelow(*folder), (QStringList{QStringLiteral("inner/"), QStringLiteral("inner/file")}));
    inner->items().clear(); // or they would keep each other alive
}

TEST(LayoutCreation, aChildInManyPlaces_isCountedInEach_withoutWalkingItAgain)
{
    const TemporaryTree tree;
    auto item = virtualFolderItem(QStringLiteral("innermost"));
    item->addItem(itemAt(QString::fromUtf8(tree.makeFile("file", "x"))));
    const std::uint64_t size = item->contentsPhysicalSize();
    for (int level = 0; level < 40; ++level) { // 2^40 ways to the file
        const auto above = virtualFolderItem(QString::number(level));
        above->items() = {item, item};
        item = above;
    }
    EXPECT_EQ(item->contentsPhysicalSize(), size << 40);
}

TEST(LayoutCreation, anotherOne_canBeStartedFromTheFinishedCallback)
{
    const TemporaryTree tree;
    const auto root = virtualFolderItem(disc);
    root->addItem(itemAt(QString::fromUtf8(tree.makeFile("file"))));
    LayoutRecorder first;
    LayoutRecorder second;
    first.onEnd = [&](KRFileHierarchyItem &item) {
        EXPECT_TRUE(item.createDRLayoutAsyncNotifyProgressToTarget(second.target()));
    };
    ASSERT_TRUE(first.run(*root));
    EXPECT_TRUE(second.waitForEnd());
    EXPECT_EQ(first.calls, (std::vector<std::string>{"progress", "finished"}));
    EXPECT_EQ(second.calls, (std::vector<std::string>{"progress", "finished"}));
    EXPECT_NE(first.folder, second.folder);
}

TEST(LayoutCreation, layout_livesOn_whenTheItemsAreGone)
{
    const TemporaryTree tree;
    auto root = virtualFolderItem(disc);
    const auto reference = KRFileReference::fileReferenceWithPath(QString::fromUtf8(tree.makeFile("folder/file")));
    reference->setDesiredName(QStringLiteral("renamed"));
    root->addItem(KRFileHierarchyItem::fileHierarchyItemWithFileReference(reference));
    const std::weak_ptr<KRFileHierarchyItem> watched = root;
    LayoutRecorder recorder;
    const auto folder = recorder.run(*root);
    root.reset();
    EXPECT_TRUE(watched.expired());
    EXPECT_EQ(pathsBelow(*folder), (QStringList{QStringLiteral("renamed")}));
}

TEST(LayoutCreation, callbacks_areSilent_onceTheirContextIsGone)
{
    const TemporaryTree tree;
    const auto root = virtualFolderItem(disc);
    root->addItem(itemAt(QString::fromUtf8(tree.makeFile("file"))));
    LayoutRecorder silent;
    auto context = std::make_shared<int>(0);
    KRFileHierarchyItemLayoutTarget target = silent.target();
    target.context = CallbackContext(context);
    ASSERT_TRUE(root->createDRLayoutAsyncNotifyProgressToTarget(target));
    context.reset();
    LayoutRecorder next; // refused until the silent one has ended
    ASSERT_TRUE(runEventLoopUntil([&] { return root->createDRLayoutAsyncNotifyProgressToTarget(next.target()); }));
    EXPECT_TRUE(next.waitForEnd());
    EXPECT_TRUE(silent.calls.empty());
    EXPECT_EQ(next.calls, (std::vector<std::string>{"progress", "finished"}));
}

TEST(LayoutCreation, lastPointerToTheItem_mayBeDroppedInACallback)
{
    const TemporaryTree tree;
    auto root = virtualFolderItem(disc);
    for (int index = 0; index < 1000; ++index)
        root->addItem(itemAt(QString::fromUtf8(tree.makeFile(QByteArray::number(index)))));
    const std::weak_ptr<KRFileHierarchyItem> watched = root;
    LayoutRecorder recorder;
    recorder.onProgress = [&](KRFileHierarchyItem &item) {
        root.reset();
        EXPECT_EQ(item.numberOfItems(), 1000u);
    };
    ASSERT_TRUE(root->createDRLayoutAsyncNotifyProgressToTarget(recorder.target()));
    ASSERT_TRUE(runEventLoopUntil([&] { return watched.expired(); }));
    drainEventLoop();
    EXPECT_FALSE(recorder.isOver) << "no end is reported for an item that is gone";
}

TEST(LayoutCreation, start_isFalse_whenTheSystemHasNoThread)
{
    const auto root = virtualFolderItem(disc);
    LayoutRecorder recorder;
    {
        const WithoutThreads none;
        EXPECT_FALSE(root->createDRLayoutAsyncNotifyProgressToTarget(recorder.target()));
    }
    EXPECT_TRUE(recorder.run(*root));
}

TEST(LayoutCreation, theEnd_comes_whileAProgressCallbackRunsAnEventLoop)
{
    const TemporaryTree tree;
    const auto root = virtualFolderItem(disc);
    for (const char *const name : {"one", "two"})
        root->addItem(itemAt(QString::fromUtf8(tree.makeFile(name, "x"))));
    LayoutRecorder recorder;
    recorder.onProgress = [&](KRFileHierarchyItem &) {
        recorder.onProgress = nullptr;
        EXPECT_TRUE(runEventLoopUntil([&] { return recorder.isOver; }));
    };
    ASSERT_TRUE(recorder.run(*root));
    EXPECT_EQ(recorder.calls, (std::vector<std::string>{"progress", "progress", "finished"}));
}

TEST(LayoutCreation, everyAllocationThatFails_isTold)
{
    const TemporaryTree tree;
    tree.makeFile("folder/one.txt", "1");
    tree.makeFile("folder/two.txt", "2");
    const auto root = virtualFolderItem(QStringLiteral("disc"));
    root->addItem(itemAt(tree.pathText("folder")));
    root->items().front()->addItem(itemAt(tree.pathText("folder/one.txt")));
    root->items().front()->addItem(itemAt(tree.pathText("folder/two.txt")));
    bool hasFailed = true;
    int told = 0;
    for (int call = 0; hasFailed && call < 1000; ++call) {
        LayoutRecorder recorder;
        const FailingAllocation failing(call);
        ASSERT_TRUE(root->createDRLayoutAsyncNotifyProgressToTarget(recorder.target()));
        ASSERT_TRUE(recorder.waitForEnd());
        hasFailed = failing.hasFailed();
        const bool isWhole = recorder.folder && pathsBelow(*recorder.folder).size() == 3;
        if (!isWhole) {
            EXPECT_FALSE(recorder.folder) << call;
            EXPECT_EQ(root->unreadableFolders(), (std::vector<UnreadableFolder>{{QByteArray(), ENOMEM}})) << call;
            ++told;
        }
    }
    EXPECT_FALSE(hasFailed);
    EXPECT_GT(told, 10);
}
