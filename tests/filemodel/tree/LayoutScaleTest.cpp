#include "platform/discrecording/objects/DRFile.h"
#include "platform/discrecording/objects/DRFolder.h"
#include "tests/coreservices/LongTree.h"
#include "tests/filemodel/tree/LayoutRecorder.h"
#include "tests/support/EventLoop.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/KRDirectoryScanner.h>

#include <chrono>
#include <cstdio>
#include <ctime>
#include <gtest/gtest.h>
#include <malloc.h>

using namespace Tessaron;
using namespace Tessaron::Testing;

TEST(LayoutScale, aHundredThousandFiles_areDeliveredOneByOne)
{
    constexpr std::size_t count = 100'000;
    const TemporaryTree tree;
    FSRef ref;
    ASSERT_EQ(FSPathMakeRef(tree.makeFile("file"), &ref, nullptr), noErr);
    const auto root = virtualFolderItem(QStringLiteral("disc"));
    for (std::size_t folder = 0; folder < 2000; ++folder) {
        const auto inner = virtualFolderItem(QString::number(folder));
        for (std::size_t file = 0; file < count / 2000; ++file)
            inner->addItem(knownFileItem(ref));
        root->addItem(inner);
    }
    LayoutRecorder recorder;
    recorder.calls.reserve(count + 1);
    recorder.progress.reserve(count);
    const auto start = std::chrono::steady_clock::now();
    const auto folder = recorder.run(*root);
    const auto elapsed = std::chrono::steady_clock::now() - start;
    std::printf("layout of 100,000 files with its callbacks: %.0f ms\n",
                std::chrono::duration<double, std::milli>(elapsed).count());
    ASSERT_TRUE(folder);
    EXPECT_EQ(recorder.progress.size(), count);
    EXPECT_TRUE(std::ranges::is_sorted(recorder.progress));
    EXPECT_EQ(recorder.calls.back(), "finished");
    EXPECT_LT(elapsed, std::chrono::seconds(10)); // a busy machine; see the printed figure
}

TEST(LayoutScale, aMillionObjects_fitIntoTheirMemory)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizer counts its own memory";
#endif
    constexpr std::size_t count = 100'000;
    FSRef ref;
    ref.device = 1;
    ref.inode = 1;
    const std::size_t before = ::mallinfo2().uordblks;
    std::vector<std::shared_ptr<DRFile>> files;
    files.reserve(count);
    for (std::size_t index = 0; index < count; ++index)
        files.push_back(DRFileCreateReal(&ref));
    const std::size_t perFile = (::mallinfo2().uordblks - before) / count;
    const std::size_t beforeItems = ::mallinfo2().uordblks;
    std::vector<std::shared_ptr<KRFileHierarchyItem>> items;
    items.reserve(count);
    for (std::size_t index = 0; index < count; ++index)
        items.push_back(KRFileHierarchyItem::fileHierarchyItemWithFileReference(nullptr));
    const std::size_t perItem = (::mallinfo2().uordblks - beforeItems) / count;
    std::printf("bytes of heap with the pointer to it: %zu a file of the layout, %zu an item\n", perFile, perItem);
    EXPECT_LE(perFile, 150u + sizeof(files.front()));
    EXPECT_LE(perItem, 112u + sizeof(items.front()));
}

TEST(LayoutScale, aVeryDeepTree_needsNoRecursion)
{
    const auto root = virtualFolderItem(QStringLiteral("disc"));
    auto deepest = root;
    for (int depth = 0; depth < 100'000; ++depth) {
        const auto inner = virtualFolderItem(QStringLiteral("d"));
        deepest->addItem(inner);
        deepest = inner;
    }
    LayoutRecorder recorder;
    const auto folder = recorder.run(*root);
    ASSERT_TRUE(folder);
    std::size_t depth = 0;
    for (const DRFolder *at = folder.get(); !at->children().empty(); ++depth)
        at = static_cast<const DRFolder *>(at->children().front().get());
    EXPECT_EQ(depth, 100'000u);
}

TEST(LayoutScale, aLayoutThousandsOfLevelsDeep_takesTimeForEachLevelOnce)
{
    constexpr int levels = 6000;
    const TemporaryTree tree;
    ASSERT_FALSE(makeDeepFolders(tree.path(), "d", levels).isEmpty());
    const auto scanner = KRDirectoryScanner::directoryScannerWithPath(tree.pathText());
    std::shared_ptr<KRFileHierarchyItem> root;
    KRDirectoryScannerDelegate delegate;
    delegate.directoryScannerScanDidFinishWithHierarchyItem =
        [&root](KRDirectoryScanner &, const std::shared_ptr<KRFileHierarchyItem> &item) { root = item; };
    scanner->setDelegate(delegate);
    ASSERT_TRUE(scanner->startDirectoryScan());
    ASSERT_TRUE(runEventLoopUntil([&root] { return root != nullptr; }));
    LayoutRecorder recorder;
    const std::clock_t start = std::clock();
    const auto folder = recorder.run(*root);
    const double seconds = double(std::clock() - start) / CLOCKS_PER_SEC;
    std::printf("layout of %d levels: %.0f ms of processor time\n", levels, seconds * 1000);
    ASSERT_TRUE(folder);
    int depth = 0;
    for (const DRFSObject *at = folder.get(); at->isFolder(); ++depth)
        at = static_cast<const DRFolder *>(at)->children().front().get();
    --depth; // the root itself
    EXPECT_EQ(depth, levels);
    EXPECT_TRUE(root->unreadableFolders().empty());
    EXPECT_LT(seconds, 3.0); // by paths it takes half a minute
    removeDeepFolders(tree.path(), "d", levels);
}
