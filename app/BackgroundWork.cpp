#include "app/BackgroundWork.h"

#include <platform/foundation/MainThread.h>

namespace Tessaron::Desktop
{

BackgroundWork::~BackgroundWork()
{
    m_life.reset();
}

void BackgroundWork::start(std::function<void(const std::stop_token &)> work, std::function<void()> whenEnded)
{
    letGo();
    m_life = std::make_shared<int>();
    m_isRunning = true;
    m_thread = std::jthread([this, work = std::move(work), whenEnded = std::move(whenEnded),
                             life = CallbackContext(m_life)](const std::stop_token &stop) {
        work(stop);
        performOnMainThread([this, whenEnded, life] {
            if (!life.isAlive())
                return;
            m_isRunning = false;
            whenEnded();
        });
    });
}

void BackgroundWork::cancel()
{
    m_life.reset();
    m_thread.request_stop();
    m_isRunning = false;
}

void BackgroundWork::finish()
{
    cancel();
    if (m_thread.joinable())
        m_thread.join();
}

void BackgroundWork::letGo()
{
    m_life.reset();
    m_thread.request_stop();
    if (m_thread.joinable())
        m_thread.detach();
    m_isRunning = false;
}

} // namespace Tessaron::Desktop
