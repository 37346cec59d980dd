#pragma once

#include "platform/foundation/Export.h"
#include <TessaronClasses/TessaronDiscImageFormat.h>

#include <QString>

#include <cstdint>
#include <memory>
#include <optional>

namespace Tessaron
{

class DRFSObject;
class DRFolder;

// What is added to texts and to the objects of a layout. All of it works on values or on one tree, on any thread that
// may use the tree; none of it reports an error.

/// Reads "minutes:seconds:frames" as a number of CD frames, 75 to the second; blanks are ignored, a part that is not a
/// number counts as 0, and seconds and frames have no upper limit. No value unless there are exactly three parts.
[[nodiscard]] TESSARON_EXPORT std::optional<std::int64_t> msfValue(const QString &text);

/// The file name extension of one format, without a dot; null for any other code.
[[nodiscard]] TESSARON_EXPORT QString extensionForTessaronDiscImageFormat(TessaronDiscImageFormat format);

/// True when `string` occurs in the text and `comesBeforeString` either does not or first occurs further on.
[[nodiscard]] TESSARON_EXPORT bool occurenceOfString(const QString &text, const QString &string,
                                                     const QString &comesBeforeString);

/// True when the whole text matches the regular expression, which is read as ICU reads it: "." does not match a line
/// end, character classes know all of Unicode. A pattern that is not a regular expression matches nothing, nor does one
/// that needs more than about a second or 64 MiB for the text.
[[nodiscard]] TESSARON_EXPORT bool matchesRegExp(const QString &text, const QString &pattern);

/// The name of a DVD-Video volume made from the text: characters of ISO 9660 level one, blanks and hyphens as single
/// "_", everything else left out, at most 27 characters, "DVD" when nothing is left.
[[nodiscard]] TESSARON_EXPORT QString dvdName(const QString &text);

/// For a virtual folder the descriptions of its children, each followed by a line feed; for anything else the base
/// name.
[[nodiscard]] TESSARON_EXPORT QString fullDescription(const DRFSObject &object);

/// The first child with exactly this base name, or null.
[[nodiscard]] TESSARON_EXPORT std::shared_ptr<DRFSObject> childWithBaseName(const DRFolder &folder,
                                                                            const QString &name);

/// Takes all children out of the folder.
TESSARON_EXPORT void removeAllChildren(DRFolder &folder);

} // namespace Tessaron
