#include "platform/foundation/DescriptorIO.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <poll.h>
#include <unistd.h>

namespace Tessaron
{

namespace
{

/// The kernel moves no more than 2 GiB at once.
constexpr std::size_t largestTransfer = std::size_t(1) << 30;

int waitUntilWritable(int descriptor)
{
    pollfd waiting = {descriptor, POLLOUT, 0};
    return ::poll(&waiting, 1, -1) < 0 && errno != EINTR ? errno : 0;
}

} // namespace

int writeFully(int descriptor, const void *bytes, std::size_t length)
{
    const char *at = static_cast<const char *>(bytes);
    while (length > 0) {
        const ssize_t written = ::write(descriptor, at, std::min(length, largestTransfer));
        if (written > 0) {
            at += written;
            length -= std::size_t(written);
            continue;
        }
        if (written == 0)
            return EIO;
        if (errno == EAGAIN) {
            if (const int failure = waitUntilWritable(descriptor))
                return failure;
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

int writeZeros(int descriptor, std::uint64_t length)
{
    static constexpr std::array<char, 65536> zeros{};
    while (length > 0) {
        const auto part = std::size_t(std::min<std::uint64_t>(length, zeros.size()));
        if (const int failure = writeFully(descriptor, zeros.data(), part))
            return failure;
        length -= part;
    }
    return 0;
}

int readFully(int descriptor, std::uint64_t offset, void *buffer, std::size_t length, std::size_t *got)
{
    auto *const into = static_cast<char *>(buffer);
    for (*got = 0; *got < length;) {
        const std::size_t wanted = std::min(length - *got, largestTransfer);
        const ssize_t read = ::pread(descriptor, into + *got, wanted, off_t(offset + *got));
        if (read < 0 && errno == EINTR)
            continue;
        if (read < 0)
            return errno;
        if (read == 0)
            break;
        *got += std::size_t(read);
    }
    return 0;
}

int syncToDisk(int descriptor)
{
    while (::fsync(descriptor) != 0) {
        if (errno == EINVAL || errno == ENOSYS || errno == EOPNOTSUPP)
            return 0;
        if (errno != EINTR)
            return errno;
    }
    return 0;
}

} // namespace Tessaron
