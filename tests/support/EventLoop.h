#pragma once

#include <chrono>
#include <functional>

namespace Tessaron::Testing
{

/// Runs the main thread's event loop until `condition` holds; false when it does not within the time. The condition is
/// tested after every event, so a test never waits longer than it must.
[[nodiscard]] bool runEventLoopUntil(const std::function<bool()> &condition,
                                     std::chrono::milliseconds atMost = std::chrono::seconds(30));

/// Delivers everything that is scheduled on the main thread now, and what that schedules in turn.
void drainEventLoop();

} // namespace Tessaron::Testing
