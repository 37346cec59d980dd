#pragma once

#include "platform/discrecording/content/ContentTree.h"
#include "platform/discrecording/content/PlanProgress.h"
#include "platform/discrecording/content/StorageIssue.h"

#include <cstdint>
#include <vector>

namespace Tessaron
{

struct FSCatalogInfo;

/// The kind of an object with this `st_mode`.
[[nodiscard]] ContentKind contentKindOfMode(std::uint32_t mode);

/// The number of a device in the table, added when it is new.
[[nodiscard]] std::uint16_t deviceNumber(std::vector<std::uint64_t> &devices, std::uint64_t device);

/// Takes what a listing said about a file. False when the file has still to be looked at: a link whose target is
/// needed, a file that may not be readable.
[[nodiscard]] bool takeCatalogInfo(ContentNode &content, const FSCatalogInfo &info);

/// Looks at the source of every object that is marked for it, with several threads. An object that is gone or cannot be
/// read becomes absent and is added to `issues`, in the order of the tree. False when cancelled.
[[nodiscard]] bool inspectSources(ContentTree &tree, const PlanProgress &progress, unsigned int threadCount,
                                  StorageIssues &issues);

} // namespace Tessaron
