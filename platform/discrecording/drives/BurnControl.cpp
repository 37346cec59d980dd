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
    : m_thread([this] { run(); })
{
    m_isReady = call(initialiseLibrary);
}

BurnControl::~BurnControl()
{
    {
        const std::lock_guard lock(m_mutex);
        m_isEnding = true;
    }
    m_hasWork.notify_one();
    m_thread.join();
}

void BurnControl::enqueue(std::function<void()> work)
{
    {
        const std::lock_guard lock(m_mutex);
        m_work.push_back(std::move(work));
    }
    m_hasWork.notify_one();
}

void BurnControl::run()
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_hasWork.wait(lock, [this] { return m_isEnding || !m_work.empty(); });
        if (m_work.empty())
            return;
        const std::function<void()> work = std::move(m_work.front());
        m_work.pop_front();
        lock.unlock();
        work();
        lock.lock();
    }
}

} // namespace Tessaron
