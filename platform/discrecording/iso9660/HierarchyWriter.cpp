#include "platform/discrecording/iso9660/HierarchyWriter.h"

#include "platform/discrecording/image/ImageLayout.h"

#include <algorithm>

namespace Tessaron
{

namespace
{

/// The tree of Rock Ridge's own names, which are those of the disc.
class DiscBaseNamesOfTree final : public TreeDisplayNames
{
public:
    explicit DiscBaseNamesOfTree(std::shared_ptr<const ContentTree> tree)
        : m_tree(std::move(tree))
    {
    }

    [[nodiscard]] QString displayName(NodeIndex node) const override { return m_tree->discName(node); }

private:
    const std::shared_ptr<const ContentTree> m_tree;
};

} // namespace

HierarchyWriter::HierarchyWriter(std::shared_ptr<const ContentTree> tree, const HierarchyTraits &traits,
                                 const VolumeTexts &texts)
    : m_hierarchy(std::move(tree), traits)
    , m_pathTable(m_hierarchy)
    , m_texts(texts)
{
}

bool HierarchyWriter::prepare(const PlanProgress &progress, StorageIssues &issues)
{
    if (!m_hierarchy.prepare(progress, issues))
        return false;
    m_pathTable.prepare(issues);
    if (m_hierarchy.traits().filesystem == 0)
        return true; // only Joliet was asked for, so nothing is missing here
    if (m_hierarchy.names().displayName(0) != m_hierarchy.tree().discName(0))
        issues.push_back({0, m_hierarchy.traits().tree, DRStorageReportItem::Kind::Renamed,
                          StorageReason::VolumeNameNotAllowed, false});
    return true;
}

NSError HierarchyWriter::obstacle() const
{
    if (!m_hierarchy.hasOversizedDirectory())
        return {};
    return NSError(
        NSOSStatusErrorDomain, dskFulErr,
        {{NSLocalizedDescriptionKey,
          QStringLiteral("A folder has too many files: their records would take more than 4 GiB.")},
         {NSLocalizedRecoverySuggestionErrorKey, QStringLiteral("Distribute the files over several folders.")}});
}

std::vector<NamedTree> HierarchyWriter::trees() const
{
    const HierarchyTraits &traits = m_hierarchy.traits();
    if (traits.filesystem == 0)
        return {};
    std::vector<NamedTree> result{{traits.tree, traits.filesystem, m_hierarchy.sharedNames()}};
    if (traits.hasRockRidge)
        result.push_back({DRDiscTree::RockRidge, traits.filesystem,
                          std::make_shared<DiscBaseNamesOfTree>(m_hierarchy.sharedTree())});
    return result;
}

void HierarchyWriter::place(ImageLayout &layout)
{
    const std::uint64_t tableBlocks = blocksForBytes(m_pathTable.size());
    m_facts.pathTableBytes = static_cast<std::uint32_t>(m_pathTable.size());
    const std::uint64_t image = m_hierarchy.traits().firstBlock;
    const auto place = [&](std::uint64_t blocks, Region region) {
        return image + layout.allocate(blocks, this, region);
    };
    m_facts.places.image = image;
    m_facts.littleEndianPathTable = static_cast<std::uint32_t>(place(tableBlocks, LittleEndianPathTable));
    m_facts.bigEndianPathTable = static_cast<std::uint32_t>(place(tableBlocks, BigEndianPathTable));
    m_facts.places.directories = place(m_hierarchy.directoryBlocks(), Directories);
}

void HierarchyWriter::didPlaceFiles(const ImageFacts &image)
{
    // The volume space begins with the disc (ECMA-119 6.1.2), also when something lies in front of the image.
    m_facts.imageBlocks = m_hierarchy.traits().firstBlock + image.blocks;
    m_facts.image = image;
}

void HierarchyWriter::fillDescriptor(std::uint32_t, std::span<std::uint8_t> descriptor) const
{
    storeVolumeDescriptor(descriptor, m_hierarchy, m_texts, m_facts);
}

void HierarchyWriter::fillRegion(std::uint32_t tag, std::uint32_t firstBlock, std::span<std::uint8_t> out) const
{
    const std::uint64_t firstByte = std::uint64_t{firstBlock} * logicalBlockSize;
    switch (static_cast<Region>(tag)) {
    case LittleEndianPathTable:
        m_pathTable.fill(PathTableOrder::LittleEndian, m_facts.places, firstByte, out);
        break;
    case BigEndianPathTable:
        m_pathTable.fill(PathTableOrder::BigEndian, m_facts.places, firstByte, out);
        break;
    case Directories:
        fillDirectories(firstBlock, out);
        fillContinuations(firstBlock, out);
        break;
    }
}

void HierarchyWriter::fillDirectories(std::uint32_t firstBlock, std::span<std::uint8_t> out) const
{
    const auto &folders = m_hierarchy.folders();
    const std::uint32_t endBlock = firstBlock + static_cast<std::uint32_t>(out.size() / logicalBlockSize);
    auto folder = std::upper_bound(
        folders.begin(), folders.end(), firstBlock,
        [](std::uint32_t block, const HierarchyFolder &candidate) { return block < candidate.firstBlock; });
    for (--folder; folder != folders.end() && folder->firstBlock < endBlock; ++folder) {
        const std::uint32_t from = std::max(folder->firstBlock, firstBlock);
        const std::uint32_t to = std::min(folder->firstBlock + folder->blockCount, endBlock);
        if (from >= to)
            continue; // only its continuation areas are asked for
        fillDirectory(
            *folder, from - folder->firstBlock,
            out.subspan(std::size_t{from - firstBlock} * logicalBlockSize, std::size_t{to - from} * logicalBlockSize));
    }
}

void HierarchyWriter::fillDirectory(const HierarchyFolder &folder, std::uint32_t firstBlock,
                                    std::span<std::uint8_t> out) const
{
    DirectoryRecords records(m_hierarchy, m_facts.places);
    const std::uint32_t restart = firstBlock / DirectoryHierarchy::blocksPerRestart;
    std::uint64_t used = 0;
    if (restart == 0) {
        records.begin(folder);
    } else {
        records.begin(folder, m_hierarchy.restarts()[folder.firstRestart + restart - 1]);
        used = std::uint64_t{restart} * DirectoryHierarchy::blocksPerRestart * logicalBlockSize;
    }
    const std::uint64_t begin = std::uint64_t{firstBlock} * logicalBlockSize;
    const std::uint64_t end = begin + out.size();
    while (records.next()) {
        const std::span<const std::uint8_t> record = records.record();
        if (used % logicalBlockSize + record.size() > logicalBlockSize)
            used = blocksForBytes(used) * logicalBlockSize;
        if (used >= end)
            return;
        if (used >= begin)
            std::copy(record.begin(), record.end(), out.begin() + static_cast<std::ptrdiff_t>(used - begin));
        used += record.size();
    }
}

void HierarchyWriter::fillContinuations(std::uint32_t firstBlock, std::span<std::uint8_t> out) const
{
    const auto &continuations = m_hierarchy.continuations();
    const std::uint64_t begin = std::uint64_t{firstBlock} * logicalBlockSize;
    const std::uint64_t end = begin + out.size();
    auto next = std::lower_bound(
        continuations.begin(), continuations.end(), firstBlock,
        [](const HierarchyContinuation &candidate, std::uint32_t block) { return candidate.block < block; });
    // One that is longer than a block may have begun before.
    if (next != continuations.begin())
        --next;
    DirectoryRecords records(m_hierarchy, m_facts.places);
    for (; next != continuations.end(); ++next) {
        const std::uint64_t start = std::uint64_t{next->block} * logicalBlockSize + next->offset;
        if (start >= end)
            return;
        const std::span<const std::uint8_t> bytes = records.continuationOf(*next);
        const std::uint64_t from = std::max(start, begin);
        const std::uint64_t to = std::min(start + bytes.size(), end);
        if (from < to)
            std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(from - start), to - from,
                        out.begin() + static_cast<std::ptrdiff_t>(from - begin));
    }
}

} // namespace Tessaron
