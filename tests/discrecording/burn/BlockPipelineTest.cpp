#include "platform/discrecording/burn/BlockPipeline.h"

#include "platform/discrecording/burn/BurnErrors.h"
#include "platform/discrecording/burn/DRBurn.h"
#include "tests/discrecording/burn/FakeBlockImage.h"
#include "tests/support/TemporaryTree.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <new>
#include <optional>

namespace Tessaron::Testing
{

namespace
{

BlockPipeline::Options smallPieces(std::uint32_t readerCount = 2)
{
    BlockPipeline::Options options;
    options.readerCount = readerCount;
    options.pieceBlocks = 8;
    options.bufferCount = 4;
    return options;
}

/// All that the pipeline gives, one after another.
QByteArray takeAll(BlockPipeline &pipeline, NSError *error)
{
    QByteArray all;
    while (const BlockPipeline::Piece *const piece = pipeline.next(error))
        all.append(reinterpret_cast<const char *>(piece->bytes.data()), qsizetype(piece->bytes.size()));
    return all;
}

/// Takes pieces and keeps what it got.
class KeepingTaker
{
public:
    [[nodiscard]] BlockPipeline::Taker taker()
    {
        return [this](const BlockPipeline::Piece &piece) {
            EXPECT_FALSE(isCalled.exchange(true)) << "one at a time";
            if (onPiece)
                onPiece(piece);
            all.append(reinterpret_cast<const char *>(piece.bytes.data()), qsizetype(piece.bytes.size()));
            isCalled = false;
            return failingBlock == piece.at ? burnError(dskFulErr, QStringLiteral("full")) : NSError();
        };
    }

