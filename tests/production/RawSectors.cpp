#include "tests/production/RawSectors.h"

#include "platform/disctracks/SectorCoding.h"

#include <array>

namespace Tessaron::Testing
{

namespace
{

constexpr qsizetype wholeSector = 2352;

qsizetype userDataOffset(TrackKind kind)
{
    switch (kind) {
    case TrackKind::Audio:
        return 0;
    case TrackKind::Mode1:
    case TrackKind::Mode2Formless:
        return 16;
    default:
        return 24;
    }
}

std::uint8_t byteAt(const QByteArray &bytes, qsizetype at)
{
    return std::uint8_t(bytes[at]);
}

/// The checksum of the bytes as the four bytes that stand behind them, the lowest one first.
std::uint32_t checksumByDivision(const QByteArray &bytes, qsizetype from, qsizetype to)
{
    // (x^16 + x^15 + x^2 + 1)(x^16 + x^2 + x + 1); the lowest bit of each byte comes first.
    std::uint32_t factorProduct = 0;
    for (const int power : {16, 15, 2, 0}) {
        for (const int other : {16, 2, 1, 0}) {
            if (power + other < 32)
                factorProduct ^= 1u << (power + other);
        }
    }
    std::uint32_t remainder = 0;
    for (qsizetype at = from; at < to; ++at) {
        for (int bit = 0; bit < 8; ++bit) {
            const bool top = ((remainder >> 31) & 1) != ((byteAt(bytes, at) >> bit) & 1u);
            remainder = (remainder << 1) ^ (top ? factorProduct : 0);
        }
    }
    std::uint32_t mirrored = 0;
    for (int bit = 0; bit < 32; ++bit)
        mirrored |= ((remainder >> bit) & 1u) << (31 - bit);
    return mirrored;
}

std::uint32_t storedChecksum(const QByteArray &bytes, qsizetype at)
{
    std::uint32_t value = 0;
    for (int byte = 3; byte >= 0; --byte)
        value = value << 8 | byteAt(bytes, at + byte);
    return value;
}

/// Multiplied in the field of 256 elements over x^8 + x^4 + x^3 + x^2 + 1.
std::uint8_t product(std::uint8_t one, std::uint8_t other)
{
    std::uint8_t sum = 0;
    for (; other != 0; other >>= 1) {
        if (other & 1)
            sum ^= one;
        one = std::uint8_t(one << 1 ^ ((one & 0x80) ? 0x1D : 0));
    }
    return sum;
}

/// The check equations of a code word: its symbols add up to nothing, and so they do when each is multiplied by the
/// power of 2 that counts the symbols behind it.
template <std::size_t Size>
bool isCodeWord(const std::array<std::uint8_t, Size> &symbols)
{
    std::uint8_t sum = 0;
    std::uint8_t weighted = 0;
    for (const std::uint8_t symbol : symbols) {
        sum ^= symbol;
        weighted = std::uint8_t(product(weighted, 2) ^ symbol);
    }
    return sum == 0 && weighted == 0;
}

bool hasSoundParity(const QByteArray &sector)
{
    const auto symbolAt = [&](int word, int plane) { return byteAt(sector, 12 + 2 * word + plane); };
    for (int plane = 0; plane < 2; ++plane) {
        for (int column = 0; column < 43; ++column) {
            std::array<std::uint8_t, 26> word;
            for (int row = 0; row < 26; ++row)
                word[std::size_t(row)] = symbolAt(43 * row + column, plane);
            if (!isCodeWord(word))
                return false;
        }
        for (int diagonal = 0; diagonal < 26; ++diagonal) {
            std::array<std::uint8_t, 45> word;
            for (int place = 0; place < 43; ++place)
                word[std::size_t(place)] = symbolAt((44 * place + 43 * diagonal) % 1118, plane);
            word[43] = symbolAt(1118 + diagonal, plane);
            word[44] = symbolAt(1144 + diagonal, plane);
            if (!isCodeWord(word))
                return false;
        }
    }
    return true;
}

bool hasTwoSubheaders(const QByteArray &sector, bool isForm2)
{
    return sector.mid(16, 4) == sector.mid(20, 4) && ((byteAt(sector, 18) & 0x20) != 0) == isForm2;
}

} // namespace

qsizetype userDataSize(TrackKind kind)
{
    switch (kind) {
    case TrackKind::Audio:
        return 2352;
    case TrackKind::Mode2Formless:
        return 2336;
    case TrackKind::Mode2Form2:
        return 2324;
    default:
        return 2048;
    }
}

QByteArray userDataOf(TrackKind kind, int sectors)
{
    QByteArray data(qsizetype(sectors) * userDataSize(kind), Qt::Uninitialized);
    std::uint32_t state = 1;
    for (char &byte : data) {
        state = state * 1664525u + 1013904223u;
        byte = char(state >> 24);
    }
    return data;
}

QByteArray rawSectorsAround(TrackKind kind, const QByteArray &userData, BlockAddress first)
{
    const qsizetype size = userDataSize(kind);
    QByteArray sectors;
    for (qsizetype at = 0; at < userData.size(); at += size) {
        QByteArray sector(wholeSector, '\0');
        sector.replace(userDataOffset(kind), size, userData.mid(at, size));
        auto *const bytes = reinterpret_cast<std::uint8_t *>(sector.data());
        const BlockAddress address = first + at / size;
        if (kind == TrackKind::Mode1)
            completeMode1Sector(bytes, address);
        else if (kind == TrackKind::Mode2Formless)
            completeFormlessSector(bytes, address);
        else if (kind == TrackKind::Mode2Form1)
            completeForm1Sector(bytes, address, {});
        else if (kind == TrackKind::Mode2Form2)
            completeForm2Sector(bytes, address, {});
        sectors += sector;
    }
    return sectors;
}

QByteArray partsOf(const QByteArray &sectors, qsizetype sectorSize, qsizetype offset, qsizetype length)
{
    QByteArray parts;
    for (qsizetype at = 0; at < sectors.size(); at += sectorSize)
        parts += sectors.mid(at + offset, length);
    return parts;
}

QByteArray withSubchannels(const QByteArray &rawSectors)
{
    QByteArray sectors;
    for (qsizetype at = 0; at < rawSectors.size(); at += wholeSector)
        sectors += rawSectors.mid(at, wholeSector) + QByteArray(96, char(0x80 | at / wholeSector));
    return sectors;
}

bool hasHeader(const QByteArray &sector, BlockAddress address, int mode)
{
    const int frames = int(address.number()) + 150;
    const auto decimal = [](int number) { return char(number / 10 * 16 + number % 10); };
    QByteArray header(12, char(0xFF));
    header.front() = 0;
    header.back() = 0;
    header += decimal(frames / 4500);
    header += decimal(frames / 75 % 60);
    header += decimal(frames % 75);
    header += char(mode);
    return sector.startsWith(header);
}

bool isSoundMode1(const QByteArray &sector)
{
    return storedChecksum(sector, 2064) == checksumByDivision(sector, 0, 2064)
        && sector.mid(2068, 8) == QByteArray(8, '\0') && hasSoundParity(sector);
}

bool isSoundForm1(const QByteArray &sector)
{
    // The parity of form 1 takes the header for zeros.
    QByteArray withoutHeader = sector;
    withoutHeader.replace(12, 4, QByteArray(4, '\0'));
    return hasTwoSubheaders(sector, false) && storedChecksum(sector, 2072) == checksumByDivision(sector, 16, 2072)
        && hasSoundParity(withoutHeader);
}

bool isSoundForm2(const QByteArray &sector)
{
    return hasTwoSubheaders(sector, true) && storedChecksum(sector, 2348) == checksumByDivision(sector, 16, 2348);
}

} // namespace Tessaron::Testing
