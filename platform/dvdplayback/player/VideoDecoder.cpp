#include "platform/dvdplayback/player/VideoDecoder.h"

#include <algorithm>

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
    if (!decoder->m_context)
        return nullptr;
    // A thread more would cost a picture of delay each, and one decodes a DVD many times faster than it plays.
    decoder->m_context->thread_count = 1;
    if (avcodec_open2(decoder->m_context.get(), codec, nullptr) != 0
        || !decoder->m_packets.open(decoder->m_context.get()))
        return nullptr;
    return decoder;
}

void VideoDecoder::add(std::span<const std::uint8_t> bytes, std::optional<std::int64_t> time, const Visitor &visitor)
{
    m_packets.add(bytes, time, [&](AVPacket *packet) { decode(packet, visitor); });
}

void VideoDecoder::drain(const Visitor &visitor)
{
    m_packets.drain([&](AVPacket *packet) { decode(packet, visitor); });
    decode(nullptr, visitor);
    forget();
}

void VideoDecoder::forget()
{
    avcodec_flush_buffers(m_context.get());
    m_packets.forget();
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