    QByteArray all;
    std::optional<BlockAddress> failingBlock; ///< the piece that begins with it
    std::function<void(const BlockPipeline::Piece &)> onPiece;
    std::atomic<bool> isCalled = false;
};

QByteArray generatedBlocks(std::uint32_t count)
{
    QByteArray all;
    for (std::uint32_t block = 0; block < count; ++block)
        all += generatedBlock(block);
    return all;
}

} // namespace

class BlockPipelineReaders : public testing::TestWithParam<std::uint32_t>
{
};

TEST_P(BlockPipelineReaders, next_deliversAllBlocksInOrder_withAnyNumberOfReaders)
{
    FakeBlockImage image;
    image.addGenerated(1003);
    BlockPipeline pipeline(image, smallPieces(GetParam()), {});
    NSError error;
    EXPECT_EQ(takeAll(pipeline, &error), generatedBlocks(1003));
    EXPECT_TRUE(error.isNull());
    EXPECT_EQ(pipeline.next(&error), nullptr) << "the end stays the end";
    EXPECT_TRUE(error.isNull());
}

TEST_P(BlockPipelineReaders, taker_getsAllBlocksInOrder_withAnyNumberOfReaders)
{
    FakeBlockImage image;
    image.addGenerated(1003);
    KeepingTaker kept;
    BlockPipeline pipeline(image, smallPieces(GetParam()), {}, kept.taker());
    EXPECT_TRUE(pipeline.waitUntilTaken().isNull());
    EXPECT_EQ(kept.all, generatedBlocks(1003));
}

INSTANTIATE_TEST_SUITE_P(Counts, BlockPipelineReaders, testing::Values(1, 2, 3, 8));

TEST(BlockPipeline, next_isNullWithoutError_forAnEmptyImage)
{
    const FakeBlockImage image;
    BlockPipeline pipeline(image, smallPieces(), {});
    NSError error;
    EXPECT_EQ(pipeline.next(&error), nullptr);
    EXPECT_TRUE(error.isNull());
}

TEST(BlockPipeline, readers_fillNoMoreThanTheRing_whileTheConsumerIsBusy)
{
    FakeBlockImage image;
    image.addGenerated(8 * 100);
    {
        BlockPipeline pipeline(image, smallPieces(), {});
        NSError error;
        ASSERT_NE(pipeline.next(&error), nullptr);
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        EXPECT_LE(image.filledPieces, 4);
    }
    EXPECT_LE(image.filledPieces, 4);
}

TEST(BlockPipeline, next_givesWhatComesBefore_whenALaterPieceFails)
{
    FakeBlockImage image;
    image.addGenerated(800);
    image.failingBlock = 85;
    BlockPipeline pipeline(image, smallPieces(), {});
    NSError error;
    EXPECT_EQ(takeAll(pipeline, &error), generatedBlocks(80));
    EXPECT_EQ(error.localizedDescription(), QStringLiteral("Block 85 cannot be read."));
}

TEST(BlockPipeline, next_fails_whenAReaderGetsNoMemory)
{
    FakeBlockImage image;
    image.addGenerated(80);
    image.hungryBlock = 20;
    BlockPipeline pipeline(image, smallPieces(), {});
    NSError error;
    EXPECT_EQ(takeAll(pipeline, &error), generatedBlocks(16));
    EXPECT_EQ(error.code(), memFullErr);
    EXPECT_EQ(error.localizedRecoverySuggestion(), QStringLiteral("Close other programs and try again."));
}

TEST(BlockPipeline, next_fails_whenTheImageHasNoValidPiece)
{
    FakeBlockImage image;
    image.addGenerated(80);
    image.invalidBlock = 16;
    BlockPipeline pipeline(image, smallPieces(), {});
    NSError error;
    EXPECT_EQ(takeAll(pipeline, &error), generatedBlocks(16));
    EXPECT_EQ(error.code(), paramErr);
}

TEST(BlockPipeline, next_returnsAtOnce_whenCancelledDuringASlowRead)
{
    FakeBlockImage image;
    image.addGenerated(80);
    image.slowBlock = 20;
    std::stop_source cancellation;
    BlockPipeline pipeline(image, smallPieces(), cancellation.get_token());
    NSError error;
    ASSERT_NE(pipeline.next(&error), nullptr);
    ASSERT_NE(pipeline.next(&error), nullptr);
    image.gate.waitForVisitor();
    std::thread canceller([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        cancellation.request_stop();
    });
    EXPECT_EQ(pipeline.next(&error), nullptr);
    EXPECT_EQ(error.code(), kDRUserCanceledErr);
    canceller.join();
    image.gate.open();
}

TEST(BlockPipeline, next_handsOverBigRunsWhole_andReadsSmallOnes)
{
    const TemporaryTree tree;
    const QByteArray small(3 * 2048 + 5, 's');
    const QByteArray big(40 * 2048 + 1, 'b');
    const FileContents smallFile = fileContentsOf(tree.makeFile("small", small));
    const FileContents bigFile = fileContentsOf(tree.makeFile("big", big));
    FakeBlockImage image;
    image.addGenerated(2);
    image.addFileRun(smallFile, 0, smallFile.size);
    image.addFileRun(bigFile, 0, bigFile.size);
    image.addGenerated(1);
    BlockPipeline::Options options = smallPieces();
    options.smallestFileRunLeft = std::uint64_t{20} * 2048;
    BlockPipeline pipeline(image, options, {});

    NSError error;
    QList<QByteArray> pieces;
    while (const BlockPipeline::Piece *const piece = pipeline.next(&error)) {
        if (piece->isFileRun)
            pieces << "run of " + QByteArray::number(qulonglong(piece->run.length)) + " bytes";
        else
            pieces << QByteArray::number(piece->at.number()) + "+" + QByteArray::number(piece->blockCount);
    }
    EXPECT_TRUE(error.isNull());
    EXPECT_EQ(pieces, (QList<QByteArray>{"0+2", "2+4", "run of 81921 bytes", "47+1"}));
}

TEST(BlockPipeline, taker_isNotCalled_forAnEmptyImage)
{
    const FakeBlockImage image;
    KeepingTaker kept;
    BlockPipeline pipeline(image, smallPieces(), {}, kept.taker());
    EXPECT_TRUE(pipeline.waitUntilTaken().isNull());
    EXPECT_TRUE(kept.all.isEmpty());
}

TEST(BlockPipeline, taker_getsWhatComesBefore_whenALaterPieceFails)
{
    for (std::uint32_t readers = 1; readers <= 4; ++readers) {
        FakeBlockImage image;
        image.addGenerated(800);
        image.failingBlock = 85;
        KeepingTaker kept;
        BlockPipeline pipeline(image, smallPieces(readers), {}, kept.taker());
        EXPECT_EQ(pipeline.waitUntilTaken().localizedDescription(), QStringLiteral("Block 85 cannot be read."));
        EXPECT_EQ(kept.all, generatedBlocks(80));
    }
}

TEST(BlockPipeline, taker_isNotCalledAgain_whenItHasFailed)
{
    for (std::uint32_t readers = 1; readers <= 4; ++readers) {
        FakeBlockImage image;
        image.addGenerated(800);
        KeepingTaker kept;
        kept.failingBlock = BlockAddress(80);
        BlockPipeline pipeline(image, smallPieces(readers), {}, kept.taker());
        EXPECT_EQ(pipeline.waitUntilTaken().code(), dskFulErr);
        EXPECT_EQ(kept.all, generatedBlocks(88));
    }
}

TEST(BlockPipeline, waitUntilTaken_fails_whenThereIsNoMemory)
{
    FakeBlockImage image;
    image.addGenerated(80);
    image.hungryBlock = 20;
    KeepingTaker kept;
    BlockPipeline reading(image, smallPieces(), {}, kept.taker());
    EXPECT_EQ(reading.waitUntilTaken().code(), memFullErr);
    EXPECT_EQ(kept.all, generatedBlocks(16));

    FakeBlockImage sound; // the readers of the other image may still look at it
    sound.addGenerated(80);
    KeepingTaker hungry;
    hungry.onPiece = [](const BlockPipeline::Piece &) { throw std::bad_alloc(); };
    BlockPipeline writing(sound, smallPieces(), {}, hungry.taker());
    EXPECT_EQ(writing.waitUntilTaken().code(), memFullErr);
}

TEST(BlockPipeline, readers_goOnUpToTheRing_whileAPieceIsSlow)
{
    FakeBlockImage image;
    image.addGenerated(8 * 100);
    image.slowBlock = 0;
    KeepingTaker kept;
    BlockPipeline pipeline(image, smallPieces(), {}, kept.taker());
    image.gate.waitForVisitor();
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (image.filledPieces < 4 && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(image.filledPieces, 4);
    EXPECT_TRUE(kept.all.isEmpty());
    image.gate.open();
    EXPECT_TRUE(pipeline.waitUntilTaken().isNull());
    EXPECT_EQ(kept.all, generatedBlocks(800));
}

TEST(BlockPipeline, waitUntilTaken_returnsAtOnce_whenCancelledDuringASlowRead)
{
    FakeBlockImage image;
    image.addGenerated(80);
    image.slowBlock = 20;
    std::stop_source cancellation;
    KeepingTaker kept;
    BlockPipeline pipeline(image, smallPieces(), cancellation.get_token(), kept.taker());
    image.gate.waitForVisitor();
    std::thread canceller([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        cancellation.request_stop();
    });
    EXPECT_EQ(pipeline.waitUntilTaken().code(), kDRUserCanceledErr);
    canceller.join();
    const QByteArray taken = kept.all;
    image.gate.open();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(kept.all, taken) << "the taker was called after the end";
}

TEST(BlockPipeline, waitUntilTaken_waitsForTheTaker_whenCancelled)
{
    FakeBlockImage image;
    image.addGenerated(80);
    std::stop_source cancellation;
    KeepingTaker kept;
    kept.onPiece = [&](const BlockPipeline::Piece &piece) {
        if (piece.at != BlockAddress(16))
            return;
        cancellation.request_stop();
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    };
    BlockPipeline pipeline(image, smallPieces(), cancellation.get_token(), kept.taker());
    EXPECT_EQ(pipeline.waitUntilTaken().code(), kDRUserCanceledErr);
    EXPECT_FALSE(kept.isCalled);
    EXPECT_EQ(kept.all, generatedBlocks(24));
}

} // namespace Tessaron::Testing
