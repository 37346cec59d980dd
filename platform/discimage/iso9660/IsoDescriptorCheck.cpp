#include "platform/discimage/iso9660/IsoDescriptorCheck.h"

#include "platform/discimage/iso9660/IsoFields.h"
#include "platform/discimage/volume/VolumeTimeFields.h"
#include "platform/foundation/ByteOrder.h"
#include "platform/foundation/MessageTexts.h"

#include <algorithm>
#include <string_view>

namespace Tessaron
{

namespace
{

constexpr std::uint64_t sectorSize = CheckedIsoDescriptor::size;
constexpr std::uint64_t firstSector = 16;
/// Descriptors stand in a row from the first on; one with a broken identifier interrupts it by a sector.
constexpr std::uint64_t searchedSectors = 32;

namespace Field = IsoDescriptorField;

enum DescriptorType : std::uint8_t { BootRecord = 0, Primary = 1, Supplementary = 2, Partition = 3, Terminator = 255 };

constexpr std::string_view isoIdentifier = "CD001";
/// What may stand in the recognition area, of ISO 9660 and of the standards beside it.
constexpr std::array<std::string_view, 7> knownIdentifiers = {isoIdentifier, "BEA01", "NSR02", "NSR03",
                                                              "TEA01",       "BOOT2", "CDW02"};
constexpr std::string_view elTorito = "EL TORITO SPECIFICATION";

using Sector = std::array<std::uint8_t, sectorSize>;

std::string_view textAt(const Sector &sector, std::size_t at, std::size_t length)
{
    return {reinterpret_cast<const char *>(&sector[at]), length};
}

std::string_view identifierOf(const Sector &sector)
{
    return textAt(sector, Field::identifier, isoIdentifier.size());
}

bool isKnown(std::string_view identifier)
{
    return std::find(knownIdentifiers.begin(), knownIdentifiers.end(), identifier) != knownIdentifiers.end();
}

/// All but one of the characters are those of a known identifier: a damaged one.
bool isAlmostKnown(std::string_view identifier)
{
    return !isKnown(identifier)
        && std::any_of(knownIdentifiers.begin(), knownIdentifiers.end(), [identifier](std::string_view known) {
               std::size_t same = 0;
               for (std::size_t index = 0; index < known.size(); ++index)
                   same += known[index] == identifier[index] ? 1 : 0;
               return same + 1 == known.size();
           });
}

bool isZero(const Sector &sector, std::size_t at, std::size_t length)
{
    return std::all_of(sector.begin() + std::ptrdiff_t(at), sector.begin() + std::ptrdiff_t(at + length),
                       [](std::uint8_t byte) { return byte == 0; });
}

/// Looks at one primary or supplementary descriptor.
class FieldCheck
{
public:
    FieldCheck(const Sector &sector, std::uint64_t offset, VolumeKind kind, VolumeProblemReport &report)
        : m_sector(sector)
        , m_offset(offset)
        , m_isJoliet(kind == VolumeKind::Joliet)
        , m_problems(report, kind)
    {
    }

    void run(CheckedIsoDescriptor *descriptor)
    {
        descriptor->blockCount = bothEndian<std::uint32_t>(Field::blockCount, "the number of blocks");
        descriptor->blockSize = bothEndian<std::uint16_t>(Field::blockSize, "the size of blocks");
        descriptor->pathTableLength =
            bothEndian<std::uint32_t>(Field::pathTableLength, "the length of the path tables");
        const auto setSize = bothEndian<std::uint16_t>(Field::setSize, "the number of volumes");
        const auto sequenceNumber = bothEndian<std::uint16_t>(Field::sequenceNumber, "the number of the volume");
        if (sequenceNumber == 0 || sequenceNumber > setSize)
            unnoticed(Field::sequenceNumber, QStringLiteral("the volume has a number beyond its set"));
        for (std::size_t index = 0; index < 2; ++index) {
            descriptor->littleEndianTables[index] =
                loadLittleEndian<std::uint32_t>(&m_sector[Field::littleEndianTables + sizeof(std::uint32_t) * index]);
            descriptor->bigEndianTables[index] =
                loadBigEndian<std::uint32_t>(&m_sector[Field::bigEndianTables + sizeof(std::uint32_t) * index]);
        }
        std::copy_n(m_sector.begin() + Field::rootRecord, CheckedIsoDescriptor::rootRecordSize,
                    descriptor->rootRecord.begin());
        constexpr std::string_view markOfContents = "TESSARON TREES";
        descriptor->hasContentsRecord =
            std::equal(markOfContents.begin(), markOfContents.end(), m_sector.begin() + Field::contentsRecord);
        checkFixedValues();
        checkTexts();
        checkDates();
    }

private:
    template <typename Integer>
    Integer bothEndian(std::size_t at, const char *what)
    {
        const auto little = loadLittleEndian<Integer>(&m_sector[at]);
        if (little != loadBigEndian<Integer>(&m_sector[at + sizeof(Integer)]))
            m_problems.damaged(m_offset + at, structure(),
                               QStringLiteral("the two byte orders of %1 disagree").arg(QLatin1String(what)));
        return little;
    }

