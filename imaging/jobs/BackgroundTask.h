#pragma once

#include "platform/foundation/NSError.h"

#include <functional>
#include <memory>
#include <stop_token>
#include <thread>

namespace Tessaron
{

/// One piece of work on a thread of its own, for an object of the main thread that must not wait. Destroying the task
/// asks the work to stop and waits for it; nothing is heard of it then.
class BackgroundTask
{
public:
    BackgroundTask() = default;
    ~BackgroundTask();
    BackgroundTask(const BackgroundTask &) = delete;
    BackgroundTask &operator=(const BackgroundTask &) = delete;

    /// Runs `work` on the thread and then `whenEnded`, with what the work returned, on the main thread. A lack of
    /// memory or of threads ends in an error. One piece at a time; the next may be started from `whenEnded`.
    void start(std::function<NSError(const std::stop_token &)> work, std::function<void(const NSError &)> whenEnded);
    void requestStop() { m_thread.request_stop(); }

private:
    std::jthread m_thread;
    std::shared_ptr<const void> m_life;
};

} // namespace Tessaron
