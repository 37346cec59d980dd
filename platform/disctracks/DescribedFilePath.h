#pragma once

#include "platform/disctracks/CueSheet.h"
#include "platform/foundation/Result.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QString>

namespace Tessaron
{

/// Where a file lies that a description names, by the first of its names under which it is found; `folder` is the
/// description's, with a slash at its end, or empty. Descriptions travel, so a file that is not where they say is
/// looked for beside them, and in another letter case. A sound may have another ending, too: programs that copy discs
/// compress "1.wav" into "1.flac" and leave the sheet as it is.
///
/// Empty when no such file is there; an error that names them when more than one could be meant.
[[nodiscard]] Result<QByteArray> pathOfDescribedFile(const QByteArray &folder, const QByteArrayList &names,
                                                     bool isSound = false);

/// Says that a file of another name than the description's was taken; empty where its name is the same.
[[nodiscard]] QString noteOfOtherName(const CueFile &file);

} // namespace Tessaron
