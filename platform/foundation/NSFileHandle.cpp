#include "platform/foundation/NSFileHandle.h"

#include "platform/foundation/DescriptorIO.h"
#include "platform/foundation/FileSystemRepresentation.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <limits>
#include <unistd.h>

namespace Tessaron
{

namespace
{

constexpr std::size_t readAhead = 16 * std::size_t(1024);

} // namespace

NSFileHandle::NSFileHandle(UniqueDescriptor descriptor, const QString &path)
    : m_descriptor(std::move(descriptor))
    , m_path(path)
{
}

std::shared_ptr<NSFileHandle> NSFileHandle::fileHandleForWritingAtPath(const QString &path)
{
    // Opening does not wait for the reader of a fifo; writing waits as usual.
    UniqueDescriptor descriptor(::open(fileSystemRepresentation(path).constData(), O_WRONLY | O_NONBLOCK | O_CLOEXEC));
    if (!descriptor || ::fcntl(descriptor.get(), F_SETFL, 0) != 0)
        return nullptr;
    return std::shared_ptr<NSFileHandle>(new NSFileHandle(std::move(descriptor), path));
}

std::shared_ptr<NSFileHandle> NSFileHandle::fileHandleForReadingAtPath(const QString &path)
{
    UniqueDescriptor descriptor(::open(fileSystemRepresentation(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (!descriptor || ::fcntl(descriptor.get(), F_SETFL, 0) != 0)
        return nullptr;
    std::shared_ptr<NSFileHandle> handle(new NSFileHandle(std::move(descriptor), path));
    handle->m_isSeekable = ::lseek(handle->fileDescriptor(), 0, SEEK_CUR) >= 0;
    return handle;
}

QByteArray NSFileHandle::readDataOfLength(std::size_t length)
{
    // What is asked for may come from the file itself: room is made for what is there, not for what is claimed.
    constexpr std::size_t step = std::size_t(4) << 20;
    QByteArray data;
    while (std::size_t(data.size()) < length) {
        const qsizetype before = data.size();
        const std::size_t part = std::min(step, length - std::size_t(before));
        data.resize(before + qsizetype(part));
        const std::size_t got = readInto(data.data() + before, part);
        data.resize(before + qsizetype(got));
        if (got < part)
            break;
    }
    return data;
}

std::size_t NSFileHandle::readInto(void *buffer, std::size_t length)
{
    char *const to = static_cast<char *>(buffer);
    std::size_t done = takeBuffered(to, length);
    while (done < length) {
        std::size_t got = 0;
        if (m_isSeekable && length - done < readAhead) {
            m_buffer.resize(qsizetype(readAhead));
            m_bufferOffset = m_offset;
            m_buffer.resize(qsizetype(readAtOffset(m_buffer.data(), readAhead)));
            got = takeBuffered(to + done, length - done);
        } else {
            got = readAtOffset(to + done, length - done);
            m_offset += got;
        }
        if (got == 0)
            break;
        done += got;
    }
    return done;
}

std::size_t NSFileHandle::takeBuffered(char *to, std::size_t length)
{
    const std::uint64_t end = m_bufferOffset + std::uint64_t(m_buffer.size());
    if (m_offset < m_bufferOffset || m_offset >= end)
        return 0;
    const auto taken = std::size_t(std::min<std::uint64_t>(length, end - m_offset));
    std::memcpy(to, m_buffer.constData() + (m_offset - m_bufferOffset), taken);
    m_offset += taken;
    return taken;
}

std::size_t NSFileHandle::readAtOffset(char *to, std::size_t length)
{
    if (m_offset > std::uint64_t(std::numeric_limits<off_t>::max()))
        return 0;
    ssize_t got = 0;
    do {
        got = m_isSeekable ? ::pread(fileDescriptor(), to, length, off_t(m_offset))
                           : ::read(fileDescriptor(), to, length);
    } while (got < 0 && errno == EINTR);
    return got > 0 ? std::size_t(got) : 0;
}

std::ptrdiff_t NSFileHandle::readOnce(void *buffer, std::size_t length)
{
    if (m_isSeekable && ::lseek(fileDescriptor(), off_t(m_offset), SEEK_SET) < 0)
        return -1;
    const ssize_t got = ::read(fileDescriptor(), buffer, length);
    if (got > 0)
        m_offset += std::uint64_t(got);
    return got;
}

void NSFileHandle::seekToFileOffset(std::uint64_t offset)
{
    if (m_isSeekable)
        m_offset = offset;
}

NSError NSFileHandle::writeData(const void *bytes, std::size_t length)
{
    const int failure = writeFully(m_descriptor.get(), bytes, length);
    return failure == 0 ? NSError() : NSError::errorWithErrno(failure, m_path);
}

NSError NSFileHandle::closeFile()
{
    return m_descriptor.closeAndReport() ? NSError() : NSError::errorWithErrno(errno, m_path);
}

} // namespace Tessaron
