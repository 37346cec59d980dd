#pragma once

#include "platform/foundation/Export.h"
#include "platform/foundation/OSStatus.h"

#include <cstdint>
#include <memory>

namespace Tessaron
{

/// Takes the blocks that a burn would send to a drive.
class TESSARON_EXPORT DRDeviceConsumer
{
public:
    virtual ~DRDeviceConsumer();
    /// Gets `blockCount` whole blocks of `blockSize` bytes, in order, on the burn thread. A non-zero status fails the
    /// burn.
    virtual OSStatus writeBlocks(const void *buffer, std::uint32_t blockCount, std::uint32_t blockSize,
                                 std::uint32_t atAddress) = 0;
};

/// What a consumer may be besides: one whose blocks all go into a file, one after another, so that the contents of
/// big files can be copied by the kernel. Found by dynamic_cast.
class TESSARON_EXPORT DRFileDescriptorConsumer
{
public:
    virtual ~DRFileDescriptorConsumer();
    /// The descriptor to which the consumer would write next, at its current position; -1 refuses. What the burn copies
    /// to it counts as consumed.
    [[nodiscard]] virtual int outputDescriptor() = 0;
    /// Told what was copied, in blocks, after each such copy.
    virtual void didCopyBlocks(std::uint32_t blockCount, std::uint32_t blockSize) = 0;
    /// Why the last write failed, as an `errno` value; 0 when it did not. Words the burn's error.
    [[nodiscard]] virtual int lastWriteErrno() const = 0;
};

/// A device without a drive: it hands every block to its consumer.
class TESSARON_EXPORT DRCallbackDevice
{
public:
    /// Null for a null consumer. The consumer is not owned and must outlive every burn to the device.
    [[nodiscard]] static std::shared_ptr<DRCallbackDevice> initWithConsumer(DRDeviceConsumer *consumer);

    [[nodiscard]] DRDeviceConsumer *consumer() const { return m_consumer; }

private:
    explicit DRCallbackDevice(DRDeviceConsumer *consumer)
        : m_consumer(consumer)
    {
    }

    DRDeviceConsumer *const m_consumer;
};

} // namespace Tessaron
