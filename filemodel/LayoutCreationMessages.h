#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace Tessaron
{

/// Carries what a worker reports to the main thread: each progress value on its own, in order, and then the end.
/// However many values wait, one posted event at a time delivers a batch of them; so 100,000 files cost 100,000 calls,
/// not as many events, and other events still get their turn. The first value comes at once. When all were delivered,
/// the main thread looks for more after some milliseconds, so that the worker does not wake it up for each.
class LayoutCreationMessages : public std::enable_shared_from_this<LayoutCreationMessages>
{
public:
    /// The receiver's callbacks run on the main thread. They are called for as long as `isAlive` answers an object,
    /// which is held during the calls.
    struct Receiver {
        std::function<std::shared_ptr<const void>()> isAlive;
        std::function<void(float)> progress;
    };

    explicit LayoutCreationMessages(Receiver receiver);

    /// From the worker.
    void postProgress(float progress);
    /// From the worker, once and last; `end` runs on the main thread.
    void postEnd(std::function<void()> end);

private:
    void schedule();
    void scheduleOnce();
    void deliver();
    void deliverLater();

    const Receiver m_receiver;

    std::mutex m_mutex; ///< guards the four members below
    std::vector<float> m_posted;
    std::function<void()> m_end;
    bool m_isScheduled = false; ///< deliver() will be called, at once or later
    bool m_isResting = false; ///< later

    std::vector<float> m_delivering; ///< main thread only, like the index of the next one
    std::size_t m_next = 0;
};

} // namespace Tessaron
