#include "platform/discrecording/burn/ImageTrackWriter.h"

#include "platform/discrecording/burn/BurnErrors.h"
#include "platform/discrecording/burn/CallbackSink.h"
#include "platform/discrecording/burn/DRBurn.h"
#include "platform/disctracks/SectorCoding.h"
#include "tests/discrecording/burn/FakeBlockImage.h"
#include "tests/discrecording/burn/TestConsumers.h"
#include "tests/support/TemporaryTree.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <sys/time.h>
#include <thread>
#include <unistd.h>

namespace Tessaron::Testing
{

namespace
{

constexpr qint64 mebibyte = 1 << 20;

/// Does not own the image, which lives as long as the test.
std::shared_ptr<const BlockImage> shared(const BlockImage &image)
{
    return {std::shared_ptr<const BlockImage>(), &image};
}

/// Writes the image to the sink; gives what it ended with, and how many bytes were taken.
NSError write(const BlockImage &image, BlockSink &sink, std::stop_token cancellation = {},
              std::uint64_t *bytesTaken = nullptr)
{
    std::uint64_t taken = 0;
    BlockStream stream(sink, std::move(cancellation), [&](std::uint64_t bytes) { taken += bytes; });
    NSError error = ImageTrackWriter(shared(image)).write(stream);
    if (bytesTaken)
        *bytesTaken = taken;
    return error;
}

NSError write(const BlockImage &image, DRDeviceConsumer &consumer, std::stop_token cancellation = {},
              std::uint64_t *bytesTaken = nullptr)
{
    CallbackSink sink(consumer);
    return write(image, sink, std::move(cancellation), bytesTaken);
}

/// Which of its two faces a file of a test shows does not matter.
BlockSink &sinkOf(SpiedFile &file)
{
    return file;
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
    SpiedFile file(given.tree.path("image"));
    file.beforeCopy = [&] { change(given.tree.path("big")); };
    NSError error = write(given.image, sinkOf(file));
    EXPECT_EQ(error.filePath(), given.tree.pathText("big"));
    return error;
}

} // namespace

TEST(ImageTrackWriter, write_handsBlocksToTheConsumerInOrder_withTheirAddresses)
{
    ImageWithBigFile given;
    MemoryConsumer consumer;
    std::uint64_t taken = 0;
    EXPECT_TRUE(write(given.image, consumer, {}, &taken).isNull());
    EXPECT_TRUE(consumer.bytes == given.expected());
    EXPECT_EQ(consumer.addresses.first(), 0u);
    EXPECT_EQ(consumer.addresses.last(), given.image.blockCount() - 2);
    EXPECT_EQ(taken, std::uint64_t(given.image.blockCount()) * 2048);
}

TEST(ImageTrackWriter, write_letsTheKernelCopyBigFiles_intoAFile)
{
    ImageWithBigFile given;
    SpiedFile file(given.tree.path("image"));
    std::uint64_t taken = 0;
    EXPECT_TRUE(write(given.image, sinkOf(file), {}, &taken).isNull());
    EXPECT_TRUE(given.tree.contents("image") == given.expected());
    EXPECT_EQ(file.copiedBytes, 20u * mebibyte + 2048);
    EXPECT_EQ(taken, std::uint64_t(given.image.blockCount()) * 2048);
}

TEST(ImageTrackWriter, write_doesNotLetTheKernelCopy_intoAPipe)
{
    ImageWithBigFile given;
    const QByteArray fifo = given.tree.makeFifo("fifo");
    QByteArray received;
    std::thread reader([&] { received = given.tree.contents("fifo"); });
    {
        SpiedFile file(fifo);
        EXPECT_TRUE(write(given.image, sinkOf(file)).isNull());
        EXPECT_EQ(file.copiedBytes, 0u);
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
    SpiedFile output(tree.path("image"));
    EXPECT_TRUE(write(image, sinkOf(output)).isNull());
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
    SpiedFile toFile(given.tree.path("image"));
    const NSError error = write(given.image, sinkOf(toFile));
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
    SpiedFile full("/dev/full");
    const NSError error = write(generated, sinkOf(full));
    EXPECT_EQ(error.code(), dskFulErr);
    EXPECT_EQ(error.localizedDescription(), QStringLiteral("The disk holding “/dev/full” is full."));
    EXPECT_EQ(error.localizedRecoverySuggestion(), QStringLiteral("Free some space there, or write to another disk."));
    EXPECT_EQ(error.filePath(), QStringLiteral("/dev/full"));
}

TEST(ImageTrackWriter, write_ends_whenCancelledDuringTheKernelsCopy)
{
    ImageWithBigFile given;
    SpiedFile file(given.tree.path("image"));
    std::stop_source cancellation;
    file.beforeCopy = [&] { cancellation.request_stop(); };
    EXPECT_EQ(write(given.image, sinkOf(file), cancellation.get_token()).code(), kDRUserCanceledErr);
    EXPECT_LE(file.copiedBytes, 16u * mebibyte) << "no more than one piece";
}

TEST(ImageTrackWriter, write_returns_whenCancelledWhileAReaderHangs)
{
    FakeBlockImage image;
    image.addGenerated(20000);
    image.slowBlock = 3000;
    MemoryConsumer consumer;
    std::stop_source cancellation;
    CallbackSink sink(consumer);
    BlockStream stream(sink, cancellation.get_token());
    std::thread canceller([&] {
        image.gate.waitForVisitor();
        cancellation.request_stop();
    });
    {
        ImageTrackWriter writer(shared(image));
        EXPECT_EQ(writer.write(stream).code(), kDRUserCanceledErr);
        image.gate.open(); // only now can the writer be destroyed
    }
    canceller.join();
}

TEST(ImageTrackWriter, write_ends_whenCancelledBetweenBlocks)
{
    FakeBlockImage image;
    image.addGenerated(20000);
    std::stop_source cancellation;
    MemoryConsumer consumer;
    consumer.beforeWrite = [&] { cancellation.request_stop(); };
    EXPECT_EQ(write(image, consumer, cancellation.get_token()).code(), kDRUserCanceledErr);
    EXPECT_EQ(consumer.addresses.size(), 1) << "the write that was under way is the last";
}

TEST(ImageTrackWriter, write_makesTheSectorsThatTheTrackAsksFor)
{
    ImageWithBigFile given;
    DiscTrack described;
    described.blockSize = 2352;
    described.postgap = {150, true};
    for (const TrackKind kind : {TrackKind::Mode1, TrackKind::Mode2Form1, TrackKind::Mode2Mixed}) {
        described.kind = kind;
        const QByteArray name = "raw" + QByteArray::number(int(kind));
        SpiedFile file(given.tree.path(name));
        BlockStream stream(sinkOf(file));
        stream.beginSession(BlockAddress(1000));
        ImageTrackWriter writer(shared(given.image), {}, described);
        const DiscTrack track = writer.track();
        EXPECT_EQ(track.length, given.image.blockCount() + 150u);
        ASSERT_TRUE(writer.write(stream).isNull());
        EXPECT_EQ(file.copiedBytes, 0u) << "what must be coded cannot be copied";
        const QByteArray raw = given.tree.contents(name);
        ASSERT_EQ(std::uint64_t(raw.size()), track.storedBytes());
        const SectorPart part = *userDataPart(kind, SectorForm::Raw);
        QByteArray userData;
        for (std::uint64_t block = 0; block < track.length; ++block) {
            const char *const sector = raw.constData() + block * 2352;
            ASSERT_FALSE(checkSector(reinterpret_cast<const std::uint8_t *>(sector), kind,
                                     BlockAddress(1000 + std::int64_t(block))))
                << block;
            userData.append(sector + part.offset, qsizetype(part.length));
        }
        EXPECT_TRUE(userData == given.expected() + QByteArray(qsizetype(150) * 2048, '\0'));
    }
}

TEST(ImageTrackWriter, write_putsTheSubchannelBehindEachSector)
{
    ImageWithBigFile given;
    DiscTrack described;
    described.blockSize = 2448;
    described.indexPoints = {10};
    SpiedFile file(given.tree.path("raw"));
    BlockStream stream(sinkOf(file));
    stream.beginSession(BlockAddress(5000));
    ImageTrackWriter writer(shared(given.image), {}, described);
    DiscTrack track = writer.track();
    track.number = 3;
    ASSERT_TRUE(stream.beginTrack(track).isNull());
    ASSERT_TRUE(writer.write(stream).isNull());
    const QByteArray raw = given.tree.contents("raw");
    ASSERT_EQ(std::uint64_t(raw.size()), track.storedBytes());
    for (std::int64_t block = 0; block < std::int64_t(track.length); ++block) {
        const auto *const sector = reinterpret_cast<const std::uint8_t *>(raw.constData()) + block * 2448;
        const BlockAddress address(5000 + block);
        ASSERT_FALSE(checkSector(sector, TrackKind::Mode1, address)) << block;
        std::array<std::uint8_t, subchannelSize> channels;
        deinterleaveSubchannels(sector + 2352, channels.data());
        SubchannelQ q;
        std::copy_n(channels.begin() + q.size(), q.size(), q.begin());
        const std::uint8_t index = block < 10 ? 1 : 2;
        ASSERT_EQ(positionOfSubchannelQ(q), (SubchannelPosition{SubchannelControl::data, 3, index, block, address}))
            << block;
    }
}

TEST(ImageTrackWriter, plan_refusesSectorsThatNoCDHasAPlaceFor)
{
    FakeBlockImage image;
    image.addGenerated(400'000);
    const auto planned = [&](std::uint32_t blockSize, std::int64_t begin) {
        DiscTrack described;
        described.blockSize = blockSize;
        described.postgap = {150, true};
        return ImageTrackWriter(shared(image), {}, described).plan(BlockAddress(begin), {}, [](double) {});
    };
    EXPECT_TRUE(planned(2352, 4700).isNull());
    EXPECT_EQ(planned(2352, 4701).code(), paramErr);
    EXPECT_EQ(
        planned(2448, 4701).localizedDescription(),
        QStringLiteral("The disc would end at block 404850. Sectors of 2448 bytes are those of a CD, which has no "
                       "place behind block 404849."));
    EXPECT_TRUE(planned(2048, 4701).isNull()) << "they say no place";
}

TEST(ImageTrackWriter, canWrite_isTrueOfTheFormsThatHoldAFilesystem)
{
    const auto canWrite = [](TrackKind kind, std::uint32_t blockSize) {
        DiscTrack track;
        track.kind = kind;
        track.blockSize = blockSize;
        return ImageTrackWriter::canWrite(track);
    };
    EXPECT_TRUE(canWrite(TrackKind::Mode1, 2048));
    EXPECT_TRUE(canWrite(TrackKind::Mode1, 2352));
    EXPECT_TRUE(canWrite(TrackKind::Mode2Mixed, 2336));
    EXPECT_TRUE(canWrite(TrackKind::Mode2Form1, 2352));
    EXPECT_TRUE(canWrite(TrackKind::Unstated, 2048));
    EXPECT_TRUE(canWrite(TrackKind::Mode1, 2448));
    EXPECT_FALSE(canWrite(TrackKind::Audio, 2352));
    EXPECT_FALSE(canWrite(TrackKind::Mode1, 2336));
    EXPECT_FALSE(canWrite(TrackKind::Mode2Form2, 2324));
    EXPECT_FALSE(canWrite(TrackKind::Mode2Formless, 2336));
    EXPECT_FALSE(canWrite(TrackKind::Mode1, 512));
}

} // namespace Tessaron::Testing
