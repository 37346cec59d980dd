#include "platform/dvdplayback/player/PacketSplitter.h"

#include "platform/foundation/ByteOrder.h"

namespace Tessaron
{

namespace
{

using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t packHeadSize = 14;
constexpr std::size_t stuffingField = 13;
constexpr std::uint8_t stuffingMask = 0x07;
constexpr std::uint8_t packCode = 0xba;

/// A packet's head (ISO/IEC 13818-1 2.4.3.6).
namespace PacketField
{
constexpr std::size_t kind = 3;
constexpr std::size_t length = 4;
constexpr std::size_t afterLength = 6;
constexpr std::size_t timeFlags = 7;
constexpr std::size_t headLength = 8;
constexpr std::size_t afterHeadLength = 9;
} // namespace PacketField

constexpr std::uint8_t hasPresentation = 0x80;
constexpr std::size_t presentationSize = 5;

constexpr std::uint8_t privateStream1 = 0xbd;
constexpr std::uint8_t firstMPEGAudio = 0xc0;
constexpr std::uint8_t lastMPEGAudio = 0xdf;
constexpr std::uint8_t videoStream = 0xe0;

/// The first byte of private stream 1 names the stream; that many bytes are left out before the decoder's.
struct PrivateStream {
    std::uint8_t first;
    std::uint8_t last;
    ElementaryKind kind;
    std::size_t left;
};
constexpr PrivateStream privateStreams[] = {
    {0x20, 0x3f, ElementaryKind::Subpicture, 1},
    {0x80, 0x87, ElementaryKind::AC3, 4},
    {0x88, 0x8f, ElementaryKind::DTS, 4},
    {0xa0, 0xa7, ElementaryKind::LPCM, 4},
};

bool beginsLikePacket(Bytes bytes)
{
    return bytes[0] == 0 && bytes[1] == 0 && bytes[2] == 1;
}

/// 33 bits in 5 bytes, with marks between them.
std::int64_t presentationIn(Bytes bytes)
{
    return std::int64_t(bytes[0] >> 1 & 0x07) << 30 | std::int64_t(bytes[1]) << 22 | std::int64_t(bytes[2] >> 1) << 15
        | std::int64_t(bytes[3]) << 7 | std::int64_t(bytes[4] >> 1);
}

void tellPrivate(ElementaryPiece piece, const std::function<void(const ElementaryPiece &)> &visitor)
{
    if (piece.bytes.empty())
        return;
    const std::uint8_t number = piece.bytes[0];
    for (const PrivateStream &stream : privateStreams) {
        if (number < stream.first || number > stream.last || piece.bytes.size() < stream.left)
            continue;
        piece.kind = stream.kind;
        piece.stream = std::uint8_t(number - stream.first);
        piece.bytes = piece.bytes.subspan(stream.left);
        visitor(piece);
    }
}

/// `packet` begins with its start code and ends where its length says.
void tellPacket(Bytes packet, const std::function<void(const ElementaryPiece &)> &visitor)
{
    const std::uint8_t kind = packet[PacketField::kind];
    const bool isAudio = kind >= firstMPEGAudio && kind <= lastMPEGAudio;
    if ((kind != privateStream1 && kind != videoStream && !isAudio) || packet.size() < PacketField::afterHeadLength)
        return;
    const std::size_t head = PacketField::afterHeadLength + packet[PacketField::headLength];
    if (head > packet.size())
        return;
    ElementaryPiece piece;
    if ((packet[PacketField::timeFlags] & hasPresentation) != 0
        && head >= PacketField::afterHeadLength + presentationSize)
        piece.presentation = presentationIn(packet.subspan(PacketField::afterHeadLength, presentationSize));
    piece.bytes = packet.subspan(head);
    if (kind == privateStream1) {
        tellPrivate(piece, visitor);
        return;
    }
    piece.kind = isAudio ? ElementaryKind::MPEGAudio : ElementaryKind::Video;
    piece.stream = isAudio ? std::uint8_t(kind - firstMPEGAudio) : std::uint8_t(0);
    visitor(piece);
}

} // namespace

void splitSector(Bytes sector, const std::function<void(const ElementaryPiece &)> &visitor)
{
    if (sector.size() < packHeadSize || !beginsLikePacket(sector) || sector[3] != packCode)
        return;
    std::size_t position = packHeadSize + (sector[stuffingField] & stuffingMask);
    while (position + PacketField::afterLength <= sector.size()) {
        const Bytes rest = sector.subspan(position);
        if (!beginsLikePacket(rest))
            return;
        const std::size_t length =
            PacketField::afterLength + loadBigEndian<std::uint16_t>(rest.data() + PacketField::length);
        if (length > rest.size())
            return;
        tellPacket(rest.first(length), visitor);
        position += length;
    }
}

} // namespace Tessaron
