#include "platform/quicktime/QTMovie.h"

#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/quicktime/MediaErrors.h"
#include "platform/quicktime/decoding/AudioStreamReader.h"
#include "platform/quicktime/decoding/MediaContainer.h"
#include "platform/quicktime/decoding/MovieAtoms.h"

#include <algorithm>

namespace Tessaron
{

const QString QTMovieFileNameAttribute = QStringLiteral("QTMovieFileNameAttribute");
const QString QTMovieOpenAsyncOKAttribute = QStringLiteral("QTMovieOpenAsyncOKAttribute");

namespace
{

constexpr std::int64_t usualTimeScale = 600;
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

QTSoundDescription soundOf(const AVCodecParameters &parameters, const MovieTrackAtoms *atoms)
{
    QTSoundDescription sound;
    sound.dataFormat = codeOfStream(parameters, atoms, true);
    sound.sampleRate = std::uint32_t(std::max(parameters.sample_rate, 0));
    const int bits =
        parameters.bits_per_raw_sample > 0 ? parameters.bits_per_raw_sample : parameters.bits_per_coded_sample;
    sound.sampleSize = shortOf(bits > 0 ? bits : 16);
    sound.numChannels = shortOf(parameters.ch_layout.nb_channels);
    sound.descSize = atoms ? atoms->sampleDescription.size() : sizeOfPlainSoundDescription;
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
    const AVCodecDescriptor *const codec = avcodec_descriptor_get(parameters.codec_id);
    image.name = QString::fromUtf8(codec && codec->long_name ? codec->long_name : "");
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

/// Covers are kept as streams of pictures, and are no tracks.
bool isTrack(const AVStream &stream)
{
    return (stream.disposition & AV_DISPOSITION_ATTACHED_PIC) == 0;
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

std::shared_ptr<QTMovie> failed(NSError *to, const NSError &error)
{
    if (to)
        *to = error;
    return nullptr;
}

} // namespace

std::shared_ptr<QTMovie> QTMovie::newMovie()
{
    return std::shared_ptr<QTMovie>(new QTMovie);
}

std::shared_ptr<QTMovie> QTMovie::initWithAttributes(const QVariantMap &attributes, NSError *error,
                                                     std::stop_token stop)
{
    const QString name = attributes.value(QTMovieFileNameAttribute).toString();
    return movieByOpeningFileSync(fileSystemRepresentation(name), error, std::move(stop));
}

std::shared_ptr<QTMovie> QTMovie::movieByOpeningFileSync(const QByteArray &path, NSError *error, std::stop_token stop)
{
    if (error)
        *error = NSError();
    const Result<std::unique_ptr<MediaContainer>> container = MediaContainer::open(path, stop);
    if (!container)
        return failed(error, container.error());
    const AVStream *const sound = (*container)->bestAudioStream();
    if (!sound && !(*container)->bestVideoStream())
        return failed(error,
                      mediaError(noMovieFound, path, QStringLiteral("it holds neither sound nor pictures that move"),
                                 QStringLiteral("Choose an audio or movie file.")));
    const bool hasAtoms = (*container)->formatName() == "mov";
    const std::optional<MovieAtoms> atoms = hasAtoms ? movieAtomsOf((*container)->file()) : std::nullopt;
    auto movie = newMovie();
    movie->m_path = path;
    movie->m_duration = durationOfMovie(**container, atoms);
    if (sound && sound->codecpar->sample_rate > 0) {
        movie->m_soundRate = std::uint32_t(sound->codecpar->sample_rate);
        if (!hasAtoms && !(*container)->bestVideoStream()) {
            const Result<std::unique_ptr<AudioStreamReader>> reader = AudioStreamReader::open(path, stop);
            if (!reader && reader.error().code() == userCanceledErr)
                return failed(error, reader.error());
            // Without a decoder the length is what the container says.
            if (reader)
                movie->m_duration = {(*reader)->length().samples, (*reader)->sampleRate()};
        }
    }
    for (unsigned int index = 0; index < (*container)->context()->nb_streams; ++index) {
        const AVStream &stream = *(*container)->context()->streams[index];
        if (isTrack(stream))
            movie->m_tracks.push_back(
                trackOf(stream, atoms ? atoms->trackWithID(stream.id) : nullptr, movie->m_duration));
    }
    return movie;
}

Result<std::uint64_t> QTMovie::dataSizeOfTrack(std::size_t index, std::stop_token stop) const
{
    const Result<std::unique_ptr<MediaContainer>> container = MediaContainer::open(m_path, std::move(stop));
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
        return mediaError(invalidMedia, m_path, QStringLiteral("it has no track %1").arg(index + 1),
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

NSError InsertMovieSegment(const QTMovie &source, QTMovie &destination, std::int64_t sourceIn,
                           std::int64_t sourceDuration)
{
    const QTTime whole = source.duration();
    if (source.m_soundRate == 0)
        return mediaError(invalidMedia, source.path(), QStringLiteral("it holds no sound"),
                          QStringLiteral("Choose a file with sound."));
    if (sourceIn < 0 || sourceDuration <= 0 || sourceIn >= whole.timeValue)
        return mediaError(invalidTime, source.path(), QStringLiteral("it has no sound at this time"),
                          QStringLiteral("Choose a part that lies within the file."));
    const std::int64_t left = whole.timeValue - sourceIn;
    const std::int64_t end = sourceIn + std::min(sourceDuration, left);
    const auto samples = [&](std::int64_t time) { return av_rescale(time, source.m_soundRate, whole.timeScale); };
    // Up to the very end means to the last sample, however coarse the movie's times are.
    const std::int64_t lastSample = sourceDuration >= left ? INT64_MAX : samples(end);
    destination.m_segments.push_back({source.path(), samples(sourceIn), lastSample});
    destination.m_duration.timeScale = whole.timeScale;
    destination.m_duration.timeValue += end - sourceIn;
    return {};
}

} // namespace Tessaron
