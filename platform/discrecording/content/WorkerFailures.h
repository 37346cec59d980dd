#pragma once

#include <exception>
#include <mutex>

namespace Tessaron
{

/// Hands an exception of one of several threads (they throw nothing but std::bad_alloc) to the thread that waits for
/// them: an exception that left its thread would end the program.
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

    /// Throws the exception of one of them, if any threw; to be called once all have ended.
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
