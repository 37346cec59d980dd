#include "platform/discimage/ContentsCheck.h"

#include "platform/discimage/ContentsRecordReader.h"
#include "platform/discimage/VolumeFinder.h"
#include "platform/discimage/hfsplus/HfsPlusRecordFields.h"
#include "platform/discimage/hfsplus/HfsPlusVolumeHeaderReader.h"
#include "platform/discimage/iso9660/IsoDescriptors.h"
#include "platform/discimage/iso9660/IsoFields.h"
#include "platform/discimage/source/DiscImageErrors.h"
#include "platform/discimage/udf/UdfPartitions.h"
#include "platform/disctracks/vant/Crc32.h"
#include "platform/foundation/ByteOrder.h"
#include "platform/foundation/MessageTexts.h"

#include <algorithm>
#include <array>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace Tessaron
{

namespace
{

constexpr std::uint64_t blockSize = 2048;

/// A place where a record is expected.
struct RecordPlace {
    std::optional<VolumeKind> volume; ///< absent for the system area
    std::uint64_t offset = 0;
    std::optional<ContentsRecord> record; ///< absent when there is not a whole one
    DiscVolumeFacts facts; ///< what the volume says of itself
    /// Of a volume descriptor: it is not the one that the checksum behind its record was made of.
    bool isChanged = false;
};

/// What an image of ours with HFS+ has in front of the record.
struct SystemAreaStructure {
    std::string_view mark; ///< its first bytes
    std::size_t offset = 0;
    std::size_t size = 0;
};
constexpr std::size_t partitionEntrySize = 92;
constexpr std::size_t hfsPlusVolumeOffset = 8 * blockSize;
constexpr std::array<SystemAreaStructure, 7> systemAreaStructures = {{
    {"ER", 0, 8}, // driver descriptor
    {"PM", 512, partitionEntrySize},
    {"PM", 1024, partitionEntrySize},
    {"BD", hfsPlusHeaderDistance, HfsPlusWrapperField::size},
    {"PM", 2048, partitionEntrySize},
    {"PM", 4096, partitionEntrySize},
    {"H+", hfsPlusVolumeOffset + hfsPlusHeaderDistance, HfsPlusHeader::size},
}};

class ContentsCheck
{
public:
    ContentsCheck(const std::shared_ptr<const DiscImageSource> &source, VolumeProblemReport &report)
        : m_source(source)
        , m_report(report)
    {
    }

    void run()
    {
        m_places.push_back({std::nullopt, ContentsRecord::systemAreaPlace,
                            contentsRecordAt(*m_source, ContentsRecord::systemAreaPlace), DiscVolumeFacts()});
        takeIsoRecords();
        takeUdfRecord();
        const auto whole = std::find_if(m_places.begin(), m_places.end(),
                                        [](const RecordPlace &place) { return place.record.has_value(); });
        const std::optional<std::uint8_t> shortRecord = readHfsPlusRecord();
        if (whole == m_places.end()) {
            if (shortRecord) {
                m_expected.trees = *shortRecord;
                m_expectedAt = m_hfsPlusPlace.value_or(0);
                comparePlaces();
                compareTrees();
            }
            return;
        }
        m_expected = *whole->record;
        m_expectedAt = whole->offset;
        if (isOutdated(shortRecord.has_value()))
            return;
        comparePlaces();
        if (m_hfsPlusPlace && shortRecord != m_expected.trees)
            unnoticed(VolumeKind::HFSPlus, *m_hfsPlusPlace, !shortRecord);
        compareTrees();
        compareLength();
        if (m_hfsPlusPlace)
            compareDriverDescriptor();
    }

private:
    void takeIsoRecords()
    {
        IsoDescriptorSet set;
        (void)readIsoDescriptors(*m_source, &set); // what is damaged in them is told by their own check
        for (const std::optional<IsoDescriptor> &descriptor : {set.primary, set.joliet}) {
            if (descriptor)
                takeIsoRecord(*descriptor);
        }
    }

    void takeIsoRecord(const IsoDescriptor &descriptor)
    {
        const std::uint64_t offset = descriptor.offset + IsoDescriptorField::contentsRecord;
        m_places.push_back({descriptor.facts.kind, offset, contentsRecordAt(*m_source, offset), descriptor.facts});
        constexpr std::size_t checksumPlace = IsoDescriptorField::contentsRecord + ContentsRecord::size;
        std::array<std::uint8_t, checksumPlace + sizeof(std::uint32_t)> bytes;
        if (m_source->read(descriptor.offset, bytes.data(), bytes.size()))
            return; // told by the check of the descriptors
        // Images that were made before there was a checksum have zeros in its place.
        const auto checksum = loadLittleEndian<std::uint32_t>(&bytes[checksumPlace]);
        m_places.back().isChanged =
            checksum != 0 && checksum != crc32(0, bytes.data(), IsoDescriptorField::contentsRecord);
    }

    void takeUdfRecord()
    {
        bool isThere = false;
        UdfVolumeStructure structure;
        const NSError error = readUdfVolumeStructure(*m_source, &isThere, &structure);
        m_isForeign = error.domain() == DiscImageErrorDomain
            && error.code() == qint64(DiscImageErrorCode::Unsupported); // no image of ours is
        if (error || !isThere)
            return;
        const auto record = contentsRecordIn(std::span(structure.implementationUse).first<ContentsRecord::size>());
        m_isForeign = !record; // a checksum says that the descriptor was made like this
        m_places.push_back({VolumeKind::UDF, structure.logicalVolumeOffset, record, structure.facts});
    }

    /// The volume header of HFS+ has room for the trees alone, and their complement.
    std::optional<std::uint8_t> readHfsPlusRecord()
    {
        NSError error;
        const std::optional<HfsPlusHeader> header = findHfsPlusHeader(*m_source, &error);
        if (!header)
            return std::nullopt;
        m_hfsPlusPlace = header->offset() + HfsPlusHeaderField::reservedFinderInfo;
        const std::uint8_t *const bytes = &header->bytes[HfsPlusHeaderField::reservedFinderInfo];
        m_isForeign = m_isForeign || std::all_of(bytes, bytes + 4, [](std::uint8_t byte) { return byte == 0; });
        return header->treesOfImage();
    }

    /// True when the record is of an image that another program has written over. Such programs often leave the system
    /// area alone, or write no more than their own mark to it.
    [[nodiscard]] bool isOutdated(bool hasShortRecord) const
    {
        if (m_isForeign || std::ranges::any_of(m_places, [this](const auto &place) { return isForeign(place); }))
            return true;
        const bool isConfirmed = hasShortRecord
            || std::ranges::any_of(m_places, [](const auto &place) { return place.volume && place.record; });
        return !isConfirmed && isSystemAreaOverwritten();
    }

    /// True for a volume of ISO 9660 that has no record, and says otherwise than the record of another place. In a
    /// volume whose record is damaged, date and size are still those of the record.
    [[nodiscard]] bool isForeign(const RecordPlace &place) const
    {
        if (!place.volume || place.record)
            return false;
        const bool isOfSameTime = place.facts.created && place.facts.created->seconds == m_expected.seconds;
        return !isOfSameTime || place.facts.blockCount != std::uint64_t(m_expected.firstBlock) + m_expected.blocks;
    }

    /// Whether there is anything in front of the record that no image of ours has there.
    [[nodiscard]] bool isSystemAreaOverwritten() const
    {
        std::vector<std::uint8_t> area(ContentsRecord::systemAreaPlace);
        if (m_source->read(0, area.data(), area.size()))
            return false;
        const bool hasHfsPlus = (m_expected.trees & bitOf(VolumeKind::HFSPlus)) != 0;
        for (const SystemAreaStructure &known : systemAreaStructures) {
            const auto begin = area.begin() + std::ptrdiff_t(known.offset);
            if (hasHfsPlus && std::equal(known.mark.begin(), known.mark.end(), begin))
                std::fill_n(begin, known.size, std::uint8_t(0));
        }
        return std::ranges::any_of(area, [](std::uint8_t byte) { return byte != 0; });
    }

    void comparePlaces() const
    {
        for (const RecordPlace &place : m_places) {
            if (place.record != m_expected)
                unnoticed(place.volume, place.offset, !place.record);
            if (place.record && place.isChanged)
                VolumeProblems(m_report, *place.volume)
                    .damaged(place.offset - IsoDescriptorField::contentsRecord, QStringLiteral("volume descriptor"),
                             QStringLiteral("it has another checksum than when the image was made"));
        }
    }

    void compareTrees() const
    {
        std::uint8_t found = 0;
        for (const FoundVolume &volume : volumesInImage(m_source))
            found = std::uint8_t(found | bitOf(volume.kind));
        for (const VolumeKind kind :
             {VolumeKind::ISO9660, VolumeKind::RockRidge, VolumeKind::Joliet, VolumeKind::UDF, VolumeKind::HFSPlus}) {
            const VolumeProblems problems(m_report, kind);
            const bool isExpected = (m_expected.trees & bitOf(kind)) != 0;
            if (isExpected && (found & bitOf(kind)) == 0)
                problems.remains(m_expectedAt, structure(),
                                 QStringLiteral("the image was made with this filesystem, but it cannot be found"));
            else if (!isExpected && (found & bitOf(kind)) != 0)
                problems.damaged(m_expectedAt, structure(),
                                 QStringLiteral("the image was made without this filesystem"));
        }
    }

    void compareLength() const
    {
        if (m_expected.blocks <= m_source->length() / blockSize)
            return;
        VolumeProblem problem;
        problem.kind = VolumeProblem::Kind::Truncated;
        problem.offset = m_source->length();
        problem.structure = structure();
        problem.message = QStringLiteral("the image was made with %1 of %2 bytes, but it ends at byte %3")
                              .arg(counted(m_expected.blocks, "block", "blocks"))
                              .arg(blockSize)
                              .arg(m_source->length());
        m_report.add(problem);
    }

    /// In front of a partition map of ours stands how long the image is.
    void compareDriverDescriptor() const
    {
        constexpr std::size_t sizeField = 2;
        constexpr std::size_t countField = 4;
        std::array<std::uint8_t, 8> driver{};
        if (m_source->read(0, driver.data(), driver.size()) || driver[0] != 'E' || driver[1] != 'R')
            return; // told by what reads the map
        const std::uint64_t length = std::uint64_t(loadBigEndian<std::uint32_t>(&driver[countField]))
            * loadBigEndian<std::uint16_t>(&driver[sizeField]);
        if (length == m_expected.blocks * blockSize)
            return;
        VolumeProblem problem;
        problem.isVisible = false;
        problem.offset = countField;
        problem.structure = QStringLiteral("Apple partition map");
        problem.message = QStringLiteral("the driver descriptor says that the disc has %1 bytes, but it has %2")
                              .arg(length)
                              .arg(m_expected.blocks * blockSize);
        m_report.add(problem);
    }

    void unnoticed(std::optional<VolumeKind> volume, std::uint64_t offset, bool isMissing) const
    {
        VolumeProblem problem;
        problem.volume = volume;
        problem.isVisible = false;
        problem.offset = offset;
        problem.structure = volume ? structure() : QStringLiteral("system area, record of contents");
        problem.message = isMissing ? QStringLiteral("it is damaged or missing, although another place has it")
                                    : QStringLiteral("it says otherwise than the record in another place");
        m_report.add(problem);
    }

    static std::uint8_t bitOf(VolumeKind kind) { return std::uint8_t(1u << unsigned(kind)); }
    static QString structure() { return QStringLiteral("record of contents"); }

    const std::shared_ptr<const DiscImageSource> &m_source;
    VolumeProblemReport &m_report;
    std::vector<RecordPlace> m_places;
    bool m_isForeign = false; ///< a filesystem was found that cannot be of an image with a record
    std::optional<std::uint64_t> m_hfsPlusPlace; ///< of the record in a volume header
    ContentsRecord m_expected;
    std::uint64_t m_expectedAt = 0;
};

} // namespace

void checkContentsRecords(const std::shared_ptr<const DiscImageSource> &source, VolumeProblemReport &report)
{
    ContentsCheck(source, report).run();
}

} // namespace Tessaron
