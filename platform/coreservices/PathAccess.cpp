#include "platform/coreservices/PathAccess.h"

#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstring>
#include <fcntl.h>
#include <sys/sysmacros.h>

namespace Tessaron
{

namespace
{

/// Leaves room in PATH_MAX for the prefix of standalonePath().
constexpr qsizetype longestPiece = PATH_MAX - 64;

/// Where the number of the mount lies in the record of statx(2): behind the numbers of the device.
constexpr std::size_t mountNumberOffset = offsetof(struct statx, stx_dev_minor) + sizeof(std::uint32_t);

} // namespace

PathAccess::PathAccess(const QByteArray &absolutePath)
    : m_path(absolutePath)
{
    while (m_path.size() - m_offset > longestPiece) {
        const qsizetype slash = m_path.lastIndexOf('/', m_offset + longestPiece);
        if (slash <= m_offset) {
            m_error = ENAMETOOLONG;
            return;
        }
        m_path[slash] = '\0';
        UniqueDescriptor next(::openat(folder(), path(), O_PATH | O_DIRECTORY | O_CLOEXEC));
        if (!next) {
            m_error = errno;
            return;
        }
        m_folder = std::move(next);
        m_offset = slash + 1;
    }
}

int PathAccess::folder() const
{
    return m_folder ? m_folder.get() : AT_FDCWD;
}

QByteArray PathAccess::standalonePath() const
{
    if (!m_folder)
        return m_path;
    return pathOfDescriptor(m_folder.get()).append('/').append(path());
}

QByteArray pathOfDescriptor(int descriptor)
{
    return QByteArray("/proc/self/fd/").append(QByteArray::number(descriptor));
}

int statPath(const QByteArray &absolutePath, unsigned int mask, struct statx *result)
{
    const PathAccess access(absolutePath);
    return access.error() != 0 ? access.error() : statBelow(access.folder(), access.path(), mask, result);
}

int statBelow(int folder, const char *name, unsigned int mask, struct statx *result)
{
    constexpr int flags = AT_SYMLINK_NOFOLLOW | AT_STATX_DONT_SYNC | AT_NO_AUTOMOUNT;
    return ::statx(folder, name, flags, mask, result) == 0 ? 0 : errno;
}

int statDescriptor(int descriptor, unsigned int mask, struct statx *result)
{
    return ::statx(descriptor, "", AT_EMPTY_PATH | AT_STATX_DONT_SYNC, mask, result) == 0 ? 0 : errno;
}

std::uint64_t deviceOf(const struct statx &facts)
{
    return gnu_dev_makedev(facts.stx_dev_major, facts.stx_dev_minor);
}

FSRef refWithFacts(const struct statx &facts, std::uint32_t node)
{
    FSRef ref;
    ref.device = deviceOf(facts);
    ref.inode = facts.stx_ino;
    if (facts.stx_mask & STATX_BTIME) {
        ref.setBirthTime(FileTime::from(facts.stx_btime));
    }
    ref.kind = facts.stx_mode & S_IFMT;
    ref.node = node;
    return ref;
}

std::uint64_t mountOf(const struct statx &facts)
{
    std::uint64_t mount = 0;
    if (facts.stx_mask & mountField)
        std::memcpy(&mount, reinterpret_cast<const char *>(&facts) + mountNumberOffset, sizeof mount);
    return mount;
}

bool hasSameIdentity(const FSRef &ref, const struct statx &facts)
{
    const FSRef found = refWithFacts(facts, ref.node);
    return found.inode == ref.inode && found.birthTime() == ref.birthTime()
        && (ref.device == 0 || found.device == ref.device);
}

UniqueDescriptor openPath(const QByteArray &absolutePath, int flags, int *errnoValue)
{
    const PathAccess access(absolutePath);
    UniqueDescriptor descriptor;
    *errnoValue = access.error();
    if (*errnoValue == 0) {
        descriptor.reset(::openat(access.folder(), access.path(), flags | O_CLOEXEC));
        *errnoValue = descriptor ? 0 : errno;
    }
    return descriptor;
}

int readLinkBelow(int folder, const char *name, QByteArray *target)
{
    for (QByteArray buffer(256, Qt::Uninitialized);; buffer.resize(buffer.size() * 4)) {
        const ssize_t length = ::readlinkat(folder, name, buffer.data(), static_cast<std::size_t>(buffer.size()));
        if (length < 0)
            return errno;
        if (length < buffer.size()) {
            buffer.truncate(length);
            *target = buffer;
            return 0;
        }
    }
}

} // namespace Tessaron
