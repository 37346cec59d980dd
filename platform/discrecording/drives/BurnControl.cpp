#include "platform/discrecording/drives/BurnControl.h"

#include "platform/discrecording/drives/LibBurn.h"

#include <array>

namespace Tessaron
{

namespace
{

/// The library takes texts that it may write into.
template <std::size_t length>
std::array<char, length> mutableText(const char (&text)[length])
{
    return std::to_array(text);
}

/// Messages are queued for us from this severity on; nothing is ever printed. Devices are opened exclusively and
/// without waiting, and a busy one does not end the process.
bool initialiseLibrary()
{
    if (burn::burn_initialize() == 0)
        return false;
    auto queued = mutableText("NOTE");
    auto printed = mutableText("NEVER");
    auto prefix = mutableText("");
    burn::burn_msgs_set_severities(queued.data(), printed.data(), prefix.data());
    burn::burn_preset_device_open(1, 0, 0);
    return true;
}

} // namespace

BurnControl &BurnControl::instance()
{
    static BurnControl control;
    return control;
}

BurnControl::BurnControl()
    : m_queue(std::make_shared<Queue>())
    , m_thread([queue = m_queue] { run(*queue); })
    , m_threadId(m_thread.get_id())
{
    m_isReady = call(initialiseLibrary);
}

BurnControl::~BurnControl()
{
    {
        const std::lock_guard lock(m_queue->mutex);
        m_queue->isEnding = true;
    }
    m_queue->hasWork.notify_one();
    if (isStuck())
        m_thread.detach();
    else
        m_thread.join();
}

void BurnControl::enqueue(std::function<void()> work)
{
    {
        const std::lock_guard lock(m_queue->mutex);
        m_queue->work.push_back(std::move(work));
    }
    m_queue->hasWork.notify_one();
}

void BurnControl::run(Queue &queue)
{
    std::unique_lock lock(queue.mutex);
    for (;;) {
        queue.hasWork.wait(lock, [&queue] { return queue.isEnding || !queue.work.empty(); });
        if (queue.work.empty())
            return;
        {
            const std::function<void()> work = std::move(queue.work.front());
            queue.work.pop_front();
            lock.unlock();
            work();
        }
        lock.lock();
    }
}

} // namespace Tessaron
