#include "tools/tessaron/StopWatcher.h"

#include <QObject>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace Tessaron::Tool
{

namespace
{

std::atomic<int> stopPipe = -1;
static_assert(std::atomic<int>::is_always_lock_free);

void noteStop(int)
{
    const int savedErrno = errno;
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = ::write(stopPipe.load(), &byte, 1);
    errno = savedErrno;
}

void setAction(void (*handler)(int))
{
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    ::sigaction(SIGTSTP, &action, nullptr);
}

} // namespace

StopWatcher::StopWatcher(std::function<void()> beforeStop, std::function<void()> afterContinue)
    : m_beforeStop(std::move(beforeStop))
    , m_afterContinue(std::move(afterContinue))
{
    struct sigaction previous = {};
    int ends[2] = {-1, -1};
    if (::sigaction(SIGTSTP, nullptr, &previous) != 0 || previous.sa_handler == SIG_IGN
        || ::pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    m_readEnd.reset(ends[0]);
    m_writeEnd.reset(ends[1]);
    stopPipe = m_writeEnd.get();
    m_notifier = std::make_unique<QSocketNotifier>(m_readEnd.get(), QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(), [this] { readPipe(); });
    setAction(noteStop);
}

StopWatcher::~StopWatcher()
{
    if (m_notifier)
        setAction(SIG_DFL);
    stopPipe = -1;
}

void StopWatcher::readPipe()
{
    char bytes[16];
    if (::read(m_readEnd.get(), bytes, sizeof bytes) <= 0)
        return;
    m_beforeStop();
    // With its usual action the signal stops this process here, save where no shell could continue it: there the system
    // passes over it.
    setAction(SIG_DFL);
    ::raise(SIGTSTP);
    setAction(noteStop);
    m_afterContinue();
}

} // namespace Tessaron::Tool
