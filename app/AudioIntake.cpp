#include "app/AudioIntake.h"

#include "app/AbandonedJob.h"
#include "app/Words.h"

#include <QHash>
#include <QLocale>
#include <QSet>

#include <algorithm>
#include <array>
#include <platform/foundation/FileSystemRepresentation.h>
#include <platform/foundation/MessageTexts.h>

namespace Tessaron::Desktop
{

namespace
{

/// Under which names files keep a text: those of QuickTime first.
using Names = std::array<const char *, 4>;
constexpr Names titleNames = {"\251nam", "title", "", ""};
constexpr Names artistNames = {"\251ART", "artist", "performer", ""};
constexpr Names songwriterNames = {"songwriter", "lyricist", "writer", "text"};
constexpr Names composerNames = {"\251wrt", "\251com", "composer", ""};
constexpr Names arrangerNames = {"\251arg", "arranger", "", ""};
constexpr Names albumNames = {"\251alb", "album", "", ""};
constexpr Names albumArtistNames = {"aART", "album_artist", "albumartist", ""};
constexpr Names isrcNames = {"isrc", "tsrc", "", ""};

QString textIn(const MovieDescription &movie, const Names &names)
{
    for (const char *const name : names) {
        for (const MovieMetadataItem &item : movie.metadata) {
            if (*name != '\0' && (item.key == name || item.key.toLower() == name))
                return QString::fromUtf8(item.value).simplified();
        }
    }
    return {};
}

double secondsOf(const MovieDescription &movie)
{
    const QTTime &duration = movie.duration;
    return duration.timeScale > 0 ? double(duration.timeValue) / double(duration.timeScale) : 0;
}

bool hasSound(const MovieDescription &movie)
{
    return std::any_of(movie.tracks.begin(), movie.tracks.end(),
                       [](const QTTrack &track) { return track.sound.has_value(); });
}

/// The file's own texts and code.
void takeTags(const MovieDescription &movie, AudioTrackOrder *order)
{
    const auto take = [&](CDTextKind kind, const Names &names) {
        if (textOfKind(order->texts, kind).isEmpty())
            setTextOfKind(order->texts, kind, textIn(movie, names));
    };
    take(CDTextKind::Title, titleNames);
    take(CDTextKind::Performer, artistNames);
    take(CDTextKind::Songwriter, songwriterNames);
    take(CDTextKind::Composer, composerNames);
    take(CDTextKind::Arranger, arrangerNames);
    if (order->isrc.isEmpty())
        order->isrc = validIsrc(textIn(movie, isrcNames));
}

/// "FLAC, 44.1 kHz, stereo", as far as it is known.
QString soundText(const MovieDescription &movie)
{
    const auto track = std::find_if(movie.tracks.begin(), movie.tracks.end(),
                                    [](const QTTrack &each) { return each.sound.has_value(); });
    if (track == movie.tracks.end())
        return {};
    constexpr double thousand = 1000;
    const QTSoundDescription &sound = *track->sound;
    QStringList facts = {sound.name.isEmpty() ? movie.container : sound.name};
    if (sound.sampleRate > 0)
        facts << AudioIntake::tr("%1 kHz").arg(QLocale().toString(sound.sampleRate / thousand));
    if (sound.numChannels == 1)
        facts << AudioIntake::tr("mono");
    else if (sound.numChannels == 2)
        facts << AudioIntake::tr("stereo");
    else if (sound.numChannels > 2)
        facts << AudioIntake::tr("%n channels", nullptr, sound.numChannels);
    return facts.join(QStringLiteral(", "));
}

/// What all files say; empty where two differ or one says nothing.
QString commonText(const std::vector<MovieDescription> &movies, const Names &names)
{
    QSet<QString> texts;
    for (const MovieDescription &movie : movies)
        texts.insert(textIn(movie, names));
    return texts.size() == 1 ? *texts.begin() : QString();
}

QList<QByteArray> filesOf(const AudioTracks &described)
{
    QList<QByteArray> files;
    for (const AudioTrackOrder &track : described.tracks) {
        for (const std::vector<AudioPart> *const parts : {&track.pregap, &track.sound}) {
            for (const AudioPart &part : *parts) {
                if (!files.contains(part.path))
                    files << part.path;
            }
        }
    }
    return files;
}

} // namespace

AudioIntake::AudioIntake(QObject *parent)
    : QObject(parent)
{
}

AudioIntake::~AudioIntake()
{
    abandonJob(std::move(m_info));
}

bool AudioIntake::isListName(const QByteArray &path)
{
    const QByteArray name = path.toLower();
    return name.endsWith(".m3u") || name.endsWith(".m3u8");
}

bool AudioIntake::isSheetName(const QByteArray &path)
{
    return path.toLower().endsWith(".cue");
}

void AudioIntake::add(const QList<QByteArray> &paths, int row)
{
    if (paths.isEmpty())
        return;
    m_waiting << Request{paths, row};
    if (!m_isRunning)
        startNext();
}

void AudioIntake::cancel()
{
    m_waiting.clear();
    m_batches.clear();
    m_reading.cancel();
    abandonJob(std::move(m_info));
    if (std::exchange(m_isRunning, false))
        Q_EMIT ended();
}

/// Lists and sheets are read first; what they name is described like what was added itself.
void AudioIntake::startNext()
{
    const Request request = m_waiting.takeFirst();
    m_isRunning = true;
    m_found = {};
    m_found.row = request.row;
    m_movies.clear();
    Q_EMIT started();
    const auto batches = std::make_shared<std::deque<Batch>>();
    m_reading.start(
        [paths = request.paths, batches](const std::stop_token &stop) {
            for (const QByteArray &path : paths) {
                if (stop.stop_requested())
                    return;
                if (!isListName(path) && !isSheetName(path)) {
                    if (batches->empty() || batches->back().described || batches->back().error)
                        batches->emplace_back();
                    batches->back().paths << path;
                    continue;
                }
                Result<AudioTracks> tracks = audioTracksAt(path);
                Batch &batch = batches->emplace_back();
                batch.path = path;
                batch.error = tracks.error();
                if (!tracks)
                    continue;
                batch.paths = filesOf(*tracks);
                batch.described = *std::move(tracks);
            }
        },
        [this, batches] {
            m_batches = std::move(*batches);
            m_isOneDescription = m_batches.size() == 1;
            describeNext();
        });
}

void AudioIntake::describeNext()
{
    while (!m_batches.empty() && m_batches.front().error) {
        m_found.problems << errorText(m_batches.front().error);
        m_batches.pop_front();
    }
    if (m_batches.empty()) {
        end();
        return;
    }
    InfoOrder order;
    order.paths = m_batches.front().paths;
    m_info = std::make_unique<InfoJob>(std::move(order));
    connect(m_info.get(), &DiscJob::progressed, this, &AudioIntake::progressed);
    connect(m_info.get(), &InfoJob::finished, this, [this](const InfoResult &result) {
        m_info.release()->deleteLater(); // which has the result until then
        const Batch batch = std::move(m_batches.front());
        m_batches.pop_front();
        takeInfo(batch, result);
        describeNext();
    });
    m_info->start();
}

void AudioIntake::takeInfo(const Batch &batch, const InfoResult &result)
{
    for (const UnreadableFolder &folder : result.unreadable)
        m_found.problems << tr("The folder %1 cannot be listed: %2")
                                .arg(displayableText(quoted(folder.path)), systemText(folder.errnoValue));
    if (result.error)
        m_found.problems << errorText(result.error);
    for (const MovieFileInfo &file : result.files) {
        if (file.error)
            m_found.problems << errorText(file.error);
        else if (!hasSound(file.movie))
            m_found.problems << tr("%1 holds no sound.").arg(displayableText(quoted(file.path)));
    }
    if (batch.described)
        takeDescribed(batch, result);
    else
        takeFiles(result);
}

void AudioIntake::takeFiles(const InfoResult &result)
{
    for (const MovieFileInfo &file : result.files) {
        if (file.error || !hasSound(file.movie))
            continue;
        AudioTrackRow row;
        row.order.sound = {{file.path, 0, 0}};
        row.order.hasOwnFile = true;
        takeTags(file.movie, &row.order);
        row.seconds = secondsOf(file.movie);
        row.format = soundText(file.movie);
        m_found.tracks << row;
        m_movies.push_back(file.movie);
    }
}

void AudioIntake::takeDescribed(const Batch &batch, const InfoResult &result)
{
    const AudioTracks &described = *batch.described;
    QHash<QByteArray, const MovieDescription *> movies;
    for (const MovieFileInfo &file : result.files) {
        if (!file.error && hasSound(file.movie))
            movies.insert(file.path, &file.movie);
    }
    for (const AudioTrackOrder &order : described.tracks) {
        AudioTrackRow row;
        row.order = order;
        bool isWhole = true;
        for (const std::vector<AudioPart> *const parts : {&order.pregap, &order.sound}) {
            for (const AudioPart &part : *parts) {
                const MovieDescription *const movie = movies.value(part.path);
                isWhole = isWhole && movie;
                if (part.frames > 0)
                    row.seconds += double(part.frames) / soundFramesPerSecond;
                else if (movie)
                    row.seconds += std::max(secondsOf(*movie) - double(part.first) / soundFramesPerSecond, 0.0);
            }
        }
        if (!isWhole)
            continue; // its file was told
        const MovieDescription &movie = *movies.value(row.path());
        if (order.hasOwnFile)
            takeTags(movie, &row.order);
        row.format = soundText(movie);
        if (m_found.tracks.isEmpty() && &order == &described.tracks.front())
            m_found.sheet = batch.path;
        m_found.tracks << row;
    }
    // Among others, a sheet tells of a part of the disc only.
    if (m_isOneDescription) {
        m_found.texts = described.texts;
        m_found.mediaCatalogNumber = described.mediaCatalogNumber;
    }
    m_found.notes << described.notes;
}

void AudioIntake::end()
{
    if (m_found.texts.empty() && qsizetype(m_movies.size()) == m_found.tracks.size() && m_movies.size() > 1) {
        setTextOfKind(m_found.texts, CDTextKind::Title, commonText(m_movies, albumNames));
        const QString ofAlbum = commonText(m_movies, albumArtistNames);
        setTextOfKind(m_found.texts, CDTextKind::Performer,
                      ofAlbum.isEmpty() ? commonText(m_movies, artistNames) : ofAlbum);
    }
    m_isRunning = false;
    const AudioFound all = std::move(m_found);
    m_found = {};
    Q_EMIT found(all);
    if (m_isRunning)
        return;
    if (m_waiting.isEmpty())
        Q_EMIT ended();
    else
        startNext();
}

} // namespace Tessaron::Desktop
