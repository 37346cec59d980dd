#include "platform/discrecording/burn/DRCallbackDevice.h"

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

} // namespace Tessaron
