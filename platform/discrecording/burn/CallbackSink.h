#pragma once

#include "platform/discrecording/burn/BlockSink.h"

namespace Tessaron
{

class DRDeviceConsumer;

/// Hands every block to the consumer of a callback device.
class CallbackSink final : public BlockSink
{
public:
    /// The consumer must outlive the sink.
    explicit CallbackSink(DRDeviceConsumer &consumer)
        : m_consumer(consumer)
    {
    }

    [[nodiscard]] NSError writeBlocks(const BlockBatch &run) override;

private:
    DRDeviceConsumer &m_consumer;
};

} // namespace Tessaron
