#include "platform/discimage/udf/UdfPartitions.h"

#include "platform/discimage/source/DiscImageErrors.h"
#include "platform/discimage/udf/UdfDescriptors.h"
#include "platform/discimage/udf/UdfEntryReader.h"
#include "platform/discimage/udf/UdfRecognition.h"
#include "platform/discimage/udf/UdfRecordFields.h"
#include "platform/foundation/ByteOrder.h"

#include <algorithm>
#include <cstring>
#include <map>

namespace Tessaron
{

namespace
{

constexpr std::uint64_t anchorBlock = 256;
constexpr std::size_t descriptorSize = 512;
constexpr std::uint64_t maximumSequence = 256; // blocks of a descriptor sequence; 16 is usual
constexpr std::uint32_t maximumPartitionMaps = 64;

namespace PartitionMap = UdfPartitionMapField;
namespace LogicalVolume = UdfLogicalVolumeField;
namespace SparingTable = UdfSparingTableField;
constexpr std::uint32_t firstUnusedPacket = 0xFFFFFFF0; // of a sparing table: not replaced, or damaged itself

/// Sizes of blocks that are looked for. Discs have 2048 bytes; images made for other media have those of their sectors.
constexpr std::uint32_t blockSizes[] = {2048, 512, 1024, 4096, 8192, 16384, 32768};

using Block = std::vector<std::uint8_t>;

NSError damaged(std::uint64_t offset, const QString &reason)
{
    return discImageError(DiscImageErrorCode::Damaged, offset, reason);
}

/// Reads the structure when the size of blocks is known.
class StructureReader
{
public:
    StructureReader(const DiscImageSource &source, std::uint32_t blockSize, UdfVolumeStructure *structure)
        : m_source(source)
        , m_blockSize(blockSize)
        , m_structure(*structure)
    {
    }

    /// Finds an anchor (3/8.4.2.1): at block 256, at the last block, or 256 before it.
    [[nodiscard]] bool findAnchor()
    {
        const std::uint64_t count = m_source.length() / m_blockSize;
        for (const std::uint64_t number : {anchorBlock, count - 1, count - 1 - anchorBlock}) {
            if (number >= count)
                continue;
            Block bytes(descriptorSize);
            const std::uint64_t offset = number * m_blockSize;
            if (!m_source.read(offset, bytes.data(), bytes.size())
                && !checkUdfDescriptor(bytes, UdfDescriptorKind::Anchor,
                                       std::uint32_t(m_source.blockOnDisc(offset, m_blockSize)), offset)) {
                m_anchor = bytes;
                return true;
            }
        }
        return false;
    }

    [[nodiscard]] NSError read()
    {
        const NSError mainError = readSequence(&m_anchor[UdfAnchorField::mainSequence]);
        if (!mainError)
            return {};
        m_descriptors.clear();
        m_structure = {};
        return readSequence(&m_anchor[UdfAnchorField::reserveSequence]) ? mainError : NSError();
    }

private:
    /// The sequence that an extent of the anchor names.
    [[nodiscard]] NSError readSequence(const std::uint8_t *extent)
    {
        const std::uint64_t count =
            std::min<std::uint64_t>(loadLittleEndian<std::uint32_t>(extent) / m_blockSize, maximumSequence);
        const std::uint64_t start = loadLittleEndian<std::uint32_t>(extent + UdfExtentField::block);
        for (std::uint64_t number = start; number < start + count; ++number) {
            Block bytes(descriptorSize);
            const std::uint64_t offset = m_source.offsetOnDisc(number * m_blockSize);
            if (NSError error = m_source.read(offset, bytes.data(), bytes.size()))
                return error;
            const UdfDescriptorKind kind = udfDescriptorKind(bytes);
            if (kind == UdfDescriptorKind::Terminator || std::uint16_t(kind) == 0)
                break;
            if (NSError error = checkUdfDescriptor(bytes, kind, std::uint32_t(number), offset))
                return error;
            if (kind == UdfDescriptorKind::Partition)
                m_partitions[loadLittleEndian<std::uint16_t>(&bytes[UdfPartitionField::number])] = bytes;
            else
                m_descriptors[std::uint16_t(kind)] = bytes;
        }
        m_sequenceOffset = m_source.offsetOnDisc(start * m_blockSize);
        return interpret();
    }

