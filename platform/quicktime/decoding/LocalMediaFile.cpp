#include "platform/quicktime/decoding/LocalMediaFile.h"

#include "platform/foundation/DescriptorIO.h"
#include "platform/quicktime/MediaErrors.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

namespace Tessaron
{

namespace
{

constexpr int bufferSize = 64 * 1024;
constexpr std::int64_t leastCostOfRead = 4096;

NSError openError(int errnoValue, const QByteArray &path)
{
    return mediaError(statusForErrno(errnoValue), path,
                      NSError::errorWithErrno(errnoValue, {}).localizedFailureReason(),
                      QStringLiteral("Check that the file is there and that you may read it."));
}

} // namespace

LocalMediaFile::LocalMediaFile(QByteArray path, UniqueDescriptor descriptor, std::int64_t length, std::stop_token stop)
    : m_path(std::move(path))
    , m_descriptor(std::move(descriptor))
    , m_length(length)
    , m_stop(std::move(stop))
{
}

Result<std::unique_ptr<LocalMediaFile>> LocalMediaFile::open(const QByteArray &path, std::stop_token stop)
{
    // Neither a pipe without a writer nor a tape drive is waited for.
    UniqueDescriptor descriptor(::open(path.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status;
    if (!descriptor || ::fstat(descriptor.get(), &status) != 0)
        return openError(errno, path);
    if (S_ISDIR(status.st_mode))
        return openError(EISDIR, path);
    if (!S_ISREG(status.st_mode))
        return mediaError(paramErr, path, QStringLiteral("it is not a regular file"),
                          QStringLiteral("Copy what it delivers into a file first."));
    ::posix_fadvise(descriptor.get(), 0, 0, POSIX_FADV_SEQUENTIAL);
    std::unique_ptr<LocalMediaFile> file(
        new LocalMediaFile(path, std::move(descriptor), status.st_size, std::move(stop)));
    auto *const buffer = static_cast<unsigned char *>(av_malloc(bufferSize));
    if (buffer)
        file->m_context.reset(avio_alloc_context(buffer, bufferSize, 0, file.get(), &read, nullptr, &seek));
    if (!file->m_context) {
        av_free(buffer);
        return openError(ENOMEM, path);
    }
    return file;
}

int LocalMediaFile::read(void *self, std::uint8_t *buffer, int size)
{
    auto *const file = static_cast<LocalMediaFile *>(self);
    if (file->m_stop.stop_requested())
        return AVERROR_EXIT;
    if (file->isBudgetUsedUp())
        return AVERROR(EFBIG);
    // Never past the length at the start: a file that grows as fast as it is read would have no end.
    const std::int64_t wanted = std::clamp<std::int64_t>(file->m_length - file->m_position, 0, size);
    std::size_t got = 0;
    if (const int failure =
            readFully(file->m_descriptor.get(), std::uint64_t(file->m_position), buffer, std::size_t(wanted), &got)) {
        file->m_failure = failure;
        return AVERROR(failure);
    }
    file->m_budget -= std::max(std::int64_t(got), leastCostOfRead);
    file->m_position += std::int64_t(got);
    return got == 0 ? AVERROR_EOF : int(got);
}

std::int64_t LocalMediaFile::seek(void *self, std::int64_t offset, int whence)
{
    auto *const file = static_cast<LocalMediaFile *>(self);
    std::int64_t base = 0;
    switch (whence & ~AVSEEK_FORCE) {
    case AVSEEK_SIZE:
        return file->m_length;
    case SEEK_SET:
        break;
    case SEEK_CUR:
        base = file->m_position;
        break;
    case SEEK_END:
        base = file->m_length;
        break;
    default:
        return AVERROR(EINVAL);
    }
    std::int64_t target = 0;
    if (__builtin_add_overflow(base, offset, &target) || target < 0)
        return AVERROR(EINVAL);
    return file->m_position = target;
}

QByteArray LocalMediaFile::bytesAt(std::int64_t offset, std::int64_t length) const
{
    if (offset < 0 || offset >= m_length || length <= 0)
        return {};
    QByteArray bytes(qsizetype(std::min(length, m_length - offset)), Qt::Uninitialized);
    std::size_t got = 0;
    if (readFully(m_descriptor.get(), std::uint64_t(offset), bytes.data(), std::size_t(bytes.size()), &got) != 0)
        return {};
    bytes.truncate(qsizetype(got));
    return bytes;
}

} // namespace Tessaron
