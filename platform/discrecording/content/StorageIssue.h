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
    NameTaken, ///< by a sibling, which for the tree's readers has the same name
    SubstituteTaken, ///< the tree's rules do not allow the name, and a sibling has the one that they give
    VolumeNameNotAllowed,
    NameChangedOnDisc, ///< in every tree: no name for a file, too long, or taken by a sibling
    Vanished,
    FileNotReadable,
    FolderNotReadable,
    BecameFolder,
    LinkNotReadable,
    NoFilesystem, ///< none of the disc's filesystems may hold the object
    KindNotStorable, ///< the tree cannot hold such an object
    TimeOutOfRange,
    DepthBeyondStandard,
    Relocated, ///< recorded in another folder, since its own is too deep
    PathBeyondStandard,
    MissingInPathTable,
    LinkTargetSimplified,
    LinkTargetChanged, ///< it has names that the tree does not hold as they are
    LinkTargetTooLong,
    TimeBeyondCalendar, ///< outside of what UDF can say
    TimeBeyondCatalog, ///< outside of what HFS+ dates can say
    SectionsBeyondLevel, ///< the level that was asked for allows one section for each file
    TooManySections, ///< more than some systems read
    VideoAddressNotMet, ///< a file of DVD-Video does not lie where another one says
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

/// Why an object has another name in a tree: it had one on the disc already, the tree's rules changed that one
/// (`isRuled`), a sibling had it (`isTaken`).
[[nodiscard]] constexpr StorageReason reasonForName(bool isChangedOnDisc, bool isRuled, bool isTaken)
{
    if (isChangedOnDisc)
        return StorageReason::NameChangedOnDisc;
    if (!isTaken)
        return StorageReason::NameNotAllowed;
    return isRuled ? StorageReason::SubstituteTaken : StorageReason::NameTaken;
}

} // namespace Tessaron
