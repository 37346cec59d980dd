#include "tests/discrecording/burn/TestConsumers.h"

#include "platform/foundation/DescriptorIO.h"
#include "platform/foundation/NSError.h"

#include <fcntl.h>

namespace Tessaron::Testing
{

OSStatus MemoryConsumer::writeBlocks(const void *buffer, std::uint32_t blockCount, std::uint32_t blockSize,
                                     std::uint32_t atAddress)
{
    if (beforeWrite)
        beforeWrite();
    if (failingBlock && *failingBlock >= atAddress && *failingBlock < atAddress + blockCount)
        return failure;
    addresses << atAddress;
    bytes.append(static_cast<const char *>(buffer), qsizetype(blockCount) * blockSize);
    return noErr;
}

FileConsumer::FileConsumer(const QByteArray &path)
    : m_output(::open(path.constData(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644))
{
}

OSStatus FileConsumer::writeBlocks(const void *buffer, std::uint32_t blockCount, std::uint32_t blockSize,
                                   std::uint32_t /*atAddress*/)
{
    m_lastWriteErrno = writeFully(m_output.get(), buffer, std::size_t(blockCount) * blockSize);
    return statusForErrno(m_lastWriteErrno);
}

int FileConsumer::outputDescriptor()
{
    if (m_wasAsked && beforeCopy)
        beforeCopy();
    m_wasAsked = true;
    return m_output.get();
}

void FileConsumer::didCopyBlocks(std::uint32_t blockCount, std::uint32_t blockSize)
{
    copiedBytes += std::uint64_t(blockCount) * blockSize;
}

} // namespace Tessaron::Testing
