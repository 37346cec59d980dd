#include "platform/quicktime/decoding/LocalMediaFile.h"

#include <algorithm>
#include <cerrno>

namespace Tessaron
{

namespace
{

constexpr int bufferSize = 64 * 1024;
constexpr std::int64_t leastCostOfRead = 4096;

} // namespace

LocalMediaFile::LocalMediaFile(MediaFile file, std::stop_token stop)
    : m_file(std::move(file))
    , m_stop(std::move(stop))
{
}

Result<std::unique_ptr<LocalMediaFile>> LocalMediaFile::open(const QByteArray &path, std::stop_token stop)
{
    Result<MediaFile> opened = MediaFile::open(path);
    if (!opened)
        return opened.error();
    std::unique_ptr<LocalMediaFile> file(new LocalMediaFile(*std::move(opened), std::move(stop)));
    file->m_file.willBeReadInOrder();
    auto *const buffer = static_cast<unsigned char *>(av_malloc(bufferSize));
    if (buffer)
        file->m_context.reset(avio_alloc_context(buffer, bufferSize, 0, file.get(), &read, nullptr, &seek));
    if (!file->m_context) {
        av_free(buffer);
        return mediaOpenError(ENOMEM, path);
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
    std::size_t got = 0;
    if (const int failure = file->m_file.read(file->m_position, buffer, std::size_t(std::max(size, 0)), &got)) {
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
        return file->length();
    case SEEK_SET:
        break;
    case SEEK_CUR:
        base = file->m_position;
        break;
    case SEEK_END:
        base = file->length();
        break;
    default:
        return AVERROR(EINVAL);
    }
    std::int64_t target = 0;
    if (__builtin_add_overflow(base, offset, &target) || target < 0)
        return AVERROR(EINVAL);
    return file->m_position = target;
}

} // namespace Tessaron
