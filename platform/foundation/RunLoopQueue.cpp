#include "platform/foundation/RunLoopQueue.h"

#include <QCoreApplication>
#include <QEvent>
#include <QThread>

#include <atomic>
#include <memory>
#include <new>
#include <utility>

namespace Tessaron
{

namespace
{

/// Counts queues that were made for other threads than their makers'. Qt orders the making before the first event, but
/// ThreadSanitizer sees an order in our own memory alone.
std::atomic<unsigned int> queuesMade = 0;

} // namespace

/// Wakes on the queue's thread: each event that it gets stands for one function in the queue.
class RunLoopQueue::Receiver final : public QObject
{
public:
    explicit Receiver(RunLoopQueue &queue)
        : m_queue(queue)
    {
    }
    bool event(QEvent * /*event*/) override
    {
        // Not even its type is looked at, since Qt hands it from thread to thread. The few other events that an object
        // gets find an empty queue or run a function a little early, and then a later event finds one less.
        (void)queuesMade.load(std::memory_order_acquire);
        m_queue.performNext();
        return true;
    }

private:
    RunLoopQueue &m_queue;
};

RunLoopQueue::RunLoopQueue()
    : m_receiver(std::make_unique<Receiver>(*this))
{
}

RunLoopQueue::RunLoopQueue(QThread *thread)
    : RunLoopQueue()
{
    m_receiver->moveToThread(thread);
    queuesMade.fetch_add(1, std::memory_order_release);
}

RunLoopQueue::~RunLoopQueue()
{
    close();
}

void RunLoopQueue::perform(std::function<void()> function)
{
    const std::lock_guard lock(m_mutex);
    if (!m_receiver)
        return;
    // Either both are there or none: a function without its event would wait for one that belongs to the next.
    auto event = std::make_unique<QEvent>(QEvent::User);
    m_functions.push_back(std::move(function));
    try {
        QCoreApplication::postEvent(m_receiver.get(), event.release());
    } catch (const std::bad_alloc &) {
        m_functions.pop_back();
        throw;
    }
}

void RunLoopQueue::close()
{
    std::unique_ptr<Receiver> receiver;
    std::deque<std::function<void()>> dropped; // ends outside the lock: the functions may hold anything
    const std::lock_guard lock(m_mutex);
    receiver = std::move(m_receiver);
    dropped.swap(m_functions);
}

void RunLoopQueue::performNext()
{
    std::function<void()> next;
    {
        const std::lock_guard lock(m_mutex);
        if (m_functions.empty())
            return;
        next = std::move(m_functions.front());
        m_functions.pop_front();
    }
    next();
}

} // namespace Tessaron
