#include "platform/disctracks/SectorCoding.h"

#include "platform/disctracks/SectorParity.h"
#include "platform/disctracks/TrackSubchannel.h"
#include "platform/foundation/ByteOrder.h"

#include <algorithm>
#include <cstring>

namespace Tessaron
{

namespace
{

using namespace SectorField;

constexpr std::uint8_t mode1 = 1;
constexpr std::uint8_t mode2 = 2;
constexpr std::size_t userDataSize = 2048;
constexpr std::size_t subheaderCopySize = 4;
constexpr std::size_t submodeOffset = 2; // in the subheader
constexpr std::size_t modeZerosSize = 8;
constexpr std::array<std::uint8_t, syncSize> syncBytes = {0,    0xFF, 0xFF, 0xFF, 0xFF, 0xFF,
                                                          0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0};

// Eight bytes at a time: table k holds what a byte contributes that k more bytes follow.
using ChecksumTables = std::array<std::array<std::uint32_t, 256>, 8>;

constexpr ChecksumTables makeChecksumTables()
{
    constexpr std::uint32_t reflectedPolynomial = 0xD8018001u;
    ChecksumTables tables{};
    for (std::uint32_t byte = 0; byte < 256; ++byte) {
        std::uint32_t value = byte;
        for (int bit = 0; bit < 8; ++bit)
            value = (value & 1) ? (value >> 1) ^ reflectedPolynomial : value >> 1;
        tables[0][byte] = value;
    }
    for (std::size_t table = 1; table < tables.size(); ++table) {
        for (std::size_t byte = 0; byte < 256; ++byte) {
            const std::uint32_t before = tables[table - 1][byte];
            tables[table][byte] = (before >> 8) ^ tables[0][before & 0xFF];
        }
    }
    return tables;
}
constexpr ChecksumTables checksumTables = makeChecksumTables();

constexpr std::uint8_t bcd(std::int64_t number)
{
    return std::uint8_t(number / 10 << 4 | number % 10);
}

std::array<std::uint8_t, 3> addressBytes(BlockAddress address)
{
    const MSF place = address.msf();
    // Beyond 99 minutes there is no CD; such images count on modulo 100, so that no digit leaves its nibble.
    return {bcd(place.minutes % 100), bcd(place.seconds), bcd(place.frames)};
}

bool isBcd(const std::uint8_t *bytes, std::size_t count)
{
    return std::all_of(bytes, bytes + count, [](std::uint8_t byte) { return (byte & 0x0F) < 10 && byte >> 4 < 10; });
}

void putHeader(std::uint8_t *sector, BlockAddress at, std::uint8_t modeNumber)
{
    std::copy(syncBytes.begin(), syncBytes.end(), sector + sync);
    const std::array<std::uint8_t, 3> place = addressBytes(at);
    std::copy(place.begin(), place.end(), sector + address);
    sector[mode] = modeNumber;
}

void putSubheader(std::uint8_t *sector, const SectorSubheader &header)
{
    const std::array<std::uint8_t, subheaderCopySize> bytes = {header.file, header.channel, header.submode,
                                                               header.coding};
    std::copy(bytes.begin(), bytes.end(), sector + subheader);
    std::copy(bytes.begin(), bytes.end(), sector + subheader + subheaderCopySize);
}

/// Form 1's parity takes the header as zeros, so that a sector may be moved without new parity.
void putForm1Parity(std::uint8_t *sector)
{
    std::array<std::uint8_t, 4> header;
    std::copy_n(sector + address, header.size(), header.begin());
    std::fill_n(sector + address, header.size(), std::uint8_t(0));
    putSectorParity(sector);
    std::copy(header.begin(), header.end(), sector + address);
}

/// Holds the parity of a sector against that of its copy, for which it was computed anew.
SectorFaults parityFaults(const std::uint8_t *sector, const std::uint8_t *made)
{
    SectorFaults faults;
    if (std::memcmp(sector + parityP, made + parityP, parityQ - parityP) != 0)
        faults |= SectorFault::ParityP;
    if (std::memcmp(sector + parityQ, made + parityQ, sectorSize - parityQ) != 0)
        faults |= SectorFault::ParityQ;
    return faults;
}

bool isChecksumRight(const std::uint8_t *from, const std::uint8_t *checksum)
{
    return loadLittleEndian<std::uint32_t>(checksum) == sectorChecksum(0, from, std::size_t(checksum - from));
}

SectorFaults checkMode1(const std::uint8_t *sector)
{
    std::array<std::uint8_t, sectorSize> made;
    std::copy_n(sector, sectorSize, made.begin());
    putSectorParity(made.data());
    SectorFaults faults = parityFaults(sector, made.data());
    if (!isChecksumRight(sector, sector + mode1Checksum))
        faults |= SectorFault::Checksum;
    if (std::any_of(sector + mode1Zeros, sector + mode1Zeros + modeZerosSize, [](std::uint8_t byte) { return byte; }))
        faults |= SectorFault::Zeros;
    return faults;
}

SectorFaults checkForm1(const std::uint8_t *sector)
{
    std::array<std::uint8_t, sectorSize> made;
    std::copy_n(sector, sectorSize, made.begin());
    putForm1Parity(made.data());
    SectorFaults faults = parityFaults(sector, made.data());
    if (!isChecksumRight(sector + subheader, sector + form1Checksum))
        faults |= SectorFault::Checksum;
    return faults;
}

SectorFaults checkForm2(const std::uint8_t *sector)
{
    const bool hasChecksum = loadLittleEndian<std::uint32_t>(sector + form2Checksum) != 0;
    if (hasChecksum && !isChecksumRight(sector + subheader, sector + form2Checksum))
        return SectorFault::Checksum;
    return {};
}

SectorFaults checkMode2(const std::uint8_t *sector, TrackKind kind)
{
    if (kind == TrackKind::Mode2Formless)
        return {};
    SectorFaults faults;
    if (std::memcmp(sector + subheader, sector + subheader + subheaderCopySize, subheaderCopySize) != 0)
        faults |= SectorFault::Subheader;
    const bool isForm2 = sector[subheader + submodeOffset] & SectorSubheader::form2;
    if (isForm2 ? kind == TrackKind::Mode2Form1 : kind == TrackKind::Mode2Form2)
        faults |= SectorFault::Mode;
    return faults | (isForm2 ? checkForm2(sector) : checkForm1(sector));
}

} // namespace

std::uint32_t sectorChecksum(std::uint32_t checksum, const std::uint8_t *bytes, std::size_t length)
{
    const ChecksumTables &tables = checksumTables;
    for (; length >= 8; length -= 8, bytes += 8) {
        const std::uint32_t first = checksum ^ loadLittleEndian<std::uint32_t>(bytes);
        checksum = tables[7][first & 0xFF] ^ tables[6][first >> 8 & 0xFF] ^ tables[5][first >> 16 & 0xFF]
            ^ tables[4][first >> 24] ^ tables[3][bytes[4]] ^ tables[2][bytes[5]] ^ tables[1][bytes[6]]
            ^ tables[0][bytes[7]];
    }
    for (; length > 0; --length)
        checksum = (checksum >> 8) ^ tables[0][(checksum ^ *bytes++) & 0xFF];
    return checksum;
}

void completeMode1Sector(std::uint8_t *sector, BlockAddress at)
{
    putHeader(sector, at, mode1);
    storeLittleEndian<std::uint32_t>(sector + mode1Checksum, sectorChecksum(0, sector, mode1Checksum));
    std::fill_n(sector + mode1Zeros, modeZerosSize, std::uint8_t(0));
    putSectorParity(sector);
}

void completeFormlessSector(std::uint8_t *sector, BlockAddress at)
{
    putHeader(sector, at, mode2);
}

void completeForm1Sector(std::uint8_t *sector, BlockAddress at, const SectorSubheader &header)
{
    putHeader(sector, at, mode2);
    putSubheader(sector, header);
    storeLittleEndian<std::uint32_t>(sector + form1Checksum,
                                     sectorChecksum(0, sector + subheader, form1Checksum - subheader));
    putForm1Parity(sector);
}

void completeForm2Sector(std::uint8_t *sector, BlockAddress at, const SectorSubheader &header)
{
    SectorSubheader withForm = header;
    withForm.submode |= SectorSubheader::form2;
    putHeader(sector, at, mode2);
    putSubheader(sector, withForm);
    storeLittleEndian<std::uint32_t>(sector + form2Checksum,
                                     sectorChecksum(0, sector + subheader, form2Checksum - subheader));
}

SectorFaults checkSector(const std::uint8_t *sector, TrackKind kind, std::optional<BlockAddress> expected)
{
    if (kind == TrackKind::Audio || kind == TrackKind::Unstated)
        return {};
    SectorFaults faults;
    if (!std::equal(syncBytes.begin(), syncBytes.end(), sector + sync))
        faults |= SectorFault::Sync;
    const auto place = expected ? std::optional(addressBytes(*expected)) : std::nullopt;
    if (place ? !std::equal(place->begin(), place->end(), sector + address) : !isBcd(sector + address, 3))
        faults |= SectorFault::Address;
    if (sector[mode] != (kind == TrackKind::Mode1 ? mode1 : mode2))
        return faults | SectorFault::Mode; // the rest follows other rules
    return faults | (kind == TrackKind::Mode1 ? checkMode1(sector) : checkMode2(sector, kind));
}

TrackKind kindOfSector(const std::uint8_t *sector)
{
    if (!std::equal(syncBytes.begin(), syncBytes.end(), sector + sync))
        return TrackKind::Audio;
    if (sector[mode] == mode1)
        return TrackKind::Mode1;
    if (sector[mode] != mode2)
        return TrackKind::Unstated;
    // Without two equal subheaders the sector has no form.
    if (std::memcmp(sector + subheader, sector + subheader + subheaderCopySize, subheaderCopySize) != 0)
        return TrackKind::Mode2Formless;
    return sector[subheader + submodeOffset] & SectorSubheader::form2 ? TrackKind::Mode2Form2 : TrackKind::Mode2Form1;
}

std::optional<SectorEncoder> SectorEncoder::encoderFor(TrackKind kind, SectorForm form)
{
    const bool isMode2 = kind == TrackKind::Mode2Form1 || kind == TrackKind::Mode2Mixed;
    const bool holdsUserData = isMode2 || kind == TrackKind::Mode1;
    if (form == SectorForm::UserData && (holdsUserData || kind == TrackKind::Unstated))
        return SectorEncoder(kind, form);
    const bool isWhole = form == SectorForm::Raw || form == SectorForm::RawWithSubchannel;
    if ((isWhole && holdsUserData) || (form == SectorForm::WithoutHeader && isMode2))
        return SectorEncoder(kind, form);
    return std::nullopt;
}

void SectorEncoder::encode(const char *userData, std::size_t blockCount, BlockAddress first, char *blocks,
                           const TrackSubchannel *subchannel) const
{
    if (isPlain()) {
        std::memcpy(blocks, userData, blockCount * userDataSize);
        return;
    }
    std::array<std::uint8_t, sectorSize> sector;
    const std::size_t skipped = m_form == SectorForm::WithoutHeader ? std::size_t(subheader) : 0;
    const std::size_t kept = std::min(blockSize(), sectorSize - skipped);
    for (std::size_t block = 0; block < blockCount; ++block) {
        const BlockAddress at = first + std::int64_t(block);
        std::memcpy(sector.data() + (m_kind == TrackKind::Mode1 ? mode1Data : form1Data),
                    userData + block * userDataSize, userDataSize);
        if (m_kind == TrackKind::Mode1)
            completeMode1Sector(sector.data(), at);
        else
            completeForm1Sector(sector.data(), at, SectorSubheader{});
        char *const to = blocks + block * blockSize();
        std::memcpy(to, sector.data() + skipped, kept);
        if (m_form != SectorForm::RawWithSubchannel)
            continue;
        const auto behind = subchannel ? subchannel->bytesAt(at) : std::array<std::uint8_t, subchannelSize>{};
        std::memcpy(to + kept, behind.data(), behind.size());
    }
}

} // namespace Tessaron
