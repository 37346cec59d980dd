#pragma once

#include "platform/discrecording/burn/TrackWriter.h"
#include "platform/discrecording/objects/DRTrack.h"

#include <vector>

namespace Tessaron
{

/// The track as its properties describe it; its gaps come from the producer and are stored. An error says which
/// property is missing or makes no sense.
[[nodiscard]] Result<DiscTrack> describeProducerTrack(const DRTrack &track);

/// Writes one track that a producer delivers: prepares it, asks for the pregap and the data, and cleans up in every
/// case. A stop is seen between two calls of the producer.
class ProducerTrackWriter final : public TrackWriter
{
public:
    /// `described` is what the disc counts on: a track that its own preparation makes longer or shorter fails. `burn`,
    /// which may be null, and `media` are passed on to the producer.
    ProducerTrackWriter(std::shared_ptr<DRTrack> track, const DiscTrack &described, DRBurn *burn,
                        QVariantMap media = {});

    [[nodiscard]] TrackGap pregap() const override { return m_described.pregap; }
    [[nodiscard]] NSError plan(BlockAddress begin, const std::stop_token &cancellation,
                               const std::function<void(double)> &progress) override;
    [[nodiscard]] DiscTrack track() const override { return m_described; }
    [[nodiscard]] NSError write(BlockStream &stream) override;

private:
    using Produce = std::uint32_t (DRTrackProducer::*)(DRTrack *, char *, std::uint32_t, std::uint64_t, std::uint32_t,
                                                       std::uint32_t *);

    [[nodiscard]] NSError writePrepared(BlockStream &stream);
    [[nodiscard]] NSError writePart(BlockStream &stream, Produce produce, std::uint64_t blockCount);
    [[nodiscard]] NSError fillBuffer(const BlockStream &stream, Produce produce, std::uint32_t length);

    const std::shared_ptr<DRTrack> m_track;
    const DiscTrack m_described;
    DRBurn *const m_burn;
    const QVariantMap m_media;
    std::vector<char> m_buffer;
};

} // namespace Tessaron
