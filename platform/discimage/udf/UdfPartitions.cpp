#include "platform/discimage/udf/UdfPartitions.h"

#include "platform/discimage/source/DiscImageErrors.h"
#include "platform/discimage/udf/UdfDescriptors.h"
#include "platform/foundation/ByteOrder.h"

#include <algorithm>
#include <cstring>
#include <map>

namespace Tessaron
{

namespace
{

constexpr std::uint64_t recognitionStart = 32768; // ECMA-167 2/8.1: from here, one structure every 2048 bytes
constexpr std::uint64_t recognitionStep = 2048;
constexpr std::uint64_t maximumRecognition = 64;
constexpr std::uint64_t anchorBlock = 256;
constexpr std::size_t descriptorSize = 512;
constexpr std::uint64_t maximumSequence = 256; // blocks of a descriptor sequence; 16 is usual
constexpr std::uint32_t maximumPartitionMaps = 64;

using Block = std::vector<std::uint8_t>;

NSError damaged(std::uint64_t offset, const QString &reason)
{
    return discImageError(DiscImageErrorCode::Damaged, offset, reason);
}

bool hasRecognition(const DiscImageSource &source)
{
    for (std::uint64_t number = 0; number < maximumRecognition; ++number) {
        char identifier[6];
        const std::uint64_t offset = recognitionStart + number * recognitionStep;
        if (!source.contains(offset, recognitionStep) || source.read(offset, identifier, sizeof identifier))
            return false;
        if (std::memcmp(identifier + 1, "NSR02", 5) == 0 || std::memcmp(identifier + 1, "NSR03", 5) == 0)
            return true;
        const bool isKnown = std::memcmp(identifier + 1, "CD001", 5) == 0
            || std::memcmp(identifier + 1, "BEA01", 5) == 0 || std::memcmp(identifier + 1, "BOOT2", 5) == 0;
        if (!isKnown)
            return false;
    }
    return false;
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
                && !checkUdfDescriptor(bytes, UdfDescriptorKind::Anchor, std::uint32_t(number), offset)) {
                m_anchor = bytes;
                return true;
            }
        }
        return false;
    }

    [[nodiscard]] NSError read()
    {
        const NSError mainError = readSequence(&m_anchor[16]);
        if (!mainError)
            return {};
        m_descriptors.clear();
        m_structure = {};
        return readSequence(&m_anchor[24]) ? mainError : NSError();
    }

