#include "platform/quicktime/redbook/RedbookOutput.h"

#include "platform/foundation/DescriptorIO.h"
#include "platform/quicktime/MediaErrors.h"
#include "platform/quicktime/decoding/CDAudioDecoder.h"
#include "platform/quicktime/redbook/Starter.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <thread>

namespace Tessaron
{

namespace
{

constexpr std::size_t frameSize = CDAudioDecoder::bytesPerFrame;
constexpr auto timeBetweenLooks = std::chrono::milliseconds(10);
/// Room for six seconds, so that the reader seldom waits for a slow disk. The system may give less.
constexpr int wantedPipeSize = 1 << 20;

NSError outputError(int errnoValue, const QByteArray &path)
{
    return mediaError(statusForErrno(errnoValue), path,
                      NSError::errorWithErrno(errnoValue, {}).localizedFailureReason(),
                      QStringLiteral("Name a FIFO that another program reads, or - for standard output."));
}

/// An open that waited would wait forever where the reader died before it opened its end.
Result<UniqueDescriptor> openWhenRead(const QByteArray &path)
{
    const Starter starter;
    for (;;) {
        struct stat status;
        if (::stat(path.constData(), &status) != 0)
            return outputError(errno, path);
        if (!S_ISFIFO(status.st_mode))
            return mediaError(paramErr, path, QStringLiteral("it is not a FIFO"),
                              QStringLiteral("Name a FIFO that another program reads, or - for standard output."));
        UniqueDescriptor descriptor(::open(path.constData(), O_WRONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
        if (descriptor)
            return descriptor;
        if (errno != ENXIO && errno != EINTR)
            return outputError(errno, path);
        if (starter.hasEnded())
            return Starter::endedError(path);
        std::this_thread::sleep_for(timeBetweenLooks);
    }
}

} // namespace

RedbookOutput::RedbookOutput(UniqueDescriptor descriptor, QByteArray path)
    : m_descriptor(std::move(descriptor))
    , m_path(std::move(path))
{
}

Result<RedbookOutput> RedbookOutput::open(const QByteArray &path)
{
    if (path == "-") {
        UniqueDescriptor descriptor(::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3));
        if (!descriptor)
            return outputError(errno, path);
        return RedbookOutput(std::move(descriptor), path);
    }
    Result<UniqueDescriptor> descriptor = openWhenRead(path);
    if (!descriptor)
        return descriptor.error();
    ::fcntl(descriptor->get(), F_SETFL, ::fcntl(descriptor->get(), F_GETFL) & ~O_NONBLOCK);
    ::fcntl(descriptor->get(), F_SETPIPE_SZ, wantedPipeSize);
    return RedbookOutput(*std::move(descriptor), path);
}

RedbookOutput::State RedbookOutput::stateOf(int errnoValue)
{
    if (errnoValue == 0)
        return State::Good;
    if (errnoValue == EPIPE)
        return State::ReaderIsGone;
    m_error = outputError(errnoValue, m_path);
    return State::Failed;
}

RedbookOutput::State RedbookOutput::write(const char *bytes, std::size_t length)
{
    m_inFrame = (m_inFrame + length) % frameSize;
    return stateOf(writeFully(m_descriptor.get(), bytes, length));
}

RedbookOutput::State RedbookOutput::finish()
{
    const std::size_t missing = m_inFrame == 0 ? 0 : frameSize - m_inFrame;
    m_inFrame = 0;
    const State written = stateOf(writeZeros(m_descriptor.get(), missing));
    return written == State::Good ? waitUntilDrained() : written;
}

RedbookOutput::State RedbookOutput::waitUntilDrained()
{
    struct stat status;
    if (::fstat(m_descriptor.get(), &status) != 0 || !S_ISFIFO(status.st_mode))
        return State::Good;
    auto pause = std::chrono::milliseconds(1);
    for (;;) {
        int waiting = 0;
        if (::ioctl(m_descriptor.get(), FIONREAD, &waiting) != 0)
            return stateOf(errno);
        if (waiting == 0)
            return State::Good;
        // Nothing tells when a pipe is empty; that the reader is gone, the poll does.
        struct pollfd end = {m_descriptor.get(), 0, 0};
        if (::poll(&end, 1, int(pause.count())) > 0 && (end.revents & POLLERR) != 0)
            return State::ReaderIsGone;
        pause = std::min(pause * 2, timeBetweenLooks);
    }
}

} // namespace Tessaron
