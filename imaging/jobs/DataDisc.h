#pragma once

#include "platform/foundation/NSError.h"
#include <TessaronClasses/DiscSources.h>

#include <vector>

namespace Tessaron
{

class KRFileHierarchyItem;

// What jobs ask before they make a disc of folders and files.

/// SOURCE_DATE_EPOCH is set to get reproducible bytes: a value that means nothing must not be ignored.
[[nodiscard]] NSError errorOfEnvironment();

/// True when the content of a folder becomes the content of the disc.
[[nodiscard]] bool isOneFolder(const std::vector<DiscSource> &sources);

/// True when a player will take the disc for DVD-Video. Touches the disk.
[[nodiscard]] bool isDvdVideo(const std::vector<DiscSource> &sources);

/// The same of a disc that a program arranged as a tree; touches no disk.
[[nodiscard]] bool isDvdVideo(const KRFileHierarchyItem &root);

/// The files of a tree, in no order. What is written must not replace one of them: it would be the last that is seen of
/// it.
[[nodiscard]] std::vector<DiscSource> filesOfTree(const KRFileHierarchyItem &root);

} // namespace Tessaron