private:
    /// The sequence that an extent of the anchor names.
    [[nodiscard]] NSError readSequence(const std::uint8_t *extent)
    {
        const std::uint64_t count =
            std::min(loadLittleEndian<std::uint32_t>(extent) / m_blockSize + std::uint64_t(0), maximumSequence);
        const std::uint64_t start = loadLittleEndian<std::uint32_t>(extent + 4);
        for (std::uint64_t number = start; number < start + count; ++number) {
            Block bytes(descriptorSize);
            const std::uint64_t offset = number * m_blockSize;
            if (NSError error = m_source.read(offset, bytes.data(), bytes.size()))
                return error;
            const UdfDescriptorKind kind = udfDescriptorKind(bytes);
            if (kind == UdfDescriptorKind::Terminator || std::uint16_t(kind) == 0)
                break;
            if (NSError error = checkUdfDescriptor(bytes, kind, std::uint32_t(number), offset))
                return error;
            if (kind == UdfDescriptorKind::Partition)
                m_partitions[loadLittleEndian<std::uint16_t>(&bytes[22])] = bytes;
            else
                m_descriptors[std::uint16_t(kind)] = bytes;
        }
        m_sequenceOffset = start * m_blockSize;
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
        facts.name = udfFieldText(std::span(*logical).subspan(84, 128));
        facts.blockSize = loadLittleEndian<std::uint32_t>(&(*logical)[212]);
        if (facts.blockSize != m_blockSize)
            return damaged(m_sequenceOffset, QStringLiteral("The volume has blocks of another size than its anchor"));
        m_structure.fileSet = {loadLittleEndian<std::uint32_t>(&(*logical)[252]),
                               loadLittleEndian<std::uint16_t>(&(*logical)[256])};
        if (const Block *const primary = descriptor(UdfDescriptorKind::PrimaryVolume))
            facts.created = udfTime(&(*primary)[376]);
        readIntegrityTime(&(*logical)[432]);
        return readPartitionMaps(*logical);
    }

    /// When the volume was last closed (3/10.10). Without it the volume can be read as well.
    void readIntegrityTime(const std::uint8_t *extent)
    {
        const std::uint32_t block = loadLittleEndian<std::uint32_t>(extent + 4);
        const std::uint64_t offset = std::uint64_t(block) * m_blockSize;
        Block bytes(descriptorSize);
        if (loadLittleEndian<std::uint32_t>(extent) >= bytes.size() && m_source.contains(offset, bytes.size())
            && !m_source.read(offset, bytes.data(), bytes.size())
            && !checkUdfDescriptor(bytes, UdfDescriptorKind::Integrity, block, offset))
            m_structure.facts.modified = udfTime(&bytes[16]);
    }

    [[nodiscard]] NSError readPartitionMaps(const Block &logical)
    {
        constexpr std::size_t mapsStart = 440;
        const std::size_t length = loadLittleEndian<std::uint32_t>(&logical[264]);
        const std::uint32_t count = loadLittleEndian<std::uint32_t>(&logical[268]);
        if (length > logical.size() - mapsStart || count > maximumPartitionMaps)
            return damaged(m_sequenceOffset, QStringLiteral("The table of partitions does not fit"));
        std::size_t at = mapsStart;
        for (std::uint32_t number = 0; number < count; ++number) {
            constexpr std::size_t mapSize = 6; // of type 1 (3/10.7.2)
            if (at + mapSize > mapsStart + length)
                return damaged(m_sequenceOffset, QStringLiteral("The table of partitions is cut off"));
            if (logical[at] != 1 || logical[at + 1] != mapSize)
                return discImageError(
                    DiscImageErrorCode::Unsupported, m_sequenceOffset,
                    QStringLiteral("Virtual, sparable and metadata partitions of later UDF versions are not read"));
            if (NSError error = addPartition(loadLittleEndian<std::uint16_t>(&logical[at + 4])))
                return error;
            at += mapSize;
        }
        return {};
    }

    [[nodiscard]] NSError addPartition(std::uint16_t number)
    {
        const auto found = m_partitions.find(number);
        if (found == m_partitions.end())
            return damaged(m_sequenceOffset, QStringLiteral("Partition %1 is not described").arg(number));
        const std::uint64_t start = loadLittleEndian<std::uint32_t>(&found->second[188]);
        const std::uint64_t count = loadLittleEndian<std::uint32_t>(&found->second[192]);
        m_structure.partitions.push_back({start * m_blockSize, count * m_blockSize});
        m_structure.facts.blockCount = std::max(m_structure.facts.blockCount, start + count);
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

} // namespace

std::optional<std::uint64_t> UdfVolumeStructure::offsetOf(const UdfBlockAddress &address) const
{
    if (address.partition >= partitions.size())
        return std::nullopt;
    const Partition &partition = partitions[address.partition];
    const std::uint64_t within = std::uint64_t(address.block) * facts.blockSize;
    return within < partition.length ? std::optional(partition.offset + within) : std::nullopt;
}

NSError readUdfVolumeStructure(const DiscImageSource &source, bool *isThere, UdfVolumeStructure *structure)
{
    *isThere = hasRecognition(source);
    if (!*isThere)
        return {};
    // Discs have blocks of 2048 bytes; images made for other media have those of their sectors.
    for (const std::uint32_t blockSize : {2048u, 512u, 1024u, 4096u}) {
        StructureReader reader(source, blockSize, structure);
        if (reader.findAnchor())
            return reader.read();
    }
    return damaged(anchorBlock * 2048, QStringLiteral("There is no anchor to find the UDF volume by"));
}

} // namespace Tessaron
