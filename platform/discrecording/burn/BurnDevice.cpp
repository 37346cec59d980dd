#include "platform/discrecording/burn/BurnDevice.h"

namespace Tessaron
{

BurnDevice::~BurnDevice() = default;

QVariantMap BurnDevice::mediaInfo() const
{
    return {};
}

BlockAddress BurnDevice::firstBlock() const
{
    return {};
}

} // namespace Tessaron
