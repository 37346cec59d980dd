#include "platform/discrecording/burn/BurnSink.h"

#include "platform/discrecording/burn/BurnErrors.h"
#include "platform/discrecording/burn/KernelCopy.h"
#include "platform/discrecording/content/FileContentsReader.h"
#include "platform/foundation/DescriptorIO.h"

#include <algorithm>
#include <cerrno>
#include <sys/stat.h>

namespace Tessaron
{

BurnSink::BurnSink(DRDeviceConsumer &consumer, BurnStatus &status, const BurnCancellation &cancellation)
    : m_consumer(consumer)
    , m_fileConsumer(dynamic_cast<DRFileDescriptorConsumer *>(&consumer))
    , m_status(status)
    , m_cancellation(cancellation)
{
}

bool BurnSink::takesFileRuns() const
{
    struct stat status;
    return m_fileConsumer && ::fstat(m_fileConsumer->outputDescriptor(), &status) == 0 && S_ISREG(status.st_mode);
}

NSError BurnSink::writeBlocks(const void *bytes, std::uint32_t blockCount, std::uint32_t blockSize)
{
    if (m_cancellation.isRequested())
        return burnCancelledError();
    if (const OSStatus status = m_consumer.writeBlocks(bytes, blockCount, blockSize, m_address))
        return consumerError(status);
    m_address += blockCount;
    m_status.addBytesWritten(std::uint64_t(blockCount) * blockSize);
    return {};
}

NSError BurnSink::consumerError(OSStatus status) const
{
    if (m_fileConsumer && m_fileConsumer->lastWriteErrno() != 0)
        return burnOutputError(m_fileConsumer->lastWriteErrno(), m_fileConsumer->outputDescriptor());
    return burnError(status, QStringLiteral("The device did not take block %1: status %2.").arg(m_address).arg(status));
}

NSError BurnSink::copyFileRun(const FileContents &file, const FileRun &run)
{
    NSError error;
    const UniqueDescriptor from = openFileContents(file, &error, m_cancellation.token());
    if (m_cancellation.isRequested())
        return burnCancelledError();
    if (error)
        return error;
    const int to = m_fileConsumer->outputDescriptor();
    error = copyContents(from.get(), to, file, run);
    if (error)
        return error;
    const auto blockCount = std::uint32_t((run.length + logicalBlockSize - 1) / logicalBlockSize);
    const std::uint64_t padding = std::uint64_t(blockCount) * logicalBlockSize - run.length;
    if (const int failure = writeZeros(to, padding))
        return burnOutputError(failure, to);
    error = verifyFileContentsUnchanged(from.get(), file);
    if (error)
        return error;
    m_fileConsumer->didCopyBlocks(blockCount, logicalBlockSize);
    m_address += blockCount;
    m_status.addBytesWritten(padding);
    return {};
}

NSError BurnSink::copyContents(int from, int to, const FileContents &file, const FileRun &run)
{
    const CopyProgress progress = [this](std::uint64_t bytes) {
        m_status.addBytesWritten(bytes);
        return !m_cancellation.isRequested();
    };
    const CopyResult result = copyDescriptorRange({from, to, run.offset, run.length}, progress);
    switch (result.outcome) {
    case CopyResult::Outcome::Copied:
        return {};
    case CopyResult::Outcome::Cancelled:
        return burnCancelledError();
    case CopyResult::Outcome::WriteFailed:
        return burnOutputError(result.errnoValue, to);
    case CopyResult::Outcome::EndedEarly:
    case CopyResult::Outcome::ReadFailed:
        break;
    }
    return fileContentsReadError(from, file, result.errnoValue);
}

} // namespace Tessaron
