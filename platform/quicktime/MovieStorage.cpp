#include "platform/quicktime/MovieStorage.h"

#include "platform/foundation/DescriptorIO.h"
#include "platform/quicktime/MediaErrors.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaron
{

namespace
{

NSError writingError(int errnoValue, const QByteArray &path)
{
    return mediaError(statusForErrno(errnoValue), path,
                      NSError::errorWithErrno(errnoValue, {}).localizedFailureReason(),
                      QStringLiteral("Choose a folder that you may write to, with room for the sound."));
}

} // namespace

MovieStorage::MovieStorage(QByteArray path, UniqueDescriptor descriptor)
    : m_path(std::move(path))
    , m_descriptor(std::move(descriptor))
{
}

Result<MovieStorageHandle> MovieStorage::create(const QByteArray &path)
{
    UniqueDescriptor descriptor(
        ::open(path.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY | O_NOFOLLOW, 0600));
    struct stat status;
    if (!descriptor || ::fstat(descriptor.get(), &status) != 0)
        return writingError(errno, path);
    if (!S_ISREG(status.st_mode))
        return writingError(S_ISDIR(status.st_mode) ? EISDIR : EINVAL, path);
    if (::ftruncate(descriptor.get(), 0) != 0)
        return writingError(errno, path);
    return MovieStorageHandle(new MovieStorage(path, std::move(descriptor)));
}

Result<MovieStorageHandle> MovieStorage::ofOpenFile(int descriptor, const QByteArray &path)
{
    UniqueDescriptor own(::fcntl(descriptor, F_DUPFD_CLOEXEC, 0));
    if (!own)
        return writingError(errno, path);
    return MovieStorageHandle(new MovieStorage(path, std::move(own)));
}

int MovieStorage::write(const void *bytes, std::size_t length)
{
    if (m_failure == 0)
        m_failure = writeFully(m_descriptor.get(), bytes, length);
    return m_failure;
}

NSError MovieStorage::failure() const
{
    return m_failure == 0 ? NSError() : writingError(m_failure, m_path);
}

NSError MovieStorage::close()
{
    if (m_failure == 0 && !m_descriptor.closeAndReport())
        m_failure = errno;
    return failure();
}

} // namespace Tessaron
