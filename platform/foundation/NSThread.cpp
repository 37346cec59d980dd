#include "platform/foundation/NSThread.h"

#include <system_error>

namespace Tessaron
{

NSThread::NSThread(std::function<void()> entry)
    : m_entry(std::move(entry))
{
}

NSThread::~NSThread()
{
    cancel();
    waitUntilFinished();
}

void NSThread::start()
{
    waitUntilFinished();
    m_isCancelled = false;
    m_isFinished = false;
    m_isExecuting = true;
    try {
        m_thread = std::thread([this] {
            m_entry();
            m_isExecuting = false;
            m_isFinished = true;
        });
    } catch (const std::system_error &) {
        m_isExecuting = false;
        throw;
    }
}

void NSThread::waitUntilFinished()
{
    if (m_thread.joinable())
        m_thread.join();
}

} // namespace Tessaron
