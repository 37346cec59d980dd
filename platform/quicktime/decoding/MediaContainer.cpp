#include "platform/quicktime/decoding/MediaContainer.h"

#include "platform/foundation/ByteOrder.h"
#include "platform/foundation/PathBytes.h"
#include "platform/quicktime/decoding/FFmpegErrors.h"

#include <algorithm>
#include <array>
#include <tuple>

namespace Tessaron
{

namespace
{

/// The containers that can hold sound and nothing else than what lies in the file. Left out on purpose: playlists and
/// whatever else names further files or addresses (concat, hls, dash, imf, sdp, rtp, rtsp, sap, vobsub, image2),
/// scripts (avisynth, vapoursynth), programs that make sound without an end (sbg, libgme), bare samples without a
/// header, and forms of text, pictures and subtitles.
constexpr const char *knownFormats =
    "3dostr,4xm,aa,aac,aax,ac3,ace,acm,adp,ads,adx,aea,afc,aiff,aix,alp,amr,amrnb,amrwb,apc,ape,apm,aptx,aptx_hd,"
    "argo_asf,argo_brp,argo_cvg,asf,asf_o,ast,au,avi,avr,bethsoftvid,bfstm,binka,bink,boa,brstm,caf,cdxl,codec2,daud,"
    "dcstr,derf,dfpwm,dhav,dsf,dsicin,dss,dts,dtshd,dv,dxa,ea,ea_cdata,eac3,epaf,film_cpk,flac,flv,fsb,fwse,g729,genh,"
    "gsm,gxf,hca,hcom,hnm,idcin,iff,ilbc,ircam,iss,jv,kux,kvag,live_flv,lmlm4,loas,luodat,lvf,lxf,matroska,mca,mgsts,"
    "mlp,mlv,mm,mmf,mods,moflex,mov,mp3,mpc,mpc8,mpeg,mpegts,msf,msp,mtaf,mtv,musx,mv,mvi,mxf,mxg,nc,nistsphere,nsp,"
    "nsv,nut,nuv,ogg,oma,paf,pmp,pp_bnk,psxstr,pva,pvf,qcp,r3d,redspark,rl2,rm,roq,rpl,rsd,rso,s337m,sbc,scd,sdr2,sds,"
    "sdx,shn,siff,sln,smjpeg,smk,smush,sol,sox,spdif,svag,svs,swf,tak,thp,tiertexseq,tmv,truehd,tta,ty,vag,vividas,"
    "vivo,"
    "vmd,voc,vpk,vqf,w64,wav,wc3movie,wsaud,wsd,wsvqa,wtv,wv,wve,xa,xmv,xvag,xwma,yop,libopenmpt";

/// What opening may read: enough for the tables of a movie of a day, far below what keeps anybody waiting.
constexpr std::int64_t openingBudget = std::int64_t(128) << 20;

/// The same from one packet to the next: a second of the greatest pictures may lie between two of sound.
constexpr std::int64_t mostBytesBetweenPackets = std::int64_t(256) << 20;
constexpr std::int64_t mostBytesBetweenPacketsOfSound = std::int64_t(16) << 20;

int refuseFurtherFiles(AVFormatContext *, AVIOContext **, const char *, int, AVDictionary **)
{
    return AVERROR(EACCES);
}

/// FFmpeg prints to standard error unless told otherwise. A program that has told it keeps its choice.
void keepLibrariesQuiet()
{
    if (av_log_get_level() == AV_LOG_INFO)
        av_log_set_level(AV_LOG_QUIET);
}

Result<AVFormatContext *> newContext(LocalMediaFile &file)
{
    AVFormatContext *const context = avformat_alloc_context();
    if (!context)
        return mediaErrorOfCode(AVERROR(ENOMEM), file.path(), QStringLiteral("opening"));
    context->pb = file.context();
    context->flags |= AVFMT_FLAG_CUSTOM_IO;
    context->io_open = refuseFurtherFiles;
    context->format_whitelist = av_strdup(knownFormats);
    // The descriptor is open already, and no protocol has this name.
    context->protocol_whitelist = av_strdup("none");
    context->interrupt_callback = {
        [](void *opaque) { return static_cast<const LocalMediaFile *>(opaque)->isCancelled() ? 1 : 0; }, &file};
    return context;
}

NSError openingError(int code, const LocalMediaFile &file)
{
    if (file.isCancelled())
        return mediaCancelledError(file.path());
    if (file.failure() != 0)
        return mediaErrorOfCode(AVERROR(file.failure()), file.path(), QStringLiteral("reading"));
    if (file.isBudgetUsedUp())
        return mediaError(invalidMovie, file.path(),
                          QStringLiteral("its tables have no end: 128 megabytes of them were read"),
                          QStringLiteral("The file is damaged; get it again from where it came from."));
    if (code == AVERROR(EINVAL)) // How a format that is not among the known ones is refused.
        code = AVERROR_INVALIDDATA;
    return mediaErrorOfCode(code, file.path(), QStringLiteral("opening"));
}

/// The last packet of a short Vorbis stream gets a duration of 27 hours.
constexpr std::int64_t longestPacketInSeconds = 60;

} // namespace

SkippedSamples skippedSamples(const AVPacket &packet)
{
    SkippedSamples skipped;
    std::size_t size = 0;
    const std::uint8_t *const data = av_packet_get_side_data(&packet, AV_PKT_DATA_SKIP_SAMPLES, &size);
    if (data && size >= 10) {
        skipped = {loadLittleEndian<std::uint32_t>(data), loadLittleEndian<std::uint32_t>(data + 4)};
    }
    return skipped;
}

MediaContainer::MediaContainer(std::unique_ptr<LocalMediaFile> file, InputContext context)
    : m_file(std::move(file))
    , m_context(std::move(context))
{
}

Result<std::unique_ptr<MediaContainer>> MediaContainer::open(const QByteArray &path, std::stop_token stop,
                                                             EditLists editLists)
{
    keepLibrariesQuiet();
    Result<std::unique_ptr<LocalMediaFile>> opened = LocalMediaFile::open(path, std::move(stop));
    if (!opened)
        return opened.error();
    std::unique_ptr<LocalMediaFile> file = *std::move(opened);
    file->setReadBudget(openingBudget);
    const Result<AVFormatContext *> made = newContext(*file);
    if (!made)
        return made.error();
    AVFormatContext *raw = *made;
    // Some formats are told by the end of the name. No path: nothing can be opened beside a file in /dev/null.
    const QByteArray url = "/dev/null/" + lastPathComponent(path).toByteArray();
    AVDictionary *options = nullptr;
    if (editLists == EditLists::Ignored)
        av_dict_set(&options, "ignore_editlist", "1", 0);
    // Frees the context when it fails.
    const int opening = avformat_open_input(&raw, url.constData(), nullptr, &options);
    av_dict_free(&options);
    if (opening < 0)
        return openingError(opening, *file);
    InputContext context(raw);
    const int code = avformat_find_stream_info(context.get(), nullptr);
    if (code < 0 || file->isCancelled() || file->failure() != 0)
        return openingError(code, *file);
    return std::unique_ptr<MediaContainer>(new MediaContainer(std::move(file), std::move(context)));
}

QByteArray MediaContainer::formatName() const
{
    const QByteArray names(m_context->iformat->name);
    return names.first(names.indexOf(',') < 0 ? names.size() : names.indexOf(','));
}

AVStream *MediaContainer::bestAudioStream() const
{
    AVStream *best = nullptr;
    const auto rank = [](const AVStream *stream) {
        return std::tuple(avcodec_find_decoder(stream->codecpar->codec_id) != nullptr,
                          (stream->disposition & AV_DISPOSITION_DEFAULT) != 0, stream->codecpar->ch_layout.nb_channels);
    };
    for (unsigned int index = 0; index < m_context->nb_streams; ++index) {
        AVStream *const stream = m_context->streams[index];
        if (stream->codecpar->codec_type == AVMEDIA_TYPE_AUDIO && (!best || rank(stream) > rank(best)))
            best = stream;
    }
    return best;
}

AVStream *MediaContainer::bestVideoStream() const
{
    for (unsigned int index = 0; index < m_context->nb_streams; ++index) {
        AVStream *const stream = m_context->streams[index];
        const bool isPicture = (stream->disposition & AV_DISPOSITION_ATTACHED_PIC) != 0;
        if (stream->codecpar->codec_type == AVMEDIA_TYPE_VIDEO && !isPicture)
            return stream;
    }
    return nullptr;
}

bool MediaContainer::isLossless(AVCodecID codec)
{
    const AVCodecDescriptor *const descriptor = avcodec_descriptor_get(codec);
    return descriptor && (descriptor->props & AV_CODEC_PROP_LOSSLESS) != 0
        && (descriptor->props & AV_CODEC_PROP_LOSSY) == 0;
}

bool MediaContainer::hasOnlyPackets() const
{
    static constexpr std::array formats = {"mp3", "aac", "flac", "ac3", "eac3", "dts"};
    const QByteArray name = formatName();
    return std::any_of(formats.begin(), formats.end(), [&](const char *one) { return name == one; });
}

bool MediaContainer::headerTellsLength(const AVStream &stream) const
{
    return isLossless(stream.codecpar->codec_id) && stream.duration > 0
        && m_context->duration_estimation_method != AVFMT_DURATION_FROM_BITRATE && ticksAreSamples(stream);
}

QMap<QByteArray, QByteArray> MediaContainer::tags(const AVStream &stream) const
{
    QMap<QByteArray, QByteArray> tags;
    // Ogg has them with the stream, most others with the file.
    for (const AVDictionary *const from : {stream.metadata, m_context->metadata}) {
        const AVDictionaryEntry *entry = nullptr;
        while ((entry = av_dict_get(from, "", entry, AV_DICT_IGNORE_SUFFIX)) != nullptr)
            tags.insert(QByteArray(entry->key).toLower(), QByteArray(entry->value));
    }
    return tags;
}

void MediaContainer::readOnly(const AVStream &stream)
{
    for (unsigned int index = 0; index < m_context->nb_streams; ++index)
        m_context->streams[index]->discard = int(index) == stream.index ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
}

Result<bool> MediaContainer::readPacket(AVPacket &packet, QString *damage)
{
    av_packet_unref(&packet);
    m_file->setReadBudget(bestVideoStream() ? mostBytesBetweenPackets : mostBytesBetweenPacketsOfSound);
    const int code = m_file->isCancelled() ? AVERROR_EXIT : av_read_frame(m_context.get(), &packet);
    if (code >= 0)
        return true;
    if (code == AVERROR_EXIT || m_file->isCancelled())
        return mediaCancelledError(path());
    if (m_file->failure() != 0)
        return mediaErrorOfCode(AVERROR(m_file->failure()), path(), QStringLiteral("reading"));
    if (code == AVERROR(ENOMEM))
        return mediaErrorOfCode(code, path(), QStringLiteral("reading"));
    if (m_file->isBudgetUsedUp() && damage)
        *damage = QStringLiteral("nothing but foreign bytes follows, for megabytes");
    else if (code != AVERROR_EOF && damage)
        *damage = mediaErrorOfCode(code, {}, QStringLiteral("reading a packet")).localizedFailureReason();
    return false;
}

Result<StreamLength> MediaContainer::measure(AVStream &stream)
{
    readOnly(stream);
    const Packet packet(av_packet_alloc());
    if (!packet)
        return mediaErrorOfCode(AVERROR(ENOMEM), path(), QStringLiteral("reading"));
    StreamLength length;
    const AVRational sample{1, std::max(stream.codecpar->sample_rate, 1)};
    // Ogg tells where packets end, and its last one ends early; the others tell how long their packets are.
    const bool isOgg = formatName() == "ogg";
    length.isExact = stream.codecpar->sample_rate > 0 && ticksAreSamples(stream);
    std::int64_t ticks = 0, end = 0, skipped = 0, packets = 0;
    for (;; ++packets) {
        const Result<bool> read = readPacket(*packet, nullptr);
        if (!read)
            return read.error();
        if (!*read)
            break;
        if (packet->stream_index != stream.index)
            continue;
        length.bytes += packet->size;
        const SkippedSamples edges = skippedSamples(*packet);
        skipped += std::int64_t(edges.atStart) + edges.atEnd;
        const bool beginsAtStart = packet->pts == AV_NOPTS_VALUE || packet->pts <= 0;
        const bool goesOn =
            packets == 0 ? beginsAtStart : packet->duration > 0 && av_sat_add64(packet->pts, packet->duration) > end;
        if (isOgg ? !goesOn : packet->duration <= 0)
            length.isExact = false;
        end = packet->pts == AV_NOPTS_VALUE ? end : av_sat_add64(packet->pts, packet->duration);
        const bool isCredible =
            packet->duration >= 0 && av_rescale_q(packet->duration, stream.time_base, {1, 1}) < longestPacketInSeconds;
        length.isExact = length.isExact && (isCredible || isOgg);
        if ((packet->flags & AV_PKT_FLAG_DISCARD) == 0 && isCredible)
            ticks = av_sat_add64(ticks, packet->duration);
    }
    length.samplesInPackets = av_rescale_q(ticks, stream.time_base, sample);
    length.samples = isOgg ? av_rescale_q(end, stream.time_base, sample) : length.samplesInPackets - skipped;
    length.isExact = length.isExact && length.samples >= 0 && length.samples < INT64_MAX / 2;
    length.samples = std::max<std::int64_t>(length.samples, 0);
    return length;
}

bool MediaContainer::ticksAreSamples(const AVStream &stream)
{
    return stream.time_base.num == 1 && stream.codecpar->sample_rate > 0
        && stream.time_base.den % stream.codecpar->sample_rate == 0;
}

} // namespace Tessaron
