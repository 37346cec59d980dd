#pragma once

#include "platform/coreservices/FSRef.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <QByteArray>

#include <sys/stat.h>

namespace Tessaron
{

/// Access to the file behind a reference for programs that need its bytes. All of these work for paths of any length
/// (longer than PATH_MAX by walking from folder to folder), follow a file that was renamed or moved as FSRefMakePath()
/// does, and are thread-safe.

/// Opens the file with the flags of open(2) (O_CLOEXEC is added). An invalid descriptor with `*errnoValue` set on
/// failure.
[[nodiscard]] TESSARON_EXPORT UniqueDescriptor openFSRef(const FSRef &ref, int flags, int *errnoValue);

/// statx(2) of the file, a symbolic link not followed; 0 or an `errno` value. Where another file has taken its place
/// (see FSRef), that one: compare `stx_ino` where it matters.
[[nodiscard]] TESSARON_EXPORT int statFSRef(const FSRef &ref, unsigned int mask, struct statx *result);

/// Reads the target of a symbolic link, of any length; 0 or an `errno` value.
[[nodiscard]] TESSARON_EXPORT int readLinkTarget(const FSRef &ref, QByteArray *target);

/// The file name (last path component) that the reference was made with; stable storage that lives as long as the
/// process, so that callers need no copy. Empty view for the zero reference and "/" for the root folder.
[[nodiscard]] TESSARON_EXPORT QByteArrayView nameOfFSRef(const FSRef &ref);

/// The node of the folder that holds the reference's place, 0 for the root folder and the zero reference. References
/// with the same parent node lie in the same folder.
[[nodiscard]] TESSARON_EXPORT std::uint32_t parentNodeOfFSRef(const FSRef &ref);

} // namespace Tessaron
