#include "platform/discrecording/burn/BlockPipeline.h"

#include "platform/discrecording/burn/BurnErrors.h"
#include "platform/foundation/WhenThereIsMemory.h"

#include <chrono>
#include <new>
#include <system_error>

namespace Tessaron
{

namespace
{

/// So long a reader waits for its piece to be due; then it leaves the piece in the ring and reads on. Pieces that are
/// in the system's cache already come within that time; a disk that seeks takes longer.
constexpr std::chrono::milliseconds patience(2);

} // namespace

BlockPipeline::BlockPipeline(const BlockImage &image, const Options &options, std::stop_token cancellation, Taker taker)
    : m_image(image)
    , m_options(options)
    , m_cancellation(std::move(cancellation))
    , m_taker(std::move(taker))
    , m_end(image.blockCount())
    , m_slots(options.bufferCount)
{
    startReaders();
}

BlockPipeline::~BlockPipeline()
{
    {
        const std::lock_guard lock(m_mutex);
        stopReaders();
    }
    for (std::thread &reader : m_readers)
        reader.join();
}

/// The caller holds the mutex.
void BlockPipeline::stopReaders()
{
    m_isStopping = true;
    m_canClaim.notify_all();
    for (Slot &slot : m_slots)
        slot.isDue.notify_one();
}

/// One reader is enough to go on with when the system gives no more.
void BlockPipeline::startReaders()
{
    m_readers.reserve(m_options.readerCount);
    while (m_readers.size() < m_options.readerCount && startReader()) { }
    if (m_readers.empty())
        m_startError = burnError(memFullErr, QStringLiteral("The system allows no further threads to read files with."),
                                 QStringLiteral("Close other programs and try again."));
}

/// Nothing may leave the constructor while a reader runs.
bool BlockPipeline::startReader()
{
    try {
        m_readers.emplace_back([this] { read(); });
        return true;
    } catch (const std::system_error &) {
        return false;
    } catch (const std::bad_alloc &) {
        return false;
    }
}

const BlockPipeline::Piece *BlockPipeline::next(NSError *error)
{
    *error = m_startError;
    if (m_startError)
        return nullptr;
    std::unique_lock lock(m_mutex);
    if (m_isHolding) {
        slotInTurn().isReady = false;
        ++m_released;
        m_isHolding = false;
        m_canClaim.notify_one();
    }
    Slot &slot = slotInTurn();
    m_isReady.wait(lock, m_cancellation, [&] { return slot.isReady || isAllConsumed(); });
    if (m_cancellation.stop_requested())
        *error = burnCancelledError();
    else if (slot.isReady)
        *error = slot.error;
    m_isHolding = !*error && slot.isReady;
    return m_isHolding ? &slot.piece : nullptr;
}

NSError BlockPipeline::waitUntilTaken()
{
    if (m_startError)
        return m_startError;
    std::unique_lock lock(m_mutex);
    m_isReady.wait(lock, m_cancellation, [this] { return m_takeError || isAllConsumed(); });
    stopReaders();
    m_isReady.wait(lock, [this] { return !m_isTaking; });
    return m_cancellation.stop_requested() ? burnCancelledError() : m_takeError;
}

void BlockPipeline::read()
{
    std::unique_lock lock(m_mutex);
    while (Slot *const slot = claim(lock)) {
        if (!slot->piece.isFileRun && !slot->error) {
            lock.unlock();
            fill(*slot);
            lock.lock();
        }
        slot->isReady = true;
        if (m_taker)
            takeInTurn(*slot, lock);
        else
            m_isReady.notify_one();
    }
}

/// A reader hands its piece over itself when those before it are taken soon enough. Else it leaves the piece to the
/// reader that comes to it.
void BlockPipeline::takeInTurn(Slot &slot, std::unique_lock<std::mutex> &lock)
{
    slot.isWaited = true;
    slot.isDue.wait_for(lock, patience, [&] { return m_isStopping || (&slot == &slotInTurn() && !m_isTaking); });
    slot.isWaited = false;
    takeWhatIsDue(lock);
}

void BlockPipeline::takeWhatIsDue(std::unique_lock<std::mutex> &lock)
{
    while (!m_isTaking && !m_isStopping && !m_takeError && slotInTurn().isReady) {
        Slot &slot = slotInTurn();
        if (slot.isWaited) {
            slot.isDue.notify_one();
            return;
        }
        m_isTaking = true;
        lock.unlock();
        NSError error = take(slot);
        lock.lock();
        m_isTaking = false;
        m_takeError = std::move(error);
        slot.isReady = false;
        ++m_released;
        m_canClaim.notify_one();
        if (m_takeError || m_isStopping || isAllConsumed())
            m_isReady.notify_one();
    }
}

NSError BlockPipeline::take(const Slot &slot) const
{
    if (slot.error || m_cancellation.stop_requested())
        return slot.error ? slot.error : burnCancelledError();
    try {
        return m_taker(slot.piece);
    } catch (const std::bad_alloc &) {
        return burnError(memFullErr, QStringLiteral("There is not enough memory to write the disc."),
                         QStringLiteral("Close other programs, or put fewer files on it."));
    }
}

BlockPipeline::Slot *BlockPipeline::claim(std::unique_lock<std::mutex> &lock)
{
    const auto isOver = [this] { return m_isStopping || m_cancellation.stop_requested() || m_nextBlock >= m_end; };
    m_canClaim.wait(lock, [&] { return isOver() || m_claimed - m_released < m_slots.size(); });
    if (isOver())
        return nullptr;
    Slot &slot = m_slots[m_claimed % m_slots.size()];
    slot.piece = nextPiece();
    slot.error = {};
    if (slot.piece.blockCount == 0 || slot.piece.blockCount > m_end - m_nextBlock) {
        slot.error = burnError(
            paramErr, QStringLiteral("The disc image has no valid piece at block %1.").arg(m_nextBlock.number()));
        m_nextBlock = m_end;
    } else {
        m_nextBlock = m_nextBlock + slot.piece.blockCount;
    }
    ++m_claimed;
    if (m_nextBlock >= m_end)
        m_canClaim.notify_all(); // nothing is left for the other readers
    return &slot;
}

BlockPipeline::Piece BlockPipeline::nextPiece() const
{
    ImagePiece piece = m_image.pieceAt(m_nextBlock, m_options.pieceBlocks);
    const auto isLeft = [this](const ImagePiece &each) {
        return each.isFileRun && m_options.smallestFileRunLeft > 0 && each.run.length >= m_options.smallestFileRunLeft;
    };
    if (piece.isFileRun && m_options.smallestFileRunLeft > 0) {
        // The whole run at once, so that its file is opened and compared once.
        const ImagePiece wholeRun = m_image.pieceAt(m_nextBlock, std::uint32_t(m_end - m_nextBlock));
        if (isLeft(wholeRun))
            piece = wholeRun;
    }
    return {m_nextBlock, piece.blockCount, isLeft(piece), piece.run, {}};
}

void BlockPipeline::fill(Slot &slot) const
{
    const std::size_t size = std::size_t(slot.piece.blockCount) * logicalBlockSize;
    try {
        if (slot.capacity < size) {
            slot.buffer = std::make_unique_for_overwrite<std::uint8_t[]>(size);
            slot.capacity = size;
        }
        const std::span<std::uint8_t> bytes(slot.buffer.get(), size);
        slot.error = m_image.fillPiece(slot.piece.at, bytes, m_cancellation);
        slot.piece.bytes = bytes;
    } catch (const std::bad_alloc &) {
        whenThereIsMemory([&slot] {
            slot.error = burnError(memFullErr, QStringLiteral("There is not enough memory to read the files."),
                                   QStringLiteral("Close other programs and try again."));
        });
    }
}

} // namespace Tessaron
