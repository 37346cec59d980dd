#include "platform/coreservices/ForkAttributes.h"
#include "tests/coreservices/LongTree.h"
#include "tests/filemodel/scanner/DirectoryScannerFixture.h"

#include <sys/xattr.h>
#include <thread>

namespace Tessaron
{

namespace
{

class KRDirectoryScannerTest : public DirectoryScannerFixture
{
};

} // namespace

TEST_F(KRDirectoryScannerTest, factories_giveNull_whereNothingIs)
{
    EXPECT_FALSE(KRDirectoryScanner::directoryScannerWithPath(tree.pathText("missing")));
    EXPECT_FALSE(KRDirectoryScanner::initWithPath(QString()));
}

TEST_F(KRDirectoryScannerTest, anEmptyFolder_givesARootWithoutChildren)
{
    tree.makeFolder("empty");
    const std::shared_ptr<KRDirectoryScanner> scanner = scannerFor("empty");
    const std::shared_ptr<KRFileHierarchyItem> item = scan(scanner);
    EXPECT_EQ(item->numberOfItems(), 0u);
    EXPECT_EQ(item->fileReference()->path(), tree.pathText("empty"));
    EXPECT_EQ(scanner->scannedFiles() + scanner->scannedDirs() + scanner->errorCount(), 0u);
    EXPECT_EQ(events, Names{"finished"});
}

TEST_F(KRDirectoryScannerTest, aFolderOf120Files_isFetchedInThreeBatches_inListingOrder)
{
    makeFiles("folder", 120);
    const auto lister = std::make_shared<TestLister>();
    const std::shared_ptr<KRDirectoryScanner> scanner = scannerFor("folder", lister);
    const std::shared_ptr<KRFileHierarchyItem> item = scan(scanner);
    EXPECT_EQ(lister->calls, (Names{"folder:50", "folder:50", "folder:20"}));
    EXPECT_EQ(namesOf(*item), systemListing(tree.path("folder")));
    EXPECT_EQ(scanner->scannedFiles(), 120u);
}

TEST_F(KRDirectoryScannerTest, nothingIsSkipped_andLinksAreNotFollowed)
{
    tree.makeFile("top/.hidden");
    tree.makeFile("top/.DS_Store");
    tree.makeFile("top/Program.app/Contents/Info");
    tree.makeSymbolicLink("top/link", "Program.app");
    tree.makeSymbolicLink("top/broken", "nowhere");
    tree.makeFifo("top/fifo");
    tree.makeFile("top/caf\xE9");
    tree.makeFile("top/" + QByteArray(255, 'n'));
    const std::shared_ptr<KRDirectoryScanner> scanner = scannerFor("top");
    const std::shared_ptr<KRFileHierarchyItem> item = scan(scanner);
    EXPECT_EQ(namesOf(*item), systemListing(tree.path("top")));
    EXPECT_EQ(scanner->scannedFiles(), 8u);
    EXPECT_EQ(scanner->scannedDirs(), 2u);
    for (const std::shared_ptr<KRFileHierarchyItem> &child : item->items()) {
        EXPECT_EQ(child->parent(), item);
        EXPECT_EQ(child->fileReference()->isContainer(), nameOf(*child) == "Program.app");
        EXPECT_EQ(child->numberOfItems(), nameOf(*child) == "Program.app" ? 1u : 0u);
    }
}

TEST_F(KRDirectoryScannerTest, references_knowKindAndSizes_withoutAnotherLookAtTheDisk)
{
    tree.makeFile("top/file", QByteArray(9000, 'x'));
    tree.makeFolder("top/folder");
    const bool hasFork = ::setxattr(tree.path("top/file").constData(), resourceForkAttribute, "fork", 4, 0) == 0;
    const std::uint64_t expected = KRFileReference::fileReferenceWithPath(tree.pathText("top/file"))->physicalSize();
    const std::shared_ptr<KRFileHierarchyItem> item = scan(scannerFor("top"));
    tree.remove("top/file");
    tree.remove("top/folder");
    ASSERT_EQ(item->numberOfItems(), 2u);
    for (const std::shared_ptr<KRFileHierarchyItem> &child : item->items()) {
        const bool isFolder = nameOf(*child) == "folder";
        EXPECT_EQ(child->fileReference()->isContainer(), isFolder);
        EXPECT_EQ(child->fileReference()->physicalSize(), isFolder ? 0u : expected);
        EXPECT_EQ(child->fileReference()->rsrcPhysicalSize() > 0, hasFork && !isFolder);
    }
}

TEST_F(KRDirectoryScannerTest, aTree_isCountedAndSizedAsAWhole)
{
    for (int folder = 0; folder < 20; ++folder)
        makeFiles("top/" + QByteArray::number(folder) + "/inner", 30);
    const std::shared_ptr<KRDirectoryScanner> scanner = scannerFor("top");
    const std::shared_ptr<KRFileHierarchyItem> item = scan(scanner);
    EXPECT_EQ(scanner->scannedFiles(), 600u);
    EXPECT_EQ(scanner->scannedDirs(), 40u);
    for (const std::shared_ptr<KRFileHierarchyItem> &folder : item->items()) {
        ASSERT_EQ(folder->numberOfItems(), 1u);
        EXPECT_EQ(folder->items()[0]->numberOfItems(), 30u);
    }
}

TEST_F(KRDirectoryScannerTest, aScanner_mayScanAgain_alsoFromItsCallback)
{
    makeFiles("top", 3);
    const std::shared_ptr<KRDirectoryScanner> scanner = scannerFor("top");
    KRDirectoryScannerDelegate delegate = scanner->delegate();
    int ends = 0;
    delegate.directoryScannerScanDidFinishWithHierarchyItem = [&](KRDirectoryScanner &sender,
                                                                  const std::shared_ptr<KRFileHierarchyItem> &item) {
        EXPECT_EQ(item->numberOfItems(), 3u);
        EXPECT_EQ(sender.scannedFiles(), 3u);
        EXPECT_FALSE(sender.isRunning());
        if (++ends < 5) {
            EXPECT_TRUE(sender.startDirectoryScan());
        }
    };
    scanner->setDelegate(delegate);
    ASSERT_TRUE(scanner->startDirectoryScan());
    EXPECT_TRUE(Testing::runEventLoopUntil([&] { return ends == 5; }));
}

TEST_F(KRDirectoryScannerTest, twoScansInARow_eachHandOverTheirOwnTree)
{
    makeFiles("top", 3);
    const std::shared_ptr<KRDirectoryScanner> scanner = scannerFor("top");
    KRDirectoryScannerDelegate delegate;
    std::vector<std::shared_ptr<KRFileHierarchyItem>> roots;
    delegate.directoryScannerScanDidFinishWithHierarchyItem =
        [&](KRDirectoryScanner &, const std::shared_ptr<KRFileHierarchyItem> &item) { roots.push_back(item); };
    scanner->setDelegate(delegate);
    ASSERT_TRUE(scanner->startDirectoryScan());
    scanner->waitUntilScanEnds();
    ASSERT_TRUE(scanner->startDirectoryScan());
    scanner->waitUntilScanEnds();
    EXPECT_TRUE(Testing::runEventLoopUntil([&] { return roots.size() == 2; }));
    EXPECT_NE(roots[0], roots[1]);
    EXPECT_EQ(roots[0]->numberOfItems(), 3u);
    EXPECT_EQ(roots[1]->numberOfItems(), 3u);
}

TEST_F(KRDirectoryScannerTest, theTree_isFreed_whenNobodyKeepsIt)
{
    makeFiles("top", 3);
    const std::shared_ptr<KRDirectoryScanner> scanner = scannerFor("top");
    KRDirectoryScannerDelegate delegate;
    std::weak_ptr<KRFileHierarchyItem> seen;
    bool hasEnded = false;
    delegate.directoryScannerScanDidFinishWithHierarchyItem = [&](KRDirectoryScanner &,
                                                                  const std::shared_ptr<KRFileHierarchyItem> &item) {
        seen = item;
        hasEnded = true;
    };
    scanner->setDelegate(delegate);
    ASSERT_TRUE(scanner->startDirectoryScan());
    EXPECT_TRUE(Testing::runEventLoopUntil([&] { return hasEnded; }));
    Testing::drainEventLoop();
    EXPECT_TRUE(seen.expired());
}

TEST_F(KRDirectoryScannerTest, withoutADelegate_theScanSimplyEnds)
{
    makeFiles("top", 3);
    const std::shared_ptr<KRDirectoryScanner> scanner =
        KRDirectoryScanner::directoryScannerWithPath(tree.pathText("top"));
    ASSERT_TRUE(scanner->startDirectoryScan());
    scanner->waitUntilScanEnds();
    Testing::drainEventLoop();
    EXPECT_EQ(scanner->scannedFiles(), 3u);
}

TEST_F(KRDirectoryScannerTest, foldersThousandsOfLevelsDeep_areScannedToTheEnd)
{
    constexpr int depth = 3000;
    const QByteArray name("level-name");
    const Testing::TemporaryTree memory(QStringLiteral("/dev/shm")); // a disk takes seconds to make and remove them
    ASSERT_FALSE(Testing::makeDeepFolders(memory.path(), name, depth).isEmpty());
    const std::shared_ptr<KRDirectoryScanner> scanner = KRDirectoryScanner::directoryScannerWithPath(memory.pathText());
    listenTo(scanner);
    std::shared_ptr<KRFileHierarchyItem> item = scan(scanner);
    EXPECT_EQ(scanner->scannedDirs(), static_cast<std::uint32_t>(depth));
    EXPECT_EQ(scanner->scannedFiles(), 1u);
    EXPECT_EQ(events, Names{"finished"});
    int levels = 0;
    while (item->numberOfItems() == 1) {
        item = item->items()[0];
        ++levels;
    }
    EXPECT_EQ(levels, depth + 1);
    EXPECT_EQ(nameOf(*item), "leaf");
    Testing::removeDeepFolders(memory.path(), name, depth);
}

TEST_F(KRDirectoryScannerTest, aDeepTreeWithFilesOnEveryLevel_losesNothing)
{
    QByteArray folder("top");
    for (int level = 0; level < 70; ++level) {
        makeFiles(folder, 12);
        folder += "/d";
        tree.makeFolder(folder);
    }
    const std::shared_ptr<KRDirectoryScanner> scanner = scannerFor("top");
    std::shared_ptr<KRFileHierarchyItem> item = scan(scanner);
    EXPECT_EQ(scanner->scannedFiles(), 840u);
    EXPECT_EQ(scanner->scannedDirs(), 70u);
    EXPECT_EQ(scanner->errorCount(), 0u);
    QByteArray path("top");
    while (item->numberOfItems() > 0) {
        ASSERT_EQ(namesOf(*item), systemListing(tree.path(path)));
        std::shared_ptr<KRFileHierarchyItem> next;
        for (const std::shared_ptr<KRFileHierarchyItem> &child : item->items()) {
            if (nameOf(*child) == "d")
                next = child;
        }
        item = next;
        path += "/d";
    }
}

TEST_F(KRDirectoryScannerTest, longFolders_areReadToTheEnd_alsoWithFoldersBetweenTheirFiles)
{
    const Testing::TemporaryTree memory(QStringLiteral("/dev/shm"));
    for (int number = 0; number < 3000; ++number) {
        memory.makeFile("top/file" + QByteArray::number(number));
        if (number % 10 == 0)
            memory.makeFile("top/folder" + QByteArray::number(number) + "/inner");
    }
    for (int number = 0; number < 1500; ++number)
        memory.makeFile("top/folder0/" + QByteArray::number(number));
    const std::shared_ptr<KRDirectoryScanner> scanner =
        KRDirectoryScanner::directoryScannerWithPath(memory.pathText("top"));
    listenTo(scanner);
    const std::shared_ptr<KRFileHierarchyItem> item = scan(scanner);
    EXPECT_EQ(namesOf(*item), systemListing(memory.path("top")));
    EXPECT_EQ(scanner->scannedFiles(), 4800u);
    EXPECT_EQ(scanner->scannedDirs(), 300u);
    for (const std::shared_ptr<KRFileHierarchyItem> &child : item->items()) {
        const std::string name = nameOf(*child);
        if (name.starts_with("folder")) {
            EXPECT_EQ(namesOf(*child), systemListing(memory.path("top/" + QByteArray::fromStdString(name))));
        }
    }
}

TEST_F(KRDirectoryScannerTest, aMemoryFileSystem_isScannedToo)
{
    const Testing::TemporaryTree memory(QStringLiteral("/dev/shm"));
    for (int number = 0; number < 70; ++number)
        memory.makeFile("top/" + QByteArray::number(number), "x");
    const std::shared_ptr<KRDirectoryScanner> scanner =
        KRDirectoryScanner::directoryScannerWithPath(memory.pathText("top"));
    listenTo(scanner);
    EXPECT_EQ(namesOf(*scan(scanner)), systemListing(memory.path("top")));
}

TEST_F(KRDirectoryScannerTest, severalScanners_mayScanOneTreeAtOnce)
{
    for (int folder = 0; folder < 10; ++folder)
        makeFiles("top/" + QByteArray::number(folder), 60);
    std::vector<std::shared_ptr<KRDirectoryScanner>> scanners;
    scanners.reserve(4);
    for (int number = 0; number < 4; ++number)
        scanners.push_back(scannerFor("top"));
    for (const std::shared_ptr<KRDirectoryScanner> &scanner : scanners)
        EXPECT_TRUE(scanner->startDirectoryScan());
    EXPECT_TRUE(Testing::runEventLoopUntil([this] { return events.size() == 4; }));
    for (const std::shared_ptr<KRDirectoryScanner> &scanner : scanners)
        EXPECT_EQ(scanner->scannedFiles(), 600u);
}

} // namespace Tessaron
