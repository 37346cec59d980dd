#pragma once

#include "platform/foundation/Export.h"

#include <QVariantMap>

#include <cstdint>
#include <memory>

namespace Tessaron
{

class DRBurn;
class DRTrack;

/// Delivers a track's bytes while the disc is made. Called on the burn thread, one call at a time, in the order:
/// prepare, the pregap's blocks, the data's blocks, cleanup.
class TESSARON_EXPORT DRTrackProducer
{
public:
    virtual ~DRTrackProducer();

    /// False fails the burn. `media` describes the medium; empty when the burn goes to a callback device.
    virtual bool prepareTrack(DRTrack *track, DRBurn *forBurn, const QVariantMap &toMedia);
    /// Fills `buffer` with up to `length` bytes of the pregap, in order; returns how many. The default gives zeros.
    virtual std::uint32_t producePreGapForTrack(DRTrack *track, char *intoBuffer, std::uint32_t length,
                                                std::uint64_t atAddress, std::uint32_t blockSize,
                                                std::uint32_t *ioFlags);
    /// Fills `buffer` with up to `length` bytes of the data, in order; returns how many. Fewer than asked, repeatedly
    /// none, fails the burn.
    virtual std::uint32_t produceDataForTrack(DRTrack *track, char *intoBuffer, std::uint32_t length,
                                              std::uint64_t atAddress, std::uint32_t blockSize,
                                              std::uint32_t *ioFlags) = 0;
    /// Always called after a prepareTrack() that returned true, also when the burn failed.
    virtual void cleanupTrackAfterBurn(DRTrack *track);
};

} // namespace Tessaron
