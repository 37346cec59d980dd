#pragma once

#include "tools/tessaron/Problem.h"

#include <QByteArray>
#include <QList>

#include <cstdint>
#include <vector>

namespace Tessaron::Tool
{

/// Which file something is, whatever its path.
struct DeviceAndInode {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;

    friend bool operator==(const DeviceAndInode &, const DeviceAndInode &) = default;
};

/// A PATH of the command line after a look at the disk.
struct Source {
    QByteArray argument; ///< as given
    QByteArray path; ///< where the content is; differs from the argument when that is a symbolic link
    QByteArray name; ///< name on the disc: the argument's own, "." and ".." resolved
    bool isFolder = false;
    DeviceAndInode identity;
};

/// Looks at each PATH: it must exist, be a folder or a regular file (a symbolic link to one counts as that one) and be
/// readable. The first that is not is the problem.
[[nodiscard]] Problem inspectSources(const QList<QByteArray> &paths, std::vector<Source> *sources);

/// The sources must be able to lie side by side on a disc: none twice, no two of one name.
[[nodiscard]] Problem checkSideBySide(const std::vector<Source> &sources);

} // namespace Tessaron::Tool
