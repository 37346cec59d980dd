#pragma once

#include <QByteArray>

namespace Tessaron
{

/// What a symbolic link at the end of a path stands for.
enum class LeafLink {
    Followed, ///< the file at its end, through any number of further links
    NotFollowed, ///< itself; a slash behind it still means what it points to
};

/// Makes a path absolute (from the working folder) and plain: no ".", no "..", no doubled or final slash. Symbolic
/// links on the way stay as they are written, but a ".." behind one means what the system means by it: the folder that
/// holds the link's target. What a ".." follows must be a folder, as for the system. Returns 0, or ENOENT, ENOTDIR,
/// ELOOP, EACCES … when that or a link that counts cannot be read.
/// Thread-safe.
[[nodiscard]] int makeAbsolutePath(const QByteArray &path, LeafLink leaf, QByteArray *absolute);

} // namespace Tessaron
