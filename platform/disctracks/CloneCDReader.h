#pragma once

#include "platform/disctracks/CueSheetReader.h"
#include "platform/foundation/Export.h"
#include "platform/foundation/Result.h"

#include <QByteArray>

namespace Tessaron
{

/// Reads a description of CloneCD, an INI file beside an image of whole sectors of 2352 bytes. `image` is the image's
/// name; `files.measure` finds it. The image begins with block 0 and holds the sessions one after another; what a disc
/// has between them is in no file.
///
/// Errors are of DiscTracksErrorDomain, as for a cue sheet, and name the line, the cause and what to do: numbers that
/// cannot be read, tracks that are missing, said twice or out of order, a session without its end, an image that is too
/// short or holds scrambled sectors. Thread-safe as far as `files` is.
[[nodiscard]] TESSARON_EXPORT Result<CueSheet> cloneCDOfText(const QByteArray &text, const QByteArray &image,
                                                             const CueSheetFiles &files);

/// Reads the description at the path (bytes), which names no image: that is the file beside it whose name ends in
/// ".img" instead, in any letter case. The file with the subchannels (".sub") is not looked at.
[[nodiscard]] TESSARON_EXPORT Result<CueSheet> cloneCDOfFile(const QByteArray &path);

} // namespace Tessaron
