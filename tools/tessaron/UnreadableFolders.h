#pragma once

#include "tools/tessaron/SourceGatherer.h"

#include <vector>

namespace Tessaron
{
class KRFileHierarchyItem;
} // namespace Tessaron

namespace Tessaron::Tool
{

/// A scan leaves a folder that cannot be opened empty, without a word: looks at every empty folder of the tree whether
/// that is why, and appends those of which it is.
void appendUnreadableFolders(const KRFileHierarchyItem &root, std::vector<GatheringError> *errors);

} // namespace Tessaron::Tool
