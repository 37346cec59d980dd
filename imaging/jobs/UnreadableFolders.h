#pragma once

#include <TessaronClasses/DiscSources.h>

#include <vector>

namespace Tessaron
{

class KRFileHierarchyItem;

/// A scan leaves a folder that cannot be opened empty, without a word: looks at every empty folder of the tree whether
/// that is why, and appends those of which it is.
void appendUnreadableFolders(const KRFileHierarchyItem &root, std::vector<UnreadableSource> *unreadable);

} // namespace Tessaron
