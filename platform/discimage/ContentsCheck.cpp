#include "platform/discimage/ContentsCheck.h"

#include "platform/discimage/ContentsRecordReader.h"
#include "platform/discimage/VolumeFinder.h"
#include "platform/discimage/hfsplus/HfsPlusRecordFields.h"
#include "platform/discimage/hfsplus/HfsPlusVolumeHeaderReader.h"
#include "platform/discimage/iso9660/IsoDescriptors.h"
#include "platform/discimage/iso9660/IsoFields.h"
#include "platform/discimage/udf/UdfPartitions.h"
#include "platform/foundation/ByteOrder.h"
#include "platform/foundation/MessageTexts.h"

#include <algorithm>
#include <array>
#include <optional>
#include <span>
#include <vector>

namespace Tessaron
{

namespace
{

/// Where the record lies in what volume descriptors leave to applications.
constexpr std::size_t placeInApplicationUse = 64;

constexpr std::uint64_t blockSize = 2048;

/// A place where a record is expected.
struct RecordPlace {
    std::optional<VolumeKind> volume; ///< absent for the system area
    std::uint64_t offset = 0;
    std::optional<ContentsRecord> record; ///< absent when there is not a whole one
};

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
        takeRecordAt(std::nullopt, ContentsRecord::systemAreaPlace);
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
        if (isOutdated())
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
    void takeRecordAt(std::optional<VolumeKind> volume, std::uint64_t offset)
    {
        m_places.push_back({volume, offset, contentsRecordAt(*m_source, offset)});
    }

    void takeIsoRecords()
    {
        IsoDescriptorSet set;
        (void)readIsoDescriptors(*m_source, &set); // what is damaged in them is told by their own check
        for (const std::optional<IsoDescriptor> &descriptor : {set.primary, set.joliet}) {
            if (descriptor)
                takeRecordAt(descriptor->facts.kind,
                             descriptor->offset + IsoDescriptorField::applicationUse + placeInApplicationUse);
        }
        if (set.primary)
            m_primary = set.primary->facts;
    }

    void takeUdfRecord()
    {
        bool isThere = false;
        UdfVolumeStructure structure;
        if (readUdfVolumeStructure(*m_source, &isThere, &structure) || !isThere)
            return;
        m_places.push_back({VolumeKind::UDF, structure.logicalVolumeOffset,
                            contentsRecordIn(std::span(structure.implementationUse).first<ContentsRecord::size>())});
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
        if (bytes[0] != 'T' || bytes[1] != 'e' || std::uint8_t(bytes[2] ^ bytes[3]) != 0xFF)
            return std::nullopt;
        return bytes[2];
    }

    /// Other programs that write an image anew keep its system area, but not the record in its descriptor.
    [[nodiscard]] bool isOutdated() const
    {
        const auto isPrimary = [](const RecordPlace &place) { return place.volume == VolumeKind::ISO9660; };
        const auto primary = std::find_if(m_places.begin(), m_places.end(), isPrimary);
        if (primary == m_places.end() || primary->record)
            return false;
        const bool isOfSameTime = m_primary.created && m_primary.created->seconds == m_expected.seconds;
        return !isOfSameTime || m_primary.blockCount != std::uint64_t(m_expected.firstBlock) + m_expected.blocks;
    }

    void comparePlaces() const
    {
        for (const RecordPlace &place : m_places) {
            if (place.record != m_expected)
                unnoticed(place.volume, place.offset, !place.record);
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
    DiscVolumeFacts m_primary; ///< of the primary volume, where there is one
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
