#include "tools/tessaron/StandardStreams.h"

#include "platform/foundation/DescriptorIO.h"
#include "tools/tessaron/Text.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace Tessaron::Tool
{

void occupyStandardDescriptors()
{
    // open() takes the lowest free number: going up from 0 fills each gap. The wrong direction on purpose: a closed
    // standard output stays a failing one instead of swallowing a report that a script waits for.
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        if (::fcntl(descriptor, F_GETFD) < 0 && errno == EBADF) {
            const int flags = descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY;
            [[maybe_unused]] const int opened = ::open("/dev/null", flags);
        }
    }
}

bool writeAll(int descriptor, QByteArrayView bytes)
{
    const int failure = writeFully(descriptor, bytes.data(), std::size_t(bytes.size()));
    if (failure != 0)
        errno = failure;
    return failure == 0;
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
