#include "platform/discrecording/iso9660/DirectoryHierarchy.h"

#include "platform/discrecording/image/ImageLayout.h"
#include "platform/discrecording/iso9660/DirectoryRecords.h"
#include "platform/discrecording/iso9660/IsoDateFields.h"
#include "platform/discrecording/iso9660/RockRidge.h"

#include <algorithm>

namespace Tessaron
{

namespace
{

constexpr std::uint32_t foldersPerCheck = 64;
constexpr std::uint32_t childrenPerCheck = 4096;

// What plain ECMA-119 allows (6.8.2.1).
constexpr std::uint32_t longestPath = 255;

using Kind = DRStorageReportItem::Kind;

} // namespace

DirectoryHierarchy::DirectoryHierarchy(std::shared_ptr<const ContentTree> tree, const HierarchyTraits &traits)
    : m_tree(tree)
    , m_traits(traits)
    , m_names(std::make_shared<HierarchyNames>(std::move(tree), traits.coding, traits.level))
{
}

bool DirectoryHierarchy::holds(const ContentNode &content) const
{
    if (content.kind == ContentKind::Absent || (content.filesystems() & m_traits.filesystem) == 0)
        return false;
    return content.isFolder() || content.isFile() || m_traits.hasRockRidge;
}

namespace
{

/// Where the file's count is among `counts`, which are ordered; the end when it has none.
template <typename Counts>
auto countOf(Counts &counts, NodeIndex contents)
{
    const auto found = std::lower_bound(counts.begin(), counts.end(), contents,
                                        [](const auto &entry, NodeIndex wanted) { return entry.first < wanted; });
    return found != counts.end() && found->first == contents ? found : counts.end();
}

} // namespace

/// Not every object that shares contents is in this tree, or has the attributes that names of one file have in common.
void DirectoryHierarchy::countLinks()
{
    m_linkCounts = m_tree->sharerCounts;
    if (m_linkCounts.empty())
        return;
    for (auto &entry : m_linkCounts)
        entry.second = 0;
    for (NodeIndex node = 1; node < m_tree->nodes.size(); ++node) {
        const ContentNode &content = m_tree->nodes[node];
        if (content.isFile() && content.has(ContentNode::SharesContents) && holds(content)
            && m_tree->haveSameAttributes(node, content.contentsOwner()))
            ++countOf(m_linkCounts, content.contentsOwner())->second;
    }
}

std::uint32_t DirectoryHierarchy::linkCount(NodeIndex contents) const
{
    const auto count = countOf(m_linkCounts, contents);
    return count == m_linkCounts.end() ? 1 : count->second;
}

bool DirectoryHierarchy::prepare(const PlanProgress &progress, StorageIssues &issues)
{
    m_numberOfFolder.resize(m_tree->folderCount);
    m_order.resize(m_tree->nodes.size());
    m_folders.push_back({});
    m_paths.push_back({});
    if (m_traits.filesystem != 0 && !canSayTimesOf(0))
        issues.push_back({0, m_traits.tree, Kind::Altered, StorageReason::TimeOutOfRange, false});
    if (m_traits.hasRockRidge) {
        countLinks();
        m_relocated.find(*m_tree, m_traits.filesystem);
    }
    SiblingNames siblings;
    std::uint32_t unchecked = 0;
    for (std::uint32_t number = 0; number < m_folders.size(); ++number) {
        if (number % foldersPerCheck == 0 || unchecked > childrenPerCheck) {
            unchecked = 0;
            if (progress.isCancelled())
                return false;
        }
        collectChildren(number, siblings, issues);
        m_names->tellApart(siblings, progress.cancellation());
        storeOrder(number, siblings);
        measure(number, siblings);
        reportChildren(number, siblings, issues);
        unchecked += m_folders[number].childCount;
    }
    m_names->finish();
    m_paths = {};
    m_folders.shrink_to_fit();
    return !progress.isCancelled();
}

void DirectoryHierarchy::collectChildren(std::uint32_t number, SiblingNames &siblings, StorageIssues &issues)
{
    const ContentNode &folder = m_tree->nodes[m_folders[number].node];
    siblings.clear();
    for (NodeIndex node = folder.firstChild(); node < folder.endChild(); ++node) {
        const ContentNode &content = m_tree->nodes[node];
        if (holds(content)) {
            addChild(node, roleOf(m_folders[number], node), siblings);
        } else if (content.kind != ContentKind::Absent && (content.filesystems() & m_traits.filesystem) != 0) {
            issues.push_back({node, m_traits.tree, Kind::Refused, StorageReason::KindNotStorable, false});
        }
    }
    if (number == 0 || m_folders[number].node != m_tree->relocationFolder)
        return;
    for (const NodeIndex node : m_relocated.nodes())
        addChild(node, NameRole::Folder, siblings);
}

void DirectoryHierarchy::addChild(NodeIndex node, NameRole role, SiblingNames &siblings) const
{
    RecordedName name;
    const bool isChanged = m_names->ruledName(node, role, &name);
    siblings.add(node, role, name.view(), isChanged);
}

void DirectoryHierarchy::storeOrder(std::uint32_t number, const SiblingNames &siblings)
{
    const ContentNode &content = m_tree->nodes[m_folders[number].node];
    const PathMeasure path = m_paths[number];
    const auto count = static_cast<std::uint32_t>(siblings.entries().size());
    std::uint32_t position = content.firstChild();
    if (count > content.childCount()) {
        // With the folders that were moved here it has more children than the tree says.
        position = static_cast<std::uint32_t>(m_order.size());
        m_order.resize(m_order.size() + count);
    }
    m_folders[number].firstEntry = position;
    m_folders[number].childCount = count;
    for (const SiblingNames::Entry &entry : siblings.entries()) {
        m_order[position++] = entry.node;
        if (entry.role == NameRole::File)
            continue;
        if (m_tree->nodes[entry.node].parent == m_folders[number].node && !isHiddenByRockRidge(entry.node))
            ++m_folders[number].subfolderCount;
        if (entry.role == NameRole::FolderElsewhere)
            continue;
        m_numberOfFolder[m_tree->nodes[entry.node].folderNumber()] = static_cast<std::uint32_t>(m_folders.size());
        HierarchyFolder folder;
        folder.node = entry.node;
        folder.parent = number;
        m_folders.push_back(folder);
        m_paths.push_back({path.depth + 1, path.length + entry.size + 1});
    }
}

void DirectoryHierarchy::placeContinuation(NodeIndex node, NameRole role, std::size_t size)
{
    // An area lies within one block; one that needs more begins a block (SystemUse).
    if (m_continuationEnd + size > logicalBlockSize) {
        ++m_continuationBlocks;
        m_continuationEnd = 0;
    }
    m_continuations.push_back({node, role, m_continuationBlocks - 1, m_continuationEnd});
    const std::uint64_t further = blocksForBytes(m_continuationEnd + size) - 1;
    m_continuationBlocks += static_cast<std::uint32_t>(further);
    m_continuationEnd += static_cast<std::uint32_t>(size - further * logicalBlockSize);
}

void DirectoryHierarchy::measure(std::uint32_t number, const SiblingNames &siblings)
{
    HierarchyFolder &folder = m_folders[number];
    folder.firstBlock = static_cast<std::uint32_t>(m_directoryBlocks);
    folder.firstContinued = static_cast<std::uint32_t>(m_continuations.size());
    folder.firstRestart = static_cast<std::uint32_t>(m_restarts.size());
    m_continuationBlocks = 0;
    m_continuationEnd = logicalBlockSize;
    DirectoryRecords records(*this, siblings);
    records.begin(folder);
    std::uint64_t used = 0;
    while (records.next()) {
        const std::size_t size = records.record().size();
        // A record never crosses from one block into the next (ECMA-119 6.8.1.1).
        if (used % logicalBlockSize + size > logicalBlockSize)
            used = blocksForBytes(used) * logicalBlockSize;
        const std::uint64_t block = used / logicalBlockSize;
        if (used % logicalBlockSize == 0 && block > 0 && block % blocksPerRestart == 0)
            m_restarts.push_back(records.place());
        used += size;
        if (records.isFirstSection() && !records.continuation().empty())
            placeContinuation(records.node() == folder.node ? 0 : records.node(), records.role(),
                              records.continuation().size());
    }
    folder.blockCount = static_cast<std::uint32_t>(blocksForBytes(used));
    // A reader that goes through the image once, as libarchive does, finds an area only right behind the directory, and
    // it must have the names of subfolders before it comes to them.
    for (std::size_t area = folder.firstContinued; area < m_continuations.size(); ++area)
        m_continuations[area].block += folder.firstBlock + folder.blockCount;
    m_directoryBlocks += folder.blockCount + m_continuationBlocks;
    m_hasOversizedDirectory |= used > UINT32_MAX;
}

bool DirectoryHierarchy::canSayTimesOf(NodeIndex node) const
{
    const ObjectTimes times = m_tree->times(node);
    if (!fitsRecordingDate(times.modification))
        return false;
    return !m_traits.hasRockRidge
        || (fitsRecordingDate(times.access) && fitsRecordingDate(times.attributeModification));
}

void DirectoryHierarchy::reportFile(NodeIndex node, StorageIssues &issues) const
{
    // Linux gives up on a file after this many records.
    constexpr std::uint64_t mostSections = 100;
    const std::uint64_t sections = fileSectionCount(m_tree->nodes[node].fileSize());
    if (sections > mostSections)
        issues.push_back({node, m_traits.tree, Kind::Altered, StorageReason::TooManySections, false});
    if (sections > 1 && m_traits.wantsOneSection)
        issues.push_back({node, m_traits.tree, Kind::Altered, StorageReason::SectionsBeyondLevel, false});
}

void DirectoryHierarchy::reportRockRidge(NodeIndex node, StorageIssues &issues) const
{
    const ContentNode &content = m_tree->nodes[node];
    if (content.has(ContentNode::NameIsChanged))
        issues.push_back({node, DRDiscTree::RockRidge, Kind::Renamed, StorageReason::NameChangedOnDisc, false});
    if (!content.isFile() && !content.isFolder())
        issues.push_back({node, m_traits.tree, Kind::Refused, StorageReason::KindNotStorable, false});
    if (content.kind == ContentKind::SymbolicLink
        && recordedLinkTarget(m_tree->linkTarget(node)) != m_tree->linkTarget(node))
        issues.push_back({node, DRDiscTree::RockRidge, Kind::Altered, StorageReason::LinkTargetSimplified, false});
}

void DirectoryHierarchy::reportChildren(std::uint32_t number, const SiblingNames &siblings, StorageIssues &issues) const
{
    std::uint32_t longestChild = 0;
    for (const SiblingNames::Entry &entry : siblings.entries()) {
        const ContentNode &content = m_tree->nodes[entry.node];
        if (entry.role != NameRole::Folder) {
            const auto suffix = m_names->suffix(siblings.nameOf(entry), entry.role).size();
            longestChild = std::max(longestChild, entry.size + static_cast<std::uint32_t>(suffix));
        }
        if (entry.role == NameRole::FolderElsewhere) {
            issues.push_back({entry.node, m_traits.tree, Kind::Altered, StorageReason::Relocated, false});
            continue; // the rest is said of the folder itself
        }
        if (isHiddenByRockRidge(entry.node))
            continue;
        if (entry.isChanged || entry.isTaken) {
            const bool isChangedOnDisc = content.has(ContentNode::NameIsChanged);
            issues.push_back({entry.node, m_traits.tree, Kind::Renamed,
                              reasonForName(isChangedOnDisc, entry.isChanged, entry.isTaken), false});
        }
        if (!canSayTimesOf(entry.node))
            issues.push_back({entry.node, m_traits.tree, Kind::Altered, StorageReason::TimeOutOfRange, false});
        if (content.isFile())
            reportFile(entry.node, issues);
        if (m_traits.hasRockRidge)
            reportRockRidge(entry.node, issues);
    }
    if (m_traits.tree == DRDiscTree::ISO9660)
        reportPath(number, longestChild, issues);
}

void DirectoryHierarchy::reportPath(std::uint32_t number, std::uint32_t longestChild, StorageIssues &issues) const
{
    const PathMeasure path = m_paths[number];
    const NodeIndex node = m_folders[number].node;
    if (path.depth > RelocatedFolders::deepestLevel)
        issues.push_back({node, m_traits.tree, Kind::Altered, StorageReason::DepthBeyondStandard, false});
    else if (path.length + longestChild > longestPath)
        issues.push_back({node, m_traits.tree, Kind::Altered, StorageReason::PathBeyondStandard, false});
}

} // namespace Tessaron
