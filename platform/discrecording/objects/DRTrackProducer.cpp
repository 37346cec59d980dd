#include "platform/discrecording/objects/DRTrackProducer.h"

#include <cstring>

namespace Tessaron
{

DRTrackProducer::~DRTrackProducer() = default;

bool DRTrackProducer::prepareTrack(DRTrack *, DRBurn *, const QVariantMap &)
{
    return true;
}

std::uint32_t DRTrackProducer::producePreGapForTrack(DRTrack *, char *intoBuffer, std::uint32_t length, std::uint64_t,
                                                     std::uint32_t, std::uint32_t *)
{
    std::memset(intoBuffer, 0, length);
    return length;
}

void DRTrackProducer::cleanupTrackAfterBurn(DRTrack *) { }

} // namespace Tessaron
