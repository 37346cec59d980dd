#include "platform/discrecording/hfsplus/HfsPlusTree.h"

#include "platform/discrecording/hfsplus/HfsPlusDates.h"

#include <algorithm>
#include <sys/sysmacros.h>

namespace Tessaron
{

namespace
{

constexpr std::uint32_t nodesPerCheck = 4096;

using Kind = DRStorageReportItem::Kind;

/// An ID from which on `count` of them have the same number of decimal digits, so that the names made from them are in
/// the order of the IDs.
std::uint32_t idWithEqualDigits(std::uint32_t first, std::uint32_t count)
{
    for (std::uint64_t power = 10; power < UINT32_MAX; power *= 10) {
        if (first < power && std::uint64_t{first} + count > power)
            return static_cast<std::uint32_t>(power);
    }
    return first;
}

} // namespace

bool fitsHfsPlusDevice(std::uint64_t device)
{
    return major(device) < 0x100 && minor(device) < 0x1000000;
}

HfsPlusTree::HfsPlusTree(std::shared_ptr<const ContentTree> tree)
    : m_tree(tree)
    , m_names(std::make_shared<HfsPlusTreeNames>(std::move(tree)))
{
}

bool HfsPlusTree::holds(NodeIndex node) const
{
    const ContentNode &content = m_tree->nodes[node];
    if (content.kind == ContentKind::Absent || (content.filesystems() & filesystem) == 0)
        return false;
    return !content.isDevice() || fitsHfsPlusDevice(content.deviceNumber());
}

bool HfsPlusTree::prepare(const PlanProgress &progress, StorageIssues &issues)
{
    m_childCounts.resize(m_tree->folderCount);
    m_order.resize(m_tree->nodes.size());
    m_nameLengths.resize(m_tree->nodes.size());
    findSharedFiles();
    HfsPlusName volumeName;
    if (m_names->ruledName(0, &volumeName))
        issues.push_back({0, DRDiscTree::HFSPlus, Kind::Renamed, StorageReason::VolumeNameNotAllowed, false});
    reportTimes(0, issues);
    m_nameLengths[0] = static_cast<std::uint8_t>(volumeName.size());
    HfsPlusSiblings siblings;
    std::uint32_t unchecked = 0;
    for (NodeIndex node = 0; node < m_tree->nodes.size(); ++node) {
        if (node % nodesPerCheck == 0 || unchecked > nodesPerCheck) {
            unchecked = 0;
            if (progress.isCancelled())
                return false;
        }
        const ContentNode &content = m_tree->nodes[node];
        if (content.isFolder() && holds(node)) {
            prepareFolder(node, siblings, progress.cancellation(), issues);
            unchecked += content.childCount();
        }
    }
    m_names->finish();
    return !progress.isCancelled();
}

void HfsPlusTree::findSharedFiles()
{
    std::vector<std::pair<NodeIndex, NodeIndex>> names; // contents and name
    for (NodeIndex node = 1; node < m_tree->nodes.size(); ++node) {
        const ContentNode &content = m_tree->nodes[node];
        if (content.has(ContentNode::SharesContents) && holds(node))
            names.emplace_back(content.contentsOwner(), node);
    }
    std::sort(names.begin(), names.end());
    for (const auto &[contents, node] : names) {
        if (m_shared.empty() || m_shared.back().contents != contents)
            m_shared.push_back({contents, node, 0, 0});
        ++m_shared.back().nameCount;
    }
    m_shared.shrink_to_fit();
    for (std::size_t place = 0; place < m_shared.size(); ++place) {
        if (m_shared[place].nameCount < 2)
            continue;
        m_shared[place].number = linkedFileCount();
        m_linked.push_back(static_cast<std::uint32_t>(place));
    }
    m_firstLinkedId =
        hasPrivateFolder() ? idWithEqualDigits(privateFolderId() + 1, linkedFileCount()) : privateFolderId();
}

const HfsPlusSharedFile *HfsPlusTree::sharedFile(NodeIndex node) const
{
    const ContentNode &content = m_tree->nodes[node];
    if (!content.isFile() || !content.has(ContentNode::SharesContents))
        return nullptr;
    const auto found =
        std::lower_bound(m_shared.begin(), m_shared.end(), content.contentsOwner(),
                         [](const HfsPlusSharedFile &file, NodeIndex contents) { return file.contents < contents; });
    return found != m_shared.end() && found->contents == content.contentsOwner() ? &*found : nullptr;
}

const HfsPlusSharedFile *HfsPlusTree::linkedFile(NodeIndex node) const
{
    const HfsPlusSharedFile *const shared = sharedFile(node);
    return shared && shared->nameCount > 1 ? shared : nullptr;
}

bool HfsPlusTree::holdsContents(NodeIndex node) const
{
    return m_tree->nodes[node].has(ContentNode::SharesContents) ? sharedFile(node) != nullptr : holds(node);
}

void HfsPlusTree::prepareFolder(NodeIndex folder, HfsPlusSiblings &siblings, const std::stop_token &cancellation,
                                StorageIssues &issues)
{
    const ContentNode &content = m_tree->nodes[folder];
    siblings.clear();
    HfsPlusName name;
    for (NodeIndex node = content.firstChild(); node < content.endChild(); ++node) {
        const ContentNode &child = m_tree->nodes[node];
        if (holds(node)) {
            const bool isChanged = m_names->ruledName(node, &name);
            siblings.add(node, name.view(), isChanged);
        } else if (child.isDevice() && (child.filesystems() & filesystem) != 0) {
            issues.push_back({node, DRDiscTree::HFSPlus, Kind::Refused, StorageReason::KindNotStorable, false});
        }
    }
    m_names->tellApart(siblings, cancellation);
    std::uint32_t position = content.firstChild();
    for (const HfsPlusSiblings::Entry &entry : siblings.entries()) {
        m_order[position++] = entry.node;
        m_nameLengths[entry.node] = entry.nameSize;
        ++(m_tree->nodes[entry.node].isFolder() ? m_folderCount : m_fileCount);
        report(entry, issues);
    }
    m_childCounts[content.folderNumber()] = static_cast<std::uint32_t>(siblings.entries().size());
}

void HfsPlusTree::reportTimes(NodeIndex node, StorageIssues &issues) const
{
    const ObjectTimes times = m_tree->times(node);
    if (!fitsHfsPlusDate(times.creation) || !fitsHfsPlusDate(times.modification) || !fitsHfsPlusDate(times.access)
        || !fitsHfsPlusDate(times.attributeModification))
        issues.push_back({node, DRDiscTree::HFSPlus, Kind::Altered, StorageReason::TimeBeyondCatalog, false});
}

void HfsPlusTree::report(const HfsPlusSiblings::Entry &entry, StorageIssues &issues) const
{
    const auto add = [&](Kind kind, StorageReason reason) {
        issues.push_back({entry.node, DRDiscTree::HFSPlus, kind, reason, false});
    };
    const bool isChangedOnDisc = m_tree->nodes[entry.node].has(ContentNode::NameIsChanged);
    if (entry.isChanged || entry.isTaken)
        add(Kind::Renamed, reasonForName(isChangedOnDisc, entry.isChanged, entry.isTaken));
    reportTimes(entry.node, issues);
    const HfsPlusSharedFile *const linked = linkedFile(entry.node);
    if (!linked || linked->firstName == entry.node)
        return;
    const bool isHiddenAlike =
        ((m_tree->nodes[entry.node].hiddenIn() ^ m_tree->nodes[linked->firstName].hiddenIn()) & filesystem) == 0;
    if (!isHiddenAlike || !m_tree->haveSameAttributes(entry.node, linked->firstName))
        add(Kind::Altered, StorageReason::AttributesOfOtherName);
}

} // namespace Tessaron
