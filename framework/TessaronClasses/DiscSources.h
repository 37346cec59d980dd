#pragma once

#include "platform/foundation/Export.h"
#include "platform/foundation/Result.h"

#include <QByteArray>
#include <QList>

#include <cstdint>
#include <vector>

namespace Tessaron
{

/// Identifies a file by other means than its path.
struct DeviceAndInode {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;

    friend bool operator==(const DeviceAndInode &, const DeviceAndInode &) = default;
};

/// A folder or file that goes onto a disc, after a look at it.
struct DiscSource {
    QByteArray argument; ///< the path as given
    QByteArray path; ///< where the content is; differs from the argument when that is a symbolic link
    QByteArray name; ///< name on the disc: the argument's own, "." and ".." resolved
    bool isFolder = false;
    DeviceAndInode identity;
};

/// Looks at each path: it must exist, be a folder or a regular file (a symbolic link to one counts as that one) and be
/// readable. Fails on the first that is not, with code Source (DiscJobErrors.h). Touches the disk. Thread-safe.
[[nodiscard]] TESSARON_EXPORT Result<std::vector<DiscSource>> discSourcesAtPaths(const QList<QByteArray> &paths);

/// The sources must be able to lie side by side on a disc: no source twice, and no two of the same name. An error of
/// code InvalidOrder otherwise.
[[nodiscard]] TESSARON_EXPORT NSError errorOfSourcesSideBySide(const std::vector<DiscSource> &sources);

} // namespace Tessaron
