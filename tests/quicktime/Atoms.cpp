#include "tests/quicktime/Atoms.h"

#include "platform/foundation/ByteOrder.h"

#include <array>

namespace Tessaron::Testing
{

namespace
{

template <typename Integer>
QByteArray bigEndian(Integer value)
{
    std::array<std::uint8_t, sizeof(Integer)> bytes = {};
    storeBigEndian<Integer>(bytes.data(), value);
    return QByteArray(reinterpret_cast<const char *>(bytes.data()), bytes.size());
}

QByteArray zeros(qsizetype count)
{
    return QByteArray(count, '\0');
}

} // namespace

QByteArray bigEndian16(std::uint32_t value)
{
    return bigEndian(std::uint16_t(value));
}

QByteArray bigEndian32(std::uint32_t value)
{
    return bigEndian(value);
}

QByteArray bigEndian64(std::uint64_t value)
{
    return bigEndian(value);
}

QByteArray atom(const QByteArray &type, const QByteArray &content)
{
    return bigEndian32(std::uint32_t(8 + content.size())) + type + content;
}

QByteArray soundDescriptionAtom(const QByteArray &format, std::uint32_t channels, std::uint32_t bits,
                                std::uint32_t rate, std::uint32_t version, const QByteArray &behind)
{
    return atom(format,
                zeros(6) + bigEndian16(1) + bigEndian16(version) + zeros(6) + bigEndian16(channels) + bigEndian16(bits)
                    + zeros(4) + bigEndian16(rate) + bigEndian16(0x8000) + behind);
}

QByteArray imageDescriptionAtom(const QByteArray &codec, std::uint32_t width, std::uint32_t height,
                                const QByteArray &name, std::uint32_t frameCount, std::uint32_t depth)
{
    const QByteArray text = char(name.size()) + name.leftJustified(31, '\0', true);
    return atom(codec,
                zeros(6) + bigEndian16(1) + zeros(16) + bigEndian16(width) + bigEndian16(height) + zeros(12)
                    + bigEndian16(frameCount) + text + bigEndian16(depth) + bigEndian16(0xffff));
}

QByteArray equalSizes(std::uint32_t size, std::uint32_t count)
{
    return atom("stsz", zeros(4) + bigEndian32(size) + bigEndian32(count));
}

QByteArray trackAtom(const TrackParts &parts)
{
    const QByteArray header =
        atom("tkhd", zeros(12) + bigEndian32(parts.id) + zeros(4) + bigEndian32(parts.duration) + zeros(60));
    const QByteArray media =
        atom("mdhd", zeros(12) + bigEndian32(parts.mediaTimeScale) + bigEndian32(parts.mediaTimeScale) + zeros(4));
    const QByteArray handler = atom("hdlr", zeros(4) + "mhlr" + parts.mediaType + zeros(13));
    const QByteArray descriptions = atom("stsd", zeros(4) + bigEndian32(1) + parts.description);
    const QByteArray table = atom("stbl", descriptions + parts.sizes);
    return atom("trak", header + atom("mdia", media + handler + atom("minf", table)));
}

QByteArray movieAtom(const QByteArray &children, std::uint32_t duration)
{
    const QByteArray header = atom("mvhd", zeros(12) + bigEndian32(1000) + bigEndian32(duration) + zeros(80));
    return atom("moov", header + children);
}

QByteArray plainSoundTrack()
{
    TrackParts parts;
    parts.description = soundDescriptionAtom("twos", 2, 16, 44100);
    parts.sizes = equalSizes(4, 44100);
    return trackAtom(parts);
}

} // namespace Tessaron::Testing
