#include "imaging/jobs/FreeSpace.h"

#include <algorithm>
#include <array>
#include <linux/magic.h>
#include <sys/statvfs.h>
#include <sys/vfs.h>
#include <unistd.h>

namespace Tessaron
{

namespace
{

/// Filesystems without shared extents and compression.
constexpr std::array plainFilesystems = {std::uint32_t(EXT4_SUPER_MAGIC), std::uint32_t(MSDOS_SUPER_MAGIC),
                                         std::uint32_t(EXFAT_SUPER_MAGIC), std::uint32_t(TMPFS_MAGIC)};

} // namespace

std::optional<std::uint64_t> freeSpaceForPlainWriting(int descriptor)
{
    struct statfs kind;
    struct statvfs space;
    if (::fstatfs(descriptor, &kind) != 0 || ::fstatvfs(descriptor, &space) != 0)
        return {};
    const auto magic = std::uint32_t(kind.f_type);
    if (std::find(plainFilesystems.begin(), plainFilesystems.end(), magic) == plainFilesystems.end())
        return {};
    if (space.f_blocks == 0) // a tmpfs without a limit
        return {};
    const std::uint64_t blocks = ::geteuid() == 0 ? space.f_bfree : space.f_bavail;
    return blocks * space.f_frsize;
}

} // namespace Tessaron
