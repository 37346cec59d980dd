#pragma once

#include "platform/foundation/Result.h"
#include <TessaronClasses/DVDInspectJob.h>

#include <QByteArray>

#include <stop_token>
#include <vector>

namespace Tessaron
{

/// Holds the files of a folder VIDEO_TS, or of the one in the folder at the path, against what players need: which
/// files must be there, what they are called, how long they may be and must be by their tables, and that each IFO file
/// is the same as its backup. Empty for a path that is not such a folder; an error where it cannot be listed. Touches
/// the disk.
[[nodiscard]] Result<std::vector<DVDFileProblem>> problemsOfVideoFolder(const QByteArray &path,
                                                                        const std::stop_token &stop);

} // namespace Tessaron
