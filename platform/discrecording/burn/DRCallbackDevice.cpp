#include "platform/discrecording/burn/DRCallbackDevice.h"

#include "platform/discrecording/burn/CallbackSink.h"

namespace Tessaron
{

DRDeviceConsumer::~DRDeviceConsumer() = default;

BlockSink *DRDeviceConsumer::blockSink()
{
    return nullptr;
}

std::shared_ptr<DRCallbackDevice> DRCallbackDevice::initWithConsumer(DRDeviceConsumer *consumer)
{
    if (!consumer)
        return nullptr;
    return std::shared_ptr<DRCallbackDevice>(new DRCallbackDevice(consumer));
}

std::shared_ptr<BlockSink> DRCallbackDevice::sinkForBurn(const std::stop_token & /*cancellation*/)
{
    if (BlockSink *const ownSink = m_consumer->blockSink())
        return {std::shared_ptr<void>(), ownSink}; // it stays the consumer's
    return std::make_shared<CallbackSink>(*m_consumer);
}

} // namespace Tessaron
