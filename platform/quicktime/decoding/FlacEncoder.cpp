#include "platform/quicktime/decoding/FlacEncoder.h"

#include "platform/quicktime/CDSound.h"
#include "platform/quicktime/decoding/FFmpegErrors.h"

#include <algorithm>
#include <cstring>

namespace Tessaron
{

FlacEncoder::FlacEncoder(MovieStorage &storage)
    : m_storage(storage)
    , m_file(storage)
    , m_frame(av_frame_alloc())
    , m_packet(av_packet_alloc())
{
}

Result<std::unique_ptr<FlacEncoder>> FlacEncoder::create(MovieStorage &storage, const QMap<QString, QString> &tags)
{
    std::unique_ptr<FlacEncoder> encoder(new FlacEncoder(storage));
    if (NSError error = encoder->begin(tags))
        return error;
    return encoder;
}

NSError FlacEncoder::failed(int code) const
{
    if (m_storage.failure())
        return m_storage.failure();
    return mediaErrorOfCode(code, m_storage.path(), QStringLiteral("encoding FLAC"));
}

NSError FlacEncoder::begin(const QMap<QString, QString> &tags)
{
    if (!m_file.context() || !m_frame || !m_packet)
        return failed(AVERROR(ENOMEM));
    int code = openEncoder();
    if (code >= 0)
        code = writeHead(tags);
    return code < 0 ? failed(code) : NSError();
}

int FlacEncoder::openEncoder()
{
    const AVCodec *const codec = avcodec_find_encoder(AV_CODEC_ID_FLAC);
    if (!codec)
        return AVERROR_ENCODER_NOT_FOUND;
    m_encoder.reset(avcodec_alloc_context3(codec));
    if (!m_encoder)
        return AVERROR(ENOMEM);
    m_encoder->sample_rate = int(CDSound::samplesPerSecond);
    m_encoder->sample_fmt = AV_SAMPLE_FMT_S16;
    m_encoder->ch_layout = AV_CHANNEL_LAYOUT_STEREO;
    m_encoder->time_base = {1, m_encoder->sample_rate};
    m_encoder->flags |= AV_CODEC_FLAG_GLOBAL_HEADER | AV_CODEC_FLAG_BITEXACT;
    if (const int code = avcodec_open2(m_encoder.get(), codec, nullptr); code < 0)
        return code;
    m_frame->format = m_encoder->sample_fmt;
    m_frame->sample_rate = m_encoder->sample_rate;
    m_frame->nb_samples = m_encoder->frame_size;
    if (const int code = av_channel_layout_copy(&m_frame->ch_layout, &m_encoder->ch_layout); code < 0)
        return code;
    return av_frame_get_buffer(m_frame.get(), 0);
}

int FlacEncoder::writeHead(const QMap<QString, QString> &tags)
{
    AVFormatContext *made = nullptr;
    if (const int code = avformat_alloc_output_context2(&made, nullptr, "flac", nullptr); code < 0)
        return code;
    m_output.reset(made);
    m_output->pb = m_file.context();
    m_output->flags |= AVFMT_FLAG_CUSTOM_IO | AVFMT_FLAG_BITEXACT;
    AVStream *const stream = avformat_new_stream(made, nullptr);
    if (!stream || avcodec_parameters_from_context(stream->codecpar, m_encoder.get()) < 0)
        return AVERROR(ENOMEM);
    stream->time_base = m_encoder->time_base;
    for (auto tag = tags.begin(); tag != tags.end(); ++tag) {
        if (av_dict_set(&m_output->metadata, tag.key().toUpper().toUtf8().constData(), tag->toUtf8().constData(), 0)
            < 0)
            return AVERROR(ENOMEM);
    }
    return avformat_write_header(made, nullptr);
}

NSError FlacEncoder::write(const char *bytes, std::size_t samples)
{
    const auto room = std::size_t(m_encoder->frame_size);
    while (samples > 0) {
        // The encoder may still hold the frame before.
        if (const int code = m_filled == 0 ? av_frame_make_writable(m_frame.get()) : 0; code < 0)
            return failed(code);
        const std::size_t count = std::min(samples, room - m_filled);
        std::memcpy(m_frame->data[0] + m_filled * CDSound::bytesPerSample, bytes, count * CDSound::bytesPerSample);
        m_filled += count;
        bytes += count * CDSound::bytesPerSample;
        samples -= count;
        if (m_filled < room)
            break;
        m_filled = 0;
        m_frame->pts = m_encoded;
        m_encoded += std::int64_t(room);
        if (const int code = encode(m_frame.get()); code < 0)
            return failed(code);
    }
    return m_storage.failure();
}

/// The null frame ends the sound: the packet behind the last one has no sound but the final head.
int FlacEncoder::encode(AVFrame *frame)
{
    if (const int code = avcodec_send_frame(m_encoder.get(), frame); code < 0)
        return code;
    for (;;) {
        const int code = avcodec_receive_packet(m_encoder.get(), m_packet.get());
        if (code == AVERROR(EAGAIN) || code == AVERROR_EOF)
            return 0;
        if (code < 0)
            return code;
        m_packet->stream_index = 0;
        av_packet_rescale_ts(m_packet.get(), m_encoder->time_base, m_output->streams[0]->time_base);
        if (const int written = av_interleaved_write_frame(m_output.get(), m_packet.get()); written < 0)
            return written;
    }
}

NSError FlacEncoder::finish()
{
    int code = 0;
    if (m_filled > 0) {
        m_frame->nb_samples = int(m_filled);
        m_frame->pts = m_encoded;
        code = encode(m_frame.get());
    }
    if (code >= 0)
        code = encode(nullptr);
    if (code >= 0)
        code = av_write_trailer(m_output.get());
    avio_flush(m_file.context());
    return code < 0 ? failed(code) : m_storage.failure();
}

} // namespace Tessaron
