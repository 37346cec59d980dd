#include "platform/quicktime/decoding/MovieWriter.h"

#include "platform/quicktime/decoding/FFmpegErrors.h"

#include <algorithm>
#include <deque>
#include <optional>

namespace Tessaron
{

namespace
{

/// A frame of MP3 may take its bits from those before it, as many as 25 at the lowest rate; the others need one at most
/// to swing in.
std::size_t packetsBefore(AVCodecID codec)
{
    return codec == AV_CODEC_ID_MP3 ? 25 : 2;
}

struct PcmForm {
    AVSampleFormat format;
    AVCodecID codec;
};

/// PCM that holds all of what a decoder gives.
PcmForm pcmFor(AVSampleFormat decoded)
{
    switch (av_get_packed_sample_fmt(decoded)) {
    case AV_SAMPLE_FMT_U8:
    case AV_SAMPLE_FMT_S16:
        return {AV_SAMPLE_FMT_S16, AV_CODEC_ID_PCM_S16LE};
    case AV_SAMPLE_FMT_S32:
        return {AV_SAMPLE_FMT_S32, AV_CODEC_ID_PCM_S32LE};
    case AV_SAMPLE_FMT_FLT:
        return {AV_SAMPLE_FMT_FLT, AV_CODEC_ID_PCM_F32LE};
    default:
        return {AV_SAMPLE_FMT_DBL, AV_CODEC_ID_PCM_F64LE};
    }
}

NSError damageError(const QByteArray &path, const QString &what)
{
    return mediaError(invalidMedia, path, what,
                      QStringLiteral("The file is damaged; get it again from where it came from."));
}

/// A file whose packets can go into the movie as they are.
struct CopySource {
    std::unique_ptr<MediaContainer> container;
    AVStream *stream = nullptr;
    MediaRun heard; ///< samples since the first one of the first packet
};

/// No value where packets cannot be copied, for whatever reason: then the sound is decoded, which tells what is wrong.
std::optional<CopySource> copySourceOf(const QByteArray &path, const std::stop_token &stop)
{
    Result<std::unique_ptr<MediaContainer>> opened = MediaContainer::open(path, stop, EditLists::Ignored);
    AVStream *const stream = opened ? (*opened)->bestAudioStream() : nullptr;
    if (!stream || !MediaContainer::ticksAreSamples(*stream))
        return {};
    const AVCodecID codec = stream->codecpar->codec_id;
    const bool isKnown = codec == AV_CODEC_ID_AAC || codec == AV_CODEC_ID_MP3 || codec == AV_CODEC_ID_ALAC;
    const bool isOfPackets = (*opened)->formatName() == "mp3" || (*opened)->formatName() == "aac";
    if (!isKnown)
        return {};
    CopySource source{*std::move(opened), stream, {}};
    if (source.container->formatName() == "mov") {
        const std::optional<MovieAtoms> atoms = movieAtomsOf(source.container->file().file());
        const MovieTrackAtoms *const track = atoms ? atoms->trackWithID(stream->id) : nullptr;
        const std::optional<MediaRun> run = track ? heardRun(*atoms, *track) : std::nullopt;
        if (!run)
            return {};
        const AVRational sample{1, stream->codecpar->sample_rate};
        source.heard = {av_rescale_q(run->begin, stream->time_base, sample),
                        av_rescale_q(run->end, stream->time_base, sample)};
        return source;
    }
    const Result<std::unique_ptr<AudioStreamReader>> reader = AudioStreamReader::open(path, stop);
    if (!isOfPackets || !reader || !(*reader)->length().isExact)
        return {};
    // The first packet says how much of its sound is the encoder's.
    source.heard.begin = -1;
    source.heard.end = (*reader)->length().samples;
    return source;
}

} // namespace

MovieWriter::MovieWriter(MovieStorage &storage, std::stop_token stop)
    : m_storage(storage)
    , m_file(storage)
    , m_stop(std::move(stop))
{
}

NSError MovieWriter::failed(int code) const
{
    if (m_storage.failure())
        return m_storage.failure();
    return mediaErrorOfCode(code, m_storage.path(), QStringLiteral("writing a movie"));
}

NSError MovieWriter::begin(const AVCodecParameters &sound)
{
    if (!m_file.context())
        return failed(AVERROR(ENOMEM));
    AVFormatContext *made = nullptr;
    if (const int code = avformat_alloc_output_context2(&made, nullptr, "mov", nullptr); code < 0)
        return failed(code);
    m_output.reset(made);
    m_output->pb = m_file.context();
    m_output->flags |= AVFMT_FLAG_CUSTOM_IO | AVFMT_FLAG_BITEXACT;
    AVStream *const stream = avformat_new_stream(made, nullptr);
    if (!stream || avcodec_parameters_copy(stream->codecpar, &sound) < 0)
        return failed(AVERROR(ENOMEM));
    stream->codecpar->codec_tag = 0;
    stream->time_base = {1, sound.sample_rate};
    m_form = stream->codecpar;
    // Edit lists count in the movie's time: with samples as its unit they are exact.
    AVDictionary *options = nullptr;
    av_dict_set_int(&options, "movie_timescale", sound.sample_rate, 0);
    const int code = avformat_write_header(made, &options);
    av_dict_free(&options);
    return code < 0 ? failed(code) : NSError();
}

NSError MovieWriter::end()
{
    if (!m_output)
        return mediaError(invalidTime, m_storage.path(), QStringLiteral("the segments hold no sound"),
                          QStringLiteral("Choose parts that lie within the files."));
    const int code = av_write_trailer(m_output.get());
    avio_flush(m_file.context());
    return code < 0 ? failed(code) : m_storage.failure();
}

NSError MovieWriter::write(const std::vector<Segment> &segments)
{
    if (segments.size() == 1) {
        if (const std::optional<CopySource> source = copySourceOf(segments[0].path, m_stop)) {
            NSError error = copyPackets(segments[0], *source->container, *source->stream, source->heard);
            return error ? error : end();
        }
    }
    for (const Segment &segment : segments) {
        if (NSError error = decode(segment))
            return error;
    }
    return end();
}

NSError MovieWriter::writePacket(AVPacket &packet)
{
    packet.stream_index = 0;
    packet.pos = -1;
    av_packet_rescale_ts(&packet, AVRational{1, m_form->sample_rate}, m_output->streams[0]->time_base);
    av_packet_free_side_data(&packet);
    const int code = av_write_frame(m_output.get(), &packet);
    return code < 0 ? failed(code) : NSError();
}

NSError MovieWriter::copyPackets(const Segment &segment, MediaContainer &source, AVStream &stream, MediaRun heard)
{
    if (NSError error = begin(*stream.codecpar))
        return error;
    source.readOnly(stream);
    const AVRational sample{1, stream.codecpar->sample_rate};
    std::deque<Packet> before; // Packets that the decoder needs to swing in.
    for (;;) {
        Packet packet(av_packet_alloc());
        if (!packet)
            return failed(AVERROR(ENOMEM));
        QString damage;
        const Result<bool> read = source.readPacket(*packet, &damage);
        if (!read)
            return read.error();
        if (!damage.isEmpty())
            return damageError(segment.path, damage);
        if (!*read)
            break;
        if (packet->stream_index != stream.index || packet->pts == AV_NOPTS_VALUE)
            continue;
        if (heard.begin < 0) {
            heard.begin = skippedSamples(*packet).atStart;
            heard.end += heard.begin;
        }
        // Times from the segment's first sample on; what lies before it is left out by the edit list.
        const std::int64_t start = av_rescale_q(packet->pts, stream.time_base, sample) - heard.begin - segment.begin;
        const std::int64_t length = av_rescale_q(packet->duration, stream.time_base, sample);
        const std::int64_t end = std::min(segment.end, heard.end - heard.begin) - segment.begin;
        if (start >= end)
            break;
        packet->pts = packet->dts = start;
        packet->duration = std::min(length, end - start);
        before.push_back(std::move(packet));
        if (start + length <= 0) {
            if (before.size() > packetsBefore(stream.codecpar->codec_id))
                before.pop_front();
            continue;
        }
        for (const Packet &one : before) {
            if (NSError error = writePacket(*one))
                return error;
        }
        before.clear();
    }
    return {};
}

NSError MovieWriter::beginPcm(const AVFrame &frame)
{
    const PcmForm pcm = pcmFor(AVSampleFormat(frame.format));
    std::unique_ptr<AVCodecParameters, FreeByAddress<avcodec_parameters_free>> sound(avcodec_parameters_alloc());
    if (!sound || av_channel_layout_copy(&sound->ch_layout, &frame.ch_layout) < 0)
        return failed(AVERROR(ENOMEM));
    sound->codec_type = AVMEDIA_TYPE_AUDIO;
    sound->codec_id = pcm.codec;
    sound->format = pcm.format;
    sound->sample_rate = frame.sample_rate;
    sound->bits_per_coded_sample = 8 * av_get_bytes_per_sample(pcm.format);
    sound->block_align = sound->ch_layout.nb_channels * av_get_bytes_per_sample(pcm.format);
    m_sourceFormat = AVSampleFormat(frame.format);
    m_format = pcm.format;
    AVChannelLayout layout = {};
    layout.order = AV_CHANNEL_ORDER_UNSPEC;
    layout.nb_channels = frame.ch_layout.nb_channels;
    SwrContext *made = nullptr;
    int code = swr_alloc_set_opts2(&made, &layout, m_format, frame.sample_rate, &layout, m_sourceFormat,
                                   frame.sample_rate, 0, nullptr);
    m_interleaver.reset(made);
    if (code >= 0)
        code = swr_init(made);
    return code < 0 ? failed(code) : begin(*sound);
}

NSError MovieWriter::writeSamples(const SampleRun &run)
{
    if (!m_output) {
        if (NSError error = beginPcm(*run.frame))
            return error;
    }
    const AVFrame &frame = *run.frame;
    const bool isSame = frame.format == m_sourceFormat && frame.sample_rate == m_form->sample_rate
        && frame.ch_layout.nb_channels == m_form->ch_layout.nb_channels;
    if (!isSame)
        return mediaError(invalidMedia, m_storage.path(),
                          QStringLiteral("the sound changes its rate or its channels on the way"),
                          QStringLiteral("Convert the source to one form first."));
    const Packet packet(av_packet_alloc());
    if (!packet || av_new_packet(packet.get(), run.count * m_form->block_align) < 0)
        return failed(AVERROR(ENOMEM));
    const std::vector<const std::uint8_t *> planes = planesOf(run);
    std::uint8_t *target = packet->data;
    const int got = swr_convert(m_interleaver.get(), &target, run.count,
                                const_cast<const std::uint8_t **>(planes.data()), run.count);
    if (got != run.count)
        return failed(got < 0 ? got : AVERROR_BUG);
    packet->pts = packet->dts = m_written;
    packet->duration = run.count;
    m_written += run.count;
    return writePacket(*packet);
}

NSError MovieWriter::decode(const Segment &segment)
{
    const Result<std::unique_ptr<AudioStreamReader>> reader = AudioStreamReader::open(segment.path, m_stop);
    if (!reader)
        return reader.error();
    std::int64_t position = 0;
    while (position < segment.end) {
        const Result<SampleRun> run = (*reader)->next();
        if (!run)
            return run.error();
        if (!run->frame)
            break;
        const std::int64_t from = std::max<std::int64_t>(segment.begin - position, 0);
        const std::int64_t to = std::min<std::int64_t>(segment.end - position, run->count);
        position += run->count;
        if (from >= to)
            continue;
        if (NSError error = writeSamples({run->frame, run->first + int(from), int(to - from)}))
            return error;
    }
    const AudioDamageReport &damage = (*reader)->damage();
    return damage.isEmpty() ? NSError() : damageError(segment.path, damage.places.front().what);
}

} // namespace Tessaron
