#pragma once

#include "platform/discrecording/objects/DRStorageReport.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <cstddef>
#include <functional>
#include <vector>

namespace Tessaron::Tool
{

/// All trees that a report may speak of.
[[nodiscard]] const std::vector<DRDiscTree> &allDiscTrees();

/// True for what people want to know of: everything but the short names of the plain ISO 9660 tree, which nearly every
/// object has and no reader shows where another tree holds the true name.
[[nodiscard]] bool isWorthTelling(const DRStorageReportItem &item);

/// Calls `function` for every item that is worth telling. Costs nothing for a report without any: the short names, of
/// which there may be a million, are not even looked at then.
void forEachTelling(const DRStorageReport &report, const std::function<void(const DRStorageReportItem &)> &function);

/// One object, with all trees that do not hold it as it stands for the same reason.
struct LostObject {
    QString path; ///< on disk; for an object without a source, on the disc
    QString fate; ///< "not stored", "stored as “x”", "stored differently"
    QString reason;
    QStringList trees;
    bool isRefused = false; ///< no filesystem holds it
};

/// The objects of which something is lost, in the order of the report, at most `limit`.
[[nodiscard]] std::vector<LostObject> lostObjects(const DRStorageReport &report, std::size_t limit);

/// A sentence on the names that the volume has where they are not the one wanted; empty when there are none. Those of
/// plain ISO 9660 do not count where another filesystem has the name.
[[nodiscard]] QString volumeNameText(const DRStorageReport &report);

/// A sentence for each tree in which something differs that another tree makes up for: "In the Joliet tree, 3 names are
/// changed …". None for the plain ISO 9660 tree, whose readers expect short names.
[[nodiscard]] QStringList harmlessDifferences(const DRStorageReport &report);

/// One line about one item.
[[nodiscard]] QString lineAbout(const DRStorageReportItem &item);

} // namespace Tessaron::Tool