    [[nodiscard]] const Block *descriptor(UdfDescriptorKind kind) const
    {
        const auto found = m_descriptors.find(std::uint16_t(kind));
        return found == m_descriptors.end() ? nullptr : &found->second;
    }

    [[nodiscard]] NSError interpret()
    {
        const Block *const logical = descriptor(UdfDescriptorKind::LogicalVolume);
        if (logical == nullptr)
            return damaged(m_sequenceOffset, QStringLiteral("There is no descriptor of a logical volume"));
        DiscVolumeFacts &facts = m_structure.facts;
        facts.kind = VolumeKind::UDF;
        facts.firstYear = 1;
        facts.lastYear = 9999;
        facts.name = udfFieldText(std::span(*logical).subspan(LogicalVolume::name, LogicalVolume::nameSize));
        facts.blockSize = loadLittleEndian<std::uint32_t>(&(*logical)[LogicalVolume::blockSize]);
        if (facts.blockSize != m_blockSize)
            return damaged(m_sequenceOffset, QStringLiteral("The volume has blocks of another size than its anchor"));
        m_structure.fileSet = {loadLittleEndian<std::uint32_t>(&(*logical)[LogicalVolume::fileSetBlock]),
                               loadLittleEndian<std::uint16_t>(&(*logical)[LogicalVolume::fileSetPartition])};
        if (const Block *const primary = descriptor(UdfDescriptorKind::PrimaryVolume))
            facts.created = udfTime(&(*primary)[UdfPrimaryField::recordingTime]);
        m_structure.integrity = {
            loadLittleEndian<std::uint32_t>(&(*logical)[LogicalVolume::integrity + UdfExtentField::length]),
            loadLittleEndian<std::uint32_t>(&(*logical)[LogicalVolume::integrity + UdfExtentField::block])};
        m_structure.logicalVolumeOffset = m_sequenceOffset;
        std::copy_n(logical->begin() + LogicalVolume::implementationUse, m_structure.implementationUse.size(),
                    m_structure.implementationUse.begin());
        readIntegrityTime();
        return readPartitionMaps(*logical);
    }

    /// When the volume was last closed (3/10.10). Without it the volume can be read as well.
    void readIntegrityTime()
    {
        const UdfVolumeExtent &extent = m_structure.integrity;
        const std::uint64_t offset = m_source.offsetOnDisc(std::uint64_t(extent.block) * m_blockSize);
        Block bytes(descriptorSize);
        if (extent.length >= bytes.size() && m_source.contains(offset, bytes.size())
            && !m_source.read(offset, bytes.data(), bytes.size())
            && !checkUdfDescriptor(bytes, UdfDescriptorKind::Integrity, extent.block, offset))
            m_structure.facts.modified = udfTime(&bytes[UdfIntegrityField::recordingTime]);
    }

    [[nodiscard]] NSError readPartitionMaps(const Block &logical)
    {
        const std::size_t length = loadLittleEndian<std::uint32_t>(&logical[LogicalVolume::mapTableLength]);
        const std::uint32_t count = loadLittleEndian<std::uint32_t>(&logical[LogicalVolume::mapCount]);
        if (length > logical.size() - LogicalVolume::maps || count > maximumPartitionMaps)
            return damaged(m_sequenceOffset, QStringLiteral("The table of partitions does not fit"));
        std::span<const std::uint8_t> maps = std::span(logical).subspan(LogicalVolume::maps, length);
        for (std::uint32_t number = 0; number < count; ++number) {
            const std::size_t size = maps.size() < PartitionMap::plainSize ? 0 : maps[PartitionMap::length];
            const bool isPlain = size == PartitionMap::plainSize && maps[PartitionMap::type] == 1;
            const bool isOther = size == PartitionMap::otherSize && maps[PartitionMap::type] == 2;
            if (size > maps.size() || (!isPlain && !isOther))
                return damaged(m_sequenceOffset, QStringLiteral("The table of partitions makes no sense"));
            const std::span<const std::uint8_t> map = maps.first(size);
            if (NSError error = isPlain ? addPartition(loadLittleEndian<std::uint16_t>(&map[PartitionMap::plainNumber]))
                                        : addOtherPartition(map))
                return error;
            maps = maps.subspan(size);
        }
        // Metadata partitions lie in others, which may come behind them in the table.
        for (std::size_t index = 0; index < m_structure.partitions.size(); ++index) {
            if (NSError error = placeMetadata(m_structure.partitions[index]))
                return error;
        }
        return {};
    }

