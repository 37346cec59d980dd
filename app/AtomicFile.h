#pragma once

#include <QByteArray>

#include <platform/foundation/NSError.h>

namespace Tessaron::Desktop
{

/// Writes a whole file, or leaves what was there as it was: at no moment is there a file of that name that is not
/// whole, whatever is killed or loses power. A symbolic link at the path is followed; the permissions of an older file
/// are kept. Waits until the contents are on the disk, so it is not for the main thread. A null error when it is done.
[[nodiscard]] NSError writeAtomically(const QByteArray &path, const QByteArray &contents);

/// The folder that a path leads through at last, without a slash behind it; "." for a bare name.
[[nodiscard]] QByteArray folderOf(const QByteArray &path);

} // namespace Tessaron::Desktop