    void checkFixedValues() const
    {
        if (m_sector[Field::version] != 1)
            m_problems.damaged(m_offset + Field::version, structure(),
                               QStringLiteral("version %1 is unknown").arg(m_sector[Field::version]));
        if (m_sector[Field::structureVersion] != 1)
            m_problems.damaged(
                m_offset + Field::structureVersion, structure(),
                QStringLiteral("version %1 of the directories is unknown").arg(m_sector[Field::structureVersion]));
        const bool hasFlags = m_isJoliet ? m_sector[Field::flags] > 1 : m_sector[Field::flags] != 0;
        if (hasFlags)
            unnoticed(Field::flags, QStringLiteral("unused flags are set"));
        if (!isZero(m_sector, Field::unused, Field::unusedSize)
            || (!m_isJoliet && !isZero(m_sector, Field::escape, Field::escapeSize))
            || (m_isJoliet && !isZero(m_sector, Field::escape + 3, Field::escapeSize - 3))
            || m_sector[Field::structureVersion + 1] != 0
            || !isZero(m_sector, Field::reserved, sectorSize - Field::reserved))
            unnoticed(Field::unused, QStringLiteral("bytes that have to be zero are not"));
    }

    /// Of a primary descriptor: texts of printable ASCII characters (a- and d-characters, and the small letters that
    /// many writers allow). Joliet has any characters but control characters.
    void checkTexts() const
    {
        checkText(Field::systemIdentifier, Field::shortTextSize, "the system's name");
        checkText(Field::volumeName, Field::shortTextSize, "the volume's name");
        checkText(Field::texts, Field::dates - Field::texts, "a name of the volume");
    }

    void checkText(std::size_t at, std::size_t size, const char *what) const
    {
        bool isFine = true;
        if (m_isJoliet && (at & 1) == 0) {
            // File names have 37 bytes each, which shifts the pairs; only the texts before them are looked at.
            for (std::size_t pair = at; pair + 1 < std::min(at + size, Field::fileNames); pair += 2) {
                const auto unit = loadBigEndian<std::uint16_t>(&m_sector[pair]);
                isFine = isFine && (unit == 0 || unit >= ' ');
            }
        } else {
            for (std::size_t byte = at; byte < at + size; ++byte)
                isFine = isFine && (m_sector[byte] == 0 || m_sector[byte] >= ' ') && m_sector[byte] != 0x7F
                    && (m_sector[byte] < 0x80 || at != Field::systemIdentifier);
        }
        if (!isFine)
            m_problems.damaged(m_offset + at, structure(),
                               QStringLiteral("%1 has characters that are not allowed").arg(QLatin1String(what)));
    }

    void checkDates() const
    {
        constexpr std::size_t dateCount = 4;
        for (std::size_t index = 0; index < dateCount; ++index) {
            const std::size_t at = Field::dates + index * Field::dateSize;
            const std::string_view digits = textAt(m_sector, at, Field::dateSize - 1);
            const bool isUnset =
                digits.find_first_not_of('0') == std::string_view::npos || isZero(m_sector, at, Field::dateSize);
            const auto zone = std::int8_t(m_sector[at + Field::dateSize - 1]);
            constexpr int westernmost = -48;
            constexpr int easternmost = 56; // the standard ends at 52; there are places at 56
            if (isUnset ? zone != 0 : !volumeTimeFromDigits(&m_sector[at]) || zone < westernmost || zone > easternmost)
                m_problems.damaged(m_offset + at, structure(), QStringLiteral("a date makes no sense"));
        }
    }

    void unnoticed(std::size_t at, const QString &message) const
    {
        m_problems.unnoticed(m_offset + at, structure(), message);
    }

    [[nodiscard]] static QString structure() { return QStringLiteral("volume descriptor"); }

