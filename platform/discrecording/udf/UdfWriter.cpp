#include "platform/discrecording/udf/UdfWriter.h"

#include "platform/discrecording/image/ImageLayout.h"
#include "platform/discrecording/names/UdfNameRules.h"

#include <string_view>

namespace Tessaron
{

namespace
{

/// Eight hexadecimal digits, upper case.
std::u16string digitsOf(std::uint32_t value)
{
    std::u16string digits;
    for (int shift = 28; shift >= 0; shift -= 4)
        digits += u"0123456789ABCDEF"[(value >> shift) & 15u];
    return digits;
}

} // namespace

UdfWriter::UdfWriter(std::shared_ptr<const ContentTree> tree, const VolumeTexts &texts, std::uint32_t firstBlock)
    : m_texts(texts)
    , m_hierarchy(std::move(tree))
{
    m_facts.firstBlock = firstBlock;
}

bool UdfWriter::prepare(const PlanProgress &progress, StorageIssues &issues)
{
    if (!m_hierarchy.prepare(progress, issues))
        return false;
    m_facts.volumeName = m_hierarchy.names().volumeName();
    m_facts.time = m_hierarchy.tree().volumeTime;
    m_facts.nextUniqueId = UdfFileEntry::firstUniqueId + m_hierarchy.icbCount();
    m_facts.fileCount = m_hierarchy.fileCount();
    m_facts.folderCount = m_hierarchy.folderCount();
    m_facts.volumeSet = volumeSetPrefix();
    m_facts.volumeSet += m_texts.volumeSet.empty() ? m_facts.volumeName : udfVolumeName(m_texts.volumeSet);
    if (m_hierarchy.names().displayName(0) != m_hierarchy.tree().discName(0))
        issues.push_back(
            {0, DRDiscTree::UDF, DRStorageReportItem::Kind::Renamed, StorageReason::VolumeNameNotAllowed, false});
    return true;
}

std::u16string UdfWriter::volumeSetPrefix() const
{
    // Readers take these digits for the identity of the volume. The number depends only on what is reproducible.
    constexpr std::uint64_t multiplier = 0x9E3779B97F4A7C15u;
    const ContentTree &tree = m_hierarchy.tree();
    std::uint64_t number = tree.volumeTime.nanoseconds + multiplier;
    for (NodeIndex node = 0; node < tree.nodes.size(); ++node) {
        const ContentNode &content = tree.nodes[node];
        number = (number ^ content.fingerprint() ^ (std::uint64_t{content.nameLength} << 56)) * multiplier;
        number ^= number >> 29;
    }
    return digitsOf(static_cast<std::uint32_t>(tree.volumeTime.seconds)) + digitsOf(static_cast<std::uint32_t>(number));
}

std::vector<NamedTree> UdfWriter::trees() const
{
    return {{DRDiscTree::UDF, DRFilesystemInclusionMaskUDF, m_hierarchy.sharedNames()}};
}

void UdfWriter::fillDescriptor(std::uint32_t index, std::span<std::uint8_t> descriptor) const
{
    storeUdfRecognition(descriptor, index);
}

void UdfWriter::placeFixed(ImageLayout &layout)
{
    // All up to the partition, so that no file comes to lie before it; the volume descriptors are among these blocks.
    layout.reserve(UdfVolumeLayout::firstReserved, UdfVolumeLayout::partition - UdfVolumeLayout::firstReserved, this,
                   VolumeStructures);
    layout.reserveTail(UdfVolumeLayout::tailBlocks, this, Tail);
}

void UdfWriter::place(ImageLayout &layout)
{
    const auto allocate = [&](std::uint64_t count, Region region) {
        return static_cast<std::uint32_t>(layout.allocate(count, this, region));
    };
    m_places.partition = UdfVolumeLayout::partition;
    m_places.fileSet = allocate(udfFileSetBlocks, FileSet);
    m_places.icbs = allocate(m_hierarchy.icbCount(), FileEntries);
    m_places.allocationExtents = allocate(m_hierarchy.allocationExtentCount(), AllocationExtents);
    m_places.directories = allocate(m_hierarchy.directoryBlocks(), Directories);
    m_facts.fileSet = m_places.inPartition(m_places.fileSet);
    m_facts.rootIcb = m_places.icb(0);
}

void UdfWriter::didPlaceFiles(const ImageFacts &image)
{
    m_facts.imageBlocks = image.blocks;
    m_facts.image = image;
}

void UdfWriter::fillRegion(std::uint32_t tag, std::uint32_t firstBlock, std::span<std::uint8_t> out) const
{
    const auto region = static_cast<Region>(tag);
    if (region == Directories) {
        m_directories.fill(firstBlock, out);
        return;
    }
    for (std::uint32_t block = 0; std::size_t{block} * logicalBlockSize < out.size(); ++block)
        fillBlock(region, firstBlock + block, out.subspan(std::size_t{block} * logicalBlockSize, logicalBlockSize));
}

void UdfWriter::fillBlock(Region region, std::uint32_t block, std::span<std::uint8_t> out) const
{
    switch (region) {
    case VolumeStructures:
        storeUdfVolumeBlock(out, UdfVolumeLayout::firstReserved + block, m_facts);
        break;
    case Tail:
        storeUdfTailBlock(out, block, m_facts);
        break;
    case FileSet:
        storeUdfFileSetBlock(out, block, m_facts);
        break;
    case FileEntries:
        m_entries.store(out, block);
        break;
    case AllocationExtents:
        m_entries.storeAllocationExtent(out, block);
        break;
    case Directories:
        break; // whole runs of blocks are filled at once
    }
}

} // namespace Tessaron
