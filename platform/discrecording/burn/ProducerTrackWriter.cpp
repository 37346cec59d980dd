#include "platform/discrecording/burn/ProducerTrackWriter.h"

#include "platform/discrecording/burn/BurnErrors.h"
#include "platform/discrecording/objects/DRTrackDescription.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <limits>
#include <mutex>
#include <utility>

namespace Tessaron
{

namespace
{

constexpr std::uint32_t bufferSize = 1u << 20; // bytes; rounded down to whole blocks
constexpr int retries = 5;
constexpr std::chrono::milliseconds retryDelay(20);

NSError layoutError(const QString &description)
{
    return burnError(paramErr, description);
}

/// Preparing may change what a recorder is told, but not how many bytes come.
bool haveSameSize(const DiscTrack &one, const DiscTrack &other)
{
    return one.blockSize == other.blockSize && one.length == other.length && one.pregap == other.pregap;
}

/// Cleans a prepared producer up, also after an exception.
class PreparedProducer
{
public:
    PreparedProducer(DRTrackProducer &producer, DRTrack &track)
        : m_producer(producer)
        , m_track(track)
    {
    }
    ~PreparedProducer() { m_producer.cleanupTrackAfterBurn(&m_track); }
    PreparedProducer(const PreparedProducer &) = delete;
    PreparedProducer &operator=(const PreparedProducer &) = delete;

private:
    DRTrackProducer &m_producer;
    DRTrack &m_track;
};

/// False when a stop was asked for meanwhile.
bool waitBeforeRetry(const std::stop_token &cancellation)
{
    std::mutex mutex;
    std::condition_variable_any stopped;
    std::unique_lock lock(mutex);
    return !stopped.wait_for(lock, cancellation, retryDelay, [&] { return cancellation.stop_requested(); });
}

} // namespace

Result<DiscTrack> describeProducerTrack(const DRTrack &track)
{
    Result<DiscTrack> described = discTrackOfProperties(track.properties());
    if (!described)
        return described;
    constexpr std::uint64_t most = std::numeric_limits<std::uint32_t>::max();
    if (described->length == 0)
        return layoutError(QStringLiteral("A track says no valid length (%1).").arg(DRTrackLengthKey));
    if (described->length > most || described->pregap.length > most)
        return layoutError(QStringLiteral("A track of %1 blocks is longer than any disc.").arg(described->length));
    described->pregap.isStored = true;
    described->postgap.isStored = true;
    return described;
}

ProducerTrackWriter::ProducerTrackWriter(std::shared_ptr<DRTrack> track, const DiscTrack &described, DRBurn *burn,
                                         QVariantMap media)
    : m_track(std::move(track))
    , m_described(described)
    , m_burn(burn)
    , m_media(std::move(media))
{
}

NSError ProducerTrackWriter::plan(BlockAddress /*begin*/, const std::stop_token & /*cancellation*/,
                                  const std::function<void(double)> & /*progress*/)
{
    return {};
}

NSError ProducerTrackWriter::write(BlockStream &stream)
{
    const std::shared_ptr<DRTrackProducer> producer = m_track->producer();
    if (!producer->prepareTrack(m_track.get(), m_burn, m_media))
        return burnError(ioErr, QStringLiteral("A track's data could not be prepared."),
                         QStringLiteral("Check the file that it is made from."));
    const PreparedProducer prepared(*producer, *m_track);
    return writePrepared(stream);
}

NSError ProducerTrackWriter::writePrepared(BlockStream &stream)
{
    const Result<DiscTrack> prepared = describeProducerTrack(*m_track);
    if (!prepared)
        return prepared.error();
    if (!haveSameSize(*prepared, m_described))
        return layoutError(QStringLiteral("A track changed its size while it was prepared."));
    m_buffer.resize(std::size_t(bufferSize / m_described.blockSize) * m_described.blockSize);
    const NSError error = writePart(stream, &DRTrackProducer::producePreGapForTrack, m_described.pregap.length);
    return error ? error : writePart(stream, &DRTrackProducer::produceDataForTrack, m_described.length);
}

NSError ProducerTrackWriter::writePart(BlockStream &stream, Produce produce, std::uint64_t blockCount)
{
    const std::uint32_t blockSize = m_described.blockSize;
    const auto bufferBlocks = std::uint32_t(m_buffer.size() / blockSize);
    while (blockCount > 0) {
        const auto part = std::uint32_t(std::min<std::uint64_t>(blockCount, bufferBlocks));
        NSError error = fillBuffer(stream, produce, part * blockSize);
        if (!error)
            error = stream.writeBlocks(m_buffer.data(), part, blockSize);
        if (error)
            return error;
        blockCount -= part;
    }
    return {};
}

/// A producer may give less than asked, and nothing for a moment; nothing several times in a row is the end of it.
NSError ProducerTrackWriter::fillBuffer(const BlockStream &stream, Produce produce, std::uint32_t length)
{
    DRTrackProducer &producer = *m_track->producer();
    const std::uint32_t blockSize = m_described.blockSize;
    std::uint32_t filled = 0;
    int failures = 0;
    while (filled < length) {
        if (stream.cancellation().stop_requested())
            return burnCancelledError();
        const std::uint32_t wanted = length - filled;
        const auto address = std::uint64_t(stream.position().number()) + filled / blockSize;
        std::uint32_t flags = 0;
        const std::uint32_t got =
            (producer.*produce)(m_track.get(), m_buffer.data() + filled, wanted, address, blockSize, &flags);
        if (got > wanted)
            return burnError(paramErr, QStringLiteral("A track's producer gave more than it was asked for."));
        filled += got;
        failures = got > 0 ? 0 : failures + 1;
        if (failures > retries)
            return burnError(eofErr,
                             QStringLiteral("A track's data ended too early, at block %1 of the layout.").arg(address),
                             QStringLiteral("Check the file that it is made from."));
        if (got == 0 && !waitBeforeRetry(stream.cancellation()))
            return burnCancelledError();
    }
    return {};
}

} // namespace Tessaron
