#include "dvd/player/RequestThread.h"

#include <utility>

namespace Tessaron
{

RequestThread::RequestThread()
    : m_thread([this](const std::stop_token &stop) { run(stop); })
{
}

RequestThread::~RequestThread() = default;

void RequestThread::perform(std::function<void()> function)
{
    const std::lock_guard lock(m_mutex);
    m_functions.push_back(std::move(function));
    m_added.notify_one();
}

bool RequestThread::isBusy() const
{
    const std::lock_guard lock(m_mutex);
    return m_isRunning || !m_functions.empty();
}

void RequestThread::run(const std::stop_token &stop)
{
    std::unique_lock lock(m_mutex);
    while (m_added.wait(lock, stop, [this] { return !m_functions.empty(); }) && !stop.stop_requested()) {
        const std::function<void()> function = std::move(m_functions.front());
        m_functions.pop_front();
        m_isRunning = true;
        lock.unlock();
        function();
        lock.lock();
        m_isRunning = false;
    }
}

} // namespace Tessaron
