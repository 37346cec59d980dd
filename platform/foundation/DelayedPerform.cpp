#include "platform/foundation/DelayedPerform.h"

#include <QAbstractEventDispatcher>
#include <QObject>
#include <QTimerEvent>

#include <map>
#include <mutex>
#include <unordered_map>
#include <vector>

namespace Tessaron
{

namespace
{

using Clock = std::chrono::steady_clock;

struct Request {
    const void *target = nullptr;
    std::function<void()> function;
};

/// The requests of one thread in the order of their deadlines. A single timer stands for the earliest of them.
class RequestQueue final : public QObject
{
public:
    RequestQueue();
    ~RequestQueue() override;

    void add(const void *target, Clock::time_point deadline, std::function<void()> function);
    /// Called by any thread. The functions go to `released`, for the caller to destroy once no lock is held: the
    /// destructors of captured objects may call into this queue.
    void cancel(const void *target, std::vector<std::function<void()>> &released);

protected:
    void timerEvent(QTimerEvent *event) override;

private:
    using Requests = std::multimap<Clock::time_point, Request>;

    void restartTimer();
    [[nodiscard]] std::function<void()> takeDueRequest(Clock::time_point now);
    void forget(Requests::iterator request);

    std::mutex m_mutex; ///< guards the two members below
    Requests m_requests;
    std::unordered_multimap<const void *, Requests::iterator> m_byTarget;
    int m_timer = 0; ///< used by the queue's own thread only
};

/// All queues, so that a request can be cancelled from another thread than its own.
struct QueueRegistry {
    std::mutex mutex;
    std::vector<RequestQueue *> queues;
};

QueueRegistry &registry()
{
    // Never destroyed: a queue of the main thread may end after static objects do.
    static auto *const instance = new QueueRegistry;
    return *instance;
}

RequestQueue::RequestQueue()
{
    const std::lock_guard lock(registry().mutex);
    registry().queues.push_back(this);
}

RequestQueue::~RequestQueue()
{
    const std::lock_guard lock(registry().mutex);
    std::erase(registry().queues, this);
}

void RequestQueue::add(const void *target, Clock::time_point deadline, std::function<void()> function)
{
    bool isEarliest = false;
    {
        const std::lock_guard lock(m_mutex);
        const auto request = m_requests.emplace(deadline, Request{target, std::move(function)});
        m_byTarget.emplace(target, request);
        isEarliest = request == m_requests.begin();
    }
    if (isEarliest)
        restartTimer();
}

void RequestQueue::forget(Requests::iterator request)
{
    const auto [first, last] = m_byTarget.equal_range(request->second.target);
    for (auto entry = first; entry != last; ++entry) {
        if (entry->second == request) {
            m_byTarget.erase(entry);
            break;
        }
    }
    m_requests.erase(request);
}

void RequestQueue::cancel(const void *target, std::vector<std::function<void()>> &released)
{
    const std::lock_guard lock(m_mutex);
    const auto [first, last] = m_byTarget.equal_range(target);
    for (auto entry = first; entry != last; ++entry) {
        released.push_back(std::move(entry->second->second.function));
        m_requests.erase(entry->second);
    }
    m_byTarget.erase(first, last);
}

std::function<void()> RequestQueue::takeDueRequest(Clock::time_point now)
{
    const std::lock_guard lock(m_mutex);
    const auto request = m_requests.begin();
    if (request == m_requests.end() || request->first > now)
        return {};
    std::function<void()> function = std::move(request->second.function);
    forget(request);
    return function;
}

void RequestQueue::timerEvent(QTimerEvent *)
{
    // Requests that a request makes wait for the next turn, even when they are due at once.
    const Clock::time_point now = Clock::now();
    while (const std::function<void()> function = takeDueRequest(now))
        function();
    restartTimer();
}

void RequestQueue::restartTimer()
{
    if (m_timer)
        killTimer(m_timer);
    m_timer = 0;
    const std::lock_guard lock(m_mutex);
    if (m_requests.empty())
        return;
    const auto wait = std::chrono::ceil<std::chrono::milliseconds>(m_requests.begin()->first - Clock::now());
    m_timer = startTimer(std::max(wait, std::chrono::milliseconds(0)));
}

RequestQueue &queueOfThisThread()
{
    static thread_local RequestQueue queue;
    return queue;
}

} // namespace

bool performAfterDelay(const void *target, std::chrono::milliseconds delay, std::function<void()> function)
{
    if (!QAbstractEventDispatcher::instance())
        return false;
    queueOfThisThread().add(target, Clock::now() + delay, std::move(function));
    return true;
}

void cancelPreviousPerformRequests(const void *target)
{
    std::vector<std::function<void()>> released;
    const std::lock_guard lock(registry().mutex);
    for (RequestQueue *const queue : registry().queues)
        queue->cancel(target, released);
}

} // namespace Tessaron
