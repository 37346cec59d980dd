#pragma once

#include "platform/discrecording/burn/BurnCancellation.h"
#include "platform/discrecording/burn/BurnStatus.h"
#include "platform/discrecording/burn/DRCallbackDevice.h"
#include "platform/discrecording/image/BlockImage.h"

namespace Tessaron
{

/// Where a burn's blocks go: numbers them, counts them for the status, and turns what the consumer refuses into an
/// error. Used by the burn thread only.
class BurnSink
{
public:
    BurnSink(DRDeviceConsumer &consumer, BurnStatus &status, const BurnCancellation &cancellation);

    /// True when copyFileRun() may be used: the consumer writes into a regular file.
    [[nodiscard]] bool takesFileRuns() const;

    /// Hands whole blocks to the consumer.
    [[nodiscard]] NSError writeBlocks(const void *bytes, std::uint32_t blockCount, std::uint32_t blockSize);

    /// Lets the kernel copy the contents of a planned file, compares the file with the plan before and after, and fills
    /// the run's last block with zero bytes.
    [[nodiscard]] NSError copyFileRun(const FileContents &file, const FileRun &run);

    /// Number of the next block, counted from the start of the layout.
    [[nodiscard]] std::uint32_t address() const { return m_address; }

private:
    [[nodiscard]] NSError copyContents(int from, int to, const FileContents &file, const FileRun &run);
    [[nodiscard]] NSError consumerError(OSStatus status) const;

    DRDeviceConsumer &m_consumer;
    DRFileDescriptorConsumer *const m_fileConsumer; ///< the same object, null when it is none
    BurnStatus &m_status;
    const BurnCancellation &m_cancellation;
    std::uint32_t m_address = 0;
};

} // namespace Tessaron
