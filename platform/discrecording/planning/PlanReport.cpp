#include "platform/discrecording/planning/PlanReport.h"

#include "platform/coreservices/FSRef.h"
#include "platform/discrecording/content/UsableBaseNames.h"
#include "platform/foundation/FileSystemRepresentation.h"

#include <algorithm>

namespace Tessaron
{

namespace
{

using Kind = DRStorageReportItem::Kind;

QString nounFor(ContentKind kind)
{
    switch (kind) {
    case ContentKind::SymbolicLink:
        return QStringLiteral("A symbolic link");
    case ContentKind::Fifo:
        return QStringLiteral("A named pipe");
    case ContentKind::Socket:
        return QStringLiteral("A socket");
    case ContentKind::CharacterDevice:
    case ContentKind::BlockDevice:
        return QStringLiteral("A device file");
    default:
        return QStringLiteral("Such an object");
    }
}

QString sentenceFor(StorageReason reason, ContentKind kind)
{
    switch (reason) {
    case StorageReason::NameNotAllowed:
        return QStringLiteral("The filesystem does not allow the name as it is.");
    case StorageReason::NameTaken:
        return QStringLiteral("Another object in the folder has the name already, or one that the filesystem's readers "
                              "take for the same.");
    case StorageReason::SubstituteTaken:
        return QStringLiteral("The filesystem does not allow the name as it is, and another object in the folder has "
                              "the one that would take its place.");
    case StorageReason::VolumeNameNotAllowed:
        return QStringLiteral("The filesystem does not allow the name of the volume as it is.");
    case StorageReason::NameChangedOnDisc:
        return {}; // which of the three it was follows from the name
    case StorageReason::Vanished:
        return QStringLiteral("It is no longer where it was when the disc was composed.");
    case StorageReason::FileNotReadable:
        return QStringLiteral("The file may not be read: access was denied.");
    case StorageReason::FolderNotReadable:
        return QStringLiteral("The folder cannot be listed.");
    case StorageReason::BecameFolder:
        return QStringLiteral("The file has become a folder since the disc was composed.");
    case StorageReason::LinkNotReadable:
        return QStringLiteral("The target of the symbolic link cannot be read.");
    case StorageReason::NoFilesystem:
        return QStringLiteral("None of the disc's filesystems is one that is to hold it.");
    case StorageReason::KindNotStorable:
        return nounFor(kind) + QStringLiteral(" cannot be stored in this filesystem.");
    case StorageReason::TimeOutOfRange:
        return QStringLiteral("A time lies outside the years 1900 to 2155; the nearest possible one is stored.");
    case StorageReason::DepthBeyondStandard:
        return QStringLiteral(
            "The folder is deeper than the eight levels of the standard; some systems do not find it.");
    case StorageReason::Relocated:
        return QStringLiteral(
            "The folder is deeper than the eight levels of the standard: it is recorded in the folder rr_moved, and "
            "Rock Ridge shows it in its place.");
    case StorageReason::PathBeyondStandard:
        return QStringLiteral("Paths in the folder are longer than the 255 characters of the standard; some systems do "
                              "not find them.");
    case StorageReason::MissingInPathTable:
        return QStringLiteral("The folder is missing in the path table, which has room for 65,535 parent folders; "
                              "systems that rely on it do not find the folder.");
    case StorageReason::LinkTargetSimplified:
        return QStringLiteral("The target of the symbolic link is stored in a simpler form of the same meaning.");
    case StorageReason::LinkTargetChanged:
        return QStringLiteral(
            "The target of the symbolic link has names that the filesystem does not allow as they are; "
            "the link may lead nowhere.");
    case StorageReason::LinkTargetTooLong:
        return QStringLiteral("The target of the symbolic link is too long for this filesystem.");
    case StorageReason::TimeBeyondCalendar:
        return QStringLiteral("A time lies outside the years 1 to 9999; the nearest possible one is stored.");
    case StorageReason::TimeBeyondCatalog:
        return QStringLiteral("A time lies outside the years 1904 to 2040; the nearest possible one is stored.");
    case StorageReason::SectionsBeyondLevel:
        return QStringLiteral(
            "The file takes several sections, which the level of ISO 9660 that was asked for does not "
            "allow; systems that know no other see 4 GiB of it.");
    case StorageReason::TooManySections:
        return QStringLiteral("The file takes more than 100 sections of 4 GiB; some systems, Linux among them, do not "
                              "read it here.");
    case StorageReason::VideoAddressNotMet:
        return QStringLiteral(
            "The file does not lie where the information files of DVD-Video say that it does; players "
            "may not find it.");
    case StorageReason::AttributesOfOtherName:
        return QStringLiteral(
            "The file has several names on the disc, and the permissions, times and flags of the first "
            "one hold for all of them.");
    }
    return {};
}

} // namespace

PlanReport::PlanReport(std::shared_ptr<const ContentTree> tree, std::vector<NamedTree> trees, StorageIssues issues)
    : m_tree(std::move(tree))
    , m_trees(std::move(trees))
    , m_issues(std::move(issues))
{
    std::stable_sort(m_issues.begin(), m_issues.end(), [](const StorageIssue &one, const StorageIssue &other) {
        return one.node != other.node ? one.node < other.node : one.tree < other.tree;
    });
    m_issues.shrink_to_fit();
    for (auto first = m_issues.begin(); first != m_issues.end();) {
        const auto last =
            std::find_if(first, m_issues.end(), [&](const StorageIssue &issue) { return issue.node != first->node; });
        const bool lost = isLost(first, last);
        m_lostCount += lost && first->node != 0 ? 1 : 0;
        m_refusedEverywhere += lost && isRefusedEverywhere(first, last) ? 1 : 0;
        for (; first != last; ++first) {
            first->isLost = lost;
            ++m_counts[static_cast<std::size_t>(first->tree)][static_cast<std::size_t>(first->kind)];
        }
    }
}

bool PlanReport::isLost(StorageIssues::const_iterator first, StorageIssues::const_iterator last) const
{
    if (first->node == 0)
        return isVolumeNameLost(first, last);
    const ContentNode &content = m_tree->nodes[first->node];
    if (content.kind == ContentKind::Absent)
        return true;
    return std::none_of(m_trees.begin(), m_trees.end(), [&](const NamedTree &tree) {
        const bool isTrueThere = std::none_of(first, last, [&](const StorageIssue &issue) {
            return issue.tree == tree.tree && issue.kind != Kind::Altered;
        });
        return (content.filesystems() & tree.filesystem) != 0 && isTrueThere;
    });
}

bool PlanReport::isRefusedEverywhere(StorageIssues::const_iterator first, StorageIssues::const_iterator last) const
{
    const ContentNode &content = m_tree->nodes[first->node];
    bool isWanted = false;
    for (const NamedTree &tree : m_trees) {
        if (content.kind == ContentKind::Absent || (content.filesystems() & tree.filesystem) == 0)
            continue;
        isWanted = true;
        const bool isHeld = std::none_of(first, last, [&](const StorageIssue &issue) {
            return issue.tree == tree.tree && issue.kind == Kind::Refused;
        });
        if (isHeld)
            return false;
    }
    return isWanted;
}

bool PlanReport::isVolumeNameLost(StorageIssues::const_iterator first, StorageIssues::const_iterator last) const
{
    if (m_tree->baseName(0).empty())
        return false; // it has no name to lose
    return std::none_of(m_trees.begin(), m_trees.end(), [&](const NamedTree &tree) {
        const bool hasNameOfItsOwn = tree.tree != DRDiscTree::RockRidge; // which has no volume
        return hasNameOfItsOwn && std::none_of(first, last, [&](const StorageIssue &issue) {
                   return issue.tree == tree.tree && issue.kind == Kind::Renamed;
               });
    });
}

QString PlanReport::reasonOf(const StorageIssue &issue) const
{
    if (issue.reason != StorageReason::NameChangedOnDisc)
        return sentenceFor(issue.reason, m_tree->nodes[issue.node].kind);
    const std::string_view name = m_tree->baseName(issue.node);
    if (isUsableBaseName(name))
        return QStringLiteral("Another object in the folder has the name already.");
    if (name.size() > longestBaseName)
        return QStringLiteral("The name is longer than 255 bytes.");
    return QStringLiteral("The name cannot be a file's.");
}

DRStorageReportItem PlanReport::item(std::size_t index) const
{
    const StorageIssue &issue = m_issues[index];
    DRStorageReportItem item;
    item.kind = issue.kind;
    item.tree = issue.tree;
    item.path = stringWithFileSystemRepresentation(m_tree->discPath(issue.node));
    item.sourcePath = stringWithFileSystemRepresentation(lastKnownPath(m_tree->sourceRef(issue.node)));
    item.reason = reasonOf(issue);
    item.isLost = issue.isLost;
    if (issue.kind != Kind::Renamed)
        return item;
    const auto named =
        std::find_if(m_trees.begin(), m_trees.end(), [&](const NamedTree &tree) { return tree.tree == issue.tree; });
    if (named != m_trees.end())
        item.nameGiven = named->names->displayName(issue.node);
    return item;
}

std::size_t PlanReport::count(DRDiscTree tree, DRStorageReportItem::Kind kind) const
{
    return m_counts[static_cast<std::size_t>(tree)][static_cast<std::size_t>(kind)];
}

} // namespace Tessaron
