#include "tools/tessaron/StandardStreams.h"

#include "tools/tessaron/Text.h"

#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace Tessaron::Tool
{

void occupyStandardDescriptors()
{
    // open() takes the lowest free number: going up from 0 fills each gap. The wrong direction on purpose: a closed
    // standard output stays a failing one instead of swallowing a report that somebody waits for.
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        if (::fcntl(descriptor, F_GETFD) < 0 && errno == EBADF) {
            const int flags = descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY;
            [[maybe_unused]] const int opened = ::open("/dev/null", flags);
        }
    }
}

bool writeAll(int descriptor, QByteArrayView bytes)
{
    while (!bytes.isEmpty()) {
        const ssize_t written = ::write(descriptor, bytes.data(), size_t(bytes.size()));
        if (written > 0) {
            bytes = bytes.sliced(written);
        } else if (written < 0 && errno == EAGAIN) {
            pollfd waiting = {descriptor, POLLOUT, 0};
            if (::poll(&waiting, 1, -1) < 0 && errno != EINTR)
                return false;
        } else if (written < 0 && errno != EINTR) {
            return false;
        }
    }
    return true;
}

void printToStandardError(const QByteArray &text)
{
    [[maybe_unused]] const bool written = writeAll(STDERR_FILENO, text);
}

void printDiagnostic(const QString &text)
{
    printToStandardError("tessaron: " + printable(text) + '\n');
}

} // namespace Tessaron::Tool
