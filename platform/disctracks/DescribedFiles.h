#pragma once

#include "platform/disctracks/CueSheetReader.h"

namespace Tessaron
{

/// The files that a description at this path names: as they are named, beside it without the folders of another system,
/// or in another letter case. Only regular files are opened.
[[nodiscard]] CueSheetFiles filesBeside(const QByteArray &path, const SoundMeasure &otherSounds = {});

/// Where such a file lies, by the first of its names under which it is found; `folder` is the description's, with a
/// slash at its end, or empty. Empty when it is not there.
[[nodiscard]] QByteArray pathOfDescribedFile(const QByteArray &folder, const QByteArrayList &names);

/// The bytes of a description; an error when it cannot be read or is longer than maximumCueSheetSize.
[[nodiscard]] Result<QByteArray> textOfDescription(const QByteArray &path);

} // namespace Tessaron
