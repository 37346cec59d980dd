#pragma once

#include "platform/foundation/Export.h"

#include <QString>

namespace Tessaron
{

// Places for temporary files of this user. Programs of the same user share the folder; other users cannot look into it.
// Each object removes its own files. What it leaves goes with the process; after a kill, when the next program of the
// user needs such a place. Thread-safe.

/// "tempFile", the extension of the paths of temporaryFileForObject().
[[nodiscard]] TESSARON_EXPORT QString temporaryFilesExtension();

/// The user's folder: "/private/tmp/qorvu-%@" with the login name, below "/tmp" when "/private/tmp" does not exist. It
/// is made when it does not exist, with access for the user alone. A name that is taken by a link, by another user's
/// folder or by one that others may look into is left alone: the folder then gets random letters behind its name, and
/// this process keeps using that one. Null when no folder can be made.
[[nodiscard]] TESSARON_EXPORT QString temporaryFolder();

/// A folder in it for the object, made when it does not exist: its name is the object's identity, taken as a signed
/// number of 32 bits, in decimal. Null when it cannot be made.
[[nodiscard]] TESSARON_EXPORT QString temporaryFolderForObject(const void *object);

/// A path in the user's folder for the object: the same number with the extension. The file is not made. Null when
/// there is no folder.
[[nodiscard]] TESSARON_EXPORT QString temporaryFileForObject(const void *object);

} // namespace Tessaron
