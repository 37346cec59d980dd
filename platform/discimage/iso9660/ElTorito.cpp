#include "platform/discimage/iso9660/ElTorito.h"

#include "platform/discimage/iso9660/IsoFields.h"
#include "platform/foundation/ByteOrder.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace Tessaron
{

namespace
{

constexpr std::uint64_t sectorSize = 2048;
constexpr std::uint64_t firstDescriptor = 16;
constexpr std::uint64_t maximumDescriptors = 64;
constexpr std::uint8_t bootRecord = 0; // a type of descriptors
constexpr char systemIdentifier[] = "EL TORITO SPECIFICATION";

// The catalog's entries are of 32 bytes; sections take as many as they like, sound ones a dozen.
constexpr std::size_t entrySize = 32;
constexpr std::size_t maximumEntries = sectorSize / entrySize;

// El Torito 2.1 to 2.5: where fields lie in the entries.
namespace Validation
{
constexpr std::size_t mark = 0;
constexpr std::size_t platform = 1;
constexpr std::size_t reserved = 2;
constexpr std::size_t maker = 4;
constexpr std::size_t makerSize = 24;
constexpr std::size_t key = 30; // these two
constexpr std::uint8_t firstKeyByte = 0x55;
constexpr std::uint8_t secondKeyByte = 0xAA;
} // namespace Validation
namespace Entry
{
constexpr std::size_t mark = 0;
constexpr std::size_t media = 1;
constexpr std::size_t segment = 2;
constexpr std::size_t systemType = 4;
constexpr std::size_t unused = 5;
constexpr std::size_t sectorCount = 6;
constexpr std::size_t block = 8;
} // namespace Entry
namespace Section
{
constexpr std::size_t mark = 0;
constexpr std::size_t platform = 1;
constexpr std::size_t count = 2;
} // namespace Section

enum Mark : std::uint8_t {
    ValidationMark = 1,
    Bootable = 0x88,
    NotBootable = 0,
    ExtensionMark = 0x44,
    SectionMark = 0x90,
    LastSectionMark = 0x91,
};

constexpr std::uint8_t emulationMask = 0x0F;
constexpr std::uint8_t greatestEmulation = 4;

using Sector = std::array<std::uint8_t, sectorSize>;

/// Goes through a catalog; problems are told when there is a report to tell them to.
class CatalogParser
{
public:
    CatalogParser(const DiscImageSource &source, const VolumeProblems *problems)
        : m_source(source)
        , m_problems(problems)
    {
    }

    std::optional<BootCatalog> parse(std::uint64_t recordOffset)
    {
        Sector sector;
        if (m_source.read(recordOffset, sector.data(), sector.size()))
            return std::nullopt;
        m_catalog.recordOffset = recordOffset;
        m_catalog.offset =
            m_source.offsetOnDisc(loadLittleEndian<std::uint32_t>(&sector[IsoBootRecordField::catalog]) * sectorSize);
        if (std::any_of(sector.begin() + IsoBootRecordField::unused, sector.end(),
                        [](std::uint8_t byte) { return byte != 0; }))
            unnoticed(recordOffset + IsoBootRecordField::unused, QStringLiteral("bytes that have to be zero are not"));
        if (!m_source.contains(m_catalog.offset, sectorSize)
            || m_source.read(m_catalog.offset, sector.data(), sector.size())) {
            damaged(recordOffset + IsoBootRecordField::catalog,
                    QStringLiteral("the catalog lies beyond the end of the image"));
            return std::nullopt;
        }
        parseValidation(sector);
        parseEntries(sector);
        return std::move(m_catalog);
    }

private:
    void damaged(std::uint64_t offset, const QString &message) const
    {
        if (m_problems)
            m_problems->damaged(offset, QStringLiteral("boot catalog"), message);
    }
    void unnoticed(std::uint64_t offset, const QString &message) const
    {
        if (m_problems)
            m_problems->unnoticed(offset, QStringLiteral("boot catalog"), message);
    }

    void parseValidation(const Sector &sector)
    {
        unsigned int sum = 0;
        for (std::size_t at = 0; at < entrySize; at += 2)
            sum += loadLittleEndian<std::uint16_t>(&sector[at]);
        if (sector[Validation::mark] != ValidationMark || sector[Validation::key] != Validation::firstKeyByte
            || sector[Validation::key + 1] != Validation::secondKeyByte)
            damaged(m_catalog.offset, QStringLiteral("its first entry does not have the marks of one"));
        if ((sum & 0xFFFFu) != 0)
            damaged(m_catalog.offset, QStringLiteral("the checksum of its first entry is wrong"));
        if (loadLittleEndian<std::uint16_t>(&sector[Validation::reserved]) != 0)
            unnoticed(m_catalog.offset + Validation::reserved, QStringLiteral("bytes that have to be zero are not"));
        m_platform = sector[Validation::platform];
        const auto *const maker = reinterpret_cast<const char *>(&sector[Validation::maker]);
        m_catalog.maker = QString::fromLatin1(maker, qsizetype(strnlen(maker, Validation::makerSize))).trimmed();
    }

    void parseEntries(const Sector &sector)
    {
        std::size_t index = 1;
        parseEntry(sector, index++);
        bool goesOn = true;
        while (goesOn && index < maximumEntries) {
            const std::size_t at = index * entrySize;
            const std::uint8_t mark = sector[at + Section::mark];
            if (mark != SectionMark && mark != LastSectionMark)
                break;
            ++index;
            m_platform = sector[at + Section::platform];
            const std::size_t count = loadLittleEndian<std::uint16_t>(&sector[at + Section::count]);
            if (index + count > maximumEntries)
                return damaged(m_catalog.offset + at, QStringLiteral("a section has more entries than the catalog"));
            for (std::size_t number = 0; number < count; ++number) {
                parseEntry(sector, index++);
                while (index < maximumEntries && sector[index * entrySize] == ExtensionMark)
                    ++index;
            }
            goesOn = mark == SectionMark;
            if (goesOn && index < maximumEntries && sector[index * entrySize] == 0)
                damaged(m_catalog.offset + at, QStringLiteral("the last section is missing"));
        }
        for (; index < maximumEntries; ++index) {
            if (sector[index * entrySize] != 0)
                return damaged(m_catalog.offset + index * entrySize,
                               QStringLiteral("there is something behind the last entry"));
        }
    }

    void parseEntry(const Sector &sector, std::size_t index)
    {
        const std::uint8_t *const from = &sector[index * entrySize];
        const std::uint64_t offset = m_catalog.offset + index * entrySize;
        BootEntry entry;
        entry.platform = m_platform;
        entry.isBootable = from[Entry::mark] == Bootable;
        entry.emulation = from[Entry::media] & emulationMask;
        entry.loadSegment = loadLittleEndian<std::uint16_t>(from + Entry::segment);
        entry.sectorCount = loadLittleEndian<std::uint16_t>(from + Entry::sectorCount);
        entry.offset = m_source.offsetOnDisc(loadLittleEndian<std::uint32_t>(from + Entry::block) * sectorSize);
        if (from[Entry::mark] != Bootable && from[Entry::mark] != NotBootable)
            damaged(offset, QStringLiteral("an entry does not have the mark of one"));
        if (entry.emulation > greatestEmulation)
            damaged(offset + Entry::media, QStringLiteral("an entry has an unknown kind of medium"));
        if (from[Entry::unused] != 0)
            unnoticed(offset + Entry::unused, QStringLiteral("bytes that have to be zero are not"));
        constexpr std::uint64_t loadedSectorSize = 512;
        if (!m_source.contains(entry.offset, std::max<std::uint64_t>(entry.sectorCount, 1) * loadedSectorSize))
            damaged(offset + Entry::block, QStringLiteral("a boot image lies beyond the end of the image"));
        m_catalog.entries.push_back(entry);
    }

    const DiscImageSource &m_source;
    const VolumeProblems *const m_problems;
    BootCatalog m_catalog;
    std::uint8_t m_platform = 0;
};

} // namespace

std::optional<BootCatalog> readBootCatalog(const DiscImageSource &source)
{
    Sector sector;
    for (std::uint64_t number = firstDescriptor; number < firstDescriptor + maximumDescriptors; ++number) {
        const std::uint64_t offset = number * sectorSize;
        if (!source.contains(offset, sectorSize) || source.read(offset, sector.data(), sector.size())
            || std::memcmp(&sector[IsoDescriptorField::identifier], "CD001", 5) != 0)
            break;
        if (sector[IsoDescriptorField::type] == bootRecord
            && std::memcmp(&sector[IsoBootRecordField::systemIdentifier], systemIdentifier, sizeof systemIdentifier - 1)
                == 0)
            return CatalogParser(source, nullptr).parse(offset);
    }
    return std::nullopt;
}

void checkBootCatalog(const DiscImageSource &source, std::uint64_t recordOffset, VolumeProblemReport &report)
{
    const VolumeProblems problems(report, VolumeKind::ISO9660);
    (void)CatalogParser(source, &problems).parse(recordOffset);
}

QString bootPlatformName(std::uint8_t platform)
{
    switch (platform) {
    case 0:
        return QStringLiteral("x86");
    case 1:
        return QStringLiteral("PowerPC");
    case 2:
        return QStringLiteral("Mac");
    case 0xEF:
        return QStringLiteral("EFI");
    default:
        return QStringLiteral("platform %1").arg(platform);
    }
}

QString bootEmulationName(std::uint8_t emulation)
{
    switch (emulation) {
    case 0:
        return QStringLiteral("no emulation");
    case 1:
        return QStringLiteral("floppy of 1.2 MB");
    case 2:
        return QStringLiteral("floppy of 1.44 MB");
    case 3:
        return QStringLiteral("floppy of 2.88 MB");
    case 4:
        return QStringLiteral("hard disk");
    default:
        return QStringLiteral("medium %1").arg(emulation);
    }
}

} // namespace Tessaron
