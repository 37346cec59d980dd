#pragma once

#include <functional>
#include <stop_token>
#include <utility>

namespace Tessaron
{

/// What the steps of planning tell and ask: how far they have come, and whether to stop.
class PlanProgress
{
public:
    PlanProgress(std::stop_token cancellation, const std::function<void(double)> &report)
        : m_cancellation(std::move(cancellation))
        , m_report(report)
    {
    }

    /// To hand on to the functions called; any thread may ask it.
    [[nodiscard]] const std::stop_token &cancellation() const { return m_cancellation; }
    /// Any thread may ask.
    [[nodiscard]] bool isCancelled() const { return m_cancellation.stop_requested(); }

    /// Tells a share of all planning, 0 to 1. On the thread that plans.
    void tell(double share) const
    {
        if (m_report)
            m_report(share);
    }

private:
    const std::stop_token m_cancellation;
    const std::function<void(double)> &m_report;
};

} // namespace Tessaron
