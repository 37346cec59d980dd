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
    if (!std::exchange(m_isScheduled, true))
        schedule();
}

void LayoutCreationMessages::postEnd(std::function<void()> end)
{
    const std::lock_guard lock(m_mutex);
    m_end = std::move(end);
    if (!std::exchange(m_isScheduled, true))
        schedule();
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
    if (m_next == m_delivering.size()) {
        m_delivering.clear();
        m_next = 0;
        const std::lock_guard lock(m_mutex);
        m_delivering.swap(m_posted);
    }
    for (std::size_t count = 0; count < batchSize && m_next < m_delivering.size(); ++count)
        m_receiver.progress(m_delivering[m_next++]);

    std::function<void()> end;
    {
        const std::lock_guard lock(m_mutex);
        if (m_next < m_delivering.size() || !m_posted.empty()) {
            schedule();
            return;
        }
        m_isScheduled = false;
        end = std::exchange(m_end, {});
    }
    if (end)
        end();
}

} // namespace Tessaron
