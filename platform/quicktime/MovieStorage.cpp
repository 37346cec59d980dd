#include "platform/quicktime/MovieStorage.h"

#include "platform/foundation/DescriptorIO.h"
#include "platform/quicktime/MediaErrors.h"
#include "platform/quicktime/decoding/MovieWriter.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaron
{

namespace
{

constexpr int bufferSize = 256 * 1024;

NSError writingError(int errnoValue, const QByteArray &path)
{
    return mediaError(statusForErrno(errnoValue), path,
                      NSError::errorWithErrno(errnoValue, {}).localizedFailureReason(),
                      QStringLiteral("Choose a folder that you may write to, with room for the sound."));
}

} // namespace

void MovieStorageDeleter::operator()(MovieStorage *storage) const
{
    delete storage;
}

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
    MovieStorageHandle storage(new MovieStorage(path, std::move(descriptor)));
    auto *const buffer = static_cast<unsigned char *>(av_malloc(bufferSize));
    if (buffer)
        storage->m_context.reset(avio_alloc_context(buffer, bufferSize, 1, storage.get(), nullptr, &MovieStorage::write,
                                                    &MovieStorage::seek));
    if (!storage->m_context) {
        av_free(buffer);
        return writingError(ENOMEM, path);
    }
    return storage;
}

int MovieStorage::write(void *self, std::uint8_t *bytes, int size)
{
    auto *const storage = static_cast<MovieStorage *>(self);
    // The first failure stays: what follows it would only leave a hole.
    if (storage->m_failure == 0)
        storage->m_failure = writeFully(storage->m_descriptor.get(), bytes, std::size_t(size));
    return storage->m_failure == 0 ? size : AVERROR(storage->m_failure);
}

std::int64_t MovieStorage::seek(void *self, std::int64_t offset, int whence)
{
    auto *const storage = static_cast<MovieStorage *>(self);
    if (whence == AVSEEK_SIZE) {
        struct stat status;
        return ::fstat(storage->m_descriptor.get(), &status) == 0 ? status.st_size : AVERROR(errno);
    }
    const off_t position = ::lseek(storage->m_descriptor.get(), offset, whence & ~AVSEEK_FORCE);
    return position < 0 ? AVERROR(errno) : position;
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

Result<MovieStorageHandle> CreateMovieStorage(const QByteArray &path)
{
    return MovieStorage::create(path);
}

NSError AddMovieToStorage(const QTMovie &movie, MovieStorage &storage, std::stop_token stop)
{
    const NSError error = MovieWriter(storage, std::move(stop)).write(movie.segments());
    return storage.failure() ? storage.failure() : error;
}

NSError CloseMovieStorage(MovieStorageHandle storage)
{
    return storage ? storage->close() : NSError();
}

} // namespace Tessaron
