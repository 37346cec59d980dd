#pragma once

#include <functional>
#include <memory>
#include <stop_token>
#include <thread>

namespace Tessaron::Desktop
{

/// A piece of work that touches the disk, on a thread of its own. Destroying it asks the work to stop and waits for it;
/// work that the system holds (a dead mount) is left to the end of the process by letGo().
class BackgroundWork
{
public:
    BackgroundWork() = default;
    ~BackgroundWork();
    BackgroundWork(const BackgroundWork &) = delete;
    BackgroundWork &operator=(const BackgroundWork &) = delete;

    /// Runs `work`, and then `whenEnded` on the main thread, unless this was destroyed meanwhile. What runs already is
    /// let go: a window does not wait for a mount that does not answer.
    void start(std::function<void(const std::stop_token &)> work, std::function<void()> whenEnded);
    void requestStop() { m_thread.request_stop(); }
    /// Asks what runs to stop; nothing is heard of it any more. Does not wait.
    void cancel();
    /// Asks what runs to stop and waits for it; nothing is heard of it any more.
    void finish();
    [[nodiscard]] bool isRunning() const { return m_isRunning; }
    /// Asks what runs to stop, and does not wait for it. It must use nothing that goes before it ends.
    void letGo();

private:
    std::shared_ptr<const void> m_life;
    bool m_isRunning = false;
    std::jthread m_thread;
};

} // namespace Tessaron::Desktop
