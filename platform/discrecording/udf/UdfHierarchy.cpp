#include "platform/discrecording/udf/UdfHierarchy.h"

#include "platform/discrecording/image/ImageLayout.h"
#include "platform/discrecording/udf/UdfFields.h"
#include "platform/discrecording/udf/UdfFileEntry.h"
#include "platform/discrecording/udf/UdfLinkTarget.h"

#include <algorithm>

namespace Tessaron
{

namespace
{

constexpr std::uint32_t foldersPerCheck = 64;
constexpr std::uint32_t childrenPerCheck = 4096;
constexpr std::uint32_t mostLinks = std::numeric_limits<std::uint16_t>::max();

using Kind = DRStorageReportItem::Kind;

} // namespace

UdfHierarchy::UdfHierarchy(std::shared_ptr<const ContentTree> tree)
    : m_tree(tree)
    , m_names(std::make_shared<UdfTreeNames>(std::move(tree)))
{
}

bool UdfHierarchy::prepare(const PlanProgress &progress, StorageIssues &issues)
{
    m_icbOfNode.assign(m_tree->nodes.size(), noIcb);
    m_folders.resize(m_tree->folderCount);
    addIcb(0);
    reportTimes(0, issues);
    std::uint32_t folderNumber = 0;
    std::uint32_t unchecked = 0;
    for (NodeIndex node = 0; node < m_tree->nodes.size(); ++node) {
        const ContentNode &content = m_tree->nodes[node];
        if (!content.isFolder())
            continue;
        unchecked += content.childCount();
        if (folderNumber++ % foldersPerCheck == 0 || unchecked > childrenPerCheck) {
            unchecked = 0;
            if (progress.isCancelled())
                return false;
        }
        // Folders that this tree does not hold have their place, too, so that places ascend.
        m_folders[content.folderNumber()].node = node;
        m_folders[content.folderNumber()].firstBlock = static_cast<std::uint32_t>(m_directoryBlocks);
        m_folders[content.folderNumber()].firstRestart = static_cast<std::uint32_t>(m_restarts.size());
        if (holds(node))
            addFolder(node, progress.cancellation(), issues);
    }
    keepLinkCounts();
    m_nodeOfIcb.shrink_to_fit();
    m_siblings = {};
    return !progress.isCancelled();
}

bool UdfHierarchy::admits(NodeIndex node, StorageIssues &issues) const
{
    const ContentNode &content = m_tree->nodes[node];
    if (content.kind == ContentKind::Absent || (content.filesystems() & DRFilesystemInclusionMaskUDF) == 0)
        return false;
    if (content.kind != ContentKind::SymbolicLink)
        return true;
    const UdfLinkTarget target = udfLinkTarget(m_tree->linkTarget(node));
    if (target.components.size() > UdfFileEntry::embeddedCapacity) {
        issues.push_back({node, DRDiscTree::UDF, Kind::Refused, StorageReason::LinkTargetTooLong, false});
        return false;
    }
    if (target.hasChangedNames)
        issues.push_back({node, DRDiscTree::UDF, Kind::Altered, StorageReason::LinkTargetChanged, false});
    else if (target.isSimplified)
        issues.push_back({node, DRDiscTree::UDF, Kind::Altered, StorageReason::LinkTargetSimplified, false});
    return true;
}

void UdfHierarchy::addIcb(NodeIndex node)
{
    const ContentNode &content = m_tree->nodes[node];
    const std::uint32_t next = icbCount();
    if (content.isFile() && content.has(ContentNode::SharesContents) && !content.has(ContentNode::HasDates)) {
        const Identity identity{content.contentsOwner(), content.mode, content.userId, content.groupId};
        SharedIcb &shared = m_shared.try_emplace(identity, SharedIcb{next, 0}).first->second;
        if (shared.links == mostLinks) {
            // One more than a file entry can count begins another entry.
            m_linkCounts.emplace_back(shared.icb, static_cast<std::uint16_t>(mostLinks));
            shared = SharedIcb{next, 0};
        }
        ++shared.links;
        m_icbOfNode[node] = shared.icb;
        if (shared.icb != next)
            return;
    }
    m_icbOfNode[node] = next;
    m_nodeOfIcb.push_back(node);
    if (!content.isFile())
        return;
    const auto extents = static_cast<std::uint32_t>(UdfAllocation{0, content.fileSize()}.extentCount());
    if (extents > 0)
        m_longFiles.push_back({next, m_allocationExtents, extents});
    m_allocationExtents += extents;
}

void UdfHierarchy::addFolder(NodeIndex node, const std::stop_token &cancellation, StorageIssues &issues)
{
    const ContentNode &folder = m_tree->nodes[node];
    ++m_folderCount;
    m_siblings.clear();
    for (NodeIndex child = folder.firstChild(); child < folder.endChild(); ++child) {
        if (!admits(child, issues))
            continue;
        addIcb(child);
        m_siblings.push_back({child});
        if (m_tree->nodes[child].isFolder())
            ++m_folders[folder.folderNumber()].subfolderCount;
        else
            ++m_fileCount;
    }
    m_names->makeNames(m_siblings, cancellation);
    for (const UdfSibling &sibling : m_siblings)
        report(sibling, issues);
    measure(node);
}

void UdfHierarchy::measure(NodeIndex node)
{
    constexpr std::uint64_t bytesPerRestart = std::uint64_t{blocksPerRestart} * logicalBlockSize;
    std::uint64_t used = udfDirectoryEntrySize(0); // the entry that leads to the parent
    std::uint64_t nextRestart = bytesPerRestart;
    for (const UdfSibling &sibling : m_siblings) {
        const std::uint64_t end = used + udfDirectoryEntrySize(sibling.nameSize);
        if (end > nextRestart) {
            m_restarts.push_back({sibling.node, used});
            nextRestart += bytesPerRestart;
        }
        used = end;
    }
    m_folders[m_tree->nodes[node].folderNumber()].size = used;
    m_directoryBlocks += blocksForBytes(used);
}

void UdfHierarchy::report(const UdfSibling &sibling, StorageIssues &issues) const
{
    const bool isChangedOnDisc = m_tree->nodes[sibling.node].has(ContentNode::NameIsChanged);
    if (isChangedOnDisc || sibling.isRenamed || sibling.isTaken)
        issues.push_back({sibling.node, DRDiscTree::UDF, Kind::Renamed,
                          reasonForName(isChangedOnDisc, sibling.isRenamed, sibling.isTaken), false});
    reportTimes(sibling.node, issues);
}

void UdfHierarchy::reportTimes(NodeIndex node, StorageIssues &issues) const
{
    const ObjectTimes times = m_tree->times(node);
    if (!fitsUdfTimestamp(times.modification) || !fitsUdfTimestamp(times.access)
        || !fitsUdfTimestamp(times.attributeModification))
        issues.push_back({node, DRDiscTree::UDF, Kind::Altered, StorageReason::TimeBeyondCalendar, false});
}

void UdfHierarchy::keepLinkCounts()
{
    for (const auto &[identity, shared] : m_shared) {
        if (shared.links > 1)
            m_linkCounts.emplace_back(shared.icb, static_cast<std::uint16_t>(shared.links));
    }
    std::sort(m_linkCounts.begin(), m_linkCounts.end());
    m_shared.clear();
}

std::uint16_t UdfHierarchy::linkCount(std::uint32_t icb) const
{
    const NodeIndex node = nodeOf(icb);
    // The entry in the parent folder, or the root's own one, and those of its folders that lead back.
    if (m_tree->nodes[node].isFolder())
        return static_cast<std::uint16_t>(std::min(folderOf(node).subfolderCount, mostLinks - 1) + 1);
    const auto found = std::lower_bound(m_linkCounts.begin(), m_linkCounts.end(), icb,
                                        [](const auto &entry, std::uint32_t wanted) { return entry.first < wanted; });
    return found != m_linkCounts.end() && found->first == icb ? found->second : 1;
}

} // namespace Tessaron
