#pragma once

#include "platform/disctracks/BlockAddress.h"
#include "platform/foundation/Export.h"

#include <QVariantMap>

#include <memory>
#include <stop_token>

namespace Tessaron
{

class BlockSink;

/// What a burn writes to: the consumer of a callback device (DRCallbackDevice), or a drive (DRDevice).
class TESSARON_EXPORT BurnDevice
{
public:
    BurnDevice() = default;
    BurnDevice(const BurnDevice &) = delete;
    BurnDevice &operator=(const BurnDevice &) = delete;
    virtual ~BurnDevice();

    /// The way of one burn's blocks to the device. Asked for on the burn's thread, where the sink is used as well; the
    /// device must outlive it. A sink that waits looks at `cancellation`. Never null.
    [[nodiscard]] virtual std::shared_ptr<BlockSink> sinkForBurn(const std::stop_token &cancellation) = 0;

    /// What producers of tracks hear of the medium (DRDeviceMediaClassKey); empty where nothing is known. Asked for
    /// before the burn is planned.
    [[nodiscard]] virtual QVariantMap mediaInfo() const;

    /// The block of the medium that the first track's index 1 will have: 0 on an empty one. Asked for before the burn
    /// is planned.
    [[nodiscard]] virtual BlockAddress firstBlock() const;
};

} // namespace Tessaron
