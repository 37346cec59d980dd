#pragma once

#include <atomic>
#include <functional>

namespace Tessaron
{

/// What the steps of planning tell and ask: how far they have come, and whether to stop.
class PlanProgress
{
public:
    PlanProgress(const std::atomic<bool> &isCancelled, const std::function<void(double)> &report)
        : m_isCancelled(isCancelled)
        , m_report(report)
    {
    }

    /// Any thread may ask.
    [[nodiscard]] bool isCancelled() const { return m_isCancelled.load(std::memory_order_relaxed); }

    /// Tells a share of all planning, 0 to 1. On the thread that plans.
    void tell(double share) const
    {
        if (m_report)
            m_report(share);
    }

private:
    const std::atomic<bool> &m_isCancelled;
    const std::function<void(double)> &m_report;
};

} // namespace Tessaron
