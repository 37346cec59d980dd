#pragma once

#include "platform/coreservices/Mounts.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <QByteArray>

#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <utility>
#include <vector>

class QSocketNotifier;

namespace Tessaron
{

/// True for mounts that a person would call a volume: whole filesystems with files of somebody's, on a device, on a
/// server or made by a program. Not the kernel's own, not parts of others that are mounted once more.
[[nodiscard]] bool isVolume(const Mount &mount);

/// Watches the list of mounts of this process. On one thread, with an event loop.
class MountWatch
{
public:
    /// `didMount` is told the mount point of each volume that is mounted from now on.
    explicit MountWatch(std::function<void(const QByteArray &point)> didMount);
    ~MountWatch();
    MountWatch(const MountWatch &) = delete;
    MountWatch &operator=(const MountWatch &) = delete;

    /// Looks at the list now.
    void look();
    /// Whether a mount was there at the last look, of any kind.
    [[nodiscard]] bool holds(const QByteArray &point) const;

private:
    const std::function<void(const QByteArray &point)> m_didMount;
    UniqueDescriptor m_list;
    std::unique_ptr<QSocketNotifier> m_notifier; ///< null where the list cannot be watched
    std::set<std::pair<QByteArray, std::uint64_t>> m_mounts; ///< mount points with the numbers of their mounts
};

} // namespace Tessaron
