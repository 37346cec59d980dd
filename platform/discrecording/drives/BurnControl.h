#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <type_traits>

namespace Tessaron
{

/// The one thread that calls libburn, whose lists of drives and workers have no locks. It is started by the first call
/// and ends with the process; a call that a drive never lets return does not keep the process from ending.
class BurnControl
{
public:
    /// Starts the thread and initialises the library the first time. std::system_error when the system gives no thread.
    [[nodiscard]] static BurnControl &instance();
    ~BurnControl();
    BurnControl(const BurnControl &) = delete;
    BurnControl &operator=(const BurnControl &) = delete;

    /// Runs the work on the thread and waits for what it returns. For work that asks nothing of a drive, or nothing
    /// that takes long. Not to be called by work.
    template <typename Work>
    auto call(Work &&work) -> std::invoke_result_t<Work>
    {
        std::packaged_task<std::invoke_result_t<Work>()> task(std::forward<Work>(work));
        auto result = task.get_future();
        enqueue([&task] { task(); });
        return result.get();
    }

    /// As call(), but waits no longer than `patience`; no value when the work has not ended by then. It goes on all the
    /// same, so it owns all that it uses and does not throw. `late` is then called with what it returned, on the
    /// thread. Until that has happened, isStuck() is true and every other call waits.
    template <typename Work, typename Late>
    auto callWithin(std::chrono::milliseconds patience, Work work, Late late)
        -> std::optional<std::invoke_result_t<Work &>>
    {
        using Value = std::invoke_result_t<Work &>;
        struct Call {
            std::packaged_task<Value()> task;
            std::future<Value> result;
            std::atomic<bool> isDecided = false; ///< by the first of the two: given up, or ended
        };
        const auto shared = std::make_shared<Call>();
        shared->task = std::packaged_task<Value()>(std::move(work));
        shared->result = shared->task.get_future();
        enqueue([shared, late = std::move(late), queue = m_queue] {
            shared->task();
            if (!shared->isDecided.exchange(true))
                return;
            late(shared->result.get());
            --queue->stuckCalls;
        });
        if (shared->result.wait_for(patience) != std::future_status::ready) {
            ++m_queue->stuckCalls;
            if (!shared->isDecided.exchange(true))
                return std::nullopt;
            --m_queue->stuckCalls;
        }
        return shared->result.get();
    }

    /// True while work goes on that was given up.
    [[nodiscard]] bool isStuck() const { return m_queue->stuckCalls > 0; }

    /// True on the thread itself, where call() must not be used.
    [[nodiscard]] bool isThisThread() const { return std::this_thread::get_id() == m_threadId; }

    /// False when the library could not be initialised; nothing else of it may be called then.
    [[nodiscard]] bool isReady() const { return m_isReady; }

private:
    /// What a thread that never ends may go on using.
    struct Queue {
        std::mutex mutex; ///< guards the next three
        std::condition_variable hasWork;
        std::deque<std::function<void()>> work;
        bool isEnding = false;
        std::atomic<int> stuckCalls = 0;
    };

    BurnControl();
    void enqueue(std::function<void()> work);
    static void run(Queue &queue);

    const std::shared_ptr<Queue> m_queue;
    std::thread m_thread;
    const std::thread::id m_threadId;
    bool m_isReady = false; ///< set once, before instance() returns
};

} // namespace Tessaron
