#include "platform/discrecording/burn/ImageTrackWriter.h"

#include "platform/discrecording/burn/BurnErrors.h"
#include "tests/discrecording/burn/FakeBlockImage.h"
#include "tests/discrecording/burn/TestConsumers.h"
#include "tests/support/TemporaryTree.h"

#include <gtest/gtest.h>
#include <sys/time.h>
#include <thread>
#include <unistd.h>

namespace Tessaron::Testing
{

namespace
{

constexpr qint64 mebibyte = 1 << 20;

/// Writes the image to the consumer and gives what it ended with.
NSError write(const BlockImage &image, DRDeviceConsumer &consumer, BurnCancellation &cancellation,
              DRBurnAmounts *amounts = nullptr)
{
    const auto status =
        std::make_shared<BurnStatus>(DRNotificationCenter::currentRunLoopCenter(), std::weak_ptr<DRBurn>());
    BurnSink sink(consumer, *status, cancellation);
    NSError error = ImageTrackWriter(image, sink, cancellation).write();
    if (amounts)
        *amounts = status->amounts();
    return error;
}

NSError write(const BlockImage &image, DRDeviceConsumer &consumer)
{
    BurnCancellation cancellation;
    return write(image, consumer, cancellation);
}

QByteArray patternFile(qint64 size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    for (qint64 at = 0; at < size; ++at)
        bytes[at] = char(at * 7 >> 5);
    return bytes;
}

/// An image of 3 blocks, a file of some 20 MB (which the kernel copies into files) and 2 blocks.
struct ImageWithBigFile {
    ImageWithBigFile()
        : contents(patternFile(20 * mebibyte + 100))
        , file(fileContentsOf(tree.makeFile("big", contents)))
    {
        image.addGenerated(3);
        image.addFileRun(file, 0, file.size);
        image.addGenerated(2);
    }
    [[nodiscard]] QByteArray expected() const
    {
        QByteArray bytes;
        for (std::uint32_t block = 0; block < 3; ++block)
            bytes += generatedBlock(block);
        bytes += contents + QByteArray(2048 - 100, '\0');
        for (std::uint32_t block = image.blockCount() - 2; block < image.blockCount(); ++block)
            bytes += generatedBlock(block);
        return bytes;
    }

