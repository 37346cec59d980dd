#pragma once

#include "platform/discrecording/objects/DRTrack.h"
#include "platform/foundation/Export.h"

#include <cstdint>
#include <memory>

namespace Tessaron
{

/// What a producer may offer besides its data: a track that describes it. Producers without it are plain data.
class TESSARON_EXPORT KRTrackOffering
{
public:
    virtual ~KRTrackOffering();
    /// Null when no track can be made. Asked for twice: for the size, and when the producer's turn comes.
    [[nodiscard]] virtual std::shared_ptr<DRTrack> track() = 0;
};

/// The size of a producer without a track.
class TESSARON_EXPORT KRDataSizeOffering
{
public:
    virtual ~KRDataSizeOffering();
    [[nodiscard]] virtual std::uint64_t dataSize() const = 0; ///< bytes
};

} // namespace Tessaron
