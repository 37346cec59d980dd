#include "platform/discrecording/objects/DRFolder.h"
#include "platform/discrecording/objects/DRStorageReport.h"
#include "tests/discrecording/burn/TestProducer.h"
#include "tests/imaging/trackwriter/RecordingDelegate.h"
#include "tests/support/EventLoop.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/KRTrackWriter.h>

#include <QEventLoop>

#include <algorithm>
#include <csignal>
#include <gtest/gtest.h>
#include <memory>
#include <set>
#include <sys/mount.h>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace Tessaron::Testing
{

namespace
{

const QStringList endOnly = {QStringLiteral("end")};

class KRTrackWriterTest : public testing::Test
{
protected:
    std::shared_ptr<KRTrackWriter> makeWriter(std::uint64_t blocks)
    {
        tree.makeFile("image");
        return KRTrackWriter::trackWriterWithTrack(trackOfProducer(producer, blocks), tree.pathText("image"));
    }
    void start(KRTrackWriter &writer)
    {
        EXPECT_TRUE(writer.writeTrackAndNotifyDelegate(delegate.callbacks()).isNull());
    }
    [[nodiscard]] QString lastHeard() const { return delegate.heard.isEmpty() ? QString() : delegate.heard.last(); }

    const TemporaryTree tree;
    const std::shared_ptr<TestProducer> producer = std::make_shared<TestProducer>();
    RecordingDelegate delegate;
};

} // namespace

TEST_F(KRTrackWriterTest, writer_isNull_withoutLayoutOrPath)
{
    EXPECT_EQ(KRTrackWriter::trackWriterWithTrack({}, tree.pathText("image")), nullptr);
    EXPECT_EQ(KRTrackWriter::trackWriterWithTrack(std::shared_ptr<DRTrack>(), tree.pathText("image")), nullptr);
    EXPECT_EQ(KRTrackWriter::trackWriterWithTrack(trackOfProducer(producer, 1), QString()), nullptr);
    EXPECT_NE(KRTrackWriter::trackWriterWithTrack(trackOfProducer(producer, 1), QStringLiteral("")), nullptr);
}

TEST_F(KRTrackWriterTest, initWithTrack_makesAWriterThatCannotStart_withoutTrackOrPath)
{
    tree.makeFile("kept", "kept");
    for (const auto &writer : {KRTrackWriter::initWithTrack({}, tree.pathText("kept")),
                               KRTrackWriter::initWithTrack(trackOfProducer(producer, 1), QString())}) {
        ASSERT_NE(writer, nullptr);
        EXPECT_EQ(writer->writeTrackAndNotifyDelegate(delegate.callbacks()).code(), fileOpenErr);
    }
    EXPECT_EQ(tree.contents("kept"), "kept");
    EXPECT_EQ(delegate.heard, QStringList());
}

TEST_F(KRTrackWriterTest, initWithTrack_makesAWriter)
{
    tree.makeFile("image");
    const auto writer = KRTrackWriter::initWithTrack(trackOfProducer(producer, 2), tree.pathText("image"));
    start(*writer);
    delegate.waitForEnd();
    EXPECT_EQ(tree.contents("image"), TestProducer::pattern(qsizetype{2} * 2048));
}

TEST_F(KRTrackWriterTest, writing_putsAllBlocksIntoTheFile_thenTellsTheEnd)
{
    const auto writer = makeWriter(3000);
    bool isWhole = false;
    delegate.onEnd = [&](KRTrackWriter &sender) {
        EXPECT_EQ(&sender, writer.get());
        isWhole = tree.contents("image") == TestProducer::pattern(qsizetype{3000} * 2048);
    };
    start(*writer);
    EXPECT_EQ(delegate.heard, QStringList()) << "nothing before the event loop runs";
    delegate.waitForEnd();
    EXPECT_EQ(delegate.heard, (QStringList{QStringLiteral("progress"), QStringLiteral("end")}));
    EXPECT_TRUE(isWhole);
    EXPECT_EQ(delegate.progress.back(), 1.0f);
    EXPECT_TRUE(std::ranges::is_sorted(delegate.progress));
    EXPECT_EQ(writer->amounts().bytesWritten, 3000u * 2048);
    EXPECT_EQ(writer->amounts().bytesTotal, 3000u * 2048);
    EXPECT_TRUE(writer->storageReport()) << "stays when the burn is gone";
}

TEST_F(KRTrackWriterTest, writing_acceptsAnArrayOfTracks)
{
    tree.makeFile("image");
    const DRTrackArray tracks{trackOfProducer(producer, 3), trackOfProducer(producer, 2, 2352)};
    const auto writer = KRTrackWriter::trackWriterWithTrack(tracks, tree.pathText("image"));
    start(*writer);
    delegate.waitForEnd();
    EXPECT_EQ(tree.contents("image"),
              TestProducer::pattern(qsizetype{3} * 2048) + TestProducer::pattern(qsizetype{2} * 2352));
}

TEST_F(KRTrackWriterTest, writing_leavesNothingOfALongerFile)
{
    const auto writer = makeWriter(2);
    tree.makeFile("image", QByteArray(100000, 'x'));
    start(*writer);
    delegate.waitForEnd();
    EXPECT_EQ(tree.contents("image"), TestProducer::pattern(qsizetype{2} * 2048));
}

TEST_F(KRTrackWriterTest, start_failsWithThePath_whenTheFileDoesNotExist)
{
    const auto writer = makeWriter(2);
    tree.remove("image");
    const NSError error = writer->writeTrackAndNotifyDelegate(delegate.callbacks());
    EXPECT_EQ(error, NSError(NSOSStatusErrorDomain, -20, {{NSFilePathErrorKey, tree.pathText("image")}}));
    writer->cancelTrackWriting();
    drainEventLoop();
    EXPECT_EQ(delegate.heard, QStringList());
    EXPECT_FALSE(tree.exists("image"));
}

TEST_F(KRTrackWriterTest, start_fails_whileAWritingRuns)
{
    const auto writer = makeWriter(3000);
    start(*writer);
    EXPECT_EQ(writer->writeTrackAndNotifyDelegate(delegate.callbacks()), NSError(NSOSStatusErrorDomain, -4960));
    delegate.waitForEnd();
    EXPECT_EQ(lastHeard(), QStringLiteral("end"));
}

TEST_F(KRTrackWriterTest, cancel_isTold_onceTheFileIsGone)
{
    for (const std::uint64_t position : {std::uint64_t(0), std::uint64_t(10) << 20}) {
        delegate = {};
        const auto writer = makeWriter(1 << 20);
        producer->beforeData = [&](std::uint64_t at) {
            if (at >= position)
                writer->cancelTrackWriting();
        };
        bool wasThere = true;
        delegate.onEnd = [&](KRTrackWriter &) { wasThere = tree.exists("image"); };
        start(*writer);
        delegate.waitForEnd();
        EXPECT_EQ(lastHeard(), QStringLiteral("cancel"));
        EXPECT_EQ(delegate.heard.count(QStringLiteral("cancel")), 1);
        EXPECT_FALSE(wasThere);
    }
}

TEST_F(KRTrackWriterTest, cancel_isTold_whenAskedForRightAfterTheStart)
{
    const auto writer = makeWriter(1 << 20);
    start(*writer);
    writer->cancelTrackWriting();
    delegate.waitForEnd();
    EXPECT_EQ(lastHeard(), QStringLiteral("cancel"));
    EXPECT_FALSE(tree.exists("image"));
}

TEST_F(KRTrackWriterTest, cancel_changesNothing_afterTheEnd)
{
    const auto writer = makeWriter(2);
    delegate.onEnd = [](KRTrackWriter &sender) { sender.cancelTrackWriting(); };
    start(*writer);
    delegate.waitForEnd();
    writer->cancelTrackWriting();
    drainEventLoop();
    EXPECT_EQ(delegate.heard.mid(delegate.heard.size() - 1), endOnly);
    EXPECT_TRUE(tree.exists("image"));
}

TEST_F(KRTrackWriterTest, callbacks_comeOnTheThreadThatStarted)
{
    std::set<std::thread::id> heardOn;
    std::thread::id startedOn;
    std::thread([&] {
        startedOn = std::this_thread::get_id();
        const auto writer = makeWriter(3000);
        QEventLoop loop;
        KRTrackWriterDelegate callbacks;
        callbacks.KRTrackWriterWritingProgress = [&](KRTrackWriter &, float) {
            heardOn.insert(std::this_thread::get_id());
        };
        callbacks.KRTrackWriterWritingDidEnd = [&](KRTrackWriter &) {
            heardOn.insert(std::this_thread::get_id());
            loop.quit();
        };
        EXPECT_TRUE(writer->writeTrackAndNotifyDelegate(callbacks).isNull());
        loop.exec();
    }).join();
    EXPECT_EQ(heardOn, std::set<std::thread::id>{startedOn});
}

TEST_F(KRTrackWriterTest, delegate_mayLetGoOfTheWriter)
{
    std::shared_ptr<KRTrackWriter> writer = makeWriter(2);
    const std::weak_ptr<KRTrackWriter> watched = writer;
    delegate.onEnd = [&](KRTrackWriter &) { writer.reset(); };
    start(*writer);
    delegate.waitForEnd();
    EXPECT_EQ(lastHeard(), QStringLiteral("end"));
    EXPECT_TRUE(watched.expired());
    EXPECT_TRUE(tree.exists("image"));
}

TEST_F(KRTrackWriterTest, delegate_mayStartAgain_fromItsLastCallback)
{
    const auto writer = makeWriter(2);
    RecordingDelegate second;
    delegate.onEnd = [&](KRTrackWriter &sender) {
        EXPECT_TRUE(sender.writeTrackAndNotifyDelegate(second.callbacks()).isNull());
    };
    start(*writer);
    second.waitForEnd();
    EXPECT_EQ(second.heard.last(), QStringLiteral("end"));
    EXPECT_EQ(tree.contents("image"), TestProducer::pattern(qsizetype{2} * 2048));
}

TEST_F(KRTrackWriterTest, delegate_hearsNothing_whenItsContextIsGone)
{
    const auto writer = makeWriter(2);
    auto context = std::make_shared<int>();
    KRTrackWriterDelegate callbacks = delegate.callbacks();
    callbacks.context = CallbackContext(context);
    EXPECT_TRUE(writer->writeTrackAndNotifyDelegate(callbacks).isNull());
    context.reset();
    EXPECT_TRUE(runEventLoopUntil([&] { return writer->amounts().bytesWritten == std::size_t{2} * 2048; }));
    drainEventLoop();
    EXPECT_EQ(delegate.heard, QStringList());
}

TEST_F(KRTrackWriterTest, destruction_cancelsAndRemovesTheFile)
{
    auto writer = makeWriter(1 << 20);
    std::atomic<bool> isWriting = false;
    producer->beforeData = [&](std::uint64_t at) { isWriting = at > 0; };
    start(*writer);
    while (!isWriting)
        std::this_thread::yield();
    writer.reset();
    EXPECT_EQ(producer->calls.last(), QStringLiteral("cleanup")) << "its thread has ended";
    EXPECT_FALSE(tree.exists("image"));
    drainEventLoop();
    EXPECT_EQ(delegate.heard, QStringList());
}

TEST_F(KRTrackWriterTest, writing_failsWithASentence_whenTheDeviceIsFull)
{
    const auto writer = makeWriter(100);
    tree.remove("image");
    tree.makeSymbolicLink("image", "/dev/full");
    start(*writer);
    delegate.waitForEnd();
    EXPECT_EQ(lastHeard(), QStringLiteral("failure"));
    EXPECT_EQ(delegate.error.domain(), NSOSStatusErrorDomain);
    EXPECT_EQ(delegate.error.code(), dskFulErr);
    EXPECT_EQ(delegate.error.localizedFailureReason(),
              QStringLiteral("The disk holding “%1” is full. Free some space there, or write to another disk.")
                  .arg(tree.pathText("image")));
    EXPECT_EQ(delegate.error.filePath(), tree.pathText("image"));
}

TEST_F(KRTrackWriterTest, failure_speaksOfTheFileByTheNameThatPeopleKnow)
{
    const auto writer = makeWriter(100);
    tree.remove("image");
    tree.makeSymbolicLink("image", "/dev/full");
    writer->setOutputName(QStringLiteral("/home/me/disc.iso"));
    start(*writer);
    delegate.waitForEnd();
    EXPECT_TRUE(delegate.error.localizedFailureReason().startsWith(
        QStringLiteral("The disk holding “/home/me/disc.iso” is full.")));
    EXPECT_EQ(delegate.error.filePath(), QStringLiteral("/home/me/disc.iso"));
}

TEST_F(KRTrackWriterTest, writer_servesASecondWriting_howeverTheFirstEnded)
{
    const auto writer = makeWriter(3000);
    producer->beforeData = [&](std::uint64_t) { writer->cancelTrackWriting(); };
    start(*writer);
    delegate.waitForEnd();
    EXPECT_EQ(lastHeard(), QStringLiteral("cancel"));

    producer->beforeData = {};
    producer->endsAfter = 100;
    tree.makeFile("image");
    RecordingDelegate second;
    EXPECT_TRUE(writer->writeTrackAndNotifyDelegate(second.callbacks()).isNull());
    second.waitForEnd();
    EXPECT_EQ(second.heard.last(), QStringLiteral("failure"));
    EXPECT_FALSE(tree.exists("image"));

    producer->endsAfter = ~std::uint64_t(0);
    tree.makeFile("image");
    RecordingDelegate third;
    writer->setWaitsForDisk(false);
    EXPECT_TRUE(writer->writeTrackAndNotifyDelegate(third.callbacks()).isNull());
    third.waitForEnd();
    EXPECT_EQ(third.heard, (QStringList{QStringLiteral("progress"), QStringLiteral("end")}));
    EXPECT_TRUE(tree.contents("image") == TestProducer::pattern(qsizetype{3000} * 2048));
    EXPECT_EQ(writer->amounts().bytesWritten, 3000u * 2048);
}

TEST_F(KRTrackWriterTest, writeBlocks_appendsWhateverTheAddress_asAConsumerDoes)
{
    const auto writer = makeWriter(1);
    EXPECT_EQ(writer->writeBlocks("x", 1, 1, 0), ioErr) << "nothing is being written";
    EXPECT_EQ(writer->blockSink(), nullptr);
    OSStatus status = -1;
    producer->beforeData = [&](std::uint64_t) { status = writer->writeBlocks("head", 2, 2, 99); };
    start(*writer);
    delegate.waitForEnd();
    EXPECT_EQ(status, noErr);
    EXPECT_EQ(tree.contents("image"), "head" + TestProducer::pattern(2048));
}

TEST_F(KRTrackWriterTest, writing_leavesADeviceAlone_whenItFails)
{
    const auto writer = KRTrackWriter::trackWriterWithTrack(trackOfProducer(producer, 5), QStringLiteral("/dev/full"));
    start(*writer);
    delegate.waitForEnd();
    EXPECT_EQ(lastHeard(), QStringLiteral("failure"));
    EXPECT_EQ(::access("/dev/full", F_OK), 0);
}

TEST_F(KRTrackWriterTest, writing_failsAndRemovesTheFile_whenTheFileSystemIsFull)
{
    const QByteArray folder = tree.makeFolder("small");
    if (::mount("tmpfs", folder.constData(), "tmpfs", 0, "size=1m") != 0)
        GTEST_SKIP() << "mounting is not permitted";
    tree.makeFile("small/image");
    {
        const auto writer =
            KRTrackWriter::trackWriterWithTrack(trackOfProducer(producer, 2000), tree.pathText("small/image"));
        start(*writer);
        delegate.waitForEnd();
    }
    EXPECT_EQ(lastHeard(), QStringLiteral("failure"));
    EXPECT_EQ(delegate.error.code(), dskFulErr);
    EXPECT_TRUE(delegate.error.localizedFailureReason().contains(tree.pathText("small/image")));
    EXPECT_FALSE(tree.exists("small/image"));
    EXPECT_EQ(::umount(folder.constData()), 0);
}

TEST_F(KRTrackWriterTest, writing_fails_whenTheFileMayNotGrowSoFar)
{
    const auto writer = makeWriter(2000);
    const auto oldHandler = ::signal(SIGXFSZ, SIG_IGN);
    rlimit limit;
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &limit), 0);
    const rlim_t oldLimit = std::exchange(limit.rlim_cur, 1 << 20);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    start(*writer);
    delegate.waitForEnd();
    limit.rlim_cur = oldLimit;
    EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    ::signal(SIGXFSZ, oldHandler);
    EXPECT_EQ(lastHeard(), QStringLiteral("failure"));
    EXPECT_TRUE(delegate.error.localizedFailureReason().contains(tree.pathText("image")));
    EXPECT_FALSE(tree.exists("image"));
}

TEST_F(KRTrackWriterTest, writing_makesAnImageOfAFolder)
{
    tree.makeFile("source/file", "contents of the file");
    tree.makeFile("source/big", TestProducer::pattern(20 << 20));
    tree.makeFile("image");
    const auto track = DRTrack::trackForRootFolder(DRFolder::folderWithPath(tree.pathText("source")));
    const auto writer = KRTrackWriter::trackWriterWithTrack(track, tree.pathText("image"));
    start(*writer);
    delegate.waitForEnd();
    EXPECT_EQ(lastHeard(), QStringLiteral("end"));
    EXPECT_EQ(track->properties().value(DRTrackLengthKey).toULongLong(), writer->amounts().bytesTotal / 2048);
    const QByteArray image = tree.contents("image");
    EXPECT_EQ(image.mid(16 * 2048 + 1, 5), "CD001");
    EXPECT_TRUE(image.contains("contents of the file"));
    EXPECT_TRUE(image.contains(TestProducer::pattern(20 << 20)));
    EXPECT_EQ(std::uint64_t(image.size()), writer->amounts().bytesTotal);
    EXPECT_EQ(writer->amounts().filesTotal, 2u);
}

} // namespace Tessaron::Testing
