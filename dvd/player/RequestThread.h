#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace Tessaron
{

/// Carries out calls of the session that wait for the disc, one after the other, so that the window never waits. Made,
/// asked and destroyed by one thread; functions run on the other one.
class RequestThread
{
public:
    RequestThread();
    /// Waits for the function that runs; drops those that wait.
    ~RequestThread();
    RequestThread(const RequestThread &) = delete;
    RequestThread &operator=(const RequestThread &) = delete;

    void perform(std::function<void()> function);
    /// True while a function runs or waits.
    [[nodiscard]] bool isBusy() const;

private:
    void run(const std::stop_token &stop);

    mutable std::mutex m_mutex; ///< guards the next two members
    std::deque<std::function<void()>> m_functions;
    bool m_isRunning = false;
    std::condition_variable_any m_added;
    std::jthread m_thread; ///< last: it uses all the others
};

} // namespace Tessaron
