#include "filemodel/LayoutCreationMessages.h"

#include "platform/foundation/DelayedPerform.h"
#include "platform/foundation/MainThread.h"

#include <chrono>
#include <utility>

namespace Tessaron
{

namespace
{

/// How many values one event delivers.
constexpr std::size_t batchSize = 256;

/// How long the main thread leaves the worker alone once it has delivered all.
constexpr std::chrono::milliseconds rest(10);

} // namespace

LayoutCreationMessages::LayoutCreationMessages(Receiver receiver)
    : m_receiver(std::move(receiver))
{
}

void LayoutCreationMessages::postProgress(float progress)
{
    const std::lock_guard lock(m_mutex);
    m_posted.push_back(progress);
    scheduleOnce();
}

void LayoutCreationMessages::postEnd(std::function<void()> end)
{
    const std::lock_guard lock(m_mutex);
    m_end = std::move(end);
    if (m_isResting)
        m_isScheduled = m_isResting = false; // the end does not wait
    scheduleOnce();
}

/// The caller holds the mutex.
void LayoutCreationMessages::scheduleOnce()
{
    if (m_isScheduled)
        return;
    schedule();
    m_isScheduled = true; // only now: there may have been no memory for it
}

void LayoutCreationMessages::schedule()
{
    performOnMainThread([self = shared_from_this()] { self->deliver(); });
}

void LayoutCreationMessages::deliver()
{
    const std::shared_ptr<const void> alive = m_receiver.isAlive();
    if (!alive)
        return;
    std::function<void()> end;
    bool isEmpty = false;
    {
        const std::lock_guard lock(m_mutex);
        const bool hasDelivered = !m_delivering.empty();
        if (m_next == m_delivering.size()) {
            m_delivering.clear();
            m_next = 0;
            m_delivering.swap(m_posted);
        }
        isEmpty = m_delivering.empty();
        if (isEmpty) {
            end = std::exchange(m_end, {});
            m_isResting = !end && hasDelivered && performAfterDelay(this, rest, [weak = weak_from_this()] {
                if (const std::shared_ptr<LayoutCreationMessages> self = weak.lock())
                    self->deliverLater();
            });
            m_isScheduled = m_isResting;
        } else {
            schedule(); // before the callbacks: one of them may run an event loop that waits for the end
        }
    }
    if (end)
        end();
    if (isEmpty)
        return;
    for (std::size_t count = 0; count < batchSize && m_next < m_delivering.size(); ++count)
        m_receiver.progress(m_delivering[m_next++]);
}

/// After the rest, unless the end came meanwhile.
void LayoutCreationMessages::deliverLater()
{
    {
        const std::lock_guard lock(m_mutex);
        if (!m_isResting)
            return;
        m_isResting = false;
    }
    deliver();
}

} // namespace Tessaron
