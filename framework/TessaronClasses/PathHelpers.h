#pragma once

#include "platform/coreservices/FSRef.h"
#include "platform/foundation/Export.h"

#include <QString>

#include <functional>

namespace Tessaron
{

/// What the framework adds to paths, the workspace and the file manager. A path that is a QString holds names that are
/// not UTF-8 as FileSystemRepresentation.h says. All of it is thread-safe.

/// The reference of the file or folder at a path; a symbolic link at its end is not followed. The reference is not
/// valid (FSRefValid()) when nothing is there.
[[nodiscard]] TESSARON_EXPORT FSRef fsRef(const QString &path);

/// The path of a reference; null when its file is gone or the path is longer than 1023 bytes.
[[nodiscard]] TESSARON_EXPORT QString stringWithFSRef(const FSRef *ref);

/// The path of the file that an alias file leads to in the end; the path itself for any other file and for an alias
/// file that leads nowhere. Null for a null path and when nothing is there.
[[nodiscard]] TESSARON_EXPORT QString stringByResolvingFinderAlias(const QString &path);

/// The path itself when nothing is there, else the first free one of the form "a-1.txt", "a-2.txt", … for "a.txt".
[[nodiscard]] TESSARON_EXPORT QString unusedName(const QString &path);
/// The same where more paths are taken than those at which something is, as by files that are still to be made.
[[nodiscard]] TESSARON_EXPORT QString unusedName(const QString &path,
                                                 const std::function<bool(const QString &)> &isTakenToo);

/// True for an alias file; false for anything else and when nothing is there.
[[nodiscard]] TESSARON_EXPORT bool isFinderAliasAtPath(const QString &path);

/// Removes a folder that holds nothing of value: no folders, and no files but empty ones and ".DS_Store". False when it
/// holds more (nothing is removed then), cannot be listed or cannot be removed. A link to a folder does not count as a
/// folder.
TESSARON_EXPORT bool deleteDirectoryAtPathIfEmpty(const QString &path);

} // namespace Tessaron
