#include "tests/discrecording/burn/TestProducer.h"

#include <algorithm>
#include <cstring>

namespace Tessaron::Testing
{

void TestProducer::note(const QString &call)
{
    if (calls.isEmpty() || calls.last() != call)
        calls << call;
}

bool TestProducer::prepareTrack(DRTrack *track, DRBurn * /*forBurn*/, const QVariantMap & /*toMedia*/)
{
    note(QStringLiteral("prepare"));
    m_position = 0;
    if (onPrepare)
        onPrepare(*track);
    return canPrepare;
}

std::uint32_t TestProducer::producePreGapForTrack(DRTrack *track, char *intoBuffer, std::uint32_t length,
                                                  std::uint64_t atAddress, std::uint32_t blockSize,
                                                  std::uint32_t *ioFlags)
{
    note(QStringLiteral("pregap"));
    return DRTrackProducer::producePreGapForTrack(track, intoBuffer, length, atAddress, blockSize, ioFlags);
}

std::uint32_t TestProducer::produceDataForTrack(DRTrack * /*track*/, char *intoBuffer, std::uint32_t length,
                                                std::uint64_t /*atAddress*/, std::uint32_t /*blockSize*/,
                                                std::uint32_t * /*ioFlags*/)
{
    note(QStringLiteral("data"));
    if (beforeData)
        beforeData(m_position);
    if (m_position > 0 && nothingTimes > 0) {
        --nothingTimes;
        return 0;
    }
    const auto given =
        std::uint32_t(std::min<std::uint64_t>({length, mostAtOnce, endsAfter - std::min(endsAfter, m_position)}));
    for (std::uint32_t at = 0; at < given; ++at)
        intoBuffer[at] = char((m_position + at) * 2654435761u >> 16);
    m_position += given;
    return given + tooMuch;
}

void TestProducer::cleanupTrackAfterBurn(DRTrack * /*track*/)
{
    note(QStringLiteral("cleanup"));
}

QByteArray TestProducer::pattern(qsizetype length)
{
    QByteArray bytes(length, Qt::Uninitialized);
    for (qsizetype at = 0; at < length; ++at)
        bytes[at] = char(std::uint64_t(at) * 2654435761u >> 16);
    return bytes;
}

std::shared_ptr<DRTrack> trackOfProducer(const std::shared_ptr<TestProducer> &producer, std::uint64_t blocks,
                                         std::uint32_t blockSize, std::uint32_t pregapBlocks)
{
    std::shared_ptr<DRTrack> track = DRTrack::trackWithProducer(producer);
    QVariantMap properties{{DRTrackLengthKey, quint64(blocks)}, {DRBlockSizeKey, quint32(blockSize)}};
    if (pregapBlocks > 0)
        properties.insert(DRPreGapLengthKey, quint32(pregapBlocks));
    track->setProperties(properties);
    return track;
}

} // namespace Tessaron::Testing
