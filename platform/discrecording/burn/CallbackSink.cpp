#include "platform/discrecording/burn/CallbackSink.h"

#include "platform/discrecording/burn/BurnErrors.h"
#include "platform/discrecording/burn/DRCallbackDevice.h"

namespace Tessaron
{

NSError CallbackSink::writeBlocks(const BlockBatch &run)
{
    const OSStatus status = m_consumer.writeBlocks(run.bytes, run.count, run.blockSize, std::uint32_t(run.at.number()));
    if (status == noErr)
        return {};
    return burnError(status,
                     QStringLiteral("The device did not take block %1: status %2.").arg(run.at.number()).arg(status));
}

} // namespace Tessaron
