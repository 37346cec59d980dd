#pragma once

#include "platform/coreservices/FSRef.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <QByteArray>

#include <sys/stat.h>

namespace Tessaron
{

/// An absolute path in a form that system calls take, whatever its length: a folder's descriptor and a path below it
/// that is shorter than PATH_MAX. Short paths cost nothing; long ones are walked from folder to folder.
class PathAccess
{
public:
    explicit PathAccess(const QByteArray &absolutePath);

    /// 0, or the `errno` value of the folder that could not be entered; nothing else is usable then.
    [[nodiscard]] int error() const { return m_error; }
    /// For the …at calls; AT_FDCWD with a whole path.
    [[nodiscard]] int folder() const;
    [[nodiscard]] const char *path() const { return m_path.constData() + m_offset; }
    /// A path for calls that know no folder descriptors; it goes through /proc where the whole path is too long.
    [[nodiscard]] QByteArray standalonePath() const;

private:
    QByteArray m_path;
    qsizetype m_offset = 0;
    UniqueDescriptor m_folder;
    int m_error = 0;
};

/// A path that leads to what is open under a descriptor.
[[nodiscard]] QByteArray pathOfDescriptor(int descriptor);

/// The number of the mount, as unique as the system makes it: kernels from 6.8 on give none a second time. The C
/// library does not know the two fields of statx(2) yet.
inline constexpr unsigned int mountField = 0x00001000U | 0x00004000U;

/// The fields of statx(2) that make and check references.
inline constexpr unsigned int identityFields = STATX_TYPE | STATX_MODE | STATX_INO | STATX_BTIME | mountField;

/// statx(2) of a path of any length, a symbolic link not followed, without asking a file server again; 0 or an `errno`
/// value.
[[nodiscard]] int statPath(const QByteArray &absolutePath, unsigned int mask, struct statx *result);
/// The same for what lies below an open folder.
[[nodiscard]] int statBelow(int folder, const char *name, unsigned int mask, struct statx *result);

/// The same for what is open.
[[nodiscard]] int statDescriptor(int descriptor, unsigned int mask, struct statx *result);

[[nodiscard]] std::uint64_t deviceOf(const struct statx &facts);
/// The mount on which the file was found; 0 where the system does not say.
[[nodiscard]] std::uint64_t mountOf(const struct statx &facts);
/// A reference with the identity found by statx() at a node.
[[nodiscard]] FSRef refWithFacts(const struct statx &facts, std::uint32_t node);
/// True when device (if the reference knows it), inode and birth time are the reference's.
[[nodiscard]] bool hasSameIdentity(const FSRef &ref, const struct statx &facts);

/// Opens a path of any length; an invalid descriptor with `*errnoValue` set on failure. O_CLOEXEC is added.
[[nodiscard]] UniqueDescriptor openPath(const QByteArray &absolutePath, int flags, int *errnoValue);

/// Reads a symbolic link below `folder`, of any length; 0 or an `errno` value.
[[nodiscard]] int readLinkBelow(int folder, const char *name, QByteArray *target);

} // namespace Tessaron
