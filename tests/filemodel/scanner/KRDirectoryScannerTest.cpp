#include "filemodel/DirectoryLister.h"
#include "platform/coreservices/FSRefAccess.h"
#include "platform/coreservices/ForkAttributes.h"
#include "platform/foundation/NSError.h"
#include "tests/coreservices/LongTree.h"
#include "tests/support/EventLoop.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/KRDirectoryScanner.h>
#include <TessaronClasses/KRFileHierarchyItem.h>
#include <TessaronClasses/KRFileReference.h>
#include <TessaronClasses/PathHelpers.h>

#include <QCoreApplication>
#include <QThread>

#include <condition_variable>
#include <dirent.h>
#include <gtest/gtest.h>
#include <mutex>
#include <string>
#include <sys/xattr.h>
#include <thread>
#include <vector>

namespace Tessaron
{

namespace
{

using Names = std::vector<std::string>;

std::string nameOf(const KRFileHierarchyItem &item)
{
    return nameOfFSRef(*item.fileReference()->fileRef()).toByteArray().toStdString();
}

Names namesOf(const KRFileHierarchyItem &item)
{
    Names names;
    for (const std::shared_ptr<KRFileHierarchyItem> &child : item.items())
        names.push_back(nameOf(*child));
    return names;
}

Names systemListing(const QByteArray &path)
{
    Names names;
    DIR *const directory = ::opendir(path.constData());
    while (const dirent *const entry = ::readdir(directory)) {
        const std::string name = entry->d_name;
        if (name != "." && name != "..")
            names.push_back(name);
    }
    ::closedir(directory);
    return names;
}

/// Stops the worker at chosen calls and counts what it asks for.
class TestLister final : public DirectoryLister
{
public:
    /// Fails the `call`-th bulk call (from 0) in the folder of that name with the status.
    void failIn(const QByteArray &folder, int call, OSStatus status)
    {
        m_failingFolder = folder;
        m_failingCall = call;
        m_status = status;
    }
    /// Holds the worker before the `call`-th bulk call of all until letGo().
    void holdAt(int call) { m_holdAt = call; }
    void waitUntilHeld()
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_isHeld; });
    }
    void letGo()
    {
        const std::lock_guard lock(m_mutex);
        m_holdAt = -1;
        m_changed.notify_all();
    }

    std::unique_ptr<DirectoryListing> open(const FSRef &folder, DirectoryListing *) override
    {
        // Each listing stands alone here, as if the one above were not known.
        std::unique_ptr<DirectoryListing> real = m_fileSystem->open(folder, nullptr);
        return real ? std::make_unique<Listing>(*this, std::move(real), nameOfFSRef(folder).toByteArray()) : nullptr;
    }

    void endScan() override { m_fileSystem->endScan(); }

    std::vector<std::string> calls; ///< "folder:entries" of each bulk call; read when the scan has ended

private:
    class Listing final : public DirectoryListing
    {
    public:
        Listing(TestLister &lister, std::unique_ptr<DirectoryListing> real, const QByteArray &name)
            : m_lister(lister)
            , m_real(std::move(real))
            , m_name(name)
        {
        }
        OSStatus next(std::uint32_t maximum, std::uint32_t *actual, std::uint32_t whichInfo,
                      FSBulkEntry *entries) override
        {
            m_lister.waitWhileHeld();
            OSStatus status = noErr;
            if (m_name == m_lister.m_failingFolder && m_call++ == m_lister.m_failingCall) {
                // As the system does: some entries, and then the failure.
                (void)m_real->next(2, actual, whichInfo, entries);
                status = m_lister.m_status;
            } else {
                status = m_real->next(maximum, actual, whichInfo, entries);
            }
            m_lister.calls.push_back(m_name.toStdString() + ':' + std::to_string(*actual));
            return status;
        }
        void rest() override { m_real->rest(); }

    private:
        TestLister &m_lister;
        const std::unique_ptr<DirectoryListing> m_real;
        const QByteArray m_name;
        int m_call = 0;
    };

    void waitWhileHeld()
    {
        std::unique_lock lock(m_mutex);
        if (m_calls++ != m_holdAt)
            return;
        m_isHeld = true;
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return m_holdAt < 0; });
    }

    const std::shared_ptr<DirectoryLister> m_fileSystem = fileSystem();
    QByteArray m_failingFolder;
    int m_failingCall = 0;
    OSStatus m_status = noErr;
    std::mutex m_mutex; ///< guards the members below
    std::condition_variable m_changed;
    int m_holdAt = -1;
    int m_calls = 0;
    bool m_isHeld = false;
};

