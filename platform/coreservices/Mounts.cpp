#include "platform/coreservices/Mounts.h"

#include "platform/coreservices/PathAccess.h"

#include <QFile>

#include <algorithm>
#include <cstring>
#include <fcntl.h>
#include <linux/magic.h>
#include <sys/vfs.h>

namespace Tessaron
{

namespace
{

// Fields of a line of mountinfo (proc(5)); the type is the first field behind a lone "-".
constexpr qsizetype numberField = 0;
constexpr qsizetype rootField = 3;
constexpr qsizetype pointField = 4;
constexpr qsizetype firstOptionalField = 6;

/// Blanks, tabs, line ends and backslashes in paths are written as three octal digits.
QByteArray unescaped(const QByteArray &field)
{
    QByteArray text;
    for (qsizetype at = 0; at < field.size(); ++at) {
        bool isOctal = false;
        const int code = field[at] == '\\' ? field.mid(at + 1, 3).toInt(&isOctal, 8) : 0;
        if (isOctal && at + 3 < field.size()) {
            text += static_cast<char>(code);
            at += 3;
        } else {
            text += field[at];
        }
    }
    return text;
}

/// The names of common types, as the list of mounts has them.
QByteArray typeName(std::int64_t type)
{
    constexpr std::int64_t exfat = 0x2011BAB0;
    switch (type) {
    case EXT4_SUPER_MAGIC:
        return "ext4";
    case XFS_SUPER_MAGIC:
        return "xfs";
    case BTRFS_SUPER_MAGIC:
        return "btrfs";
    case TMPFS_MAGIC:
        return "tmpfs";
    case OVERLAYFS_SUPER_MAGIC:
        return "overlay";
    case NFS_SUPER_MAGIC:
        return "nfs4";
    case MSDOS_SUPER_MAGIC:
        return "vfat";
    case exfat:
        return "exfat";
    default:
        return QByteArray::number(qlonglong(type), 16);
    }
}

/// What is known of the mount at "/" without the system's list.
Mount mountAtRoot()
{
    Mount mount;
    mount.root = mount.point = "/";
    struct statx facts;
    if (statPath("/", mountField, &facts) == 0)
        mount.number = mountOf(facts);
    struct statfs volume;
    if (::statfs("/", &volume) == 0)
        mount.type = typeName(volume.f_type);
    return mount;
}

} // namespace

std::vector<Mount> currentMounts()
{
    QFile file(QStringLiteral("/proc/self/mountinfo"));
    std::vector<Mount> mounts;
    if (file.open(QIODevice::ReadOnly))
        mounts = mountsFromText(file.readAll());
    const bool hasRoot =
        std::any_of(mounts.begin(), mounts.end(), [](const Mount &mount) { return mount.point == "/"; });
    if (!hasRoot)
        mounts.insert(mounts.begin(), mountAtRoot());
    return mounts;
}

std::vector<Mount> mountsFromText(const QByteArray &text)
{
    std::vector<Mount> mounts;
    for (const QByteArray &line : text.split('\n')) {
        const QList<QByteArray> fields = line.split(' ');
        const qsizetype dash = fields.indexOf("-", firstOptionalField);
        if (dash < 0 || dash + 1 >= fields.size())
            continue;
        Mount mount;
        mount.number = fields[numberField].toULongLong();
        mount.root = unescaped(fields[rootField]);
        mount.point = unescaped(fields[pointField]);
        mount.type = fields[dash + 1];
        if (mount.root.startsWith('/') && mount.point.startsWith('/'))
            mounts.push_back(mount);
    }
    return mounts;
}

std::uint64_t volumeIdentifierAt(const QByteArray &path)
{
    int error = 0;
    const UniqueDescriptor file = openPath(path, O_PATH | O_NOFOLLOW, &error);
    struct statfs facts;
    std::uint64_t identifier = 0;
    if (file && ::fstatfs(file.get(), &facts) == 0)
        std::memcpy(&identifier, &facts.f_fsid, sizeof identifier);
    return identifier;
}

} // namespace Tessaron
