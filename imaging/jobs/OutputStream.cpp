#include "imaging/jobs/OutputStream.h"

#include "platform/foundation/MessageTexts.h"
#include <TessaronClasses/DiscJobErrors.h>

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace Tessaron
{

namespace
{

constexpr std::chrono::milliseconds openingInterval(20);

NSError streamError(const QByteArray &path, const QString &message, const QString &advice = {})
{
    const QString name =
        path.isEmpty() ? QStringLiteral("the output") : QStringLiteral("the output %1").arg(quoted(path));
    return discJobError(DiscJobErrorCode::Destination, message.arg(name), advice, path);
}

/// Why an image cannot go there; the null error when it can.
NSError errorOfStream(int descriptor, const QByteArray &path)
{
    struct stat status;
    if (::fstat(descriptor, &status) != 0)
        return streamError(path, QStringLiteral("%1 cannot be written: ") + systemText(errno));
    if ((::fcntl(descriptor, F_GETFL) & O_ACCMODE) == O_RDONLY)
        return streamError(path, QStringLiteral("%1 is not open for writing"));
    const QString nameAFile = QStringLiteral("Name a file for the image, or lead it into a file or another program.");
    if (::isatty(descriptor) != 0)
        return streamError(path, QStringLiteral("%1 is a terminal, which cannot take an image"), nameAFile);
    if (S_ISSOCK(status.st_mode))
        return streamError(path, QStringLiteral("%1 is a socket, which cannot take an image"), nameAFile);
    if (S_ISBLK(status.st_mode))
        return streamError(path, QStringLiteral("%1 is a disk, which cannot take an image as a stream"), nameAFile);
    if (S_ISREG(status.st_mode) && status.st_size > 0)
        return streamError(
            path, QStringLiteral("%1 is a file that holds something already, to which an image cannot be added"),
            QStringLiteral("Empty it first, or name another one."));
    return {};
}

} // namespace

bool isStream(const QByteArray &path)
{
    struct stat status;
    return !path.endsWith('/') && ::stat(path.constData(), &status) == 0
        && (S_ISFIFO(status.st_mode) || S_ISCHR(status.st_mode) || S_ISSOCK(status.st_mode));
}

Result<UniqueDescriptor> streamAtPath(const QByteArray &path, const std::stop_token &stop)
{
    UniqueDescriptor stream;
    while (!stop.stop_requested()) {
        // Opened without waiting, so that a stop is heard while the pipe has no reader.
        stream.reset(::open(path.constData(), O_WRONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
        struct stat status;
        const bool lacksReader =
            !stream && errno == ENXIO && ::stat(path.constData(), &status) == 0 && S_ISFIFO(status.st_mode);
        if (!lacksReader)
            break;
        std::this_thread::sleep_for(openingInterval);
    }
    if (!stream && stop.stop_requested())
        return discJobCancellation();
    if (!stream && errno == ENXIO)
        return streamError(path, QStringLiteral("%1 is a socket, which cannot take an image"));
    if (!stream)
        return streamError(path, QStringLiteral("%1 cannot be opened for writing: ") + systemText(errno));
    const int flags = ::fcntl(stream.get(), F_GETFL);
    if (flags >= 0)
        (void)::fcntl(stream.get(), F_SETFL, flags & ~O_NONBLOCK);
    if (NSError error = errorOfStream(stream.get(), path))
        return error;
    return stream;
}

Result<UniqueDescriptor> streamWithDescriptor(int descriptor)
{
    if (NSError error = errorOfStream(descriptor, {}))
        return error;
    UniqueDescriptor stream(::fcntl(descriptor, F_DUPFD_CLOEXEC, 3));
    if (!stream)
        return streamError({}, QStringLiteral("%1 cannot be written: ") + systemText(errno));
    return stream;
}

} // namespace Tessaron