class KRDirectoryScannerTest : public ::testing::Test
{
protected:
    void listenTo(const std::shared_ptr<KRDirectoryScanner> &scanner)
    {
        KRDirectoryScannerDelegate delegate;
        delegate.directoryScannerReportedError = [this](KRDirectoryScanner &, const NSError &error) {
            events.push_back("error " + std::to_string(error.code()) + ' ' + error.filePath().toStdString());
            errors.push_back(error);
        };
        delegate.directoryScannerScanDidFinishWithHierarchyItem =
            [this](KRDirectoryScanner &, const std::shared_ptr<KRFileHierarchyItem> &item) { ended("finished", item); };
        delegate.directoryScannerScanDidCancelWithHierarchyItem =
            [this](KRDirectoryScanner &, const std::shared_ptr<KRFileHierarchyItem> &item) {
                ended("cancelled", item);
            };
        scanner->setDelegate(delegate);
    }

    std::shared_ptr<KRDirectoryScanner> scannerFor(const QByteArray &relative)
    {
        std::shared_ptr<KRDirectoryScanner> scanner =
            KRDirectoryScanner::directoryScannerWithPath(tree.pathText(relative));
        listenTo(scanner);
        return scanner;
    }

    std::shared_ptr<KRDirectoryScanner> scannerFor(const QByteArray &relative,
                                                   const std::shared_ptr<TestLister> &lister)
    {
        std::shared_ptr<KRDirectoryScanner> scanner =
            KRDirectoryScanner::directoryScannerWithFSRef(fsRef(tree.pathText(relative)), lister);
        listenTo(scanner);
        return scanner;
    }

    /// Scans to the end; the root item.
    std::shared_ptr<KRFileHierarchyItem> scan(const std::shared_ptr<KRDirectoryScanner> &scanner)
    {
        root.reset();
        EXPECT_TRUE(scanner->startDirectoryScan());
        EXPECT_TRUE(Testing::runEventLoopUntil([this] { return root != nullptr; }));
        return root;
    }

    /// The worker leaves the scan before it schedules its report.
    void waitForTheEnd() const
    {
        ASSERT_TRUE(Testing::runEventLoopUntil([this] { return root != nullptr; }));
    }

    void makeFiles(const QByteArray &folder, int count) const
    {
        for (int number = 0; number < count; ++number)
            tree.makeFile(folder + '/' + QByteArray::number(number));
    }

