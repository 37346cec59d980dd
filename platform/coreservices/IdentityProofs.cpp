#include "platform/coreservices/IdentityProofs.h"

#include "platform/coreservices/FileHandle.h"
#include "platform/coreservices/PathAccess.h"

#include <QHash>

#include <algorithm>

namespace Tessaron
{

IdentityProofs &IdentityProofs::shared()
{
    static IdentityProofs *const proofs = new IdentityProofs; // never deleted: references may be used until the end
    return *proofs;
}

FileTime IdentityProofs::now()
{
    timespec time = {};
    ::clock_gettime(CLOCK_REALTIME_COARSE, &time);
    return FileTime::from(time);
}

bool IdentityProofs::isYoung(const FSRef &ref, FileTime now)
{
    // Some file systems keep hundredths of a second, some two whole seconds.
    constexpr std::int64_t tick = 20'000'000;
    constexpr std::int64_t coarseTick = 2'000'000'000;
    if (ref.birthSeconds < now.seconds - 4)
        return false;
    const std::int64_t age = now.nanosecondsSince(ref.birthTime());
    return age <= (ref.birthNanoseconds == 0 ? coarseTick : tick);
}

void IdentityProofs::noteYoung(const FSRef &ref, int folder, const char *name)
{
    const QByteArray handle = fileHandleBelow(folder, name);
    const std::lock_guard lock(m_mutex);
    const auto [entry, isNew] = m_handles.try_emplace(keyOf(ref), handle);
    if (!isNew && entry->second != handle)
        entry->second.clear();
}

bool IdentityProofs::isProven(const FSRef &ref, const PathAccess &place) const
{
    QByteArray handle;
    {
        const std::lock_guard lock(m_mutex);
        const auto found = m_handles.find(keyOf(ref));
        if (found == m_handles.end())
            return ref.birthTime() != FileTime();
        handle = found->second;
    }
    return !handle.isEmpty() && place.error() == 0 && fileHandleBelow(place.folder(), place.path()) == handle;
}

void IdentityProofs::noteMount(std::uint64_t device, std::uint64_t mount)
{
    if (mount == 0)
        return;
    const std::lock_guard lock(m_mutex);
    std::vector<std::uint64_t> &mounts = m_mounts[device];
    if (std::find(mounts.begin(), mounts.end(), mount) == mounts.end())
        mounts.push_back(mount);
}

bool IdentityProofs::wasSeenOnMount(std::uint64_t device, std::uint64_t mount) const
{
    const std::lock_guard lock(m_mutex);
    const auto mounts = m_mounts.find(device);
    return mounts != m_mounts.end()
        && std::find(mounts->second.begin(), mounts->second.end(), mount) != mounts->second.end();
}

IdentityProofs::Key IdentityProofs::keyOf(const FSRef &ref)
{
    return {ref.inode, ref.birthTime()};
}

std::size_t IdentityProofs::Hash::operator()(const Key &key) const
{
    return qHashMulti(0, key.inode, key.birthTime.seconds, key.birthTime.nanoseconds);
}

} // namespace Tessaron
