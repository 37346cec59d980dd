#include "platform/quicktime/decoding/AudioStreamReader.h"

#include "platform/foundation/ByteOrder.h"
#include "platform/foundation/MessageTexts.h"
#include "platform/quicktime/decoding/FFmpegErrors.h"
#include "platform/quicktime/decoding/FlacChecksum.h"
#include "platform/quicktime/decoding/OggPages.h"

#include <algorithm>

namespace Tessaron
{

namespace
{

constexpr int silencePiece = 4096; ///< samples
/// What a packet without a duration is taken for when it cannot be decoded.
constexpr std::int64_t samplesOfUnknownPacket = 1024;
/// Longer gaps between packets are an error of their times, not lost sound.
constexpr std::int64_t longestGapInSeconds = 30;

constexpr std::int64_t longestVorbisPacket = 8192; ///< samples

bool isVorbisInOgg(const MediaContainer &container, const AVStream &stream)
{
    return stream.codecpar->codec_id == AV_CODEC_ID_VORBIS && container.formatName() == "ogg"
        && MediaContainer::ticksAreSamples(stream);
}

/// Whether the data chunk of a WAVE file has one of the sizes that stand for none.
bool waveHasNoLength(const LocalMediaFile &file)
{
    constexpr int mostChunks = 100;
    std::int64_t at = 12;
    for (int count = 0; count < mostChunks; ++count) {
        const QByteArray head = file.file().bytesAt(at, 8);
        if (head.size() < 8)
            return false;
        const auto size = loadLittleEndian<std::uint32_t>(reinterpret_cast<const std::uint8_t *>(head.constData()) + 4);
        if (head.startsWith("data"))
            return size == 0 || size == UINT32_MAX;
        at += 8 + std::int64_t(size) + size % 2;
    }
    return false;
}

std::int64_t samplesOfTicks(std::int64_t ticks, const AVStream &stream, int rate)
{
    return av_rescale_q(ticks, stream.time_base, AVRational{1, std::max(rate, 1)});
}

NSError noSoundError(const QByteArray &path)
{
    return mediaError(noMovieFound, path, QStringLiteral("it holds no sound"),
                      QStringLiteral("Choose a file with sound."));
}

NSError noDecoderError(const QByteArray &path, AVCodecID codec)
{
    const QString name = QString::fromUtf8(avcodec_get_name(codec));
    return mediaError(noCodecErr, path,
                      QStringLiteral("its sound has a form that cannot be decoded here (%1)").arg(name),
                      QStringLiteral("Convert it to WAVE, AIFF or FLAC with the program that made it."));
}

} // namespace

std::vector<const std::uint8_t *> planesOf(const SampleRun &run)
{
    const AVSampleFormat format = AVSampleFormat(run.frame->format);
    const int channels = run.frame->ch_layout.nb_channels;
    const bool isPlanar = av_sample_fmt_is_planar(format) != 0;
    const std::ptrdiff_t step = std::ptrdiff_t(av_get_bytes_per_sample(format)) * (isPlanar ? 1 : channels);
    std::vector<const std::uint8_t *> planes;
    planes.reserve(std::size_t(isPlanar ? channels : 1));
    for (int plane = 0; plane < (isPlanar ? channels : 1); ++plane)
        planes.push_back(run.frame->extended_data[plane] + run.first * step);
    return planes;
}

AudioStreamReader::AudioStreamReader(std::unique_ptr<MediaContainer> container, AVStream *stream, CodecContext decoder)
    : m_container(std::move(container))
    , m_stream(stream)
    , m_decoder(std::move(decoder))
    , m_packet(av_packet_alloc())
    , m_frame(av_frame_alloc())
    , m_silence(av_frame_alloc())
{
}

Result<std::unique_ptr<AudioStreamReader>> AudioStreamReader::open(const QByteArray &path, std::stop_token stop)
{
    // Edit lists are read here, to the sample; where that is not possible the libraries follow them.
    Result<std::unique_ptr<MediaContainer>> opened = MediaContainer::open(path, stop, EditLists::Ignored);
    std::optional<MediaRun> run;
    if (opened && (*opened)->formatName() == "mov" && (*opened)->bestAudioStream()) {
        const std::optional<MovieAtoms> movie = movieAtomsOf((*opened)->file().file());
        const MovieTrackAtoms *const track = movie ? movie->trackWithID((*opened)->bestAudioStream()->id) : nullptr;
        run = track ? heardRun(*movie, *track) : std::nullopt;
        if (!run)
            opened = MediaContainer::open(path, stop, EditLists::Followed);
    }
    if (!opened)
        return opened.error();
    AVStream *const stream = (*opened)->bestAudioStream();
    if (!stream)
        return noSoundError(path);
    const AVCodec *const codec = avcodec_find_decoder(stream->codecpar->codec_id);
    if (!codec)
        return noDecoderError(path, stream->codecpar->codec_id);
    std::unique_ptr<AudioStreamReader> reader(
        new AudioStreamReader(*std::move(opened), stream, CodecContext(avcodec_alloc_context3(codec))));
    reader->m_run = run;
    if (const NSError error = reader->openDecoder())
        return error;
    if (const NSError error = reader->findLength(std::move(stop)))
        return error;
    return reader;
}

NSError AudioStreamReader::openDecoder()
{
    if (!m_decoder || !m_packet || !m_frame || !m_silence)
        return mediaErrorOfCode(AVERROR(ENOMEM), path(), QStringLiteral("opening"));
    m_container->readOnly(*m_stream);
    int code = avcodec_parameters_to_context(m_decoder.get(), m_stream->codecpar);
    m_decoder->pkt_timebase = m_stream->time_base;
    // With threads for frames the last ones are lost unless everything is drained in time; a track decodes in
    // a hundredth of its playing time on one.
    m_decoder->thread_count = 1;
    if (MediaContainer::isLossless(m_stream->codecpar->codec_id))
        m_decoder->err_recognition = AV_EF_CRCCHECK | AV_EF_EXPLODE;
    if (m_run)
        m_decoder->flags2 |= AV_CODEC_FLAG2_SKIP_MANUAL;
    if (code >= 0)
        code = avcodec_open2(m_decoder.get(), nullptr, nullptr);
    if (code < 0)
        return noDecoderError(path(), m_stream->codecpar->codec_id);
    if (sampleRate() <= 0 || parameters().ch_layout.nb_channels <= 0)
        return noSoundError(path());
    return {};
}

NSError AudioStreamReader::findLength(std::stop_token stop)
{
    if (m_run) {
        m_length.samples = samplesOfTicks(m_run->end - m_run->begin, *m_stream, sampleRate());
        m_length.isExact = MediaContainer::ticksAreSamples(*m_stream);
        return {};
    }
    const std::int64_t announced = m_stream->duration > 0
        ? samplesOfTicks(m_stream->duration, *m_stream, sampleRate())
        : av_rescale(std::max<std::int64_t>(m_container->context()->duration, 0), sampleRate(), AV_TIME_BASE);
    m_length = {announced, m_container->headerTellsLength(*m_stream)};
    if (m_length.isExact || !MediaContainer::ticksAreSamples(*m_stream))
        return {};
    const Result<std::unique_ptr<MediaContainer>> other = MediaContainer::open(path(), std::move(stop));
    if (!other)
        return other.error();
    AVStream *const stream = (*other)->bestAudioStream();
    if (!stream)
        return noSoundError(path());
    const Result<StreamLength> measured = (*other)->measure(*stream);
    if (!measured)
        return measured.error();
    m_length = {measured->samples, measured->isExact};
    // The Xing tag counts the packets that there were once.
    const bool isCounted = m_container->context()->duration_estimation_method == AVFMT_DURATION_FROM_STREAM;
    if (m_container->formatName() == "mp3" && isCounted)
        m_missing = std::max<std::int64_t>(announced - measured->samplesInPackets, 0);
    if (isVorbisInOgg(*m_container, *m_stream))
        takeLengthOfVorbis(measured->samplesInPackets);
    return {};
}

/// The position of the last page is the length. The libraries find out by themselves how much of the last packet is too
/// much, and err where a stream is so short that its first page is its last one; so the end is cut here.
void AudioStreamReader::takeLengthOfVorbis(std::int64_t samplesInPackets)
{
    const std::optional<std::int64_t> end = endOfOggStream(m_container->file());
    if (m_container->context()->nb_streams != 1 || !end || std::abs(*end - samplesInPackets) > longestVorbisPacket)
        return;
    m_run = MediaRun{0, av_rescale_q(*end, AVRational{1, sampleRate()}, m_stream->time_base)};
    m_length = {*end, true};
    m_decoder->flags2 |= AV_CODEC_FLAG2_SKIP_MANUAL;
}

QMap<QString, QString> AudioStreamReader::tags() const
{
    QMap<QString, QString> texts;
    const QMap<QByteArray, QByteArray> tags = m_container->tags(*m_stream);
    for (auto tag = tags.begin(); tag != tags.end(); ++tag)
        texts.insert(QString::fromUtf8(tag.key()).toLower(), QString::fromUtf8(tag.value()));
    return texts;
}

double AudioStreamReader::progress() const
{
    if (m_isAtEnd)
        return 1;
    if (m_length.samples > 0)
        return std::min(1.0, double(m_heard) / double(m_length.samples));
    const std::int64_t length = m_container->file().length();
    return length > 0 ? std::min(1.0, double(m_container->file().position()) / double(length)) : 0;
}

void AudioStreamReader::report(const QString &what)
{
    m_damage.add(double(m_heard) / sampleRate(), what);
}

std::int64_t AudioStreamReader::samplesOfPacket() const
{
    const int rate = m_decoder->sample_rate > 0 ? m_decoder->sample_rate : sampleRate();
    if (m_packet->duration > 0)
        return std::min(samplesOfTicks(m_packet->duration, *m_stream, rate), longestGapInSeconds * rate);
    return m_decoder->frame_size > 0 ? m_decoder->frame_size : samplesOfUnknownPacket;
}

/// Of sound that was written into a pipe, without a length in its header, the last packet is as long as it is.
bool AudioStreamReader::isShortEndOfUnknownLength() const
{
    const LocalMediaFile &file = m_container->file();
    const bool endsFile = m_packet->pos >= 0 && av_sat_add64(m_packet->pos, m_packet->size) >= file.length();
    return endsFile && m_container->formatName() == "wav" && waveHasNoLength(file);
}

void AudioStreamReader::lookAtPacket()
{
    if ((m_packet->flags & AV_PKT_FLAG_CORRUPT) != 0 && !isShortEndOfUnknownLength())
        report(QStringLiteral("the file says that a packet is damaged"));
    lookForGap();
    const bool isAlone = m_container->hasOnlyPackets() && m_packet->pos >= 0;
    if (isAlone && m_nextByte && m_packet->pos > *m_nextByte)
        report(QStringLiteral("%1 between two packets belong to neither")
                   .arg(counted(std::uint64_t(m_packet->pos - *m_nextByte), "byte", "bytes")));
    if (isAlone)
        m_nextByte = m_packet->pos + m_packet->size;
}

void AudioStreamReader::lookForGap()
{
    // Times in Ogg are counted back from the end of each page, which goes wrong beside packets of other lengths.
    const bool isTimed =
        m_packet->pts != AV_NOPTS_VALUE && m_packet->duration > 0 && !isVorbisInOgg(*m_container, *m_stream);
    if (!isTimed || !MediaContainer::ticksAreSamples(*m_stream)) {
        m_nextTime.reset();
        return;
    }
    const std::int64_t rate = sampleRate();
    const std::int64_t gap =
        m_nextTime ? samplesOfTicks(av_sat_sub64(m_packet->pts, *m_nextTime), *m_stream, sampleRate()) : 0;
    // Streams that are chained in Ogg (RFC 3533, 4) have times of their own.
    const bool isNextStream = gap < 0 && m_container->formatName() == "ogg";
    if (gap > 0 && gap <= longestGapInSeconds * rate) {
        report(QStringLiteral("%1 are missing; silence stands for them")
                   .arg(counted(std::uint64_t(gap), "sample", "samples")));
        m_pendingSilence += gap;
    } else if (gap != 0 && !isNextStream && m_damage.count < AudioDamageReport::mostDescribed) {
        report(QStringLiteral("the times of two packets do not fit together"));
    }
    m_nextTime = av_sat_add64(m_packet->pts, m_packet->duration);
}

bool AudioStreamReader::makeSilence(std::int64_t samples)
{
    av_frame_unref(m_silence.get());
    m_silence->nb_samples = int(std::min<std::int64_t>(samples, silencePiece));
    m_silence->format = m_decoder->sample_fmt;
    m_silence->sample_rate = m_decoder->sample_rate > 0 ? m_decoder->sample_rate : sampleRate();
    const AVChannelLayout &layout =
        m_decoder->ch_layout.nb_channels > 0 ? m_decoder->ch_layout : m_stream->codecpar->ch_layout;
    if (m_silence->format < 0)
        m_silence->format = m_stream->codecpar->format < 0 ? AV_SAMPLE_FMT_S16 : m_stream->codecpar->format;
    if (av_channel_layout_copy(&m_silence->ch_layout, &layout) < 0 || av_frame_get_buffer(m_silence.get(), 0) < 0)
        return false;
    av_samples_set_silence(m_silence->extended_data, 0, m_silence->nb_samples, layout.nb_channels,
                           AVSampleFormat(m_silence->format));
    return true;
}

/// The decoder need not check again what is known to be whole.
void AudioStreamReader::chooseWhoChecks()
{
    if (m_stream->codecpar->codec_id != AV_CODEC_ID_FLAC)
        return;
    const bool isWhole = isKnownAsWholeFlacFrame({m_packet->data, std::size_t(std::max(m_packet->size, 0))});
    m_decoder->err_recognition = isWhole ? AV_EF_EXPLODE : AV_EF_CRCCHECK | AV_EF_EXPLODE;
}

/// False when the decoder has had all packets, and the word that there are no more.
Result<bool> AudioStreamReader::feedDecoder()
{
    if (m_isDraining)
        return false;
    if (!m_hasPacket) {
        QString damage;
        const Result<bool> read = m_container->readPacket(*m_packet, &damage);
        if (!read)
            return read.error();
        if (!*read) {
            if (!damage.isEmpty())
                report(damage);
            m_isDraining = true;
            avcodec_send_packet(m_decoder.get(), nullptr);
            return true;
        }
        if (m_packet->stream_index != m_stream->index)
            return true;
        lookAtPacket();
        m_hasPacket = true;
        if (m_pendingSilence > 0)
            return true; // What is missing comes before this packet.
    }
    chooseWhoChecks();
    const int code = avcodec_send_packet(m_decoder.get(), m_packet.get());
    if (code == AVERROR(EAGAIN))
        return true;
    m_hasPacket = false;
    if (code == AVERROR(ENOMEM))
        return mediaErrorOfCode(code, path(), QStringLiteral("decoding"));
    if (code < 0) {
        report(QStringLiteral("a packet could not be decoded; silence stands for it"));
        m_pendingSilence += samplesOfPacket();
    }
    return true;
}

/// Puts the next samples into the frame or the silence; false at the end.
Result<bool> AudioStreamReader::decodeMore()
{
    for (;;) {
        av_frame_unref(m_frame.get());
        const int code = avcodec_receive_frame(m_decoder.get(), m_frame.get());
        if (code >= 0) {
            if (m_frame->decode_error_flags != 0 || (m_frame->flags & AV_FRAME_FLAG_CORRUPT) != 0)
                report(QStringLiteral("a packet could be decoded in part only"));
            if (m_frame->nb_samples > 0)
                return true;
            continue;
        }
        if (code == AVERROR(ENOMEM))
            return mediaErrorOfCode(code, path(), QStringLiteral("decoding"));
        if (code != AVERROR(EAGAIN) && code != AVERROR_EOF) {
            report(QStringLiteral("a packet could not be decoded; silence stands for it"));
            m_pendingSilence += samplesOfPacket();
        }
        if (m_pendingSilence > 0) {
            if (!makeSilence(m_pendingSilence))
                return mediaErrorOfCode(AVERROR(ENOMEM), path(), QStringLiteral("decoding"));
            m_pendingSilence -= m_silence->nb_samples;
            av_frame_move_ref(m_frame.get(), m_silence.get());
            return true;
        }
        const Result<bool> fed = feedDecoder();
        if (!fed)
            return fed.error();
        if (!*fed)
            return false;
    }
}

SampleRun AudioStreamReader::heardPart()
{
    const std::int64_t begin = m_position;
    const std::int64_t end = begin + m_frame->nb_samples;
    m_position = end;
    // A decoder may turn out another rate than the container says, as with AAC's spectral band replication.
    const int rate = m_frame->sample_rate > 0 ? m_frame->sample_rate : sampleRate();
    std::int64_t from = begin, to = end;
    if (m_run) {
        from = std::max(from, samplesOfTicks(m_run->begin, *m_stream, rate));
        to = std::min(to, samplesOfTicks(m_run->end, *m_stream, rate));
    } else if (m_length.isExact) {
        to = std::min(to, av_rescale(m_length.samples, rate, sampleRate()));
    }
    if (from >= to)
        return {};
    m_heard += av_rescale(to - from, sampleRate(), rate);
    return {m_frame.get(), int(from - begin), int(to - from)};
}

void AudioStreamReader::lookAtEnd()
{
    m_isAtEnd = true;
    const std::int64_t missing = m_missing + m_length.samples - m_heard;
    // A change of the rate on the way is rounded at each frame.
    const std::int64_t tolerance = m_decoder->sample_rate == sampleRate() ? 0 : sampleRate() / 100;
    if (m_length.isExact && missing > tolerance)
        report(QStringLiteral("the sound ends %1 before its announced end")
                   .arg(counted(std::uint64_t(missing), "sample", "samples")));
    const bool goesOn = m_decoder->sample_rate == sampleRate() && m_position > m_length.samples;
    if (m_length.isExact && !m_run && goesOn)
        report(QStringLiteral("%1 behind its announced end are left out")
                   .arg(counted(std::uint64_t(m_position - m_length.samples), "sample", "samples")));
}

Result<SampleRun> AudioStreamReader::next()
{
    while (!m_isAtEnd) {
        const Result<bool> decoded = decodeMore();
        if (!decoded)
            return decoded.error();
        if (!*decoded) {
            lookAtEnd();
            break;
        }
        const SampleRun run = heardPart();
        if (run.frame)
            return run;
    }
    return SampleRun{};
}

} // namespace Tessaron
