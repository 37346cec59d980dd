#include "platform/foundation/SignalWatcher.h"

#include <QObject>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace Tessaron
{

namespace
{

constexpr std::array interruptingSignals = {SIGINT, SIGTERM, SIGHUP};
/// As shells say it of a program that SIGINT has ended.
constexpr int statusInterrupted = 130;

std::atomic<int> signalCount = 0;
std::atomic<int> pipeWriteEnd = -1;
std::atomic<void (*)()> actBeforeEnd = nullptr;
static_assert(std::atomic<int>::is_always_lock_free && std::atomic<void (*)()>::is_always_lock_free);

void handleSignal(int)
{
    const int savedErrno = errno;
    if (signalCount.fetch_add(1) > 0) {
        if (void (*const lastAct)() = actBeforeEnd.load())
            lastAct();
        ::_exit(statusInterrupted);
    }
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = ::write(pipeWriteEnd.load(), &byte, 1);
    errno = savedErrno;
}

} // namespace

SignalWatcher::SignalWatcher(std::function<void()> whenInterrupted, void (*lastAct)())
    : m_whenInterrupted(std::move(whenInterrupted))
{
    int ends[2] = {-1, -1};
    if (::pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0)
        return; // without descriptors the default action of the signals is the best that is left
    m_readEnd.reset(ends[0]);
    m_writeEnd.reset(ends[1]);
    signalCount = 0;
    actBeforeEnd = lastAct;
    pipeWriteEnd = m_writeEnd.get();
    m_notifier = std::make_unique<QSocketNotifier>(m_readEnd.get(), QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(), [this] { readPipe(); });

    struct sigaction action = {};
    action.sa_handler = handleSignal;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    for (const int number : interruptingSignals) {
        struct sigaction previous = {};
        if (::sigaction(number, nullptr, &previous) == 0 && previous.sa_handler != SIG_IGN)
            ::sigaction(number, &action, nullptr);
    }
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

SignalWatcher::~SignalWatcher()
{
    pipeWriteEnd = -1;
}

bool SignalWatcher::isInterrupted() const
{
    return signalCount.load() > 0;
}

void SignalWatcher::readPipe()
{
    char bytes[16];
    if (::read(m_readEnd.get(), bytes, sizeof bytes) > 0)
        m_whenInterrupted();
}

} // namespace Tessaron
