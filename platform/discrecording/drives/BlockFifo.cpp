#include "platform/discrecording/drives/BlockFifo.h"

#include <algorithm>
#include <cstring>

namespace Tessaron
{

BlockFifo::BlockFifo(std::size_t capacity)
    : m_capacity(capacity)
    , m_ring(std::make_unique_for_overwrite<std::uint8_t[]>(capacity))
{
}

std::size_t BlockFifo::put(std::span<const std::uint8_t> bytes, std::chrono::milliseconds patience)
{
    std::unique_lock lock(m_mutex);
    m_hasRoom.wait_for(lock, patience, [this] { return m_hasFailed || m_filled < m_capacity; });
    if (m_hasFailed)
        return 0;
    const std::size_t count = std::min(bytes.size(), m_capacity - m_filled);
    const std::size_t at = (m_first + m_filled) % m_capacity;
    const std::size_t upToEnd = std::min(count, m_capacity - at);
    std::memcpy(m_ring.get() + at, bytes.data(), upToEnd);
    std::memcpy(m_ring.get(), bytes.data() + upToEnd, count - upToEnd);
    m_filled += count;
    if (count > 0)
        m_hasBytes.notify_one();
    return count;
}

void BlockFifo::end()
{
    const std::lock_guard lock(m_mutex);
    m_hasEnded = true;
    m_hasBytes.notify_one();
}

void BlockFifo::fail()
{
    const std::lock_guard lock(m_mutex);
    m_hasFailed = true;
    m_hasBytes.notify_one();
    m_hasRoom.notify_one();
}

bool BlockFifo::take(std::span<std::uint8_t> out)
{
    std::unique_lock lock(m_mutex);
    const auto isDecided = [&] { return m_hasFailed || m_hasEnded || m_filled >= out.size(); };
    if (!isDecided()) {
        m_waits += m_wasTaken ? 1 : 0;
        m_hasBytes.wait(lock, isDecided);
    }
    m_wasTaken = true;
    if (m_hasFailed || m_filled < out.size())
        return false;
    const std::size_t upToEnd = std::min(out.size(), m_capacity - m_first);
    std::memcpy(out.data(), m_ring.get() + m_first, upToEnd);
    std::memcpy(out.data() + upToEnd, m_ring.get(), out.size() - upToEnd);
    m_first = (m_first + out.size()) % m_capacity;
    // Waking the other thread for every sector would cost a change of thread for each.
    const bool wasFull = m_filled > m_capacity - m_capacity / 8;
    m_filled -= out.size();
    if (wasFull && m_filled <= m_capacity - m_capacity / 8)
        m_hasRoom.notify_one();
    return true;
}

void BlockFifo::restart()
{
    const std::lock_guard lock(m_mutex);
    m_first = 0;
    m_filled = 0;
    m_wasTaken = false;
    m_hasEnded = false;
    m_hasFailed = false;
}

std::size_t BlockFifo::filled() const
{
    const std::lock_guard lock(m_mutex);
    return m_filled;
}

bool BlockFifo::hasFailed() const
{
    const std::lock_guard lock(m_mutex);
    return m_hasFailed;
}

std::uint64_t BlockFifo::waits() const
{
    const std::lock_guard lock(m_mutex);
    return m_waits;
}

} // namespace Tessaron
