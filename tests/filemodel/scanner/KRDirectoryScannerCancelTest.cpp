#include "tests/filemodel/scanner/DirectoryScannerFixture.h"

#include <thread>

namespace Tessaron
{

namespace
{

class KRDirectoryScannerCancel : public DirectoryScannerFixture
{
protected:
    /// Scans "top" and cancels where the lister holds the worker; ends with the report.
    void cancelWhileHeld(const std::shared_ptr<TestLister> &lister)
    {
        const std::shared_ptr<KRDirectoryScanner> scanner = scannerFor("top", lister);
        ASSERT_TRUE(scanner->startDirectoryScan());
        lister->waitUntilHeld();
        scanner->stopScanAsync();
        lister->letGo();
        scanner->waitUntilScanEnds();
        waitForTheEnd();
    }
};

} // namespace

TEST_F(KRDirectoryScannerCancel, startDirectoryScan_refuses_whileAScanRuns)
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

TEST_F(KRDirectoryScannerCancel, stopScanSync_returnsWhenTheWorkerHasLeft_andTheCallbackFollows)
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

TEST_F(KRDirectoryScannerCancel, aCancelBelow_keepsWhatWasBuilt_andShowsAtTheParentsNextEntry)
{
    makeFiles("top/folder", 120);
    makeFiles("top/folder2", 120);
    const auto lister = std::make_shared<TestLister>();
    lister->holdAt(2);
    cancelWhileHeld(lister);
    EXPECT_EQ(events, Names{"cancelled"});
    ASSERT_EQ(root->numberOfItems(), 1u);
    EXPECT_EQ(root->items()[0]->numberOfItems(), 50u);
    EXPECT_EQ(root->items()[0]->parent(), root);
}

TEST_F(KRDirectoryScannerCancel, aCancelThatNoFurtherEntryNotices_endsAsFinished)
{
    makeFiles("top/only", 120);
    const auto lister = std::make_shared<TestLister>();
    lister->holdAt(2);
    cancelWhileHeld(lister);
    EXPECT_EQ(events, Names{"finished"});
    ASSERT_EQ(root->numberOfItems(), 1u);
    EXPECT_EQ(root->items()[0]->numberOfItems(), 50u);
}

TEST_F(KRDirectoryScannerCancel, aScannerThatWasCancelled_scansAgainToTheEnd)
{
    makeFiles("top", 120);
    const auto lister = std::make_shared<TestLister>();
    lister->holdAt(1);
    const std::shared_ptr<KRDirectoryScanner> scanner = scannerFor("top", lister);
    ASSERT_TRUE(scanner->startDirectoryScan());
    lister->waitUntilHeld();
    scanner->stopScanAsync();
    lister->letGo();
    waitForTheEnd();
    const auto partial = root;
    EXPECT_EQ(scan(scanner)->numberOfItems(), 120u);
    EXPECT_EQ(events, (Names{"cancelled", "finished"}));
    EXPECT_EQ(scanner->scannedFiles(), 120u) << "counted anew";
    EXPECT_EQ(partial->numberOfItems(), 50u) << "handed over, so left alone";
}

TEST_F(KRDirectoryScannerCancel, stopping_doesNothing_whenNoScanRuns)
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

TEST_F(KRDirectoryScannerCancel, noCallbackComes_whenTheScannerGoesWhileItScans)
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

TEST_F(KRDirectoryScannerCancel, noCallbackComes_onceTheContextIsGone)
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

TEST_F(KRDirectoryScannerCancel, theScannerLivesThroughItsCallback_whenThatDropsIt)
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

TEST_F(KRDirectoryScannerCancel, aScan_mayBeCancelledAtAnyMoment)
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

} // namespace Tessaron
