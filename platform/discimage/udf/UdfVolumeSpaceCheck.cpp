#include "platform/discimage/udf/UdfVolumeSpaceCheck.h"

#include "platform/discimage/udf/UdfDescriptors.h"
#include "platform/discimage/udf/UdfPartitions.h"
#include "platform/discimage/udf/UdfRecognition.h"
#include "platform/discimage/udf/UdfRecordFields.h"
#include "platform/foundation/ByteOrder.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace Tessaron
{

namespace
{

constexpr std::size_t descriptorSize = 512;
constexpr std::uint64_t anchorBlock = 256;
constexpr std::uint64_t maximumSequence = 256; // blocks

namespace LogicalVolume = UdfLogicalVolumeField;
namespace Partition = UdfPartitionField;
namespace Primary = UdfPrimaryField;
namespace Unallocated = UdfUnallocatedField;

using Descriptor = std::array<std::uint8_t, descriptorSize>;

struct Anchor {
    std::uint64_t offset = 0;
    UdfVolumeExtent mainSequence;
    UdfVolumeExtent reserveSequence;
};

QString anchorName()
{
    return QStringLiteral("anchor");
}
QString sequenceName()
{
    return QStringLiteral("volume descriptor sequence");
}

UdfVolumeExtent extentAt(const Descriptor &bytes, std::size_t at)
{
    return {loadLittleEndian<std::uint32_t>(&bytes[at + UdfExtentField::length]),
            loadLittleEndian<std::uint32_t>(&bytes[at + UdfExtentField::block])};
}

class SpaceCheck
{
public:
    SpaceCheck(const DiscImageSource &source, const VolumeProblems &problems)
        : m_source(source)
        , m_problems(problems)
    {
    }

    std::optional<UdfVolumeCounts> run()
    {
        const UdfRecognition recognition = readUdfRecognition(m_source);
        findAnchors();
        if (!checkRecognition(recognition) && m_anchors.empty())
            return std::nullopt;
        if (m_anchors.empty()) {
            m_problems.remains(recognition.identifier.value_or(recognition.begin.value_or(0)), anchorName(),
                               QStringLiteral("none is whole, so the volume cannot be found"));
            return UdfVolumeCounts();
        }
        m_counts.blockSize = m_blockSize;
        checkSequences();
        checkAnchors();
        return std::move(m_counts);
    }

private:
    /// Whether there is anything of the sequence.
    [[nodiscard]] bool checkRecognition(const UdfRecognition &recognition) const
    {
        const QString structure = QStringLiteral("volume recognition sequence");
        if (!recognition.begin && !recognition.identifier && !recognition.end) {
            if (!m_anchors.empty())
                m_problems.remains(m_anchors.front().offset, structure,
                                   QStringLiteral("there are anchors of UDF, but no sequence that announces it"));
            return false;
        }
        const std::uint64_t place =
            recognition.begin.value_or(recognition.identifier.value_or(recognition.end.value_or(0)));
        if (!recognition.identifier)
            m_problems.remains(place, structure, QStringLiteral("NSR02 or NSR03 is missing in it"));
        if (!recognition.begin)
            m_problems.remains(place, structure, QStringLiteral("BEA01, its begin, is missing"));
        if (!recognition.end)
            m_problems.remains(place, structure, QStringLiteral("TEA01, its end, is missing"));
        for (const auto &offset : {recognition.begin, recognition.identifier, recognition.end}) {
            std::array<std::uint8_t, 7> head{};
            if (offset && !m_source.read(*offset, head.data(), head.size())
                && (head[UdfRecognitionField::type] != 0 || head[UdfRecognitionField::version] != 1))
                m_problems.damaged(*offset, structure, QStringLiteral("type or version of a descriptor is unknown"));
        }
        const bool isInOrder = recognition.begin && recognition.identifier && recognition.end
            && *recognition.begin < *recognition.identifier && *recognition.identifier < *recognition.end;
        if (recognition.begin && recognition.identifier && recognition.end && !isInOrder)
            m_problems.damaged(place, structure, QStringLiteral("its descriptors are out of order"));
        return true;
    }

    /// Where an anchor may be: at block 256, at the last block, and 256 before it (3/8.4.2.1).
    [[nodiscard]] std::vector<std::uint64_t> anchorPlaces(std::uint32_t blockSize) const
    {
        const std::uint64_t count = m_source.length() / blockSize;
        std::vector<std::uint64_t> places;
        for (const std::uint64_t number : {anchorBlock, count - 1, count - 1 - anchorBlock}) {
            if (number < count && std::find(places.begin(), places.end(), number) == places.end())
                places.push_back(number);
        }
        return places;
    }

    void findAnchors()
    {
        const std::optional<std::uint32_t> blockSize = udfBlockSizeOf(m_source);
        if (!blockSize)
            return;
        m_blockSize = *blockSize;
        for (const std::uint64_t number : anchorPlaces(m_blockSize)) {
            Descriptor bytes;
            const std::uint64_t offset = number * m_blockSize;
            if (!readDescriptor(offset, &bytes)
                || checkUdfDescriptor(bytes, UdfDescriptorKind::Anchor,
                                      std::uint32_t(m_source.blockOnDisc(offset, m_blockSize)), offset))
                continue;
            m_anchors.push_back({offset, extentAt(bytes, 16), extentAt(bytes, 24)});
            m_anchorBytes = bytes;
        }
    }

    [[nodiscard]] bool readDescriptor(std::uint64_t offset, Descriptor *bytes) const
    {
        return m_source.contains(offset, bytes->size()) && !m_source.read(offset, bytes->data(), bytes->size());
    }

    void checkAnchors() const
    {
        const auto isThere = [this](std::uint64_t offset) {
            return std::any_of(m_anchors.begin(), m_anchors.end(),
                               [offset](const Anchor &anchor) { return anchor.offset == offset; });
        };
        bool hasOneAtTheEnd = false;
        for (const std::uint64_t number : anchorPlaces(m_blockSize)) {
            const std::uint64_t offset = number * m_blockSize;
            if (isThere(offset)) {
                hasOneAtTheEnd = hasOneAtTheEnd || number != anchorBlock;
                continue;
            }
            if (number == anchorBlock)
                m_problems.damaged(offset, anchorName(),
                                   QStringLiteral("it is missing or damaged, another one is used"));
            else if (resemblesAnchor(offset)) {
                hasOneAtTheEnd = true;
                m_problems.unnoticed(offset, anchorName(), QStringLiteral("it is damaged, another one is used"));
            }
        }
        // A file that is longer than its volume has the anchor where the volume ends.
        // One that is written bit by bit has none before it is closed.
        if (!hasOneAtTheEnd && !m_isVirtual && !endsBeforeTheImage())
            m_problems.damaged(
                m_source.length(), anchorName(),
                QStringLiteral("the one at the end of the volume is missing: the image was cut, or it is "
                               "damaged there"));
        for (const Anchor &anchor : m_anchors) {
            if (!(anchor.mainSequence == m_anchors.front().mainSequence)
                || !(anchor.reserveSequence == m_anchors.front().reserveSequence))
                m_problems.damaged(anchor.offset, anchorName(),
                                   QStringLiteral("it leads elsewhere than the first one"));
        }
    }

    /// Most of its bytes are those of a sound anchor.
    [[nodiscard]] bool resemblesAnchor(std::uint64_t offset) const
    {
        constexpr std::size_t compared = 32;
        Descriptor bytes;
        if (!readDescriptor(offset, &bytes))
            return false;
        std::size_t same = 0;
        for (std::size_t at = 0; at < compared; ++at)
            same += bytes[at] != 0 && bytes[at] == m_anchorBytes[at] ? 1 : 0;
        constexpr std::size_t enough = 4; // place, checksums and one byte more may differ
        return same >= enough;
    }

    [[nodiscard]] bool endsBeforeTheImage() const
    {
        const std::uint64_t count = m_source.length() / m_blockSize;
        constexpr std::uint64_t longestPadding = 32768; // blocks
        for (std::uint64_t number = count; number-- > anchorBlock + 1 && count - number <= longestPadding;) {
            Descriptor bytes;
            if (!readDescriptor(number * m_blockSize, &bytes))
                return false;
            if (udfDescriptorKind(bytes) == UdfDescriptorKind::Anchor
                && !checkUdfDescriptor(bytes, UdfDescriptorKind::Anchor,
                                       std::uint32_t(m_source.blockOnDisc(number * m_blockSize, m_blockSize)),
                                       number * m_blockSize))
                return true;
        }
        return false;
    }

    struct Sequence {
        std::vector<Descriptor> descriptors; ///< the end included
        bool isWhole = true;
    };

    Sequence readSequence(const UdfVolumeExtent &extent) const
    {
        Sequence sequence;
        const std::uint64_t count = std::min<std::uint64_t>(extent.length / m_blockSize, maximumSequence);
        for (std::uint64_t number = extent.block; number < extent.block + count; ++number) {
            Descriptor bytes;
            const std::uint64_t offset = m_source.offsetOnDisc(number * m_blockSize);
            if (!readDescriptor(offset, &bytes)) {
                m_problems.truncated(offset, sequenceName(), QStringLiteral("it lies beyond the end of the image"));
                sequence.isWhole = false;
                break;
            }
            const UdfDescriptorKind kind = udfDescriptorKind(bytes);
            if (std::all_of(bytes.begin(), bytes.end(), [](std::uint8_t byte) { return byte == 0; }))
                break; // unrecorded blocks end it, too
            if (const NSError error = checkUdfDescriptor(bytes, kind, std::uint32_t(number), offset)) {
                m_problems.error(sequenceName(), error);
                sequence.isWhole = false;
                continue;
            }
            if (!isOfVolume(kind)) {
                m_problems.damaged(offset, sequenceName(),
                                   QStringLiteral("a descriptor is of a kind that does not belong there"));
                sequence.isWhole = false;
            }
            checkCoverage(kind, bytes, offset);
            sequence.descriptors.push_back(bytes);
            if (kind == UdfDescriptorKind::Terminator)
                break;
        }
        return sequence;
    }

    static bool isOfVolume(UdfDescriptorKind kind)
    {
        return std::uint16_t(kind) >= std::uint16_t(UdfDescriptorKind::PrimaryVolume)
            && std::uint16_t(kind) <= std::uint16_t(UdfDescriptorKind::Terminator);
    }

    /// The checksum has to cover all that the descriptor says.
    void checkCoverage(UdfDescriptorKind kind, const Descriptor &bytes, std::uint64_t offset) const
    {
        std::size_t used = descriptorSize;
        if (kind == UdfDescriptorKind::LogicalVolume)
            used = LogicalVolume::maps + loadLittleEndian<std::uint32_t>(&bytes[LogicalVolume::mapTableLength]);
        else if (kind == UdfDescriptorKind::UnallocatedSpace)
            used = Unallocated::extents
                + Unallocated::extentSize
                    * std::size_t(loadLittleEndian<std::uint32_t>(&bytes[Unallocated::extentCount]));
        else if (kind == UdfDescriptorKind::Terminator)
            return;
        const std::size_t covered = UdfTagField::size + loadLittleEndian<std::uint16_t>(&bytes[UdfTagField::covered]);
        if (covered < std::min(used, descriptorSize))
            m_problems.unnoticed(offset + UdfTagField::covered, sequenceName(),
                                 QStringLiteral("the checksum of a descriptor does not cover all of it"));
    }

    void checkSequences()
    {
        const Anchor &anchor = m_anchors.front();
        const Sequence mainSequence = readSequence(anchor.mainSequence);
        const Sequence reserve = readSequence(anchor.reserveSequence);
        m_isVirtual = hasVirtualPartition(mainSequence) || hasVirtualPartition(reserve);
        takePartitions(mainSequence.isWhole ? mainSequence : reserve);
        if (!mainSequence.isWhole || !reserve.isWhole)
            return; // told above
        const auto isSame = [](Descriptor one, Descriptor other) {
            // One well-known writer makes up the name of the volume's set anew for each copy.
            if (udfDescriptorKind(one) == UdfDescriptorKind::PrimaryVolume) {
                std::fill_n(one.begin() + Primary::volumeSet, Primary::volumeSetSize, std::uint8_t(0));
                std::fill_n(other.begin() + Primary::volumeSet, Primary::volumeSetSize, std::uint8_t(0));
            }
            return udfDescriptorKind(one) == udfDescriptorKind(other)
                && std::equal(one.begin() + UdfTagField::size, one.end(), other.begin() + UdfTagField::size);
        };
        if (!std::equal(mainSequence.descriptors.begin(), mainSequence.descriptors.end(), reserve.descriptors.begin(),
                        reserve.descriptors.end(), isSame))
            m_problems.damaged(m_source.offsetOnDisc(std::uint64_t(anchor.mainSequence.block) * m_blockSize),
                               sequenceName(), QStringLiteral("main and reserve sequence do not say the same"));
    }

    static bool hasVirtualPartition(const Sequence &sequence)
    {
        static constexpr std::string_view identifier = "*UDF Virtual Partition";
        return std::any_of(sequence.descriptors.begin(), sequence.descriptors.end(), [](const Descriptor &bytes) {
            return udfDescriptorKind(bytes) == UdfDescriptorKind::LogicalVolume
                && std::search(bytes.begin() + LogicalVolume::maps, bytes.end(), identifier.begin(), identifier.end())
                != bytes.end();
        });
    }

    void takePartitions(const Sequence &sequence)
    {
        for (const Descriptor &bytes : sequence.descriptors) {
            if (udfDescriptorKind(bytes) != UdfDescriptorKind::Partition)
                continue;
            const std::uint64_t start = loadLittleEndian<std::uint32_t>(&bytes[Partition::start]);
            const std::uint64_t count = loadLittleEndian<std::uint32_t>(&bytes[Partition::length]);
            m_counts.partitionBlocks.push_back(count);
            m_counts.partitionNumbers.push_back(loadLittleEndian<std::uint16_t>(&bytes[Partition::number]));
            if (m_source.offsetOnDisc((start + count) * m_blockSize) > m_source.length())
                m_problems.truncated(
                    m_source.length(), QStringLiteral("partition descriptor"),
                    QStringLiteral("the partition ends at block %1 of %2 bytes, but the image at byte %3")
                        .arg(start + count)
                        .arg(m_blockSize)
                        .arg(m_source.length()));
        }
    }

    const DiscImageSource &m_source;
    const VolumeProblems &m_problems;
    std::uint32_t m_blockSize = 0;
    std::vector<Anchor> m_anchors; ///< the whole ones
    Descriptor m_anchorBytes{}; ///< of one of them
    UdfVolumeCounts m_counts;
    bool m_isVirtual = false; ///< there is a virtual partition
};

} // namespace

std::optional<UdfVolumeCounts> checkUdfVolumeSpace(const DiscImageSource &source, const VolumeProblems &problems)
{
    return SpaceCheck(source, problems).run();
}

} // namespace Tessaron