    const Sector &m_sector;
    const std::uint64_t m_offset;
    const bool m_isJoliet;
    const VolumeProblems m_problems;
};

/// Goes through the recognition area.
class SetCheck
{
public:
    SetCheck(const DiscImageSource &source, VolumeProblemReport &report)
        : m_source(source)
        , m_report(report)
        , m_problems(report, VolumeKind::ISO9660)
    {
    }

    CheckedIsoDescriptors run()
    {
        std::uint64_t behindRow = firstSector; // where the row of descriptors ends as far as it was seen
        for (std::uint64_t number = firstSector; number < firstSector + searchedSectors; ++number) {
            const std::uint64_t offset = number * sectorSize;
            if (!m_source.contains(offset, sectorSize) || m_source.read(offset, m_sector.data(), m_sector.size()))
                break;
            const std::string_view identifier = identifierOf(m_sector);
            if (isAlmostKnown(identifier) || (identifier != isoIdentifier && looksLikeADescriptor()))
                m_problems.remains(offset + Field::identifier, QStringLiteral("volume descriptor"),
                                   QStringLiteral("its identifier is damaged"));
            if (!isKnown(identifier)) {
                m_lastIsEmpty = isZero(m_sector, 0, sectorSize);
                // A second set, of a partition that begins later, may follow behind the end of the first.
                if (m_hasTerminator && !isAlmostKnown(identifier))
                    break;
                continue;
            }
            if (number != behindRow && (identifier == isoIdentifier || !m_lastIsEmpty))
                m_problems.damaged(behindRow * sectorSize, QStringLiteral("volume descriptors"),
                                   QStringLiteral("one is missing in their row"));
            behindRow = number + 1;
            if (identifier == isoIdentifier)
                take(offset);
        }
        judgeSet();
        return std::move(m_found);
    }

private:
    /// Whatever its identifier: a descriptor of a volume that can be recognised by its root record and block size.
    [[nodiscard]] bool looksLikeADescriptor() const { return !isKnown(identifierOf(m_sector)) && isLikeATree(); }

    [[nodiscard]] bool isLikeATree() const
    {
        const auto blockSize = loadLittleEndian<std::uint16_t>(&m_sector[Field::blockSize]);
        return blockSize == sectorSize && loadBigEndian<std::uint16_t>(&m_sector[Field::blockSize + 2]) == blockSize
            && m_sector[Field::rootRecord] == CheckedIsoDescriptor::rootRecordSize;
    }

    void take(std::uint64_t offset)
    {
        m_isThere = true;
        if (m_hasTerminator && m_sector[Field::type] != Terminator)
            m_problems.damaged(offset, QStringLiteral("volume descriptor"),
                               QStringLiteral("it stands behind the end of its set"));
        switch (m_sector[Field::type]) {
        case BootRecord:
            takeBootRecord(offset);
            break;
        case Primary:
            m_hasPrimary = true;
            takeTree(offset, VolumeKind::ISO9660);
            break;
        case Supplementary:
            takeSupplementary(offset);
            break;
        case Partition:
            if (isLikeATree())
                m_problems.damaged(offset, QStringLiteral("volume descriptor"),
                                   QStringLiteral("it is that of a tree, but its type is another"));
            break;
        case Terminator:
            m_hasTerminator = true;
            if (m_sector[Field::version] != 1)
                m_problems.damaged(offset + Field::version, QStringLiteral("end of the volume descriptors"),
                                   QStringLiteral("version %1 is unknown").arg(m_sector[Field::version]));
            if (!isZero(m_sector, Field::flags, sectorSize - Field::flags))
                m_problems.unnoticed(offset + Field::flags, QStringLiteral("end of the volume descriptors"),
                                     QStringLiteral("bytes that have to be zero are not"));
            break;
        default:
            m_problems.damaged(offset, QStringLiteral("volume descriptor"),
                               QStringLiteral("type %1 is unknown").arg(m_sector[Field::type]));
        }
    }

    void takeBootRecord(std::uint64_t offset)
    {
        if (m_sector[Field::version] != 1)
            m_problems.damaged(offset + Field::version, QStringLiteral("boot record"),
                               QStringLiteral("version %1 is unknown").arg(m_sector[Field::version]));
        const std::string_view system = textAt(m_sector, IsoBootRecordField::systemIdentifier, Field::shortTextSize);
        if (system.starts_with(elTorito) && system.find_first_not_of('\0', elTorito.size()) == std::string_view::npos)
            m_found.bootRecordOffset = offset;
        else
            m_problems.damaged(offset + IsoBootRecordField::systemIdentifier, QStringLiteral("boot record"),
                               QStringLiteral("it is not that of El Torito, the only one that is known"));
    }

