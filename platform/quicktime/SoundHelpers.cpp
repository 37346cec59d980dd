#include "platform/quicktime/SoundHelpers.h"

namespace Tessaron
{

Result<std::unique_ptr<SoundHelper>> SoundHelpers::take(const QByteArray &path)
{
    {
        const std::lock_guard lock(m_mutex);
        if (!m_idle.empty()) {
            std::unique_ptr<SoundHelper> helper = std::move(m_idle.back());
            m_idle.pop_back();
            return helper;
        }
    }
    return SoundHelper::start(path);
}

void SoundHelpers::giveBack(std::unique_ptr<SoundHelper> helper)
{
    if (!helper || !helper->isUsable())
        return;
    const std::lock_guard lock(m_mutex);
    m_idle.push_back(std::move(helper));
}

void SoundHelpers::endIdle()
{
    const std::lock_guard lock(m_mutex);
    m_idle.clear();
}

} // namespace Tessaron
