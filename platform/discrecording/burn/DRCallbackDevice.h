#pragma once

#include "platform/discrecording/burn/BurnDevice.h"
#include "platform/foundation/Export.h"
#include "platform/foundation/OSStatus.h"

#include <cstdint>
#include <memory>

namespace Tessaron
{

class BlockSink;

/// Takes the blocks that a burn would send to a drive.
class TESSARON_EXPORT DRDeviceConsumer
{
public:
    virtual ~DRDeviceConsumer();
    /// Gets `blockCount` whole blocks of `blockSize` bytes, in order, on the burn thread. A non-zero status fails the
    /// burn.
    virtual OSStatus writeBlocks(const void *buffer, std::uint32_t blockCount, std::uint32_t blockSize,
                                 std::uint32_t atAddress) = 0;
    /// The sink to which the consumer would pass every block unchanged, if there is one: a burn then calls that in the
    /// place of writeBlocks(), which keeps what the sink can do besides and what its errors say. It stays the
    /// consumer's and must outlive the burn. The default is null.
    [[nodiscard]] virtual BlockSink *blockSink();
};

/// A device without a drive: its consumer gets every block.
class TESSARON_EXPORT DRCallbackDevice final : public BurnDevice
{
public:
    /// Null for a null consumer. The consumer is not owned and must outlive every burn to the device.
    [[nodiscard]] static std::shared_ptr<DRCallbackDevice> initWithConsumer(DRDeviceConsumer *consumer);

    [[nodiscard]] DRDeviceConsumer *consumer() const { return m_consumer; }

    /// The consumer's own sink, or one that calls its writeBlocks().
    [[nodiscard]] std::shared_ptr<BlockSink> sinkForBurn(const std::stop_token &cancellation) override;

private:
    explicit DRCallbackDevice(DRDeviceConsumer *consumer)
        : m_consumer(consumer)
    {
    }

    DRDeviceConsumer *const m_consumer;
};

} // namespace Tessaron
