#include "platform/dvdplayback/DVDBookmarkBytes.h"

#include "platform/dvdplayback/MessageBytes.h"

#include <array>

namespace Tessaron
{

namespace
{

constexpr std::uint32_t mark = 0x4b4d4244; // "DBMK"
constexpr std::uint16_t version = 1;
constexpr std::size_t identitySize = 8;
constexpr qsizetype sizeOfChecksum = 4;

/// CRC-32 of IEEE 802.3.
std::uint32_t checksum(const QByteArray &bytes)
{
    std::uint32_t remainder = 0xffffffff;
    for (const char byte : bytes) {
        remainder ^= std::uint8_t(byte);
        for (int bit = 0; bit < 8; ++bit)
            remainder = (remainder >> 1) ^ ((remainder & 1) != 0 ? 0xedb88320 : 0);
    }
    return ~remainder;
}

} // namespace

QByteArray bookmarkBytes(const QByteArray &discIdentity, const PlayerPlace &place)
{
    MessageWriter writer;
    writer.add(mark);
    writer.add(version);
    writer.add(discIdentity.leftJustified(identitySize, '\0', true));
    writer.add(std::uint8_t(0));
    QByteArray bytes = writer.bytes() + encodedPlace(place);
    MessageWriter end;
    end.add(checksum(bytes));
    return bytes + end.bytes();
}

std::optional<PlayerPlace> placeOfBookmark(const QByteArray &bytes, const QByteArray &discIdentity)
{
    if (std::size_t(bytes.size()) != bookmarkSize)
        return std::nullopt;
    MessageReader end(bytes.last(sizeOfChecksum));
    if (end.take<std::uint32_t>() != checksum(bytes.chopped(sizeOfChecksum)))
        return std::nullopt;
    MessageReader reader(bytes.chopped(sizeOfChecksum));
    const bool isMarked = reader.take<std::uint32_t>() == mark && reader.take<std::uint16_t>() == version;
    const QByteArray identity = reader.takeBytes(identitySize);
    const auto reserved = reader.take<std::uint8_t>();
    if (!isMarked || !reader.isGood() || identity != discIdentity || reserved != 0)
        return std::nullopt;
    return decodedPlace(bytes.sliced(bytes.size() - sizeOfChecksum - encodedPlace({}).size()).chopped(sizeOfChecksum));
}

} // namespace Tessaron