    [[nodiscard]] NSError addPartition(std::uint16_t number)
    {
        const auto found = m_partitions.find(number);
        if (found == m_partitions.end())
            return damaged(m_sequenceOffset, QStringLiteral("Partition %1 is not described").arg(number));
        const std::uint64_t start = loadLittleEndian<std::uint32_t>(&found->second[UdfPartitionField::start]);
        const std::uint64_t count = loadLittleEndian<std::uint32_t>(&found->second[UdfPartitionField::length]);
        UdfVolumeStructure::Partition partition;
        partition.length = count * m_blockSize;
        partition.extents.push_back({m_source.offsetOnDisc(start * m_blockSize), partition.length, false});
        partition.number = number;
        m_structure.partitions.push_back(std::move(partition));
        m_structure.facts.blockCount = std::max(m_structure.facts.blockCount, start + count);
        return {};
    }

    [[nodiscard]] NSError addOtherPartition(std::span<const std::uint8_t> map)
    {
        const QByteArray identifier(reinterpret_cast<const char *>(&map[PartitionMap::identifier]),
                                    PartitionMap::identifierSize);
        const auto number = loadLittleEndian<std::uint16_t>(&map[PartitionMap::otherNumber]);
        if (identifier.startsWith("*UDF Virtual Partition"))
            return discImageError(DiscImageErrorCode::Unsupported, m_sequenceOffset,
                                  QStringLiteral("Virtual partitions of UDF, of discs that are written bit by bit, "
                                                 "are not supported"));
        const bool isSparable = identifier.startsWith("*UDF Sparable Partition");
        if (!isSparable && !identifier.startsWith("*UDF Metadata Partition"))
            return discImageError(DiscImageErrorCode::Unsupported, m_sequenceOffset,
                                  QStringLiteral("A partition of UDF is of a kind that is not supported"));
        if (NSError error = addPartition(number))
            return error;
        if (isSparable)
            return checkSparing(map);
        m_structure.partitions.back().metadataFile = loadLittleEndian<std::uint32_t>(&map[PartitionMap::metadataFile]);
        m_structure.partitions.back().metadataMirror =
            loadLittleEndian<std::uint32_t>(&map[PartitionMap::metadataMirror]);
        return {};
    }

    /// A sparable partition is a plain one as long as no packet had to be replaced (UDF 2.2.11).
    [[nodiscard]] NSError checkSparing(std::span<const std::uint8_t> map) const
    {
        const std::size_t count = std::min<std::size_t>(map[PartitionMap::sparingTableCount], 4);
        for (std::size_t index = 0; index < count; ++index) {
            const auto block =
                loadLittleEndian<std::uint32_t>(&map[PartitionMap::sparingTables + sizeof(std::uint32_t) * index]);
            Block bytes(m_blockSize);
            const std::uint64_t offset = m_source.offsetOnDisc(std::uint64_t(block) * m_blockSize);
            if (m_source.read(offset, bytes.data(), bytes.size())
                || !QByteArrayView(reinterpret_cast<const char *>(&bytes[SparingTable::identifier]), 18)
                        .startsWith("*UDF Sparing Table"))
                continue;
            const std::size_t entries = loadLittleEndian<std::uint16_t>(&bytes[SparingTable::entryCount]);
            for (std::size_t entry = 0; entry < entries; ++entry) {
                const std::size_t at = SparingTable::entries + entry * SparingTable::entrySize;
                if (at + SparingTable::entrySize > bytes.size()
                    || loadLittleEndian<std::uint32_t>(&bytes[at]) < firstUnusedPacket)
                    return discImageError(DiscImageErrorCode::Unsupported, offset,
                                          QStringLiteral("Sparable partitions of UDF with replaced packets are not "
                                                         "supported"));
            }
            return {};
        }
        return damaged(m_sequenceOffset, QStringLiteral("The sparing table of a partition is missing"));
    }

