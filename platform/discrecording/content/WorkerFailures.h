#pragma once

#include <exception>
#include <mutex>

namespace Tessaron
{

/// Brings what several threads threw (there is one thing they throw: std::bad_alloc) to the thread that waits for them;
/// an exception that left a thread would end the program.
class WorkerFailures
{
public:
    /// Runs the work of one thread. From any thread.
    template <typename Work>
    void run(const Work &work)
    {
        try {
            work();
        } catch (...) {
            const std::lock_guard lock(m_mutex);
            m_first = std::current_exception();
        }
    }

    /// Throws what one of them threw, once all have ended.
    void rethrow() const
    {
        if (m_first)
            std::rethrow_exception(m_first);
    }

private:
    std::mutex m_mutex;
    std::exception_ptr m_first;
};

} // namespace Tessaron
