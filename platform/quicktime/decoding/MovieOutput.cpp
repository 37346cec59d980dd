#include "platform/quicktime/decoding/MovieOutput.h"

#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaron
{

namespace
{

constexpr int bufferSize = 256 * 1024;

} // namespace

MovieOutput::MovieOutput(MovieStorage &storage)
{
    auto *const buffer = static_cast<unsigned char *>(av_malloc(bufferSize));
    if (buffer)
        m_context.reset(avio_alloc_context(buffer, bufferSize, 1, &storage, nullptr, &write, &seek));
    if (!m_context)
        av_free(buffer);
}

int MovieOutput::write(void *storage, std::uint8_t *bytes, int size)
{
    const int failure = static_cast<MovieStorage *>(storage)->write(bytes, std::size_t(size));
    return failure == 0 ? size : AVERROR(failure);
}

std::int64_t MovieOutput::seek(void *storage, std::int64_t offset, int whence)
{
    const int descriptor = static_cast<MovieStorage *>(storage)->descriptor();
    if (whence == AVSEEK_SIZE) {
        struct stat status;
        return ::fstat(descriptor, &status) == 0 ? status.st_size : AVERROR(errno);
    }
    const off_t position = ::lseek(descriptor, offset, whence & ~AVSEEK_FORCE);
    return position < 0 ? AVERROR(errno) : position;
}

} // namespace Tessaron
