#pragma once

#include "platform/discrecording/image/BlockImage.h"

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <span>
#include <stop_token>
#include <thread>
#include <vector>

namespace Tessaron
{

/// Produces the blocks of an image ahead of the thread that takes them: readers claim pieces in their order and fill
/// the buffers of a bounded ring. The pieces are consumed in the same order, in one of two ways. Memory does not grow
/// with the image.
///
/// - By the thread that made the pipeline, which asks for one after another with next().
/// - By a Taker, which is called by the readers: the bytes are still in the cache of the processor that has read them.
///
/// Made, used and destroyed by one thread. The image must outlive the pipeline. Destruction stops the readers and joins
/// them; it waits for a reader that is inside a slow read.
class BlockPipeline
{
public:
    /// Sizes, chosen on 2 cores with 100,000 files of 8 KiB on average. In the cache, 1 to 4 readers took 0.65, 0.61,
    /// 0.65 and 0.70 s for plan and image (bench/burn_bench); from disk (medians of few runs on a busy
    /// machine) 9.5, 6.6, 6.0 and 5.0 s, and 8 readers 4.5 s: they wait for the disk side by side. Each piece that a
    /// Taker gets costs a change of thread: with pieces of 512 KiB, 400 files of 1 to 4 MiB took 0.42 s, with those of
    /// 1 MiB 0.33 s, and the many small ones 0.97 and 0.92 s.
    struct Options {
        std::uint32_t readerCount = 4;
        std::uint32_t pieceBlocks = 512; ///< wished size of a piece: 1 MiB
        std::uint32_t bufferCount = 8; ///< 8 MiB in all
        /// Runs of a file of at least this length, in bytes, are handed over as runs, not read; 0 for no run.
        std::uint64_t smallestFileRunLeft = 0;
    };

    /// A part of the image, in order.
    struct Piece {
        BlockAddress at; ///< in the image
        std::uint32_t blockCount = 0;
        bool isFileRun = false; ///< `run` says what the piece holds, `bytes` is empty
        FileRun run;
        std::span<const std::uint8_t> bytes;
    };

    /// Takes pieces in order, one at a time, each on a thread of its own choosing. After an error it is not called any
    /// more.
    using Taker = std::function<NSError(const Piece &)>;

    /// Without a taker, next() gives the pieces; with one, waitUntilTaken() says how it went.
    BlockPipeline(const BlockImage &image, const Options &options, std::stop_token cancellation, Taker taker = {});
    ~BlockPipeline();
    BlockPipeline(const BlockPipeline &) = delete;
    BlockPipeline &operator=(const BlockPipeline &) = delete;

    /// Waits for the next piece, which stays valid until the next call. Null at the end of the image, after a cancel
    /// (at once, whatever the readers do) and after a failure; `*error` tells them apart and is null only at the end.
    [[nodiscard]] const Piece *next(NSError *error);

    /// Waits until the taker has had all pieces, has failed, or a piece could not be read: the error then. After a
    /// cancel it returns as soon as the taker does, whatever the readers do. The taker is not called after it.
    [[nodiscard]] NSError waitUntilTaken();

private:
    struct Slot {
        Piece piece;
        std::unique_ptr<std::uint8_t[]> buffer;
        std::size_t capacity = 0;
        NSError error;
        bool isReady = false;
        bool isWaited = false; ///< its reader waits until it is due
        std::condition_variable isDue;
    };

    void startReaders();
    /// False when the system gives no thread.
    [[nodiscard]] bool startReader();
    void read();
    /// The next piece in order, put into its slot; null when there is nothing to claim any more. Waits for a free slot.
    Slot *claim(std::unique_lock<std::mutex> &lock);
    [[nodiscard]] Piece nextPiece() const;
    void fill(Slot &slot) const;
    void takeInTurn(Slot &slot, std::unique_lock<std::mutex> &lock);
    void takeWhatIsDue(std::unique_lock<std::mutex> &lock);
    [[nodiscard]] NSError take(const Slot &slot) const;
    [[nodiscard]] Slot &slotInTurn() { return m_slots[m_released % m_slots.size()]; }
    /// Every piece was consumed. The caller holds the mutex.
    [[nodiscard]] bool isAllConsumed() const { return m_released == m_claimed && m_nextBlock >= m_end; }
    void stopReaders();

    const BlockImage &m_image;
    const Options m_options;
    const std::stop_token m_cancellation;
    const Taker m_taker; ///< empty when the thread that made the pipeline takes the pieces
    const BlockAddress m_end; ///< of the image

    std::mutex m_mutex; ///< guards the members down to the empty line; a slot that is not ready belongs to its reader
    std::condition_variable m_canClaim;
    std::condition_variable_any m_isReady;
    std::vector<Slot> m_slots; ///< piece n is in slot n modulo their number
    std::uint64_t m_claimed = 0; ///< pieces claimed so far
    std::uint64_t m_released = 0; ///< pieces that the consumer has done with
    BlockAddress m_nextBlock; ///< first one that is not claimed
    bool m_isStopping = false;
    bool m_isTaking = false; ///< the taker is called just now
    NSError m_takeError; ///< ends the taking

    bool m_isHolding = false; ///< the consumer has a piece
    NSError m_startError;
    std::vector<std::thread> m_readers;
};

} // namespace Tessaron
