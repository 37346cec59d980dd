#include "tools/tessaron/StorageSummary.h"

#include "tools/tessaron/Text.h"

#include <QHash>

#include <map>

namespace Tessaron::Tool
{

namespace
{

using Kind = DRStorageReportItem::Kind;

constexpr Kind allKinds[] = {Kind::Renamed, Kind::Refused, Kind::Altered};

/// The root has no name on the disc but the volume's.
bool isVolumeName(const DRStorageReportItem &item)
{
    return item.path == u"/" && item.kind == Kind::Renamed;
}

bool hasSomethingToTell(const DRStorageReport &report)
{
    if (report.lostCount() > 0)
        return true;
    for (const DRDiscTree tree : allDiscTrees()) {
        for (const Kind kind : allKinds) {
            const bool isShortName = tree == DRDiscTree::ISO9660 && kind == Kind::Renamed;
            if (!isShortName && report.count(tree, kind) > 0)
                return true;
        }
    }
    return false;
}

QString fateOf(const DRStorageReportItem &item)
{
    switch (item.kind) {
    case Kind::Renamed:
        return QStringLiteral("stored as “%1”").arg(item.nameGiven);
    case Kind::Refused:
        return QStringLiteral("not stored");
    case Kind::Altered:
        return QStringLiteral("stored differently");
    }
    return {};
}

QString pathOf(const DRStorageReportItem &item)
{
    if (isVolumeName(item))
        return QStringLiteral("the volume's name");
    return item.sourcePath.isEmpty() ? item.path : item.sourcePath;
}

QString differenceText(Kind kind, std::uint64_t count)
{
    switch (kind) {
    case Kind::Renamed:
        return counted(count, "name is changed", "names are changed");
    case Kind::Refused:
        return counted(count, "item is left out", "items are left out");
    case Kind::Altered:
        return counted(count, "item is stored differently", "items are stored differently");
    }
    return {};
}

} // namespace

const std::vector<DRDiscTree> &allDiscTrees()
{
    static const std::vector<DRDiscTree> trees = {DRDiscTree::ISO9660, DRDiscTree::RockRidge, DRDiscTree::Joliet,
                                                  DRDiscTree::UDF, DRDiscTree::HFSPlus};
    return trees;
}

bool isWorthTelling(const DRStorageReportItem &item)
{
    return item.isLost || item.tree != DRDiscTree::ISO9660 || item.kind != Kind::Renamed;
}

void forEachTelling(const DRStorageReport &report, const std::function<void(const DRStorageReportItem &)> &function)
{
    const bool isAllLookedAt = hasSomethingToTell(report);
    for (std::size_t index = 0; index < report.count(); ++index) {
        const DRStorageReportItem item = report.item(index);
        // The root's items come first. Short names of a million files are not worth a look at each.
        if (!isAllLookedAt && item.path != u"/")
            return;
        if (isWorthTelling(item))
            function(item);
    }
}

std::vector<LostObject> lostObjects(const DRStorageReport &report, std::size_t limit)
{
    std::vector<LostObject> result;
    if (report.lostCount() == 0)
        return result;
    QHash<QString, std::size_t> known;
    forEachTelling(report, [&](const DRStorageReportItem &item) {
        if (!item.isLost || isVolumeName(item))
            return;
        const QString key = item.path + QChar(u'\0') + fateOf(item);
        if (const auto found = known.constFind(key); found != known.constEnd())
            result[*found].trees += discTreeTitle(item.tree);
        else if (result.size() < limit) {
            known.insert(key, result.size());
            result.push_back(
                {pathOf(item), fateOf(item), item.reason, {discTreeTitle(item.tree)}, item.kind == Kind::Refused});
        }
    });
    return result;
}

QString volumeNameText(const DRStorageReport &report)
{
    QStringList names;
    for (std::size_t index = 0; index < report.count(); ++index) {
        const DRStorageReportItem item = report.item(index);
        if (item.path != u"/")
            break; // the root's items come first
        if (isVolumeName(item) && isWorthTelling(item))
            names += QStringLiteral("“%1” (%2)").arg(item.nameGiven, discTreeTitle(item.tree));
    }
    return names.isEmpty()
        ? QString()
        : QStringLiteral("The volume's name is stored as %1.").arg(names.join(QStringLiteral(" and ")));
}

QStringList harmlessDifferences(const DRStorageReport &report)
{
    std::map<DRDiscTree, std::map<Kind, std::uint64_t>> counts;
    forEachTelling(report, [&](const DRStorageReportItem &item) {
        if (!item.isLost && !isVolumeName(item) && item.tree != DRDiscTree::ISO9660)
            ++counts[item.tree][item.kind];
    });
    QStringList result;
    if (const QString text = volumeNameText(report); !text.isEmpty())
        result += text;
    for (const auto &[tree, kinds] : counts) {
        QStringList parts;
        std::uint64_t total = 0;
        for (const auto &[kind, count] : kinds) {
            parts += differenceText(kind, count);
            total += count;
        }
        const QString them = total == 1 ? QStringLiteral("it as it is") : QStringLiteral("them as they are");
        result += QStringLiteral("In the %1 tree, %2; another tree has %3 (-v lists %4).")
                      .arg(discTreeTitle(tree), parts.join(QStringLiteral(" and ")), them,
                           total == 1 ? QStringLiteral("it") : QStringLiteral("them"));
    }
    return result;
}

QString lineAbout(const DRStorageReportItem &item)
{
    return QStringLiteral("%1: %2 (%3): %4").arg(pathOf(item), fateOf(item), discTreeTitle(item.tree), item.reason);
}

} // namespace Tessaron::Tool
