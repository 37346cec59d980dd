#pragma once

#include "platform/foundation/NSError.h"
#include <TessaronClasses/DiscSources.h>

#include <vector>

namespace Tessaron
{

// What jobs ask before they make a disc of folders and files.

/// SOURCE_DATE_EPOCH is set to get reproducible bytes: a value that means nothing must not be ignored.
[[nodiscard]] NSError errorOfEnvironment();

/// True when the content of a folder becomes the content of the disc.
[[nodiscard]] bool isOneFolder(const std::vector<DiscSource> &sources);

/// True when a player will take the disc for DVD-Video. Touches the disk.
[[nodiscard]] bool isDvdVideo(const std::vector<DiscSource> &sources);

} // namespace Tessaron
