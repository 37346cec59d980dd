#pragma once

#include "platform/foundation/Export.h"

#include <QString>

#include <cstdint>
#include <functional>

namespace Tessaron
{

/// A tree of names on a disc, as reports name it. Rock Ridge is the ISO 9660 tree with the names of its extension.
enum class DRDiscTree : std::uint8_t {
    ISO9660,
    RockRidge,
    Joliet,
    UDF,
    HFSPlus,
};
/// What programs call it: "iso9660", "rockridge", "joliet", "udf", "hfs+".
[[nodiscard]] TESSARON_EXPORT QString discTreeName(DRDiscTree tree);
/// What people call it: "ISO 9660", "Rock Ridge", "Joliet", "UDF", "HFS+". The same in all languages.
[[nodiscard]] TESSARON_EXPORT QString discTreeTitle(DRDiscTree tree);

/// One thing that a tree of the disc does not hold as it stands in the source.
struct DRStorageReportItem {
    enum class Kind : std::uint8_t {
        Renamed, ///< stored under `nameGiven`
        Refused, ///< not stored in this tree
        Altered, ///< stored, but something of it (a time, a depth beyond the standard …) is not as in the source; see
                 ///< `reason`
    };
    Kind kind = Kind::Renamed;
    DRDiscTree tree = DRDiscTree::ISO9660;
    /// Path of the object on the disc, from the root, by base names: "/folder/file".
    QString path;
    /// Path of its source on disk, empty for a virtual object.
    QString sourcePath;
    QString nameGiven; ///< for Renamed
    QString reason; ///< a sentence for people, always set
    /// False when another tree of the same disc holds the object with its own name and contents, so that nothing is
    /// lost. For the root, whose name is the volume's, when another filesystem has that name.
    bool isLost = false;
};

/// What a disc's filesystems cannot hold as it stands: never a word less, so that a program can tell its user.
/// Immutable, thread-safe, independent of the burn it came from; items are made on demand, so that a report on a
/// million files costs a few bytes for each.
class TESSARON_EXPORT DRStorageReport
{
public:
    virtual ~DRStorageReport();

    /// Items are in the order of the disc's tree, those of the root first.
    [[nodiscard]] virtual std::size_t count() const = 0;
    [[nodiscard]] virtual DRStorageReportItem item(std::size_t index) const = 0;
    /// How many objects are lost: some tree refuses or renames them and no other tree of the disc makes up for it. The
    /// root is not counted: nothing is looked up by the name of a volume.
    [[nodiscard]] virtual std::size_t lostCount() const = 0;
    /// How many items of this kind the tree has.
    [[nodiscard]] virtual std::size_t count(DRDiscTree tree, DRStorageReportItem::Kind kind) const = 0;
};

} // namespace Tessaron