    const Testing::TemporaryTree tree;
    Names events;
    std::vector<NSError> errors;
    std::shared_ptr<KRFileHierarchyItem> root;

private:
    void ended(const char *how, const std::shared_ptr<KRFileHierarchyItem> &item)
    {
        EXPECT_EQ(QThread::currentThread(), QCoreApplication::instance()->thread());
        events.emplace_back(how);
        root = item;
    }
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

TEST_F(KRDirectoryScannerTest, anUnreadableFolder_becomesAnEmptyItem_withoutAnError)
{
    tree.makeFile("top/closed/file");
    tree.makeFile("top/file");
    tree.setMode("", 0777);
    tree.setMode("top/closed", 0);
    const std::shared_ptr<KRDirectoryScanner> scanner = scannerFor("top");
    {
        // Rights belong to the whole process here, the worker included.
        const Testing::WithoutRootRights rights;
        scan(scanner);
    }
    tree.setMode("top/closed", 0755);
    ASSERT_EQ(root->numberOfItems(), 2u);
    for (const std::shared_ptr<KRFileHierarchyItem> &child : root->items())
        EXPECT_EQ(child->numberOfItems(), 0u);
    EXPECT_EQ(scanner->scannedDirs(), 1u);
    EXPECT_EQ(scanner->errorCount(), 0u);
    EXPECT_EQ(events, Names{"finished"});
}

TEST_F(KRDirectoryScannerTest, aRootThatIsNoFolder_givesAnEmptyRoot)
{
    tree.makeFile("file");
    tree.makeFolder("gone");
    EXPECT_EQ(scan(scannerFor("file"))->numberOfItems(), 0u);
    const std::shared_ptr<KRDirectoryScanner> scanner = scannerFor("gone");
    tree.remove("gone");
    EXPECT_EQ(scan(scanner)->numberOfItems(), 0u);
    EXPECT_EQ(events, (Names{"finished", "finished"}));
}

TEST_F(KRDirectoryScannerTest, aListingThatFails_isReportedOnce_andTheScanGoesOn)
{
    makeFiles("top/bad", 120);
    makeFiles("top/good", 3);
    const auto lister = std::make_shared<TestLister>();
    lister->failIn("bad", 1, ioErr);
    const std::shared_ptr<KRDirectoryScanner> scanner = scannerFor("top", lister);
    const std::shared_ptr<KRFileHierarchyItem> item = scan(scanner);
    EXPECT_EQ(events, (Names{"error -36 " + tree.path("top/bad").toStdString(), "finished"}));
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_EQ(errors[0].domain(), NSOSStatusErrorDomain);
    EXPECT_EQ(scanner->errorCount(), 1u);
    ASSERT_EQ(item->numberOfItems(), 2u);
    for (const std::shared_ptr<KRFileHierarchyItem> &child : item->items())
        EXPECT_EQ(child->numberOfItems(), nameOf(*child) == "bad" ? 52u : 3u);
}

TEST_F(KRDirectoryScannerTest, aFolderThatMayNotBeSearched_isReported)
{
    makeFiles("top/listed", 3);
    tree.setMode("", 0777);
    tree.setMode("top/listed", 0444);
    const std::shared_ptr<KRDirectoryScanner> scanner = scannerFor("top");
    {
        const Testing::WithoutRootRights rights;
        scan(scanner);
    }
    tree.setMode("top/listed", 0755);
    EXPECT_EQ(events, (Names{"error -5000 " + tree.path("top/listed").toStdString(), "finished"}));
}

TEST_F(KRDirectoryScannerTest, startDirectoryScan_refuses_whileAScanRuns)
{
    makeFiles("top", 10);
    const auto lister = std::make_shared<TestLister>();
    lister->holdAt(0);
    const std::shared_ptr<KRDirectoryScanner> scanner = scannerFor("top", lister);
    EXPECT_FALSE(scanner->isRunning());
    EXPECT_TRUE(scanner->startDirectoryScan());
    EXPECT_TRUE(scanner->isRunning());
    EXPECT_FALSE(scanner->startDirectoryScan());
    lister->letGo();
    scanner->waitUntilScanEnds();
    EXPECT_FALSE(scanner->isRunning());
    EXPECT_TRUE(events.empty());
    EXPECT_TRUE(Testing::runEventLoopUntil([this] { return root != nullptr; }));
    EXPECT_EQ(events, Names{"finished"});
}

TEST_F(KRDirectoryScannerTest, stopScanSync_returnsWhenTheWorkerHasLeft_andTheCallbackFollows)
{
    makeFiles("top", 120);
    const auto lister = std::make_shared<TestLister>();
    lister->holdAt(1);
    const std::shared_ptr<KRDirectoryScanner> scanner = scannerFor("top", lister);
    ASSERT_TRUE(scanner->startDirectoryScan());
    lister->waitUntilHeld();
    scanner->stopScanAsync();
    EXPECT_TRUE(scanner->isRunning());
    lister->letGo();
    scanner->stopScanSync();
    EXPECT_FALSE(scanner->isRunning());
    EXPECT_TRUE(events.empty());
    waitForTheEnd();
    EXPECT_EQ(events, Names{"cancelled"});
    // The first batch was taken; the cancellation showed at the first entry of the second.
    EXPECT_EQ(root->numberOfItems(), 50u);
    EXPECT_EQ(scanner->scannedFiles(), 50u);
}

TEST_F(KRDirectoryScannerTest, aCancelBelow_keepsWhatWasBuilt_andShowsAtTheParentsNextEntry)
{
    makeFiles("top/folder", 120);
    makeFiles("top/folder2", 120);
    const auto lister = std::make_shared<TestLister>();
    lister->holdAt(2);
    const std::shared_ptr<KRDirectoryScanner> scanner = scannerFor("top", lister);
    ASSERT_TRUE(scanner->startDirectoryScan());
    lister->waitUntilHeld();
    scanner->stopScanAsync();
    lister->letGo();
    scanner->waitUntilScanEnds();
    waitForTheEnd();
    EXPECT_EQ(events, Names{"cancelled"});
    ASSERT_EQ(root->numberOfItems(), 1u);
    EXPECT_EQ(root->items()[0]->numberOfItems(), 50u);
    EXPECT_EQ(root->items()[0]->parent(), root);
}

TEST_F(KRDirectoryScannerTest, aCancelThatNoFurtherEntryNotices_endsAsFinished)
{
    makeFiles("top/only", 120);
    const auto lister = std::make_shared<TestLister>();
    lister->holdAt(2);
    const std::shared_ptr<KRDirectoryScanner> scanner = scannerFor("top", lister);
    ASSERT_TRUE(scanner->startDirectoryScan());
    lister->waitUntilHeld();
    scanner->stopScanAsync();
    lister->letGo();
    scanner->waitUntilScanEnds();
    waitForTheEnd();
    EXPECT_EQ(events, Names{"finished"});
    ASSERT_EQ(root->numberOfItems(), 1u);
    EXPECT_EQ(root->items()[0]->numberOfItems(), 50u);
}

TEST_F(KRDirectoryScannerTest, stopping_doesNothing_whenNoScanRuns)
{
    tree.makeFolder("top");
    const std::shared_ptr<KRDirectoryScanner> scanner = scannerFor("top");
    scanner->stopScanAsync();
    scanner->stopScanSync();
    scanner->waitUntilScanEnds();
    scan(scanner);
    scanner->stopScanSync();
    Testing::drainEventLoop();
    EXPECT_EQ(events, Names{"finished"});
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

TEST_F(KRDirectoryScannerTest, noCallbackComes_whenTheScannerGoesWhileItScans)
{
    makeFiles("top", 120);
    const auto lister = std::make_shared<TestLister>();
    lister->holdAt(1);
    std::shared_ptr<KRDirectoryScanner> scanner = scannerFor("top", lister);
    ASSERT_TRUE(scanner->startDirectoryScan());
    lister->waitUntilHeld();
    std::thread releaser([&lister] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        lister->letGo();
    });
    scanner.reset();
    releaser.join();
    Testing::drainEventLoop();
    EXPECT_TRUE(events.empty());
    EXPECT_EQ(lister->calls.size(), 2u);
}

TEST_F(KRDirectoryScannerTest, noCallbackComes_onceTheContextIsGone)
{
    makeFiles("top", 3);
    const std::shared_ptr<KRDirectoryScanner> scanner = scannerFor("top");
    auto life = std::make_shared<const int>(1);
    KRDirectoryScannerDelegate delegate = scanner->delegate();
    delegate.context = CallbackContext(life);
    scanner->setDelegate(delegate);
    ASSERT_TRUE(scanner->startDirectoryScan());
    scanner->waitUntilScanEnds();
    life.reset();
    Testing::drainEventLoop();
    EXPECT_TRUE(events.empty());
}

TEST_F(KRDirectoryScannerTest, theScannerLivesThroughItsCallback_whenThatDropsIt)
{
    makeFiles("top", 3);
    std::shared_ptr<KRDirectoryScanner> scanner = scannerFor("top");
    KRDirectoryScannerDelegate delegate;
    std::uint32_t counted = 0;
    delegate.directoryScannerScanDidFinishWithHierarchyItem = [&](KRDirectoryScanner &sender,
                                                                  const std::shared_ptr<KRFileHierarchyItem> &) {
        scanner.reset();
        counted = sender.scannedFiles();
    };
    scanner->setDelegate(delegate);
    ASSERT_TRUE(scanner->startDirectoryScan());
    EXPECT_TRUE(Testing::runEventLoopUntil([&] { return counted == 3; }));
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

TEST_F(KRDirectoryScannerTest, aScan_mayBeCancelledAtAnyMoment)
{
    const Testing::TemporaryTree memory(QStringLiteral("/dev/shm"));
    for (int folder = 0; folder < 60; ++folder) {
        for (int number = 0; number < 150; ++number)
            memory.makeFile(QByteArray::number(folder % 3) + "/" + QByteArray::number(folder) + "/"
                            + QByteArray::number(number));
    }
    for (int round = 0; round < 60; ++round) {
        const std::shared_ptr<KRDirectoryScanner> scanner =
            KRDirectoryScanner::directoryScannerWithPath(memory.pathText());
        listenTo(scanner);
        events.clear();
        root.reset();
        ASSERT_TRUE(scanner->startDirectoryScan());
        std::this_thread::sleep_for(std::chrono::microseconds(round * 150));
        scanner->stopScanSync();
        EXPECT_FALSE(scanner->isRunning());
        waitForTheEnd();
        ASSERT_EQ(events.size(), 1u);
        // A cancel that only the last folder of all notices ends as finished.
        EXPECT_TRUE(events[0] == "cancelled" || events[0] == "finished");
        EXPECT_LE(scanner->scannedFiles(), 9000u);
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
    for (int number = 0; number < 4; ++number)
        scanners.push_back(scannerFor("top"));
    for (const std::shared_ptr<KRDirectoryScanner> &scanner : scanners)
        EXPECT_TRUE(scanner->startDirectoryScan());
    EXPECT_TRUE(Testing::runEventLoopUntil([this] { return events.size() == 4; }));
    for (const std::shared_ptr<KRDirectoryScanner> &scanner : scanners)
        EXPECT_EQ(scanner->scannedFiles(), 600u);
}

} // namespace Tessaron