    TemporaryTree tree;
    QByteArray contents;
    FileContents file;
    FakeBlockImage image;
};

/// What writing says when `change` happens once the kernel's copy is about to begin.
NSError errorWhenChangedBeforeCopy(const std::function<void(const QByteArray &path)> &change)
{
    ImageWithBigFile given;
    FileConsumer consumer(given.tree.path("image"));
    consumer.beforeCopy = [&] { change(given.tree.path("big")); };
    NSError error = write(given.image, consumer);
    EXPECT_EQ(error.filePath(), given.tree.pathText("big"));
    EXPECT_EQ(consumer.copiedBytes, 0u);
    return error;
}

} // namespace

TEST(ImageTrackWriter, write_handsBlocksToTheConsumerInOrder_withTheirAddresses)
{
    ImageWithBigFile given;
    MemoryConsumer consumer;
    BurnCancellation cancellation;
    DRBurnAmounts amounts;
    EXPECT_TRUE(write(given.image, consumer, cancellation, &amounts).isNull());
    EXPECT_TRUE(consumer.bytes == given.expected());
    EXPECT_EQ(consumer.addresses.first(), 0u);
    EXPECT_EQ(consumer.addresses.last(), given.image.blockCount() - 2);
    EXPECT_EQ(amounts.bytesWritten, std::uint64_t(given.image.blockCount()) * 2048);
}

TEST(ImageTrackWriter, write_letsTheKernelCopyBigFiles_intoAFile)
{
    ImageWithBigFile given;
    FileConsumer consumer(given.tree.path("image"));
    BurnCancellation cancellation;
    DRBurnAmounts amounts;
    EXPECT_TRUE(write(given.image, consumer, cancellation, &amounts).isNull());
    EXPECT_TRUE(given.tree.contents("image") == given.expected());
    EXPECT_EQ(consumer.copiedBytes, 20u * mebibyte + 2048);
    EXPECT_EQ(amounts.bytesWritten, std::uint64_t(given.image.blockCount()) * 2048);
}

TEST(ImageTrackWriter, write_doesNotLetTheKernelCopy_intoAPipe)
{
    ImageWithBigFile given;
    const QByteArray fifo = given.tree.makeFifo("fifo");
    QByteArray received;
    std::thread reader([&] { received = given.tree.contents("fifo"); });
    {
        FileConsumer consumer(fifo);
        EXPECT_TRUE(write(given.image, consumer).isNull());
        EXPECT_EQ(consumer.copiedBytes, 0u);
    }
    reader.join();
    EXPECT_TRUE(received == given.expected());
}

TEST(ImageTrackWriter, write_keepsAnImageEndingInAHole_exactlyAsLongAsPlanned)
{
    const TemporaryTree tree;
    const FileContents file = fileContentsOf(tree.makeSparseFile("sparse", 64 * mebibyte + 1));
    FakeBlockImage image;
    image.addGenerated(1);
    image.addFileRun(file, 0, file.size);
    FileConsumer consumer(tree.path("image"));
    EXPECT_TRUE(write(image, consumer).isNull());
    EXPECT_TRUE(tree.contents("image") == generatedBlock(0) + QByteArray(64 * mebibyte + 2048, '\0'));
}

TEST(ImageTrackWriter, write_failsWithTheFilesName_whenItChangesBeforeTheCopy)
{
    EXPECT_EQ(errorWhenChangedBeforeCopy([](const QByteArray &path) { ::truncate(path.constData(), 5); }).code(),
              eofErr);
    EXPECT_EQ(
        errorWhenChangedBeforeCopy([](const QByteArray &path) { ::truncate(path.constData(), 30 * mebibyte); }).code(),
        fBsyErr);
    EXPECT_EQ(errorWhenChangedBeforeCopy([](const QByteArray &path) { ::utimes(path.constData(), nullptr); }).code(),
              fBsyErr);
}

TEST(ImageTrackWriter, write_failsWithTheFilesName_whenItVanishesBeforeItIsOpened)
{
    ImageWithBigFile given;
    given.tree.remove("big");
    FileConsumer toFile(given.tree.path("image"));
    const NSError error = write(given.image, toFile);
    EXPECT_EQ(error.code(), fnfErr);
    EXPECT_EQ(error.filePath(), given.tree.pathText("big"));
    MemoryConsumer toMemory;
    EXPECT_EQ(write(given.image, toMemory), error);
}

TEST(ImageTrackWriter, write_stopsWhereReadingFails_andConsumesWhatComesBefore)
{
    FakeBlockImage image;
    image.addGenerated(2000);
    image.failingBlock = 1999;
    MemoryConsumer consumer;
    const NSError error = write(image, consumer);
    EXPECT_EQ(error.localizedDescription(), QStringLiteral("Block 1999 cannot be read."));
    EXPECT_FALSE(consumer.bytes.isEmpty());
    EXPECT_LE(consumer.bytes.size(), 1999 * 2048);
}

TEST(ImageTrackWriter, write_givesTheConsumersStatus_whenItRefusesABlock)
{
    FakeBlockImage image;
    image.addGenerated(3000);
    MemoryConsumer consumer;
    consumer.failingBlock = 1500;
    consumer.failure = -77;
    const NSError error = write(image, consumer);
    EXPECT_EQ(error.code(), -77);
    EXPECT_TRUE(error.localizedDescription().contains(QStringLiteral("status -77")));
}

TEST(ImageTrackWriter, write_saysThatTheDiskIsFull_whenItIs)
{
    FakeBlockImage generated;
    generated.addGenerated(100);
    FileConsumer full("/dev/full");
    const NSError error = write(generated, full);
    EXPECT_EQ(error.code(), dskFulErr);
    EXPECT_EQ(error.localizedDescription(),
              QStringLiteral("The disk holding “/dev/full” is full. Free some space there, or write to another disk."));
}

TEST(ImageTrackWriter, write_ends_whenCancelledDuringTheKernelsCopy)
{
    ImageWithBigFile given;
    FileConsumer consumer(given.tree.path("image"));
    BurnCancellation cancellation;
    consumer.beforeCopy = [&] { cancellation.request(); };
    EXPECT_EQ(write(given.image, consumer, cancellation).code(), kDRUserCanceledErr);
    EXPECT_EQ(consumer.copiedBytes, 0u);
}

TEST(ImageTrackWriter, write_returns_whenCancelledWhileAReaderHangs)
{
    FakeBlockImage image;
    image.addGenerated(20000);
    image.slowBlock = 3000;
    MemoryConsumer consumer;
    BurnCancellation cancellation;
    const auto status =
        std::make_shared<BurnStatus>(DRNotificationCenter::currentRunLoopCenter(), std::weak_ptr<DRBurn>());
    BurnSink sink(consumer, *status, cancellation);
    std::thread canceller([&] {
        image.gate.waitForVisitor();
        cancellation.request();
    });
    {
        ImageTrackWriter writer(image, sink, cancellation);
        EXPECT_EQ(writer.write().code(), kDRUserCanceledErr);
        image.gate.open(); // only now can the writer be destroyed
    }
    canceller.join();
}

TEST(ImageTrackWriter, write_ends_whenCancelledBetweenBlocks)
{
    FakeBlockImage image;
    image.addGenerated(20000);
    BurnCancellation cancellation;
    MemoryConsumer consumer;
    consumer.beforeWrite = [&] { cancellation.request(); };
    EXPECT_EQ(write(image, consumer, cancellation).code(), kDRUserCanceledErr);
    EXPECT_EQ(consumer.addresses.size(), 1) << "the write that was under way is the last";
}

} // namespace Tessaron::Testing
