#pragma once

#include <QByteArray>

#include <cstdint>
#include <vector>

namespace Tessaron
{

/// A mounted file system, or a part of one, as the system lists it.
struct Mount {
    std::uint64_t number = 0; ///< `stx_mnt_id` of what lies on it
    QByteArray root; ///< the part that is mounted, "/" for the whole file system
    QByteArray point; ///< where
    QByteArray type; ///< "ext4"
};

/// The mounts that this process sees, from /proc/self/mountinfo. One at "/" is always among them: in a changed root the
/// system does not list it, and what lies at "/" stands for it then.
[[nodiscard]] std::vector<Mount> currentMounts();
/// The same from the text of such a file. Lines that make no sense are left out; safe for any bytes.
[[nodiscard]] std::vector<Mount> mountsFromText(const QByteArray &text);

/// The identifier (`f_fsid`) of the file system at a path; 0 where it has none or cannot be asked.
[[nodiscard]] std::uint64_t volumeIdentifierAt(const QByteArray &path);

} // namespace Tessaron
