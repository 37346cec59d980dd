#include "filemodel/ScanRecord.h"

#include "platform/coreservices/FSRef.h"

#include <cerrno>

namespace Tessaron
{

void ScanRecord::begin()
{
    m_files.store(0, std::memory_order_relaxed);
    m_folders.store(0, std::memory_order_relaxed);
    m_errors.store(0, std::memory_order_relaxed);
    const std::lock_guard lock(m_mutex);
    m_unreadable.clear();
    m_unreadable.reserve(1); // so that running out of memory itself can be noted
}

void ScanRecord::noteUnreadable(const FSRef &folder, int errnoValue)
{
    const UnreadableFolder unreadable{lastKnownPath(folder), errnoValue};
    const std::lock_guard lock(m_mutex);
    m_unreadable.push_back(unreadable);
}

void ScanRecord::noteOutOfMemory() noexcept
{
    const std::lock_guard lock(m_mutex);
    if (m_unreadable.size() == m_unreadable.capacity())
        m_unreadable.back() = {QByteArray(), ENOMEM}; // the room that begin() has made is in use
    else
        m_unreadable.push_back({QByteArray(), ENOMEM});
}

std::vector<UnreadableFolder> ScanRecord::unreadableFolders() const
{
    const std::lock_guard lock(m_mutex);
    return m_unreadable;
}

} // namespace Tessaron
