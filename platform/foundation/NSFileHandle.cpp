#include "platform/foundation/NSFileHandle.h"

#include "platform/foundation/FileSystemRepresentation.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>

namespace Tessaron
{

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

NSError NSFileHandle::writeData(const void *bytes, std::size_t length)
{
    const char *at = static_cast<const char *>(bytes);
    constexpr std::size_t largestWrite = std::size_t(1) << 30; // the kernel takes no more than 2 GiB at once
    while (length > 0) {
        const ssize_t written = ::write(m_descriptor.get(), at, std::min(length, largestWrite));
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return NSError::errorWithErrno(written < 0 ? errno : EIO, m_path);
        at += written;
        length -= std::size_t(written);
    }
    return {};
}

NSError NSFileHandle::closeFile()
{
    return m_descriptor.closeAndReport() ? NSError() : NSError::errorWithErrno(errno, m_path);
}

} // namespace Tessaron
