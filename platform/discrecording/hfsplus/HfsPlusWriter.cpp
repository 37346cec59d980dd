#include "platform/discrecording/hfsplus/HfsPlusWriter.h"

#include "platform/discrecording/hfsplus/ApplePartitionMap.h"
#include "platform/discrecording/hfsplus/HfsPlusForkData.h"
#include "platform/discrecording/image/ImageLayout.h"

#include <array>

namespace Tessaron
{

namespace
{

/// The beginning of the image, where no other filesystem has anything.
constexpr std::uint64_t systemAreaBlocks = 16;
/// The most blocks at fixed places that the volume's last files may have to leave out.
constexpr std::uint64_t spareBlocks = 1024;

constexpr BTreeTraits catalogTraits{8192, HfsPlusCatalog::longestKey,
                                    BTreeTraits::HasBigKeys | BTreeTraits::HasVariableIndexKeys};
constexpr BTreeTraits extentsTraits{4096, HfsPlusBlockUse::longestKey, BTreeTraits::HasBigKeys};

/// Measures a tree that is too small to be worth asking for a cancel.
void measureSmall(BTree &tree)
{
    const std::function<void(double)> report;
    (void)tree.measure(PlanProgress({}, report));
}

HfsPlusSpecialFile specialFile(std::uint64_t firstBlock, const BTree &tree)
{
    return {firstBlock, blocksForBytes(tree.byteCount()), tree.nodeSize()};
}

} // namespace

HfsPlusWriter::HfsPlusWriter(std::shared_ptr<const ContentTree> tree, HfsPlusAccess access)
    : m_content(tree)
    , m_tree(std::move(tree))
    , m_forks(m_tree)
    , m_catalogRecords(m_tree, m_forks)
    , m_catalog(m_catalogRecords, catalogTraits)
    , m_extents(m_blockUse, extentsTraits)
    , m_access(access)
{
}

bool HfsPlusWriter::prepare(const PlanProgress &progress, StorageIssues &issues)
{
    return m_tree.prepare(progress, issues) && m_forks.gather(progress) && m_catalog.measure(progress);
}

std::vector<NamedTree> HfsPlusWriter::trees() const
{
    return {{DRDiscTree::HFSPlus, HfsPlusTree::filesystem, m_tree.sharedNames()}};
}

void HfsPlusWriter::placeFixed(ImageLayout &layout)
{
    layout.reserve(0, systemAreaBlocks, this, SystemArea);
    if (hasWrapper())
        layout.reserveTail(1, this, LastImageBlock);
}

void HfsPlusWriter::place(ImageLayout &layout)
{
    const std::uint64_t catalogBlocks = blocksForBytes(m_catalog.byteCount());
    m_facts.catalogFile = specialFile(layout.allocate(catalogBlocks, this, Catalog), m_catalog);
    HfsPlusForkPlaces places;
    places.linkTargets = layout.allocate(m_forks.linkTargets().blockCount(), this, LinkTargets);
    places.resourceForks = layout.allocate(m_forks.resourceForks().blockCount(), this, ResourceForks);
    m_catalogRecords.setPlaces(places);
}

std::vector<BlockRun> HfsPlusWriter::foreignRuns(const ImageLayout &layout) const
{
    std::vector<BlockRun> runs;
    for (const BlockRegion &region : layout.regions()) {
        if (region.owner != this || region.tag == SystemArea)
            runs.push_back({region.start, region.count});
    }
    for (NodeIndex node = 1; node < m_content->nodes.size(); ++node) {
        const ContentNode &content = m_content->nodes[node];
        if (content.ownsExtent(node) && content.hasExtent() && !m_tree.holdsContents(node))
            runs.push_back({content.extentStart(), blocksForBytes(content.fileSize())});
    }
    return runs;
}

void HfsPlusWriter::placeLast(ImageLayout &layout, std::uint64_t)
{
    const std::vector<BlockRun> foreign = foreignRuns(layout);
    const std::uint64_t known = layout.allocateExtent(0) + spareBlocks;
    m_blockUse.set(known, foreign, {});
    measureSmall(m_extents);
    m_extents.reserveNodes(m_extents.nodeCount());
    m_facts.extentsFile = specialFile(layout.allocate(blocksForBytes(m_extents.byteCount()), this, Extents), m_extents);

    std::uint64_t bitmap = 0;
    std::uint64_t unit = 1;
    for (std::uint64_t needed = 1; bitmap < needed;) {
        bitmap = needed;
        const std::uint64_t most = known + m_facts.extentsFile.blockCount + bitmap;
        if (hasWrapper())
            unit = hfsWrapperUnit(most + most / 30'000); // the filler is less than a unit, which is less than this
        needed = HfsPlusBlockUse::bitmapBlocks(most + unit);
    }
    m_facts.allocationFile = {layout.allocate(bitmap, this, Allocation), bitmap, logicalBlockSize};
    placeEnd(layout, unit);

    std::vector<BlockRun> unused = layout.unusedRuns();
    unused.insert(unused.end(), m_fillers.begin(), m_fillers.end());
    m_blockUse.set(m_facts.totalBlocks, foreign, std::move(unused));
    measureSmall(m_extents);
}

void HfsPlusWriter::placeEnd(ImageLayout &layout, std::uint64_t unit)
{
    // Another writer's fixed blocks may lie in the way of the filler or of the last block: then both move on.
    for (;;) {
        const std::uint64_t next = layout.allocateExtent(0);
        const std::uint64_t used = next + 1 - hfsPlusVolumeStart;
        const std::uint64_t filler = (unit - used % unit) % unit;
        if (filler > 0)
            m_fillers.push_back({layout.allocate(filler, this, Filler), filler});
        const std::uint64_t last = layout.allocateExtent(0);
        if ((last + 1 - hfsPlusVolumeStart) % unit != 0)
            continue;
        layout.allocate(1, this, LastVolumeBlock);
        m_wrapperUnit = unit;
        m_facts.totalBlocks = static_cast<std::uint32_t>(last + 1 - hfsPlusVolumeStart);
        return;
    }
}

void HfsPlusWriter::didPlaceFiles(const ImageFacts &image)
{
    m_imageBlocks = image.blocks;
    m_facts.contents = shortContentsRecord(image);
    m_facts.time = m_content->volumeTime;
    m_facts.fileCount = m_tree.fileCount();
    m_facts.folderCount = m_tree.folderCount();
    m_facts.freeBlocks = m_blockUse.unusedBlocks();
    m_facts.nextFreeBlock = m_blockUse.firstUnusedBlock();
    m_facts.nextId = m_tree.nextId();
    m_facts.hasSparedBlocks = m_blockUse.hasForeignBlocks();
    m_facts.volumeId = volumeId();
}

/// A number made of what the volume is, so that the same disc has the same one and others hardly ever.
std::uint64_t HfsPlusWriter::volumeId() const
{
    std::uint64_t hash = 0xCBF29CE484222325u; // FNV-1a
    const auto mix = [&hash](std::uint64_t value) {
        for (int shift = 0; shift < 64; shift += 8)
            hash = (hash ^ ((value >> shift) & 0xFFu)) * 0x100000001B3u;
    };
    HfsPlusName name;
    m_tree.names().nameOf(0, &name);
    for (const char16_t unit : name.view())
        mix(unit);
    mix(static_cast<std::uint64_t>(m_facts.time.seconds));
    mix(m_facts.fileCount);
    mix(m_facts.folderCount);
    mix(m_facts.totalBlocks);
    return hash;
}

void HfsPlusWriter::storeWrapper(std::uint8_t *to) const
{
    HfsPlusName name;
    m_tree.names().nameOf(0, &name);
    storeHfsWrapper(to, m_facts.time, name.view(), m_facts.totalBlocks, m_wrapperUnit);
}

void HfsPlusWriter::fillSystemArea(std::uint32_t firstBlock, std::span<std::uint8_t> out) const
{
    // All of it is made, since a part may be asked for; it is 32 KiB.
    std::array<std::uint8_t, systemAreaBlocks * logicalBlockSize> area{};
    const std::uint32_t unit = hasWrapper() ? logicalBlockSize : ApplePartitionMap::unitFor(m_imageBlocks);
    const ApplePartitionMap map{unit, m_imageBlocks, {hfsPlusVolumeStart, m_facts.totalBlocks}};
    map.store(std::span(area).first<ApplePartitionMap::size>());
    if (hasWrapper())
        storeWrapper(area.data() + hfsWrapperOffset);
    storeHfsPlusVolumeHeader(area.data() + hfsPlusVolumeStart * logicalBlockSize + hfsPlusVolumeHeaderOffset, m_facts);
    for (std::size_t at = 0, from = std::size_t{firstBlock} * logicalBlockSize; at < out.size(); ++at)
        out[at] |= area[from + at];
}

void HfsPlusWriter::fillRegion(std::uint32_t tag, std::uint32_t firstBlock, std::span<std::uint8_t> out) const
{
    const std::uint64_t firstByte = std::uint64_t{firstBlock} * logicalBlockSize;
    switch (static_cast<Region>(tag)) {
    case SystemArea:
        fillSystemArea(firstBlock, out);
        break;
    case Catalog:
        m_catalog.fill(firstByte, out);
        break;
    case LinkTargets:
        m_forks.fillLinkTargets(firstBlock, out);
        break;
    case ResourceForks:
        break; // read by produceRegion()
    case Extents:
        m_extents.fill(firstByte, out);
        break;
    case Allocation:
        m_blockUse.fillBitmap(firstBlock, out);
        break;
    case Filler:
        break;
    case LastVolumeBlock:
        storeHfsPlusVolumeHeader(out.data() + hfsPlusVolumeHeaderOffset, m_facts);
        break;
    case LastImageBlock:
        storeWrapper(out.data() + hfsWrapperOffset);
        break;
    }
}

NSError HfsPlusWriter::produceRegion(std::uint32_t tag, std::uint32_t firstBlock, std::span<std::uint8_t> out) const
{
    if (tag == ResourceForks)
        return m_forks.fillResourceForks(firstBlock, out);
    fillRegion(tag, firstBlock, out);
    return {};
}

} // namespace Tessaron
