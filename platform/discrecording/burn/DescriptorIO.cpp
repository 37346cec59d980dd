#include "platform/discrecording/burn/DescriptorIO.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <unistd.h>

namespace Tessaron
{

int writeFully(int descriptor, const void *bytes, std::size_t length)
{
    const char *at = static_cast<const char *>(bytes);
    while (length > 0) {
        const ssize_t written = ::write(descriptor, at, length);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return written < 0 ? errno : EIO;
        at += written;
        length -= std::size_t(written);
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

} // namespace Tessaron
