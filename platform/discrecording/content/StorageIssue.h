#pragma once

#include "platform/discrecording/content/ContentTree.h"
#include "platform/discrecording/objects/DRStorageReport.h"

#include <cstdint>
#include <vector>

namespace Tessaron
{

/// Why a tree of the disc does not hold an object as it stands.
enum class StorageReason : std::uint8_t {
    NameNotAllowed, ///< the tree's own rules for names
    NameChangedOnDisc, ///< in every tree: no name for a file, too long, or taken by a sibling
    Vanished,
    FileNotReadable,
    FolderNotReadable,
    BecameFolder,
    LinkNotReadable,
    NoFilesystem, ///< no filesystem of the disc is one that may hold the object
    KindNotStorable, ///< the tree has no such thing
    TimeOutOfRange,
    DepthBeyondStandard,
    PathBeyondStandard,
    MissingInPathTable,
    LinkTargetSimplified,
    LinkTargetChanged, ///< it has names that the tree does not hold as they are
    LinkTargetTooLong,
    TimeBeyondCalendar, ///< outside of what UDF can say
    TimeBeyondCatalog, ///< outside of what HFS+ dates can say
    AttributesOfOtherName, ///< the object is another name of a file whose attributes it does not share
};

/// One thing to report, in eight bytes.
struct StorageIssue {
    NodeIndex node = 0;
    DRDiscTree tree = DRDiscTree::ISO9660;
    DRStorageReportItem::Kind kind = DRStorageReportItem::Kind::Renamed;
    StorageReason reason = StorageReason::NameNotAllowed;
    bool isLost = false; ///< known once all trees are made
};
static_assert(sizeof(StorageIssue) == 8);

using StorageIssues = std::vector<StorageIssue>;

} // namespace Tessaron
