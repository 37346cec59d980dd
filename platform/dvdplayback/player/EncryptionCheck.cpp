#include "platform/dvdplayback/player/EncryptionCheck.h"

#include <algorithm>
#include <vector>

namespace Tessaron
{

namespace
{

constexpr std::size_t sectorSize = 2048;
constexpr ssize_t places = 8;
constexpr ssize_t sectorsAtAPlace = 16;

/// A pack is a head of 14 bytes and, on a DVD, a packet behind it (ISO/IEC 13818-1 2.5.3.3 and 2.4.3.6).
namespace PackField
{
constexpr std::size_t startCode = 0; // 00 00 01 ba
constexpr std::size_t stuffingLength = 13; // the lower three bits
constexpr std::size_t packetStartCode = 14; // 00 00 01, and the kind of the stream
constexpr std::size_t streamKind = 17;
constexpr std::size_t scramblingControl = 20; // two bits 10, then two of the control
} // namespace PackField

constexpr std::uint8_t packCode = 0xba;
constexpr std::uint8_t privateStream1 = 0xbd;
constexpr std::uint8_t firstAudioStream = 0xc0;
constexpr std::uint8_t lastVideoStream = 0xef;
constexpr std::uint8_t stuffingMask = 0x07;
constexpr std::uint8_t markMask = 0xc0;
constexpr std::uint8_t mark = 0x80;
constexpr std::uint8_t scramblingMask = 0x30;

bool isStartCodePrefix(std::span<const std::uint8_t> bytes)
{
    return bytes[0] == 0 && bytes[1] == 0 && bytes[2] == 1;
}

} // namespace

bool isScrambledSector(std::span<const std::uint8_t> sector)
{
    if (sector.size() != sectorSize || !isStartCodePrefix(sector.subspan(PackField::startCode, 3))
        || sector[PackField::startCode + 3] != packCode || (sector[PackField::stuffingLength] & stuffingMask) != 0
        || !isStartCodePrefix(sector.subspan(PackField::packetStartCode, 3)))
        return false;
    const std::uint8_t kind = sector[PackField::streamKind];
    const bool hasControl = kind == privateStream1 || (kind >= firstAudioStream && kind <= lastVideoStream);
    const std::uint8_t control = sector[PackField::scramblingControl];
    return hasControl && (control & markMask) == mark && (control & scramblingMask) != 0;
}

ContentState stateOfContents(dvd_reader_t *disc, int titleSet)
{
    const DiscFile file(DVDOpenFile(disc, titleSet, DVD_READ_TITLE_VOBS));
    if (!file)
        return ContentState::Missing;
    const ssize_t size = DVDFileSize(file.get());
    std::vector<std::uint8_t> buffer(sectorsAtAPlace * sectorSize);
    bool wasRead = false;
    for (ssize_t place = 0; place < places && size > 0; ++place) {
        const ssize_t first = size * place / places;
        const ssize_t count = std::min(sectorsAtAPlace, size - first);
        const ssize_t got = DVDReadBlocks(file.get(), int(first), std::size_t(count), buffer.data());
        for (ssize_t sector = 0; sector < got; ++sector) {
            wasRead = true;
            if (isScrambledSector(std::span(buffer).subspan(std::size_t(sector) * sectorSize, sectorSize)))
                return ContentState::Scrambled;
        }
    }
    if (size <= 0)
        return ContentState::Missing;
    return wasRead ? ContentState::Clear : ContentState::Unreadable;
}

} // namespace Tessaron
