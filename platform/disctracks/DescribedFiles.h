#pragma once

#include "platform/disctracks/CueSheetReader.h"

namespace Tessaron
{

/// The files that a description at this path names, found as DescribedFilePath.h says. Only regular files are opened.
[[nodiscard]] CueSheetFiles filesBeside(const QByteArray &path, const SoundMeasure &otherSounds = {});

/// The bytes of a description; an error when it cannot be read or is longer than maximumCueSheetSize.
[[nodiscard]] Result<QByteArray> textOfDescription(const QByteArray &path);

} // namespace Tessaron
