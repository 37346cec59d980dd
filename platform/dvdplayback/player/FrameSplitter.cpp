#include "platform/dvdplayback/player/FrameSplitter.h"

#include "platform/dvdplayback/player/PacketSplitter.h"

#include <algorithm>
#include <array>

namespace Tessaron
{

namespace
{

bool hasFrames(const AVCodecContext &decoder)
{
    return decoder.codec_id != AV_CODEC_ID_PCM_DVD;
}

} // namespace

bool FrameSplitter::open(AVCodecContext *decoder)
{
    m_decoder = decoder;
    m_packet.reset(av_packet_alloc());
    forget();
    return m_packet && (m_parser || !hasFrames(*m_decoder));
}

void FrameSplitter::forget()
{
    m_parser.reset(hasFrames(*m_decoder) ? av_parser_init(m_decoder->codec_id) : nullptr);
}

void FrameSplitter::add(std::span<const std::uint8_t> bytes, std::optional<std::int64_t> time, const Visitor &visitor)
{
    if (bytes.empty() || bytes.size() > discSectorSize)
        return;
    // Parsers and decoders may look beyond the end.
    std::array<std::uint8_t, discSectorSize + AV_INPUT_BUFFER_PADDING_SIZE> padded{};
    std::copy(bytes.begin(), bytes.end(), padded.begin());
    std::uint8_t *position = padded.data();
    int left = int(bytes.size());
    std::int64_t presentation = time.value_or(AV_NOPTS_VALUE);
    if (!hasFrames(*m_decoder)) {
        give(position, left, presentation, visitor);
        return;
    }
    while (m_parser && left > 0) {
        std::uint8_t *data = nullptr;
        int size = 0;
        const int used =
            av_parser_parse2(m_parser.get(), m_decoder, &data, &size, position, left, presentation, AV_NOPTS_VALUE, 0);
        if (used < 0 || (used == 0 && size == 0))
            return;
        presentation = AV_NOPTS_VALUE;
        position += used;
        left -= used;
        if (size > 0)
            give(data, size, m_parser->pts, visitor);
    }
}

void FrameSplitter::drain(const Visitor &visitor)
{
    if (!m_parser)
        return;
    std::uint8_t *data = nullptr;
    int size = 0;
    av_parser_parse2(m_parser.get(), m_decoder, &data, &size, nullptr, 0, AV_NOPTS_VALUE, AV_NOPTS_VALUE, 0);
    if (size > 0)
        give(data, size, m_parser->pts, visitor);
}

void FrameSplitter::give(std::uint8_t *data, int size, std::int64_t time, const Visitor &visitor)
{
    m_packet->data = data;
    m_packet->size = size;
    m_packet->pts = time;
    visitor(m_packet.get());
}

} // namespace Tessaron
