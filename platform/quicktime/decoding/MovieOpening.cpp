#include "platform/quicktime/decoding/MovieOpening.h"

#include "platform/quicktime/MediaErrors.h"
#include "platform/quicktime/MovieAtoms.h"
#include "platform/quicktime/decoding/AnnouncedSize.h"
#include "platform/quicktime/decoding/AudioStreamReader.h"
#include "platform/quicktime/decoding/MediaContainer.h"

#include <algorithm>
#include <array>
#include <utility>

namespace Tessaron
{

namespace
{

constexpr std::int64_t usualTimeScale = 600;
constexpr qsizetype longestText = 64 << 10;
constexpr std::int64_t sizeOfPlainSoundDescription = 36;
constexpr std::int64_t sizeOfCodeAndSize = 8;

/// FFmpeg keeps four characters with the first one in the lowest byte.
std::uint32_t fourCharacters(std::uint32_t tag)
{
    return __builtin_bswap32(tag);
}

std::uint32_t codeOfStream(const AVCodecParameters &parameters, const MovieTrackAtoms *atoms, bool isSound)
{
    if (atoms && atoms->sampleDescription.size() >= sizeOfCodeAndSize)
        return fourCharacters(*reinterpret_cast<const std::uint32_t *>(atoms->sampleDescription.constData() + 4));
    const AVCodecTag *const tags[] = {isSound ? avformat_get_mov_audio_tags() : avformat_get_mov_video_tags(), nullptr};
    const unsigned int known = av_codec_get_tag(tags, parameters.codec_id);
    return fourCharacters(known != 0 ? known : parameters.codec_tag);
}

std::int16_t shortOf(int value)
{
    return std::int16_t(std::clamp(value, 0, INT16_MAX));
}

QString nameOfCodec(AVCodecID codec)
{
    const AVCodecDescriptor *const descriptor = avcodec_descriptor_get(codec);
    return QString::fromUtf8(descriptor && descriptor->long_name ? descriptor->long_name : "");
}

/// Bits of a sample. Codecs that lose something have no number of them, whatever a container says.
int bitsOf(const AVCodecParameters &parameters)
{
    constexpr int bitsOfOthers = 16;
    if (parameters.bits_per_raw_sample > 0)
        return parameters.bits_per_raw_sample;
    if (const int bits = av_get_bits_per_sample(parameters.codec_id); bits > 0)
        return bits;
    const AVCodecDescriptor *const descriptor = avcodec_descriptor_get(parameters.codec_id);
    const bool isLossless = descriptor && (descriptor->props & AV_CODEC_PROP_LOSSLESS) != 0;
    return isLossless && parameters.bits_per_coded_sample > 0 ? parameters.bits_per_coded_sample : bitsOfOthers;
}

QTSoundDescription soundOf(const AVCodecParameters &parameters, const MovieTrackAtoms *atoms)
{
    QTSoundDescription sound;
    sound.dataFormat = codeOfStream(parameters, atoms, true);
    sound.sampleRate = std::uint32_t(std::max(parameters.sample_rate, 0));
    sound.sampleSize = shortOf(bitsOf(parameters));
    sound.numChannels = shortOf(parameters.ch_layout.nb_channels);
    sound.descSize = atoms ? atoms->sizeOfDescription : sizeOfPlainSoundDescription;
    sound.name = nameOfCodec(parameters.codec_id);
    return sound;
}

QTImageDescription imageOf(const AVCodecParameters &parameters, const MovieTrackAtoms *atoms)
{
    QTImageDescription image;
    image.codecType = codeOfStream(parameters, atoms, false);
    image.width = shortOf(parameters.width);
    image.height = shortOf(parameters.height);
    if (parameters.bits_per_coded_sample > 0)
        image.depth = shortOf(parameters.bits_per_coded_sample);
    image.name = nameOfCodec(parameters.codec_id);
    return image;
}

QTTrack trackOf(const AVStream &stream, const MovieTrackAtoms *atoms, QTTime movie)
{
    QTTrack track;
    const AVCodecParameters &parameters = *stream.codecpar;
    if (parameters.codec_type == AVMEDIA_TYPE_AUDIO) {
        track.mediaType = "soun";
        track.sound = soundOf(parameters, atoms);
    } else if (parameters.codec_type == AVMEDIA_TYPE_VIDEO) {
        track.mediaType = "vide";
        track.image = imageOf(parameters, atoms);
    } else if (parameters.codec_type == AVMEDIA_TYPE_SUBTITLE) {
        track.mediaType = "text";
    }
    track.duration = stream.duration > 0
        ? av_rescale_q(stream.duration, stream.time_base, AVRational{1, int(movie.timeScale)})
        : movie.timeValue;
    return track;
}

/// Covers are kept as streams of pictures, and are not tracks.
bool isTrack(const AVStream &stream)
{
    return (stream.disposition & AV_DISPOSITION_ATTACHED_PIC) == 0;
}

NSError nothingToSeeOrHear(const QByteArray &path)
{
    return mediaError(noMovieFound, path, QStringLiteral("it holds neither sound nor pictures that move"),
                      QStringLiteral("Choose an audio or movie file."));
}

QTTime durationOfMovie(const MediaContainer &container, const std::optional<MovieAtoms> &atoms)
{
    const bool hasHeader = atoms && !atoms->isFragmented && atoms->duration > 0
        && atoms->duration < std::uint64_t(INT64_MAX) && atoms->timeScale <= INT32_MAX;
    if (hasHeader)
        return {std::int64_t(atoms->duration), atoms->timeScale};
    const std::int64_t duration = std::max<std::int64_t>(container.context()->duration, 0);
    return {av_rescale(duration, usualTimeScale, AV_TIME_BASE), usualTimeScale};
}

/// The length of a file with sound alone, as it is announced.
QTTime announcedDuration(const MediaContainer &container, const AVStream &sound)
{
    const int rate = sound.codecpar->sample_rate;
    if (rate <= 0)
        return durationOfMovie(container, std::nullopt);
    const std::int64_t duration = sound.duration > 0
        ? av_rescale_q(sound.duration, sound.time_base, AVRational{1, rate})
        : av_rescale(std::max<std::int64_t>(container.context()->duration, 0), rate, AV_TIME_BASE);
    return {duration, rate};
}

/// The keys that QuickTime has for what other files call by a name.
QByteArray keyOfTag(const QByteArray &name)
{
    static constexpr std::array<std::pair<const char *, const char *>, 6> keys = {{
        {"album", "\251alb"},
        {"artist", "\251ART"},
        {"author", "\251aut"},
        {"title", "\251nam"},
        {"date", "\251day"},
        {"year", "\251day"},
    }};
    const auto *const found =
        std::find_if(keys.begin(), keys.end(), [&](const auto &key) { return name == key.first; });
    return found == keys.end() ? name : QByteArray(found->second);
}

std::vector<MovieMetadataItem> metadataOf(const QMap<QByteArray, QByteArray> &tags)
{
    std::vector<MovieMetadataItem> items;
    for (auto tag = tags.begin(); tag != tags.end(); ++tag)
        items.push_back({keyOfTag(tag.key()), tag.value().left(longestText)});
    return items;
}

std::optional<MovieCover> coverOf(const AVStream &stream)
{
    const AVCodecID codec = stream.codecpar->codec_id;
    const char *const extension = codec == AV_CODEC_ID_MJPEG ? "jpg"
        : codec == AV_CODEC_ID_PNG                           ? "png"
        : codec == AV_CODEC_ID_GIF                           ? "gif"
        : codec == AV_CODEC_ID_BMP                           ? "bmp"
                                                             : nullptr;
    if (!extension || stream.attached_pic.size <= 0)
        return {};
    return MovieCover{extension, -1, stream.attached_pic.size};
}

} // namespace

Result<MovieContents> openMovie(const QByteArray &path, const std::stop_token &stop)
{
    const Result<std::unique_ptr<MediaContainer>> container = MediaContainer::open(path, stop);
    if (!container)
        return container.error();
    const AVStream *const sound = (*container)->bestAudioStream();
    if (!sound && !(*container)->bestVideoStream())
        return nothingToSeeOrHear(path);
    const bool hasAtoms = (*container)->formatName() == "mov";
    const std::optional<MovieAtoms> atoms = hasAtoms ? movieAtomsOf((*container)->file().file()) : std::nullopt;
    MovieContents movie;
    movie.duration = durationOfMovie(**container, atoms);
    if (sound && sound->codecpar->sample_rate > 0) {
        movie.soundRate = std::uint32_t(sound->codecpar->sample_rate);
        if (!hasAtoms && !(*container)->bestVideoStream()) {
            const Result<std::unique_ptr<AudioStreamReader>> reader = AudioStreamReader::open(path, stop);
            if (!reader && reader.error().code() == userCanceledErr)
                return reader.error();
            // Without a decoder the length is what the container says.
            if (reader)
                movie.duration = {(*reader)->length().samples, (*reader)->sampleRate()};
        }
    }
    for (unsigned int index = 0; index < (*container)->context()->nb_streams; ++index) {
        const AVStream &stream = *(*container)->context()->streams[index];
        if (isTrack(stream))
            movie.tracks.push_back(trackOf(stream, atoms ? atoms->trackWithID(stream.id) : nullptr, movie.duration));
    }
    return movie;
}

Result<std::uint64_t> sizeOfTrack(const QByteArray &path, std::size_t index, const std::stop_token &stop)
{
    const Result<std::unique_ptr<MediaContainer>> container = MediaContainer::open(path, stop);
    if (!container)
        return container.error();
    AVStream *wanted = nullptr;
    std::size_t tracks = 0;
    for (unsigned int at = 0; at < (*container)->context()->nb_streams; ++at) {
        AVStream *const stream = (*container)->context()->streams[at];
        if (isTrack(*stream) && tracks++ == index)
            wanted = stream;
    }
    if (!wanted)
        return mediaError(invalidMedia, path, QStringLiteral("it has no track %1").arg(index + 1),
                          QStringLiteral("Open the file again; it has changed."));
    if ((*container)->formatName() == "mov") {
        std::uint64_t size = 0;
        for (int entry = 0; entry < avformat_index_get_entries_count(wanted); ++entry)
            size += std::uint64_t(std::max(avformat_index_get_entry(wanted, entry)->size, 0));
        if (size > 0)
            return size;
    }
    const Result<StreamLength> length = (*container)->measure(*wanted);
    if (!length)
        return length.error();
    return std::uint64_t(length->bytes);
}

Result<MovieDescription> describeStreams(const QByteArray &path, const std::stop_token &stop)
{
    const Result<std::unique_ptr<MediaContainer>> opened = MediaContainer::open(path, stop);
    if (!opened)
        return opened.error();
    MediaContainer &container = **opened;
    const AVFormatContext &context = *container.context();
    const AVStream *const sound = container.bestAudioStream(), *const video = container.bestVideoStream();
    if (!sound && !video)
        return nothingToSeeOrHear(path);
    MovieDescription movie;
    movie.container = QString::fromUtf8(context.iformat->long_name ? context.iformat->long_name : "");
    movie.duration = video ? durationOfMovie(container, std::nullopt) : announcedDuration(container, *sound);
    movie.metadata = metadataOf(container.tags(sound ? *sound : *video));
    for (unsigned int index = 0; index < context.nb_streams; ++index) {
        AVStream &stream = *context.streams[index];
        if (!isTrack(stream)) {
            if (!movie.cover)
                movie.cover = coverOf(stream);
            continue;
        }
        movie.tracks.push_back(trackOf(stream, nullptr, movie.duration));
        movie.tracks.back().dataSize = announcedSize(container, stream);
    }
    return movie;
}

Result<QByteArray> attachedPicture(const QByteArray &path, const std::stop_token &stop)
{
    const Result<std::unique_ptr<MediaContainer>> opened = MediaContainer::open(path, stop);
    if (!opened)
        return opened.error();
    const AVFormatContext &context = *(*opened)->context();
    for (unsigned int index = 0; index < context.nb_streams; ++index) {
        const AVStream &stream = *context.streams[index];
        if (!isTrack(stream) && coverOf(stream))
            return QByteArray(reinterpret_cast<const char *>(stream.attached_pic.data), stream.attached_pic.size);
    }
    return mediaError(invalidMedia, path, QStringLiteral("it has no cover"),
                      QStringLiteral("Describe the file again; it has changed."));
}

} // namespace Tessaron
