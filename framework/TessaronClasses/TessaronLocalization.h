#pragma once

#include "platform/foundation/Export.h"
#include <TessaronClasses/TessaronDiscImageFormat.h>

#include <QString>

namespace Tessaron
{

// Texts for people. They come from the application's main bundle, from the framework's own table or, where the
// application has no word of its own, from the file manager's table; without such a table the English defaults are
// used. Any thread.

/// "3 ISO 9660 tracks": the name of the filesystem and the count, filled into the main bundle's text for "1 %type%
/// track" or "n %type% tracks", in which "%@" stands for the name and "%d" for the count, in either order. Null for a
/// null key and a count of 0.
[[nodiscard]] TESSARON_EXPORT QString localizedStringForFS(const QString &fileSystemKey, int count);

/// The main bundle's text for "disc image type iso" and so on; for a code that is not a format, that for "disc image
/// type (null)".
[[nodiscard]] TESSARON_EXPORT QString localizedDiscImageNameForTessaronDiscImageFormat(TessaronDiscImageFormat format);

/// The name of a new folder: the file manager's, else "untitled folder".
[[nodiscard]] TESSARON_EXPORT QString untitledFolderLocalizedString();

/// The name of a new disc: the framework's translation, else the file manager's, else "untitled disc".
[[nodiscard]] TESSARON_EXPORT QString untitledDiscLocalizedString();

/// The word on the button that burns: the main bundle's text for "toolbar burn", else the file manager's, else "burn".
[[nodiscard]] TESSARON_EXPORT QString burnLocalizedString();

} // namespace Tessaron
