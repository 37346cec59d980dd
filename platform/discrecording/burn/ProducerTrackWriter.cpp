#include "platform/discrecording/burn/ProducerTrackWriter.h"

#include "platform/discrecording/burn/BurnErrors.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <limits>
#include <mutex>

namespace Tessaron
{

namespace
{

constexpr std::uint32_t bufferSize = 1u << 20; // bytes; rounded down to whole blocks
constexpr std::uint32_t largestBlockSize = 65536;
constexpr int retries = 5;
constexpr std::chrono::milliseconds retryDelay(20);

NSError layoutError(const QString &description)
{
    return burnError(paramErr, description);
}

/// The whole number under the key; false when there is none or it is negative.
bool readNumber(const QVariantMap &properties, const QString &key, std::uint64_t *number)
{
    const QVariant value = properties.value(key);
    bool isNumber = false;
    *number = value.toULongLong(&isNumber);
    return value.isValid() && isNumber && (value.typeId() == QMetaType::ULongLong || value.toLongLong() >= 0);
}

} // namespace

ProducerTrackExtent extentOfProducerTrack(const DRTrack &track, NSError *error)
{
    const QVariantMap properties = track.properties();
    std::uint64_t blockSize = 0;
    std::uint64_t length = 0;
    std::uint64_t pregap = 0;
    if (!readNumber(properties, DRBlockSizeKey, &blockSize) || blockSize == 0 || blockSize > largestBlockSize)
        *error = layoutError(QStringLiteral("A track says no valid block size (%1).").arg(DRBlockSizeKey));
    else if (!readNumber(properties, DRTrackLengthKey, &length) || length == 0)
        *error = layoutError(QStringLiteral("A track says no valid length (%1).").arg(DRTrackLengthKey));
    else if (properties.contains(DRPreGapLengthKey) && !readNumber(properties, DRPreGapLengthKey, &pregap))
        *error = layoutError(QStringLiteral("A track says no valid pregap (%1).").arg(DRPreGapLengthKey));
    else if (constexpr std::uint64_t most = std::numeric_limits<std::uint32_t>::max(); length > most || pregap > most)
        *error = layoutError(QStringLiteral("A track of %1 blocks is longer than any disc.").arg(length));
    else
        return {std::uint32_t(blockSize), std::uint32_t(pregap), length};
    return {};
}

ProducerTrackWriter::ProducerTrackWriter(DRBurn *burn, DRTrack &track, BurnSink &sink,
                                         const BurnCancellation &cancellation)
    : m_burn(burn)
    , m_track(track)
    , m_producer(*track.producer())
    , m_sink(sink)
    , m_cancellation(cancellation)
{
}

NSError ProducerTrackWriter::write(const ProducerTrackExtent &planned)
{
    if (!m_producer.prepareTrack(&m_track, m_burn, {}))
        return burnError(ioErr,
                         QStringLiteral("A track's data could not be prepared. Check the file that it is made from."));
    NSError error = writePrepared(planned);
    m_producer.cleanupTrackAfterBurn(&m_track);
    return error;
}

NSError ProducerTrackWriter::writePrepared(const ProducerTrackExtent &planned)
{
    NSError error;
    const ProducerTrackExtent extent = extentOfProducerTrack(m_track, &error);
    if (error)
        return error;
    if (extent != planned || extent.blockSize == 0)
        return layoutError(QStringLiteral("A track changed its size while it was prepared."));
    m_blockSize = extent.blockSize;
    m_buffer.resize(std::size_t(bufferSize / m_blockSize) * m_blockSize);
    error = writePart(&DRTrackProducer::producePreGapForTrack, extent.pregapBlocks);
    return error ? error : writePart(&DRTrackProducer::produceDataForTrack, extent.dataBlocks);
}

NSError ProducerTrackWriter::writePart(Produce produce, std::uint64_t blockCount)
{
    const auto bufferBlocks = std::uint32_t(m_buffer.size() / m_blockSize);
    while (blockCount > 0) {
        const auto part = std::uint32_t(std::min<std::uint64_t>(blockCount, bufferBlocks));
        NSError error = fillBuffer(produce, part * m_blockSize);
        if (!error)
            error = m_sink.writeBlocks(m_buffer.data(), part, m_blockSize);
        if (error)
            return error;
        blockCount -= part;
    }
    return {};
}

/// A producer may give less than asked, and nothing for a moment; nothing several times in a row is the end of it.
NSError ProducerTrackWriter::fillBuffer(Produce produce, std::uint32_t length)
{
    std::uint32_t filled = 0;
    int failures = 0;
    while (filled < length) {
        if (m_cancellation.isRequested())
            return burnCancelledError();
        const std::uint32_t wanted = length - filled;
        std::uint32_t flags = 0;
        const std::uint32_t got = (m_producer.*produce)(&m_track, m_buffer.data() + filled, wanted,
                                                        m_sink.address() + filled / m_blockSize, m_blockSize, &flags);
        if (got > wanted)
            return burnError(paramErr, QStringLiteral("A track's producer gave more than it was asked for."));
        filled += got;
        failures = got > 0 ? 0 : failures + 1;
        if (failures > retries)
            return burnError(eofErr,
                             QStringLiteral("A track's data ended too early, at block %1 of the layout. "
                                            "Check the file that it is made from.")
                                 .arg(m_sink.address() + filled / m_blockSize));
        if (got == 0 && !waitBeforeRetry())
            return burnCancelledError();
    }
    return {};
}

/// False when the burn was cancelled meanwhile.
bool ProducerTrackWriter::waitBeforeRetry() const
{
    std::mutex mutex;
    std::condition_variable_any cancelled;
    std::unique_lock lock(mutex);
    const auto isCancelled = [this] { return m_cancellation.isRequested(); };
    return !cancelled.wait_for(lock, m_cancellation.token(), retryDelay, isCancelled);
}

} // namespace Tessaron
