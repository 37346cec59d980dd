#include "platform/foundation/NSFileHandle.h"

#include "platform/foundation/DescriptorIO.h"
#include "platform/foundation/FileSystemRepresentation.h"

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
    const int failure = writeFully(m_descriptor.get(), bytes, length);
    return failure == 0 ? NSError() : NSError::errorWithErrno(failure, m_path);
}

NSError NSFileHandle::closeFile()
{
    return m_descriptor.closeAndReport() ? NSError() : NSError::errorWithErrno(errno, m_path);
}

} // namespace Tessaron
