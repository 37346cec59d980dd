#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <future>
#include <mutex>
#include <thread>
#include <type_traits>

namespace Tessaron
{

/// The one thread that calls libburn, whose lists of drives and workers have no locks. It is started by the first call
/// and ends with the process. Work on it is short, but for the opening of a drive, which may take a minute.
class BurnControl
{
public:
    /// Starts the thread and initialises the library the first time. std::system_error when the system gives no thread.
    [[nodiscard]] static BurnControl &instance();
    ~BurnControl();
    BurnControl(const BurnControl &) = delete;
    BurnControl &operator=(const BurnControl &) = delete;

    /// Runs the work on the thread and waits for what it returns. Not to be called by work.
    template <typename Work>
    auto call(Work &&work) -> std::invoke_result_t<Work>
    {
        std::packaged_task<std::invoke_result_t<Work>()> task(std::forward<Work>(work));
        auto result = task.get_future();
        enqueue([&task] { task(); });
        return result.get();
    }

    /// True on the thread itself, where call() must not be used.
    [[nodiscard]] bool isThisThread() const { return std::this_thread::get_id() == m_thread.get_id(); }

    /// False when the library could not be initialised; nothing else of it may be called then.
    [[nodiscard]] bool isReady() const { return m_isReady; }

private:
    BurnControl();
    void enqueue(std::function<void()> work);
    void run();

    std::mutex m_mutex; ///< guards the next three
    std::condition_variable m_hasWork;
    std::deque<std::function<void()>> m_work;
    bool m_isEnding = false;
    bool m_isReady = false; ///< set once, before instance() returns
    std::thread m_thread;
};

} // namespace Tessaron
