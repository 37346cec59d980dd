#include "platform/discrecording/burn/FileSink.h"

#include "platform/discrecording/burn/BurnErrors.h"
#include "platform/discrecording/burn/KernelCopy.h"
#include "platform/foundation/DescriptorIO.h"

#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaron
{

namespace
{

bool isRegularFile(int descriptor)
{
    struct stat status;
    return ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

} // namespace

FileSink::FileSink(int descriptor, const QString &name, Syncing syncing)
    : m_descriptor(descriptor)
    , m_name(name)
    , m_syncing(syncing)
    , m_isRegular(isRegularFile(descriptor))
{
}

NSError FileSink::writeBlocks(const BlockBatch &run)
{
    const int failure = writeFully(m_descriptor, run.bytes, std::size_t(run.count) * run.blockSize);
    return failure == 0 ? NSError() : burnOutputError(failure, m_name);
}

bool FileSink::copiesFiles() const
{
    return m_isRegular;
}

FileCopyResult FileSink::copyFile(const FileRange &range, std::uint32_t blockSize, const CopyProgress &progress)
{
    FileCopyResult result = copyToDescriptor(range, m_descriptor, m_name, progress);
    const std::uint64_t padding = (blockSize - range.length % blockSize) % blockSize;
    if (result.outcome != FileCopyResult::Outcome::Copied || padding == 0)
        return result;
    if (const int failure = writeZeros(m_descriptor, padding))
        return {FileCopyResult::Outcome::WriteFailed, 0, burnOutputError(failure, m_name)};
    if (!progress(padding))
        result.outcome = FileCopyResult::Outcome::Cancelled;
    return result;
}

NSError FileSink::endDisc()
{
    if (const int failure = m_isRegular ? endAtPosition() : 0)
        return burnOutputError(failure, m_name);
    if (const int failure = m_syncing == Syncing::AtTheEnd ? syncToDisk(m_descriptor) : 0)
        return burnOutputError(failure, m_name);
    return {};
}

/// A file that was longer before ends where the writing ended; 0 or an `errno` value.
int FileSink::endAtPosition() const
{
    struct stat status;
    const off_t end = ::lseek(m_descriptor, 0, SEEK_CUR);
    if (end < 0 || ::fstat(m_descriptor, &status) != 0)
        return errno;
    return status.st_size > end && ::ftruncate(m_descriptor, end) != 0 ? errno : 0;
}

} // namespace Tessaron
