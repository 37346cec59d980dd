#include "platform/discrecording/burn/DRBurn.h"
#include "platform/discrecording/burn/DRNotificationCenter.h"
#include "platform/discrecording/objects/DRFolder.h"
#include "platform/discrecording/objects/DRStorageReport.h"
#include "tests/discrecording/burn/TestConsumers.h"
#include "tests/discrecording/burn/TestProducer.h"
#include "tests/support/EventLoop.h"
#include "tests/support/TemporaryTree.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaron::Testing
{

namespace
{

/// A burn of a real folder, run to its end.
QVariantMap burnFolder(const TemporaryTree &tree, DRDeviceConsumer &consumer,
                       const std::function<void(DRBurn &burn)> &onStatus = {})
{
    const std::shared_ptr<DRBurn> burn = DRBurn::burnForDevice(DRCallbackDevice::initWithConsumer(&consumer));
    const std::shared_ptr<DRNotificationCenter> center = DRNotificationCenter::currentRunLoopCenter();
    QVariantMap final;
    center->addObserver(&final, DRBurnStatusChangedNotification, burn.get(), [&](DRBurn &sender) {
        const QString state = sender.status().value(DRStatusStateKey).toString();
        if (onStatus)
            onStatus(sender);
        if (state == DRStatusStateDone || state == DRStatusStateFailed)
            final = sender.status();
    });
    burn->writeLayout(DRTrack::trackForRootFolder(DRFolder::folderWithPath(tree.pathText("source"))));
    EXPECT_TRUE(runEventLoopUntil([&] { return !final.isEmpty(); }));
    center->removeObserver(&final, DRBurnStatusChangedNotification, nullptr);
    return final;
}

QString information(const QVariantMap &final)
{
    return final.value(DRErrorStatusKey).toMap().value(DRErrorStatusErrorInfoStringKey).toString();
}

qint32 code(const QVariantMap &final)
{
    return final.value(DRErrorStatusKey).toMap().value(DRErrorStatusErrorKey).toInt();
}

} // namespace

TEST(DRBurnOfAFolder, theImage_isTheSame_readOrCopiedByTheKernel)
{
    ::setenv("SOURCE_DATE_EPOCH", "1700000000", 1);
    const TemporaryTree tree;
    tree.makeFile("source/a/small", "small file");
    tree.makeFile("source/big", TestProducer::pattern((20 << 20) + 123));
    tree.makeSparseFile("source/holes", 40 << 20);
    tree.makeFolder("source/empty");
    MemoryConsumer memory;
    DRBurnAmounts amounts;
    std::shared_ptr<const DRStorageReport> report;
    EXPECT_EQ(burnFolder(tree, memory,
                         [&](DRBurn &burn) {
                             amounts = burn.amounts();
                             report = burn.storageReport();
                         })
                  .value(DRStatusStateKey),
              DRStatusStateDone);
    SpiedFile file(tree.path("image"));
    EXPECT_EQ(burnFolder(tree, file).value(DRStatusStateKey), DRStatusStateDone);
    EXPECT_TRUE(tree.contents("image") == memory.bytes);
    EXPECT_GT(file.copiedBytes, 60u << 20);
    EXPECT_EQ(amounts.filesTotal, 3u);
    EXPECT_EQ(amounts.foldersTotal, 2u);
    EXPECT_EQ(amounts.bytesTotal, std::uint64_t(memory.bytes.size()));
    EXPECT_TRUE(report);
}

TEST(DRBurnOfAFolder, fails_namingTheFile_whenItShrinksGrowsOrVanishes)
{
    const auto failureAfter = [](const std::function<void(const QByteArray &path)> &change) {
        const TemporaryTree tree;
        tree.makeFile("source/first", QByteArray(3 << 20, 'x'));
        for (int file = 0; file < 200; ++file)
            tree.makeFile("source/m" + QByteArray::number(file), QByteArray(100000, 'x'));
        tree.makeFile("source/z", QByteArray(5000, 'x'));
        MemoryConsumer consumer;
        bool isChanged = false;
        consumer.beforeWrite = [&] {
            if (!std::exchange(isChanged, true))
                change(tree.path("source/z"));
        };
        const QVariantMap final = burnFolder(tree, consumer);
        EXPECT_EQ(final.value(DRStatusStateKey), DRStatusStateFailed);
        EXPECT_TRUE(information(final).contains(tree.pathText("source/z"))) << information(final).toStdString();
        return code(final);
    };
    EXPECT_EQ(failureAfter([](const QByteArray &path) {
                  TemporaryTree::letBirthTimesPass();
                  ::unlink(path.constData());
              }),
              fnfErr);
    EXPECT_EQ(failureAfter([](const QByteArray &path) { ::truncate(path.constData(), 10); }), eofErr);
    EXPECT_EQ(failureAfter([](const QByteArray &path) { ::truncate(path.constData(), 9000); }), fBsyErr);
    EXPECT_EQ(failureAfter([](const QByteArray &path) { ::utimes(path.constData(), nullptr); }), fBsyErr);
}

TEST(DRBurnOfAFolder, fails_namingTheFile_whenAnEmptyOneGrowsWhileOthersAreWritten)
{
    const TemporaryTree tree;
    tree.makeFile("source/a/empty");
    tree.makeFile("source/b/empty");
    tree.makeFile("source/data", QByteArray(3 << 20, 'x'));
    MemoryConsumer consumer;
    bool isChanged = false;
    consumer.beforeWrite = [&] {
        if (!std::exchange(isChanged, true))
            tree.makeFile("source/b/empty", "a line");
    };
    const QVariantMap final = burnFolder(tree, consumer);
    EXPECT_EQ(final.value(DRStatusStateKey), DRStatusStateFailed);
    EXPECT_EQ(code(final), fBsyErr);
    EXPECT_TRUE(information(final).contains(tree.pathText("source/b/empty"))) << information(final).toStdString();
    EXPECT_TRUE(information(final).contains(QStringLiteral("had 0 bytes and now has 6")));
}

TEST(DRBurnOfAFolder, isDone_whenEmptyFilesVanishOrAreTouched)
{
    const TemporaryTree tree;
    tree.makeFile("source/empty");
    tree.makeFile("source/other");
    tree.makeFile("source/data", QByteArray(3 << 20, 'x'));
    MemoryConsumer consumer;
    bool isChanged = false;
    consumer.beforeWrite = [&] {
        if (std::exchange(isChanged, true))
            return;
        ::unlink(tree.path("source/empty").constData());
        ::utimes(tree.path("source/other").constData(), nullptr);
    };
    EXPECT_EQ(burnFolder(tree, consumer).value(DRStatusStateKey), DRStatusStateDone);
}

TEST(DRBurnOfAFolder, abort_endsCancelled_inEachState)
{
    const TemporaryTree tree;
    for (int file = 0; file < 1000; ++file)
        tree.makeFile("source/m" + QByteArray::number(file), QByteArray(20000, 'x'));
    for (const QString &state : {DRStatusStatePreparing, DRStatusStateTrackWrite}) {
        MemoryConsumer consumer;
        // Slow enough that the abort comes before the end.
        consumer.beforeWrite = [] { std::this_thread::sleep_for(std::chrono::milliseconds(20)); };
        const QVariantMap final = burnFolder(tree, consumer, [&](DRBurn &burn) {
            if (burn.status().value(DRStatusStateKey) == state)
                burn.abort();
        });
        EXPECT_EQ(final.value(DRStatusStateKey), DRStatusStateFailed);
        EXPECT_EQ(code(final), kDRUserCanceledErr);
    }
}

} // namespace Tessaron::Testing
