#include "platform/quicktime/MediaFile.h"

#include "platform/foundation/DescriptorIO.h"
#include "platform/foundation/DescriptorLimit.h"
#include "platform/quicktime/MediaErrors.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

namespace Tessaron
{

NSError mediaOpenError(int errnoValue, const QByteArray &path)
{
    const NSError error = NSError::errorWithErrno(errnoValue, {});
    const QString suggestion = isLackOfDescriptors(errnoValue)
        ? adviceOnDescriptors()
        : QStringLiteral("Check that the file is there and that you may read it.");
    return mediaError(statusForErrno(errnoValue), path, error.localizedFailureReason(), suggestion);
}

MediaFile::MediaFile(QByteArray path, UniqueDescriptor descriptor, std::int64_t length)
    : m_path(std::move(path))
    , m_descriptor(std::move(descriptor))
    , m_length(length)
{
}

Result<MediaFile> MediaFile::open(const QByteArray &path)
{
    // Neither a pipe without a writer nor a tape drive is waited for.
    UniqueDescriptor descriptor(::open(path.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status;
    if (!descriptor || ::fstat(descriptor.get(), &status) != 0)
        return mediaOpenError(errno, path);
    if (S_ISDIR(status.st_mode))
        return mediaOpenError(EISDIR, path);
    if (!S_ISREG(status.st_mode))
        return mediaError(paramErr, path, QStringLiteral("it is not a regular file"),
                          QStringLiteral("Copy what it delivers into a file first."));
    return MediaFile(path, std::move(descriptor), status.st_size);
}

int MediaFile::read(std::int64_t offset, void *buffer, std::size_t length, std::size_t *got) const
{
    *got = 0;
    if (offset < 0 || offset >= m_length)
        return 0;
    const auto wanted = std::size_t(std::min(std::uint64_t(m_length - offset), std::uint64_t(length)));
    return readFully(m_descriptor.get(), std::uint64_t(offset), buffer, wanted, got);
}

QByteArray MediaFile::bytesAt(std::int64_t offset, std::int64_t length) const
{
    if (offset < 0 || offset >= m_length || length <= 0)
        return {};
    QByteArray bytes(qsizetype(std::min(length, m_length - offset)), Qt::Uninitialized);
    std::size_t got = 0;
    if (read(offset, bytes.data(), std::size_t(bytes.size()), &got) != 0)
        return {};
    bytes.truncate(qsizetype(got));
    return bytes;
}

void MediaFile::willBeReadInOrder() const
{
    ::posix_fadvise(m_descriptor.get(), 0, 0, POSIX_FADV_SEQUENTIAL);
}

} // namespace Tessaron