    void takeSupplementary(std::uint64_t offset)
    {
        const std::uint8_t *const escape = &m_sector[Field::escape];
        const bool isJoliet =
            escape[0] == '%' && escape[1] == '/' && (escape[2] == '@' || escape[2] == 'C' || escape[2] == 'E');
        constexpr std::uint8_t enhancedVersion = 2; // ISO 9660:1999
        if (isJoliet)
            takeTree(offset, VolumeKind::Joliet);
        else if (m_sector[Field::version] != enhancedVersion || !isZero(m_sector, Field::escape, Field::escapeSize))
            m_problems.damaged(offset + Field::escape, QStringLiteral("volume descriptor"),
                               QStringLiteral("its set of characters is unknown"));
    }

    void takeTree(std::uint64_t offset, VolumeKind kind)
    {
        CheckedIsoDescriptor descriptor;
        descriptor.kind = kind;
        descriptor.offset = offset;
        FieldCheck(m_sector, offset, kind, m_report).run(&descriptor);
        compareWithOthers(descriptor);
        if (descriptor.blockSize == 512 || descriptor.blockSize == 1024 || descriptor.blockSize == sectorSize) {
            checkLength(descriptor);
            m_found.trees.push_back(descriptor);
        } else {
            VolumeProblems(m_report, kind)
                .damaged(offset + Field::blockSize, QStringLiteral("volume descriptor"),
                         QStringLiteral("blocks of %1 bytes are impossible").arg(descriptor.blockSize));
        }
    }

    /// All descriptors of an image describe the same volume: its size and dates stand in each.
    void compareWithOthers(const CheckedIsoDescriptor &descriptor)
    {
        constexpr std::size_t copied = 2 * Field::dateSize;
        if (m_found.trees.empty()) {
            std::copy_n(m_sector.begin() + Field::dates, copied, m_dates.begin());
            return;
        }
        const CheckedIsoDescriptor &first = m_found.trees.front();
        const VolumeProblems problems(m_report, descriptor.kind);
        if (descriptor.blockCount * std::uint64_t(descriptor.blockSize)
            != first.blockCount * std::uint64_t(first.blockSize))
            problems.damaged(descriptor.offset + Field::blockCount, QStringLiteral("volume descriptor"),
                             QStringLiteral("another descriptor states another size of the volume"));
        if (!std::equal(m_dates.begin(), m_dates.end(), m_sector.begin() + Field::dates))
            problems.damaged(descriptor.offset + Field::dates, QStringLiteral("volume descriptor"),
                             QStringLiteral("another descriptor states other dates of the volume"));
    }

    void checkLength(const CheckedIsoDescriptor &descriptor)
    {
        const std::uint64_t length = std::uint64_t(descriptor.blockCount) * descriptor.blockSize;
        // The volume space begins with the disc (ECMA-119 6.1.2), also when something lies in front of the image.
        const std::uint64_t inFront = std::uint64_t(m_source.firstBlock()) * sectorSize;
        if (length > inFront + m_source.length())
            VolumeProblems(m_report, descriptor.kind)
                .truncated(descriptor.offset + Field::blockCount, QStringLiteral("volume descriptor"),
                           QStringLiteral("the volume has %1 of %2 bytes, but the image ends at byte %3")
                               .arg(counted(descriptor.blockCount, "block", "blocks"))
                               .arg(descriptor.blockSize)
                               .arg(m_source.length()));
    }

    void judgeSet() const
    {
        if (!m_isThere)
            return;
        if (!m_hasPrimary)
            m_problems.remains(firstSector * sectorSize, QStringLiteral("volume descriptors"),
                               QStringLiteral("there is no primary one among them"));
        if (!m_hasTerminator)
            m_problems.damaged(firstSector * sectorSize, QStringLiteral("volume descriptors"),
                               QStringLiteral("their set has no end"));
    }

    const DiscImageSource &m_source;
    VolumeProblemReport &m_report;
    const VolumeProblems m_problems;
    CheckedIsoDescriptors m_found;
    Sector m_sector{};
    std::array<std::uint8_t, 2 * Field::dateSize> m_dates{}; ///< of the first descriptor
    bool m_lastIsEmpty = false; ///< UDF with larger blocks leaves sectors out
    bool m_isThere = false;
    bool m_hasPrimary = false;
    bool m_hasTerminator = false;
};

} // namespace

CheckedIsoDescriptors checkIsoDescriptors(const DiscImageSource &source, VolumeProblemReport &report)
{
    return SetCheck(source, report).run();
}

} // namespace Tessaron
