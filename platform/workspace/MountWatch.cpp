#include "platform/workspace/MountWatch.h"

#include <QSocketNotifier>

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <limits>

namespace Tessaron
{

bool isVolume(const Mount &mount)
{
    // Those of filesystems(5) that need no device, and are not the kernel's own.
    static constexpr std::array<const char *, 10> withoutDevice = {"9p",   "afs",  "ceph", "cifs",     "nfs",
                                                                   "nfs4", "smb3", "zfs",  "virtiofs", "vboxsf"};
    static constexpr std::array<const char *, 10> onDevice = {"udf",   "iso9660", "hfsplus", "hfs",   "vfat",
                                                              "exfat", "ntfs",    "ntfs3",   "msdos", "apfs"};
    static constexpr std::array<const char *, 7> ofUnix = {"ext2", "ext3", "ext4", "xfs", "btrfs", "f2fs", "jfs"};
    const auto isIn = [&mount](const auto &types) {
        return std::find(types.begin(), types.end(), mount.type) != types.end();
    };
    if (mount.root != "/")
        return false;
    return mount.type == "fuse" || mount.type == "fuseblk" || mount.type.startsWith("fuse.") || isIn(withoutDevice)
        || isIn(onDevice) || isIn(ofUnix);
}

MountWatch::MountWatch(std::function<void(const QByteArray &point)> didMount)
    : m_didMount(std::move(didMount))
    // Opened before the mounts are read, so that no change falls between.
    , m_list(::open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC))
{
    for (const Mount &mount : currentMounts())
        m_mounts.emplace(mount.point, mount.number);
    if (!m_list)
        return;
    // The system tells a change of this file as an exceptional condition (proc(5)).
    m_notifier = std::make_unique<QSocketNotifier>(m_list.get(), QSocketNotifier::Exception);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(), [this] { look(); });
}

MountWatch::~MountWatch() = default;

void MountWatch::look()
{
    std::set<std::pair<QByteArray, std::uint64_t>> mounts;
    std::vector<QByteArray> appeared;
    for (const Mount &mount : currentMounts()) {
        const auto [place, isNew] = mounts.emplace(mount.point, mount.number);
        if (isNew && !m_mounts.contains(*place) && isVolume(mount))
            appeared.push_back(mount.point);
    }
    m_mounts = std::move(mounts);
    for (const QByteArray &point : appeared)
        m_didMount(point);
}

bool MountWatch::holds(const QByteArray &point) const
{
    const auto first = m_mounts.lower_bound({point, 0});
    return first != m_mounts.end() && first->first == point;
}

} // namespace Tessaron
