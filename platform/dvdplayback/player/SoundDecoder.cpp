#include "platform/dvdplayback/player/SoundDecoder.h"

namespace Tessaron
{

namespace
{

constexpr std::int64_t ticksInSecond = 90'000;
/// More frames than any of the formats has in one.
constexpr int mostFrames = 48'000;

AVCodecID codecOf(ElementaryKind kind)
{
    switch (kind) {
    case ElementaryKind::AC3:
        return AV_CODEC_ID_AC3;
    case ElementaryKind::DTS:
        return AV_CODEC_ID_DTS;
    case ElementaryKind::LPCM:
        return AV_CODEC_ID_PCM_DVD;
    case ElementaryKind::MPEGAudio:
        return AV_CODEC_ID_MP2;
    default:
        return AV_CODEC_ID_NONE;
    }
}

} // namespace

SoundDecoder::SoundDecoder(ElementaryKind kind, const SoundForm &form)
    : m_kind(kind)
    , m_form(form)
{
}

std::unique_ptr<SoundDecoder> SoundDecoder::create(ElementaryKind kind, const SoundForm &form)
{
    const AVCodecID identifier = codecOf(kind);
    const AVCodec *const codec = identifier == AV_CODEC_ID_NONE ? nullptr : avcodec_find_decoder(identifier);
    if (!codec)
        return nullptr;
    std::unique_ptr<SoundDecoder> decoder(new SoundDecoder(kind, form));
    decoder->m_context.reset(avcodec_alloc_context3(codec));
    decoder->m_frame.reset(av_frame_alloc());
    if (!decoder->m_context || !decoder->m_frame)
        return nullptr;
    decoder->m_context->thread_count = 1;
    decoder->m_context->pkt_timebase = {1, int(ticksInSecond)};
    if (avcodec_open2(decoder->m_context.get(), codec, nullptr) != 0
        || !decoder->m_packets.open(decoder->m_context.get()))
        return nullptr;
    return decoder;
}

void SoundDecoder::forget()
{
    avcodec_flush_buffers(m_context.get());
    m_converter.reset();
    m_packets.forget();
}

void SoundDecoder::add(std::span<const std::uint8_t> bytes, std::optional<std::int64_t> time, const Visitor &visitor)
{
    m_packets.add(bytes, time, [&](AVPacket *packet) { decode(packet, visitor); });
}

void SoundDecoder::drain(const Visitor &visitor)
{
    m_packets.drain([&](AVPacket *packet) { decode(packet, visitor); });
    decode(nullptr, visitor);
    forget();
}

void SoundDecoder::decode(AVPacket *packet, const Visitor &visitor)
{
    if (avcodec_send_packet(m_context.get(), packet) < 0)
        return;
    while (avcodec_receive_frame(m_context.get(), m_frame.get()) == 0)
        convert(*m_frame, visitor);
}

/// A disc may change the form of its sound between two frames.
bool SoundDecoder::prepareConversion(const AVFrame &frame)
{
    if (frame.ch_layout.nb_channels < 1 || frame.ch_layout.nb_channels > 8 || frame.sample_rate < 8000
        || frame.sample_rate > 192'000 || frame.nb_samples < 1 || frame.nb_samples > mostFrames)
        return false;
    if (m_converter && m_format == frame.format && m_rate == frame.sample_rate
        && av_channel_layout_compare(m_layout.get(), &frame.ch_layout) == 0)
        return true;
    m_converter.reset();
    if (av_channel_layout_copy(m_layout.get(), &frame.ch_layout) != 0)
        return false;
    if (m_layout.get()->order == AV_CHANNEL_ORDER_UNSPEC)
        av_channel_layout_default(m_layout.get(), frame.ch_layout.nb_channels);
    m_format = frame.format;
    m_rate = frame.sample_rate;
    ChannelLayout wanted;
    av_channel_layout_default(wanted.get(), int(m_form.channels));
    SwrContext *converter = nullptr;
    if (swr_alloc_set_opts2(&converter, wanted.get(), AV_SAMPLE_FMT_FLT, int(m_form.rate), m_layout.get(),
                            AVSampleFormat(frame.format), frame.sample_rate, 0, nullptr)
        != 0)
        return false;
    m_converter.reset(converter);
    // Weights that can never add up to more than 1: the usual ones are for integers only, which would be clipped.
    av_opt_set_double(converter, "rematrix_maxval", 1.0, 0);
    if (swr_init(converter) != 0)
        m_converter.reset();
    return m_converter != nullptr;
}

void SoundDecoder::convert(const AVFrame &frame, const Visitor &visitor)
{
    if (!prepareConversion(frame))
        return;
    DecodedSound piece;
    if (frame.pts != AV_NOPTS_VALUE)
        piece.time = frame.pts - swr_get_delay(m_converter.get(), ticksInSecond);
    const int most = swr_get_out_samples(m_converter.get(), frame.nb_samples);
    if (most < 1)
        return;
    piece.samples.resize(std::size_t(most) * m_form.channels);
    auto *out = reinterpret_cast<std::uint8_t *>(piece.samples.data());
    const int count = swr_convert(m_converter.get(), &out, most, const_cast<const std::uint8_t **>(frame.extended_data),
                                  frame.nb_samples);
    if (count < 1)
        return;
    piece.samples.resize(std::size_t(count) * m_form.channels);
    visitor(std::move(piece));
}

} // namespace Tessaron
