#include "platform/dvdplayback/player/VideoDecoder.h"

#include <algorithm>
#include <array>

namespace Tessaron
{

namespace
{

constexpr AVRational clock90kHz = {1, 90'000};
constexpr std::int64_t shortestDuration = 90'000 / 60;
constexpr std::int64_t longestDuration = 90'000 / 10;

std::int64_t durationOf(const AVFrame &frame, const AVCodecContext &context)
{
    const AVRational rate = context.framerate.num > 0 ? context.framerate : AVRational{30'000, 1001};
    const std::int64_t whole = av_rescale_q(1, av_inv_q(rate), clock90kHz);
    // Half pictures that are shown once more.
    const std::int64_t duration = whole + whole * frame.repeat_pict / 2;
    return std::clamp(duration, shortestDuration, longestDuration);
}

} // namespace

std::unique_ptr<VideoDecoder> VideoDecoder::create()
{
    std::unique_ptr<VideoDecoder> decoder(new VideoDecoder);
    const AVCodec *const codec = avcodec_find_decoder(AV_CODEC_ID_MPEG2VIDEO);
    decoder->m_context.reset(codec ? avcodec_alloc_context3(codec) : nullptr);
    decoder->m_parser.reset(av_parser_init(AV_CODEC_ID_MPEG2VIDEO));
    decoder->m_packet.reset(av_packet_alloc());
    if (!decoder->m_context || !decoder->m_parser || !decoder->m_packet)
        return nullptr;
    // A thread more would cost a picture of delay each, and one decodes a DVD many times faster than it plays.
    decoder->m_context->thread_count = 1;
    if (avcodec_open2(decoder->m_context.get(), codec, nullptr) != 0)
        return nullptr;
    return decoder;
}

void VideoDecoder::add(std::span<const std::uint8_t> bytes, std::optional<std::int64_t> time, const Visitor &visitor)
{
    if (!m_parser || bytes.size() > mostBytesAtATime)
        return;
    // The parser may look beyond the end.
    std::array<std::uint8_t, mostBytesAtATime + AV_INPUT_BUFFER_PADDING_SIZE> padded{};
    std::copy(bytes.begin(), bytes.end(), padded.begin());
    const std::uint8_t *position = padded.data();
    int left = int(bytes.size());
    std::int64_t presentation = time.value_or(AV_NOPTS_VALUE);
    while (left > 0) {
        std::uint8_t *data = nullptr;
        int size = 0;
        const int used = av_parser_parse2(m_parser.get(), m_context.get(), &data, &size, position, left, presentation,
                                          AV_NOPTS_VALUE, 0);
        if (used < 0 || (used == 0 && size == 0))
            return;
        presentation = AV_NOPTS_VALUE;
        position += used;
        left -= used;
        if (size == 0)
            continue;
        m_packet->data = data;
        m_packet->size = size;
        m_packet->pts = m_parser->pts;
        decode(m_packet.get(), visitor);
    }
}

void VideoDecoder::drain(const Visitor &visitor)
{
    std::uint8_t *data = nullptr;
    int size = 0;
    if (!m_parser)
        return;
    av_parser_parse2(m_parser.get(), m_context.get(), &data, &size, nullptr, 0, AV_NOPTS_VALUE, AV_NOPTS_VALUE, 0);
    if (size > 0) {
        m_packet->data = data;
        m_packet->size = size;
        m_packet->pts = m_parser->pts;
        decode(m_packet.get(), visitor);
    }
    decode(nullptr, visitor);
    forget();
}

void VideoDecoder::forget()
{
    avcodec_flush_buffers(m_context.get());
    m_parser.reset(av_parser_init(AV_CODEC_ID_MPEG2VIDEO));
}

void VideoDecoder::decode(AVPacket *packet, const Visitor &visitor)
{
    if (avcodec_send_packet(m_context.get(), packet) < 0)
        return;
    for (;;) {
        VideoPicture picture;
        picture.frame.reset(av_frame_alloc());
        if (!picture.frame || avcodec_receive_frame(m_context.get(), picture.frame.get()) < 0)
            return;
        picture.duration = durationOf(*picture.frame, *m_context);
        if (picture.frame->pts != AV_NOPTS_VALUE)
            picture.time = picture.frame->pts;
        visitor(std::move(picture));
    }
}

} // namespace Tessaron
