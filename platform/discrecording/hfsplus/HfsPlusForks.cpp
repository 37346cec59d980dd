#include "platform/discrecording/hfsplus/HfsPlusForks.h"

#include "platform/coreservices/FSRefAccess.h"
#include "platform/coreservices/PathAccess.h"
#include "platform/discrecording/content/SourceFolder.h"
#include "platform/discrecording/image/ImageLayout.h"
#include "platform/foundation/FileSystemRepresentation.h"

#include <algorithm>
#include <climits>
#include <string_view>

namespace Tessaron
{

namespace
{

constexpr std::uint32_t nodesPerCheck = 1024;
constexpr std::size_t typeAndCreatorSize = 8;

/// Where every file carries a label of the system, a list of attributes tells nothing. After this many such lists each
/// attribute is asked for by its name at once.
constexpr int mostVainLists = 8;

/// Takes away types and creators that would make the file something else: only the volume itself says what a link is.
void dropLinkTypes(FinderInfoBytes &info)
{
    const std::string_view typeAndCreator(reinterpret_cast<const char *>(info.data()), typeAndCreatorSize);
    if (typeAndCreator == "hlnkhfs+" || typeAndCreator == "slnkrhap")
        std::fill_n(info.begin(), typeAndCreatorSize, std::uint8_t{0});
}

bool isZero(const FinderInfoBytes &info)
{
    return std::ranges::all_of(info, [](std::uint8_t byte) { return byte == 0; });
}

NSError changedForkError(const FSRef &ref)
{
    const QString path = stringWithFileSystemRepresentation(lastKnownPath(ref));
    return NSError(NSOSStatusErrorDomain, fBsyErr,
                   {{NSLocalizedDescriptionKey,
                     QStringLiteral("The resource fork of the file “%1” was changed while the disc was made.")
                         .arg(displayableText(path))},
                    {NSLocalizedRecoverySuggestionErrorKey,
                     QStringLiteral("Leave it unchanged until the disc is finished, and try again.")},
                    {NSFilePathErrorKey, path}});
}

/// True when the file is another one than the planned one or its attributes were changed.
bool hasChanged(const FSRef &ref, const ContentNode &planned)
{
    struct statx now;
    return statFSRef(ref, STATX_INO | STATX_CTIME, &now) != 0 || now.stx_ino != planned.inode
        || FileTime::from(now.stx_ctime) != planned.changeTime();
}

/// The part of a fork that lies in the blocks from `firstBlock` on.
void copyPart(const HfsPlusFork &fork, const char *bytes, std::uint32_t firstBlock, std::span<std::uint8_t> out)
{
    const std::uint64_t start = std::uint64_t{fork.firstBlock} * logicalBlockSize;
    const std::uint64_t begin = std::uint64_t{firstBlock} * logicalBlockSize;
    const std::uint64_t from = std::max(start, begin);
    const std::uint64_t to = std::min(start + fork.length, begin + out.size());
    if (from < to)
        std::copy_n(bytes + (from - start), to - from, out.begin() + static_cast<std::ptrdiff_t>(from - begin));
}

std::uint32_t endBlockOf(std::uint32_t firstBlock, std::span<std::uint8_t> out)
{
    return firstBlock + static_cast<std::uint32_t>(out.size() / logicalBlockSize);
}

} // namespace

void HfsPlusForkList::add(NodeIndex node, std::uint32_t length)
{
    m_forks.push_back({node, m_blockCount, length});
    m_blockCount += static_cast<std::uint32_t>(blocksForBytes(length));
}

const HfsPlusFork *HfsPlusForkList::forkOf(NodeIndex node) const
{
    const auto found = std::lower_bound(m_forks.begin(), m_forks.end(), node,
                                        [](const HfsPlusFork &fork, NodeIndex wanted) { return fork.node < wanted; });
    return found != m_forks.end() && found->node == node ? &*found : nullptr;
}

std::span<const HfsPlusFork> HfsPlusForkList::forksIn(std::uint32_t firstBlock, std::uint32_t endBlock) const
{
    const auto endOf = [](const HfsPlusFork &fork) { return fork.firstBlock + blocksForBytes(fork.length); };
    const auto first = std::partition_point(m_forks.begin(), m_forks.end(),
                                            [&](const HfsPlusFork &fork) { return endOf(fork) <= firstBlock; });
    const auto last =
        std::partition_point(first, m_forks.end(), [&](const HfsPlusFork &fork) { return fork.firstBlock < endBlock; });
    return {first, last};
}

HfsPlusForks::HfsPlusForks(const HfsPlusTree &tree)
    : m_tree(tree)
{
}

bool HfsPlusForks::gather(const PlanProgress &progress)
{
    const ContentTree &tree = m_tree.tree();
    m_keepsAttributes.assign(tree.devices.size(), true);
    SourceFolder folder;
    for (NodeIndex node = 0; node < tree.nodes.size(); ++node) {
        if (node % nodesPerCheck == 0 && progress.isCancelled())
            return false;
        if (!m_tree.holds(node))
            continue;
        const ContentNode &content = tree.nodes[node];
        if (content.kind == ContentKind::SymbolicLink)
            m_linkTargets.add(node, static_cast<std::uint32_t>(tree.linkTarget(node).size()));
        else if ((content.isFile() || content.isFolder()) && content.sourceNode != 0
                 && m_keepsAttributes[content.device])
            look(node, folder);
    }
    m_finderInfo.shrink_to_fit();
    m_linkTargets.finish();
    m_resourceForks.finish();
    return true;
}

void HfsPlusForks::look(NodeIndex node, SourceFolder &folder)
{
    const ContentNode &content = m_tree.tree().nodes[node];
    const HfsPlusSharedFile *const linked = m_tree.linkedFile(node);
    if (linked && linked->firstName != node)
        return;
    const FSRef ref = m_tree.tree().sourceRef(node);
    const QByteArrayView name = nameOfFSRef(ref);
    std::array<char, NAME_MAX + 1> terminated;
    const int descriptor = folder.descriptorFor(ref);
    bool isSupported = true;
    FinderInfoBytes info{};
    std::uint64_t forkLength = 0;
    if (descriptor >= 0 && name.size() <= NAME_MAX) {
        *std::copy(name.begin(), name.end(), terminated.begin()) = '\0';
        // One question instead of two, as long as its answer is of use.
        if (m_vainLists < mostVainLists && !hasAnyAttribute(descriptor, terminated.data(), {}))
            return;
        info = readFinderInfo(descriptor, terminated.data(), {}, &isSupported);
        if (isSupported && content.isFile())
            forkLength = attributeLength(descriptor, terminated.data(), {}, resourceForkAttribute, &isSupported);
    } else if (const PathAccess file(lastKnownPath(ref)); file.error() == 0) {
        info = readFinderInfo(file.folder(), file.path(), {}, &isSupported);
        if (isSupported && content.isFile())
            forkLength = attributeLength(file.folder(), file.path(), {}, resourceForkAttribute, &isSupported);
    }
    if (!isSupported)
        m_keepsAttributes[content.device] = false;
    if (forkLength == 0 && isZero(info))
        ++m_vainLists;
    dropLinkTypes(info);
    if (!isZero(info))
        m_finderInfo.emplace_back(node, info);
    if (forkLength > 0)
        m_resourceForks.add(node, static_cast<std::uint32_t>(forkLength));
}

FinderInfoBytes HfsPlusForks::finderInfo(NodeIndex node) const
{
    const ContentTree &tree = m_tree.tree();
    FinderInfoBytes info{};
    const auto found = std::lower_bound(m_finderInfo.begin(), m_finderInfo.end(), node,
                                        [](const auto &entry, NodeIndex wanted) { return entry.first < wanted; });
    if (found != m_finderInfo.end() && found->first == node)
        info = found->second;
    const auto set =
        std::lower_bound(tree.finderFlags.begin(), tree.finderFlags.end(), node,
                         [](const ContentFinderFlags &entry, NodeIndex wanted) { return entry.node < wanted; });
    std::uint16_t flags = finderFlagsOf(info.data());
    if (set != tree.finderFlags.end() && set->node == node) {
        flags = set->flags.value_or(flags);
        if (set->hidesExtension)
            flags |= kFinderHasHiddenExtension;
    }
    if ((tree.nodes[node].hiddenIn() & HfsPlusTree::filesystem) != 0)
        flags |= kFinderIsInvisible;
    setFinderFlags(info.data(), flags);
    return info;
}

void HfsPlusForks::fillLinkTargets(std::uint32_t firstBlock, std::span<std::uint8_t> out) const
{
    for (const HfsPlusFork &fork : m_linkTargets.forksIn(firstBlock, endBlockOf(firstBlock, out)))
        copyPart(fork, m_tree.tree().linkTarget(fork.node).data(), firstBlock, out);
}

NSError HfsPlusForks::fillResourceForks(std::uint32_t firstBlock, std::span<std::uint8_t> out) const
{
    for (const HfsPlusFork &fork : m_resourceForks.forksIn(firstBlock, endBlockOf(firstBlock, out))) {
        const FSRef ref = m_tree.tree().sourceRef(fork.node);
        const QByteArray bytes = readResourceFork(PathAccess(lastKnownPath(ref)), fork.length);
        // A change of an extended attribute shows in the time of the file's last attribute change.
        if (bytes.size() != static_cast<qsizetype>(fork.length) || hasChanged(ref, m_tree.tree().nodes[fork.node]))
            return changedForkError(ref);
        copyPart(fork, bytes.constData(), firstBlock, out);
    }
    return {};
}

} // namespace Tessaron
