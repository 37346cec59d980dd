#include "platform/discimage/SectorCheck.h"

#include "platform/disctracks/SectorCoding.h"

#include <QStringList>

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

namespace Tessaron
{

namespace
{

constexpr std::size_t sectorsAtOnce = 256;
constexpr std::uint64_t userDataSize = 2048;
constexpr std::uint64_t mostToldOneByOne = 10;

using Sector = std::array<std::uint8_t, SectorField::sectorSize>;

std::optional<std::int64_t> digitsOf(std::uint8_t byte)
{
    const int tens = byte >> 4;
    const int ones = byte & 0x0F;
    return tens < 10 && ones < 10 ? std::optional<std::int64_t>(tens * 10 + ones) : std::nullopt;
}

/// The address that a sector says; no value when it is not decimal.
std::optional<BlockAddress> addressOf(const Sector &sector)
{
    const auto minutes = digitsOf(sector[SectorField::address]);
    const auto seconds = digitsOf(sector[SectorField::address + 1]);
    const auto frames = digitsOf(sector[SectorField::address + 2]);
    if (!minutes || !seconds || !frames)
        return std::nullopt;
    return BlockAddress::atMSF({*minutes, *seconds, *frames});
}

bool hasCorrection(const Sector &sector, TrackKind kind)
{
    const std::size_t begin = kind == TrackKind::Mode1 ? SectorField::mode1Checksum : SectorField::form1Checksum;
    return std::any_of(sector.begin() + std::ptrdiff_t(begin), sector.end(), [](std::uint8_t byte) { return byte; });
}

QString namesOf(SectorFaults faults)
{
    struct Name {
        SectorFault fault;
        const char *name;
    };
    constexpr std::array names = {
        Name{SectorFault::Sync, "its sync field"},
        Name{SectorFault::Address, "its address"},
        Name{SectorFault::Mode, "its mode"},
        Name{SectorFault::Subheader, "its subheader"},
        Name{SectorFault::Checksum, "its error detection"},
        Name{SectorFault::ParityP, "its P parity"},
        Name{SectorFault::ParityQ, "its Q parity"},
        Name{SectorFault::Zeros, "its field of zeros"},
    };
    QStringList wrong;
    for (const Name &known : names) {
        if (faults.testFlag(known.fault))
            wrong << QLatin1String(known.name);
    }
    return wrong.join(QStringLiteral(", "));
}

/// Goes through the sectors of one image.
class SectorChecker
{
public:
    SectorChecker(const DiscImageSource &source, VolumeProblemReport &report)
        : m_source(source)
        , m_report(report)
        , m_size(source.sectors().size)
    {
    }

    void run()
    {
        const std::uint64_t count = m_source.sectorCount();
        std::vector<std::uint8_t> bytes(sectorsAtOnce * m_size);
        for (std::uint64_t first = 0; first < count && !m_report.isStopped(); first += sectorsAtOnce) {
            const auto part = std::size_t(std::min<std::uint64_t>(sectorsAtOnce, count - first));
            if (const NSError error = m_source.readSectors(first, part, bytes.data())) {
                tell(first, error.localizedFailureReason());
                return;
            }
            for (std::size_t index = 0; index < part; ++index)
                check(wholeSector(bytes.data() + index * m_size), first + index);
        }
        if (m_wrong > mostToldOneByOne)
            tell(m_lastWrong, QStringLiteral("%1 sectors in all are not as they should be").arg(m_wrong));
    }

private:
    [[nodiscard]] bool hasHeader() const { return m_size != std::uint32_t(SectorForm::WithoutHeader); }

    [[nodiscard]] Sector wholeSector(const std::uint8_t *bytes) const
    {
        Sector sector;
        if (hasHeader()) {
            std::copy_n(bytes, sector.size(), sector.begin());
            return sector;
        }
        std::copy_n(bytes, sector.size() - SectorField::subheader, sector.begin() + SectorField::subheader);
        completeFormlessSector(sector.data(), BlockAddress(0)); // a header like any
        return sector;
    }

    void check(const Sector &sector, std::uint64_t number)
    {
        const TrackKind kind =
            m_source.sectors().kind == TrackKind::Unstated ? kindOfSector(sector.data()) : m_source.sectors().kind;
        SectorFaults faults = checkSector(sector.data(), kind, std::nullopt);
        if (!hasCorrection(sector, kind))
            faults &= ~SectorFaults(SectorFault::Checksum | SectorFault::ParityP | SectorFault::ParityQ);
        if (hasHeader() && !faults.testFlag(SectorFault::Address) && !followsTheOthers(sector, number))
            faults |= SectorFault::Address;
        if (!faults)
            return;
        m_lastWrong = number;
        if (++m_wrong <= mostToldOneByOne)
            tell(number, QStringLiteral("wrong in it: %1").arg(namesOf(faults)));
    }

    /// Addresses rise by one from sector to sector. The one that the others are held against is that of the first two
    /// sectors in a row that agree.
    [[nodiscard]] bool followsTheOthers(const Sector &sector, std::uint64_t number)
    {
        const std::optional<BlockAddress> said = addressOf(sector);
        if (!said)
            return false;
        const BlockAddress start = *said - std::int64_t(number);
        if (m_start)
            return start == *m_start;
        const bool agrees = !m_candidate || *m_candidate == start;
        if (m_candidate && agrees)
            m_start = start;
        m_candidate = start;
        return agrees;
    }

    void tell(std::uint64_t sector, const QString &message)
    {
        m_report.add({VolumeProblem::Kind::Damaged,
                      std::nullopt,
                      false,
                      sector * userDataSize,
                      QStringLiteral("sector %1").arg(sector),
                      message,
                      {}});
    }

    const DiscImageSource &m_source;
    VolumeProblemReport &m_report;
    const std::uint32_t m_size;
    std::uint64_t m_wrong = 0;
    std::uint64_t m_lastWrong = 0;
    std::optional<BlockAddress> m_start; ///< address of sector 0
    std::optional<BlockAddress> m_candidate;
};

} // namespace

void checkSectors(const DiscImageSource &source, VolumeProblemReport &report)
{
    const std::uint32_t size = source.sectors().size;
    if (size == std::uint32_t(SectorForm::WithoutHeader) || size == std::uint32_t(SectorForm::Raw)
        || size == std::uint32_t(SectorForm::RawWithSubchannel))
        SectorChecker(source, report).run();
}

} // namespace Tessaron
