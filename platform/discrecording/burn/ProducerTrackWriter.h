#pragma once

#include "platform/discrecording/burn/BurnCancellation.h"
#include "platform/discrecording/burn/BurnSink.h"
#include "platform/discrecording/objects/DRTrack.h"
#include "platform/foundation/NSError.h"

#include <vector>

namespace Tessaron
{

/// How much a track with a producer holds, from its properties.
struct ProducerTrackExtent {
    std::uint32_t blockSize = 0; ///< bytes
    std::uint32_t pregapBlocks = 0;
    std::uint64_t dataBlocks = 0;

    [[nodiscard]] std::uint64_t blocks() const { return pregapBlocks + dataBlocks; }
    [[nodiscard]] std::uint64_t bytes() const { return blocks() * blockSize; }

    friend bool operator==(const ProducerTrackExtent &, const ProducerTrackExtent &) = default;
};

/// Reads the extent; `*error` says what is missing or makes no sense.
[[nodiscard]] ProducerTrackExtent extentOfProducerTrack(const DRTrack &track, NSError *error);

/// Writes one track that a producer delivers: prepares it, asks for the pregap and the data, and cleans up in every
/// case. On the burn thread; a cancel is seen between two calls of the producer.
class ProducerTrackWriter
{
public:
    ProducerTrackWriter(DRBurn *burn, DRTrack &track, BurnSink &sink, const BurnCancellation &cancellation);

    /// `planned` is what the burn counts on: a track that its own preparation makes longer or shorter fails.
    [[nodiscard]] NSError write(const ProducerTrackExtent &planned);

private:
    using Produce = std::uint32_t (DRTrackProducer::*)(DRTrack *, char *, std::uint32_t, std::uint64_t, std::uint32_t,
                                                       std::uint32_t *);

    [[nodiscard]] NSError writePrepared(const ProducerTrackExtent &planned);
    [[nodiscard]] NSError writePart(Produce produce, std::uint64_t blockCount);
    [[nodiscard]] NSError fillBuffer(Produce produce, std::uint32_t length);
    [[nodiscard]] bool waitBeforeRetry() const;

    DRBurn *const m_burn;
    DRTrack &m_track;
    DRTrackProducer &m_producer;
    BurnSink &m_sink;
    const BurnCancellation &m_cancellation;
    std::uint32_t m_blockSize = 0;
    std::vector<char> m_buffer;
};

} // namespace Tessaron
