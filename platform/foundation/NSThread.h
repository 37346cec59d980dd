#pragma once

#include "platform/foundation/Export.h"

#include <atomic>
#include <functional>
#include <thread>

namespace Tessaron
{

/// A worker thread with a cancelled and a finished state. Cancelling only sets a flag that the worker reads; nothing is
/// interrupted. The destructor cancels and joins: a worker is never abandoned.
///
/// start(), waitUntilFinished() and the destructor belong to one owner thread; cancel() and the queries may be called
/// from any thread.
class TESSARON_EXPORT NSThread
{
public:
    explicit NSThread(std::function<void()> entry);
    ~NSThread();
    NSThread(const NSThread &) = delete;
    NSThread &operator=(const NSThread &) = delete;

    /// Starts the entry on a new thread of execution and clears both flags. An object whose earlier run has ended may
    /// be started again (that run is joined first); must not be called while the entry still runs.
    void start();

    void cancel() { m_isCancelled.store(true, std::memory_order_release); }
    [[nodiscard]] bool isCancelled() const { return m_isCancelled.load(std::memory_order_acquire); }
    [[nodiscard]] bool isExecuting() const { return m_isExecuting.load(std::memory_order_acquire); }
    /// True once the entry has returned.
    [[nodiscard]] bool isFinished() const { return m_isFinished.load(std::memory_order_acquire); }

    /// Returns when the entry has returned; at once when it was never started.
    void waitUntilFinished();

private:
    const std::function<void()> m_entry;
    std::atomic<bool> m_isCancelled = false;
    std::atomic<bool> m_isExecuting = false;
    std::atomic<bool> m_isFinished = false;
    std::thread m_thread;
};

} // namespace Tessaron