    /// A metadata partition is a file of the partition that it names; its copy serves where the file is damaged.
    [[nodiscard]] NSError placeMetadata(UdfVolumeStructure::Partition &partition) const
    {
        if (!partition.metadataFile)
            return {};
        UdfVolumeStructure outer;
        outer.facts = m_structure.facts;
        outer.partitions.push_back(partition);
        VolumeObject file;
        NSError error = readUdfEntry(m_source, outer, {*partition.metadataFile, 0}, &file);
        if (error && readUdfEntry(m_source, outer, {*partition.metadataMirror, 0}, &file))
            return error;
        constexpr std::size_t mostPieces = 4096; // it is made in one, and grows by big ones
        if (file.extents.size() > mostPieces)
            return discImageError(DiscImageErrorCode::Unsupported, file.recordOffset,
                                  QStringLiteral("A metadata partition in so many pieces is not supported"));
        partition.extents = file.extents;
        partition.length = file.size;
        return {};
    }

    const DiscImageSource &m_source;
    const std::uint32_t m_blockSize;
    UdfVolumeStructure &m_structure;
    Block m_anchor;
    std::map<std::uint16_t, Block> m_descriptors;
    std::map<std::uint16_t, Block> m_partitions; ///< their descriptors, by number
    std::uint64_t m_sequenceOffset = 0;
};

/// A volume that an anchor leads to.
struct AnchoredVolume {
    std::uint32_t blockSize = 0;
    UdfVolumeStructure structure;
    NSError error; ///< it cannot be read

    [[nodiscard]] bool isSound() const
    {
        return !error
            || (error.domain() == DiscImageErrorDomain && error.code() == qint64(DiscImageErrorCode::Unsupported));
    }
    [[nodiscard]] bool isNewerThan(const AnchoredVolume &other) const
    {
        if (isSound() != other.isSound())
            return isSound();
        const std::optional<VolumeTime> &time = structure.facts.created;
        const std::optional<VolumeTime> &otherTime = other.structure.facts.created;
        return time && (!otherTime || time->seconds > otherTime->seconds);
    }
};

std::optional<AnchoredVolume> newestVolume(const DiscImageSource &source)
{
    std::optional<AnchoredVolume> newest;
    for (const std::uint32_t blockSize : blockSizes) {
        AnchoredVolume volume{blockSize, {}, {}};
        StructureReader reader(source, blockSize, &volume.structure);
        if (!reader.findAnchor())
            continue;
        volume.error = reader.read();
        if (!newest || volume.isNewerThan(*newest))
            newest = std::move(volume);
    }
    return newest;
}

} // namespace

std::optional<std::uint64_t> UdfVolumeStructure::offsetOf(const UdfBlockAddress &address) const
{
    if (address.partition >= partitions.size())
        return std::nullopt;
    std::uint64_t within = std::uint64_t(address.block) * facts.blockSize;
    for (const VolumeExtent &extent : partitions[address.partition].extents) {
        if (within < extent.length)
            return extent.isHole ? std::nullopt : std::optional(extent.offset + within);
        within -= extent.length;
    }
    return std::nullopt;
}

bool UdfVolumeStructure::appendRuns(const UdfBlockAddress &address, std::uint64_t length,
                                    std::vector<VolumeExtent> *extents) const
{
    const std::vector<VolumeExtent> &runs = partitions[address.partition].extents;
    std::uint64_t within = std::uint64_t(address.block) * facts.blockSize;
    for (std::size_t index = 0; index < runs.size() && length > 0; ++index) {
        const VolumeExtent &run = runs[index];
        if (within >= run.length) {
            within -= run.length;
            continue;
        }
        // What leaves the last run is told when it is read, or by its length.
        const bool isLast = index + 1 == runs.size();
        const std::uint64_t part = isLast ? length : std::min(length, run.length - within);
        if (!appendVolumeExtent({run.offset + within, part, run.isHole}, extents))
            return false;
        length -= part;
        within = 0;
    }
    return true;
}

std::optional<std::uint32_t> udfBlockSizeOf(const DiscImageSource &source)
{
    const std::optional<AnchoredVolume> volume = newestVolume(source);
    return volume ? std::optional(volume->blockSize) : std::nullopt;
}

NSError readUdfVolumeStructure(const DiscImageSource &source, bool *isThere, UdfVolumeStructure *structure)
{
    *isThere = readUdfRecognition(source).isUdf();
    if (!*isThere)
        return {};
    std::optional<AnchoredVolume> volume = newestVolume(source);
    if (volume) {
        *structure = std::move(volume->structure);
        return volume->error;
    }
    return damaged(anchorBlock * 2048, QStringLiteral("There is no anchor to find the UDF volume by"));
}

} // namespace Tessaron
