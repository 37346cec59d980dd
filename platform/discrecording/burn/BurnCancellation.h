#pragma once

#include <atomic>
#include <stop_token>

namespace Tessaron
{

/// The wish that a burn stop, as every part of it needs to see it: a flag for loops and a token that wakes waits.
/// Thread-safe; once asked for it stays.
class BurnCancellation
{
public:
    void request()
    {
        m_isRequested.store(true, std::memory_order_release);
        m_source.request_stop();
    }
    [[nodiscard]] bool isRequested() const { return m_isRequested.load(std::memory_order_acquire); }
    [[nodiscard]] std::stop_token token() const { return m_source.get_token(); }

private:
    std::atomic<bool> m_isRequested = false;
    std::stop_source m_source;
};

} // namespace Tessaron
