#pragma once

#include "platform/foundation/Export.h"

#include <QString>

#include <memory>

namespace Tessaron
{

struct FSRef;
class DRFolder;
class KRFileReference;

// Folders of a layout that are modelled on a folder on disk: they get its name, Finder flags, times and permissions and
// its custom icon (the file "Icon\r"), but none of its other contents.

/// Null when nothing is at the path or it is not a folder. A symbolic link at the end of the path is followed.
[[nodiscard]] TESSARON_EXPORT std::shared_ptr<DRFolder> virtualFolderWithPath(const QString &path);

/// The same for a file reference. It is not tested whether it refers to a folder.
[[nodiscard]] TESSARON_EXPORT std::shared_ptr<DRFolder> virtualFolderWithFSRef(const FSRef &ref);

/// The same for a reference of the file model; never null. A folder that is gone gives a folder with the name it had,
/// without flags and icon. May be called on any thread that may use the reference.
[[nodiscard]] TESSARON_EXPORT std::shared_ptr<DRFolder>
virtualFolderWithFileReference(const std::shared_ptr<KRFileReference> &reference);

} // namespace Tessaron
