#pragma once

#include "platform/discrecording/objects/DRTrack.h"
#include "platform/discrecording/objects/DRTrackProducer.h"

#include <QStringList>

#include <functional>
#include <memory>

namespace Tessaron::Testing
{

/// Produces a known pattern and notes what it is asked for.
class TestProducer final : public DRTrackProducer
{
public:
    bool prepareTrack(DRTrack *track, DRBurn *forBurn, const QVariantMap &toMedia) override;
    std::uint32_t producePreGapForTrack(DRTrack *track, char *intoBuffer, std::uint32_t length, std::uint64_t atAddress,
                                        std::uint32_t blockSize, std::uint32_t *ioFlags) override;
    std::uint32_t produceDataForTrack(DRTrack *track, char *intoBuffer, std::uint32_t length, std::uint64_t atAddress,
                                      std::uint32_t blockSize, std::uint32_t *ioFlags) override;
    void cleanupTrackAfterBurn(DRTrack *track) override;

    /// The bytes of the data, from its start.
    [[nodiscard]] static QByteArray pattern(qsizetype length);

    QStringList calls; ///< "prepare", "pregap", "data", "cleanup"; a run of the same is noted once
    bool canPrepare = true;
    std::uint32_t mostAtOnce = 0xFFFFFFFF; ///< bytes of one call
    std::uint64_t endsAfter = ~std::uint64_t(0); ///< bytes of data there are
    int nothingTimes = 0; ///< how many calls for data give nothing, in the middle
    std::uint32_t tooMuch = 0; ///< how many bytes more than it gave it says that it gave
    std::function<void(DRTrack &)> onPrepare;
    std::function<void(std::uint64_t position)> beforeData;

private:
    void note(const QString &call);

    std::uint64_t m_position = 0;
};

/// A track of that many blocks.
[[nodiscard]] std::shared_ptr<DRTrack> trackOfProducer(const std::shared_ptr<TestProducer> &producer,
                                                       std::uint64_t blocks, std::uint32_t blockSize = 2048,
                                                       std::uint32_t pregapBlocks = 0);

} // namespace Tessaron::Testing
