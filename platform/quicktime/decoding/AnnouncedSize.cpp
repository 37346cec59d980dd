#include "platform/quicktime/decoding/AnnouncedSize.h"

#include "platform/foundation/ByteOrder.h"

#include <algorithm>

namespace Tessaron
{

namespace
{

// What programs put behind the last packet.
constexpr std::int64_t sizeOfId3v1 = 128;
constexpr std::int64_t sizeOfApeFooter = 32;
constexpr qsizetype apeSizeAt = 12, apeFlagsAt = 20; ///< in the footer
constexpr std::uint32_t apeHasHeader = 1U << 31;

std::uint64_t sumOfIndex(AVStream &stream)
{
    std::uint64_t size = 0;
    for (int entry = 0; entry < avformat_index_get_entries_count(&stream); ++entry)
        size += std::uint64_t(std::max(avformat_index_get_entry(&stream, entry)->size, 0));
    return size;
}

/// Where the tags begin at the end of a file of packets alone.
std::int64_t endOfPackets(const MediaFile &file)
{
    std::int64_t end = file.length();
    if (file.bytesAt(end - sizeOfId3v1, 3) == "TAG")
        end -= sizeOfId3v1;
    const QByteArray footer = file.bytesAt(end - sizeOfApeFooter, sizeOfApeFooter);
    if (footer.size() == sizeOfApeFooter && footer.startsWith("APETAGEX")) {
        const auto *const bytes = reinterpret_cast<const std::uint8_t *>(footer.constData());
        const bool hasHeader = (loadLittleEndian<std::uint32_t>(bytes + apeFlagsAt) & apeHasHeader) != 0;
        end -= std::int64_t(loadLittleEndian<std::uint32_t>(bytes + apeSizeAt)) + (hasHeader ? sizeOfApeFooter : 0);
    }
    return end;
}

/// -1 when no packet says it. Covers come before the first packet of the sound.
std::int64_t placeOfFirstPacket(MediaContainer &container, const AVStream &stream)
{
    const Packet packet(av_packet_alloc());
    while (packet) {
        const Result<bool> read = container.readPacket(*packet, nullptr);
        if (!read || !*read)
            break;
        if (packet->stream_index == stream.index)
            return packet->pos;
    }
    return -1;
}

} // namespace

std::optional<std::uint64_t> announcedSize(MediaContainer &container, AVStream &stream)
{
    if (const QByteArray format = container.formatName(); format == "avi" || format == "mov") {
        const std::uint64_t size = sumOfIndex(stream);
        return size > 0 ? std::optional(size) : std::nullopt;
    }
    const AVCodecParameters &parameters = *stream.codecpar;
    const int bits = av_get_exact_bits_per_sample(parameters.codec_id);
    if (bits > 0 && bits % 8 == 0 && container.headerTellsLength(stream)) {
        const std::int64_t samples =
            av_rescale_q(stream.duration, stream.time_base, AVRational{1, parameters.sample_rate});
        return std::uint64_t(samples) * std::uint64_t(bits / 8)
            * std::uint64_t(std::max(parameters.ch_layout.nb_channels, 0));
    }
    if (!container.hasOnlyPackets())
        return {};
    const std::int64_t begin = placeOfFirstPacket(container, stream), end = endOfPackets(container.file().file());
    return begin >= 0 && begin < end ? std::optional(std::uint64_t(end - begin)) : std::nullopt;
}

} // namespace Tessaron
