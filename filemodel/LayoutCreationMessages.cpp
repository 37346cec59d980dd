#include "filemodel/LayoutCreationMessages.h"

#include "platform/foundation/MainThread.h"

#include <utility>

namespace Tessaron
{

namespace
{

/// How many values one event delivers.
constexpr std::size_t batchSize = 256;

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
    bool hasEnded = false;
    {
        const std::lock_guard lock(m_mutex);
        if (m_next == m_delivering.size()) {
            m_delivering.clear();
            m_next = 0;
            m_delivering.swap(m_posted);
        }
        hasEnded = m_delivering.empty();
        if (hasEnded) {
            m_isScheduled = false;
            end = std::exchange(m_end, {});
        } else {
            schedule(); // before the callbacks: one of them may run an event loop that waits for the end
        }
    }
    if (end)
        end();
    if (hasEnded)
        return;
    for (std::size_t count = 0; count < batchSize && m_next < m_delivering.size(); ++count)
        m_receiver.progress(m_delivering[m_next++]);
}

} // namespace Tessaron
