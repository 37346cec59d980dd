#include "imaging/burning/SoundPipe.h"

#include "platform/foundation/MessageTexts.h"
#include "platform/foundation/OSStatus.h"
#include <TessaronClasses/DiscJobErrors.h>

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <new>
#include <system_error>
#include <unistd.h>

namespace Tessaron
{

namespace
{

/// As much as an unprivileged process may have: fewer changes of the thread.
constexpr int pipeSize = 1 << 20; // bytes

NSError pipeError(int failure)
{
    return discJobError(DiscJobErrorCode::Write,
                        QStringLiteral("the system gives no pipe for sound: %1").arg(systemText(failure)),
                        QStringLiteral("Close other programs and try again."), {}, statusForErrno(failure));
}

NSError wrongLength()
{
    return discJobError(DiscJobErrorCode::Source, QStringLiteral("the sound is not as long as it was found to be"),
                        QStringLiteral("Leave the files alone while the disc is written."));
}

/// Up to `length` bytes; fewer where the other end is closed.
std::size_t readUpTo(int descriptor, char *bytes, std::size_t length)
{
    std::size_t got = 0;
    while (got < length) {
        const ssize_t count = ::read(descriptor, bytes + got, length - got);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            break;
        got += std::size_t(count);
    }
    return got;
}

} // namespace

SoundPipe::~SoundPipe()
{
    stop();
}

NSError SoundPipe::start(Make make, const std::stop_token &stop)
{
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0)
        return pipeError(errno);
    m_readEnd.reset(ends[0]);
    m_writeEnd.reset(ends[1]);
    static_cast<void>(::fcntl(ends[1], F_SETPIPE_SZ, pipeSize)); // a smaller one does it, too
    try {
        m_thread = std::jthread([this, work = std::move(make)](const std::stop_token &isEnding) {
            try {
                m_error = work(m_writeEnd.get(), isEnding);
            } catch (const std::bad_alloc &) { // which must not leave its thread
                m_error = outOfMemoryError();
            }
            m_writeEnd.reset();
        });
    } catch (const std::system_error &error) {
        m_writeEnd.reset();
        return pipeError(error.code().value());
    }
    m_passOn.emplace(stop, [this] { m_thread.request_stop(); });
    return {};
}

NSError SoundPipe::take(void *bytes, std::size_t length)
{
    if (readUpTo(m_readEnd.get(), static_cast<char *>(bytes), length) == length)
        return {};
    stop();
    return m_error ? m_error : wrongLength();
}

NSError SoundPipe::finish()
{
    char more = 0;
    const bool hasMore = readUpTo(m_readEnd.get(), &more, 1) != 0;
    stop();
    return hasMore ? wrongLength() : m_error;
}

/// The making would wait for room, or be ended by a signal where the other end is closed: what it still writes is taken
/// until it ends.
void SoundPipe::stop()
{
    if (!m_thread.joinable())
        return;
    m_passOn.reset(); // waits where the thread is being told to stop
    m_thread.request_stop();
    std::array<char, 1 << 16> rest{};
    while (readUpTo(m_readEnd.get(), rest.data(), rest.size()) > 0) { }
    m_thread.join();
}

} // namespace Tessaron
