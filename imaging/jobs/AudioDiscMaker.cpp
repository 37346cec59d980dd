#include "imaging/jobs/AudioDiscMaker.h"

#include "imaging/jobs/AudioOrderChecks.h"
#include "imaging/jobs/AudioTexts.h"
#include <TessaronClasses/DiscJobErrors.h>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace Tessaron
{

namespace
{

constexpr std::uint64_t shortestTrack = 300; // frames
constexpr std::uint64_t silenceBehindData = 150; // frames, ECMA-130 20

void takeOver(const AudioTitle &given, SpokenTexts *texts)
{
    std::map<CDTextKind, QString> &first = (*texts)[CDTextBlock::english];
    if (const QString title = given.title.simplified(); !title.isEmpty())
        first[CDTextKind::Title] = title;
    if (const QString performer = given.performer.simplified(); !performer.isEmpty())
        first[CDTextKind::Performer] = performer;
}

/// Gives each track what was broken in its part of a file. What is only counted goes to the last track of the file.
void distributeDamage(std::size_t file, const AudioDamageReport &report, const std::vector<AlbumTrack> &album,
                      std::vector<AudioImageTrack> *tracks)
{
    std::size_t last = 0;
    for (std::size_t track = 0; track < album.size(); ++track) {
        for (const std::vector<SoundRun> &runs : {album[track].pregap, album[track].sound}) {
            for (const SoundRun &run : runs)
                last = run.file == file ? track : last;
        }
    }
    const auto trackAt = [&](double seconds) {
        for (std::size_t track = 0; track < album.size(); ++track) {
            for (const std::vector<SoundRun> &runs : {album[track].pregap, album[track].sound}) {
                for (const SoundRun &run : runs) {
                    const double end = double(run.first + run.samples) / CDSound::samplesPerSecond;
                    if (run.file == file && seconds < end)
                        return track;
                }
            }
        }
        return last;
    };
    for (const AudioDamage &place : report.places)
        (*tracks)[trackAt(place.seconds)].damage.add(place.seconds, place.what);
    (*tracks)[last].damage.count += report.count - report.places.size();
}

} // namespace

AudioDiscMaker::AudioDiscMaker(const AudioImageOrder &order, AudioImageResult &result)
    : m_order(order)
    , m_result(result)
    , m_isOrderedByTrack(!order.tracks.empty())
    , m_ordered(order.tracks)
{
}

NSError AudioDiscMaker::findSources()
{
    Result<AudioSources> sources = m_isOrderedByTrack ? m_ordered.sources() : audioSourcesOf(m_order.sources);
    if (!sources)
        return sources.error();
    m_sources = *std::move(sources);
    m_filesFound = std::uint64_t(m_sources.files.size());
    return errorOfSources(m_order, m_sources);
}

QList<QByteArray> AudioDiscMaker::paths() const
{
    QList<QByteArray> paths = m_sources.files;
    for (const AudioSource &source : m_sources.sources) {
        if (!source.sheetPath.isEmpty())
            paths << source.sheetPath;
    }
    return paths;
}

QList<QByteArray> AudioDiscMaker::cdTextPaths() const
{
    QList<QByteArray> paths;
    for (const AudioSource &source : m_sources.sources) {
        if (!source.cdTextPath.isEmpty())
            paths << source.cdTextPath;
    }
    return paths;
}

NSError AudioDiscMaker::openFiles(const std::stop_token &stop)
{
    Result<std::vector<AlbumFile>> opened = openAudioFiles(m_sources.files, {m_helpers, m_bytesDone, stop});
    if (!opened)
        return opened.error();
    m_files = *std::move(opened);
    std::vector<std::uint64_t> lengths(m_files.size());
    std::transform(m_files.begin(), m_files.end(), lengths.begin(), [](const AlbumFile &one) { return one.samples; });
    Result<AudioAlbum> made =
        m_isOrderedByTrack ? m_ordered.album(lengths) : audioAlbumOf(m_sources, lengths, m_order.gap);
    if (!made)
        return made.error();
    m_album = *std::move(made);
    if (m_isOrderedByTrack) {
        m_album.texts = m_order.texts;
        m_album.mediaCatalogNumber = m_order.mediaCatalogNumber;
    }
    m_result.notes = m_album.notes;
    if (hasData())
        m_album.tracks.front().silence = std::max(m_album.tracks.front().silence, silenceBehindData);
    if (NSError error = errorOfTracks(m_order, m_album.tracks))
        return error;
    const std::uint64_t times = m_order.normalization == AudioNormalization::None ? 1 : 2;
    m_bytesTotal = times * CDSound::bytesPerSample * std::accumulate(lengths.begin(), lengths.end(), std::uint64_t(0));
    return errorOfCapacity(soundFrames(), m_order.capacity);
}

std::uint64_t AudioDiscMaker::soundFrames() const
{
    return audioLayoutOf(m_album.tracks, m_order.isGapless).frames;
}

TableOfContents AudioDiscMaker::plan(const std::optional<DiscTrack> &dataTrack)
{
    const std::uint64_t dataFrames = dataTrack ? dataTrack->storedBlocks() : 0;
    m_layout = audioLayoutOf(m_album.tracks, m_order.isGapless, dataFrames);
    describeTracks();
    m_result.frames = dataFrames + m_layout.frames;
    std::vector<DiscTrack> tracks = discTracksOf(m_album.tracks, m_layout);
    if (dataTrack)
        tracks.insert(tracks.begin(), *dataTrack);
    TableOfContents contents = contentsOf(std::move(tracks));
    contents.mediaCatalogNumber = m_album.mediaCatalogNumber;
    addTexts(&contents);
    return contents;
}

void AudioDiscMaker::describeTracks()
{
    for (std::size_t number = 0; number < m_album.tracks.size(); ++number) {
        const AlbumTrack &planned = m_album.tracks[number];
        const AudioTrackPlace &place = m_layout.places[number];
        AudioImageTrack &track = m_result.tracks.emplace_back();
        track.number = std::uint32_t(number + (hasData() ? 2 : 1));
        track.source = m_files[planned.sound.front().file].path;
        for (const SoundRun &run : planned.sound)
            track.samples += run.samples;
        track.pregap = place.pregap;
        track.firstFrame = place.firstFrame;
        track.frames = place.frames;
        track.isTooShort = track.frames < shortestTrack;
    }
}

/// CD-TEXT and ISRCs: those of the order go before those of cue sheets, and these before those of tags.
void AudioDiscMaker::addTexts(TableOfContents *contents)
{
    AudioTexts texts;
    if (m_order.hasCDText) {
        AudioTextSources sources;
        for (const AlbumTrack &track : m_album.tracks) {
            sources.tags.push_back(track.ownFile ? m_files[*track.ownFile].tags : QMap<QString, QString>());
            sources.tracks.push_back(track.texts);
        }
        sources.disc = m_album.texts;
        takeOver(m_order.discTitle, &sources.disc);
        for (std::size_t number = 0; number < sources.tracks.size(); ++number)
            takeOver(m_order.titles.value(qsizetype(number)), &sources.tracks[number]);
        sources.firstTrack = hasData() ? 2 : 1;
        texts = audioTextsOf(sources);
        contents->cdText = texts.text;
        m_result.changedTexts = texts.changes;
        m_result.areTextsLost = texts.isAnyLost;
    }
    std::vector<DiscTrack> &tracks = contents->sessions.front().tracks;
    const std::size_t first = hasData() ? 1 : 0;
    for (std::size_t number = 0; number < m_result.tracks.size(); ++number) {
        DiscTrack &track = tracks[number + first];
        const QByteArray code = soundIsrc(QString::fromUtf8(m_order.isrcs.value(qsizetype(number))));
        if (!code.isEmpty())
            track.isrc = code;
        else if (track.isrc.isEmpty() && m_order.hasCDText)
            track.isrc = texts.isrcs[number];
        m_result.tracks[number].isrc = track.isrc;
        if (texts.text.isEmpty())
            continue;
        const auto textOf = [&](CDTextKind kind) {
            const auto found = texts.text.blocks.front().texts.find(kind);
            return found == texts.text.blocks.front().texts.end() ? QString() : found->second[number + 1];
        };
        m_result.tracks[number].title = textOf(CDTextKind::Title);
        m_result.tracks[number].performer = textOf(CDTextKind::Performer);
    }
}

NSError AudioDiscMaker::measure(const std::stop_token &stop)
{
    m_gains.assign(m_files.size(), 1);
    if (m_order.normalization == AudioNormalization::None)
        return {};
    const Result<std::vector<std::unique_ptr<LoudnessMeter>>> meters =
        measureAudioFiles(m_files, {m_helpers, m_bytesDone, stop});
    if (!meters)
        return meters.error();
    const double ofAll = normalizingGain(LoudnessMeter::loudnessOf(*meters));
    for (std::size_t track = 0; track < m_album.tracks.size(); ++track) {
        const std::size_t file = m_album.tracks[track].sound.front().file;
        const SoundLoudness loudness = (*meters)[file]->loudness();
        AudioImageTrack &told = m_result.tracks[track];
        told.loudness = loudness.loudness;
        if (loudness.truePeak > 0)
            told.truePeak = loudness.truePeakLevel();
    }
    for (std::size_t file = 0; file < m_files.size(); ++file)
        m_gains[file] =
            m_order.normalization == AudioNormalization::Album ? ofAll : normalizingGain((*meters)[file]->loudness());
    for (std::size_t track = 0; track < m_album.tracks.size(); ++track)
        m_result.tracks[track].gain = 20 * std::log10(m_gains[m_album.tracks[track].sound.front().file]);
    return {};
}

NSError AudioDiscMaker::decodeInto(int descriptor, Output output, const std::stop_token &stop)
{
    const AudioDecoding decoding{m_helpers, m_bytesDone, stop};
    const Result<std::vector<AudioDamageReport>> damage = output == Output::Stream
        ? streamAudioFiles(m_files, m_gains, m_layout, descriptor, decoding)
        : writeAudioFiles(m_files, m_gains, m_layout, descriptor, decoding);
    if (!damage)
        return damage.error();
    for (std::size_t file = 0; file < damage->size(); ++file)
        distributeDamage(file, (*damage)[file], m_album.tracks, &m_result.tracks);
    return {};
}

} // namespace Tessaron
