#include "imaging/ImageFinisher.h"
#include "imaging/jobs/AudioAlbum.h"
#include "imaging/jobs/AudioDecoding.h"
#include "imaging/jobs/AudioOrderChecks.h"
#include "imaging/jobs/AudioTexts.h"
#include "imaging/jobs/AudioTrackLayout.h"
#include "imaging/jobs/DiscJobWork.h"
#include "imaging/jobs/FreeSpace.h"
#include "imaging/jobs/ImageMaker.h"
#include "imaging/jobs/ImageStage.h"
#include "imaging/jobs/OrderedTracks.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MessageTexts.h"
#include <TessaronClasses/AudioImageJob.h>
#include <TessaronClasses/DiscJobErrors.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cmath>
#include <numeric>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaron
{

namespace
{

constexpr std::uint64_t shortestTrack = 300; // frames
constexpr std::uint64_t silenceBehindData = 150; // frames, ECMA-130 20

/// Every file that is read, for the look whether the image would lie on one of them.
QList<QByteArray> pathsOf(const AudioSources &sources)
{
    QList<QByteArray> paths = sources.files;
    for (const AudioSource &source : sources.sources) {
        if (!source.sheetPath.isEmpty())
            paths << source.sheetPath;
    }
    return paths;
}

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

bool AudioImageResult::isComplete() const
{
    return !error && !areTextsLost && data.isComplete()
        && std::all_of(tracks.begin(), tracks.end(),
                       [](const AudioImageTrack &track) { return track.damage.isEmpty(); });
}

class AudioImageJob::Work final : public DiscJobWork
{
public:
    explicit Work(AudioImageOrder givenOrder)
        : order(std::move(givenOrder))
    {
    }

    void begin() override;
    void stop() override;
    void lookAhead() override;
    [[nodiscard]] DiscJobProgress progress() const override;

    [[nodiscard]] NSError prepare(const std::stop_token &stop);
    [[nodiscard]] NSError openStage(const AudioSources &sources, const std::stop_token &stop);
    void prepared(const NSError &error);
    void makeData();
    void dataMade();
    void writeInBackground();
    [[nodiscard]] NSError write(const std::stop_token &stop);
    void describeTracks(const AudioLayout &layout);
    [[nodiscard]] TableOfContents contentsOfDisc(const AudioLayout &layout);
    void addTexts(TableOfContents *contents);
    void tellWhatIsLost(const ImageFinisher &finisher);
    [[nodiscard]] Result<std::vector<double>> gains(const std::stop_token &stop);
    [[nodiscard]] NSError makeRoom(std::uint64_t bytes) const;
    void endWith(const NSError &error);
    [[nodiscard]] bool hasData() const { return !order.dataFolder.isEmpty(); }

    const AudioImageOrder order;
    DiscImageOrder imageOrder; ///< the same for the stage
    // A worker's while it runs; then the main thread's.
    AudioImageResult result;
    ImageStage stage;
    SoundHelpers helpers;
    std::optional<DiscSource> dataSource;
    QList<QByteArray> cdTextSources; ///< files of CD-TEXT that the cue sheets among the sources name
    std::vector<AlbumFile> files;
    AudioAlbum album;
    DiscTrack dataTrack; ///< once it is written
    // The main thread's.
    std::unique_ptr<ImageMaker> maker;
    // Shared.
    std::atomic<DiscJobPhase> phase = DiscJobPhase::Preparing;
    std::atomic<std::uint64_t> filesFound = 0;
    std::atomic<std::uint64_t> foldersFound = 0;
    std::atomic<std::uint64_t> soundBytesDone = 0;
    std::atomic<std::uint64_t> soundBytesTotal = 0;
    std::atomic<std::uint64_t> dataBytes = 0; ///< those that are written
};

void AudioImageJob::Work::begin()
{
    runInBackground([this](const std::stop_token &stop) { return prepare(stop); },
                    [this](const NSError &error) { prepared(error); });
}

/// Finds out what the tracks will be.
NSError AudioImageJob::Work::prepare(const std::stop_token &stop)
{
    const bool isOrderedByTrack = !order.tracks.empty();
    const OrderedTracks ordered(order.tracks);
    const Result<AudioSources> sources = isOrderedByTrack ? ordered.sources() : audioSourcesOf(order.sources);
    if (!sources)
        return sources.error();
    if (NSError error = errorOfOrder(order, *sources))
        return error;
    for (const AudioSource &source : sources->sources) {
        if (!source.cdTextPath.isEmpty())
            cdTextSources << source.cdTextPath;
    }
    if (NSError error = openStage(*sources, stop))
        return error;
    filesFound = std::uint64_t(sources->files.size());
    phase = DiscJobPhase::Scanning;
    Result<std::vector<AlbumFile>> opened = openAudioFiles(sources->files, {helpers, soundBytesDone, stop});
    if (!opened)
        return opened.error();
    files = *std::move(opened);
    std::vector<std::uint64_t> lengths(files.size());
    std::transform(files.begin(), files.end(), lengths.begin(), [](const AlbumFile &one) { return one.samples; });
    Result<AudioAlbum> made = isOrderedByTrack ? ordered.album(lengths) : audioAlbumOf(*sources, lengths, order.gap);
    if (!made)
        return made.error();
    album = *std::move(made);
    if (isOrderedByTrack) {
        album.texts = order.texts;
        album.mediaCatalogNumber = order.mediaCatalogNumber;
    }
    result.notes = album.notes;
    if (hasData())
        album.tracks.front().silence = std::max(album.tracks.front().silence, silenceBehindData);
    if (NSError error = errorOfTracks(order, album.tracks))
        return error;
    const std::uint64_t times = order.normalization == AudioNormalization::None ? 1 : 2;
    soundBytesTotal =
        times * CDSound::bytesPerSample * std::accumulate(lengths.begin(), lengths.end(), std::uint64_t(0));
    return errorOfCapacity(audioLayoutOf(album.tracks, order.isGapless).frames, order.capacity);
}

NSError AudioImageJob::Work::openStage(const AudioSources &sources, const std::stop_token &stop)
{
    QList<QByteArray> paths = pathsOf(sources);
    if (hasData())
        paths << order.dataFolder;
    const Result<std::vector<DiscSource>> found = discSourcesAtPaths(paths);
    if (!found)
        return found.error();
    if (hasData()) {
        dataSource = found->back();
        if (!dataSource->isFolder)
            return discJobError(
                DiscJobErrorCode::Source,
                QStringLiteral("%1 is no folder to make a track of data of").arg(quoted(order.dataFolder)),
                QStringLiteral("Put the file into a folder, and name that."), order.dataFolder);
    }
    imageOrder.output = order.output;
    imageOrder.outputDescriptor = order.outputDescriptor;
    imageOrder.format = order.format;
    imageOrder.isSynchronized = order.isSynchronized;
    if (NSError error = stage.open(imageOrder, *found, stop))
        return error;
    result.imagePath = stage.imagePath();
    result.cueSheetPath = stage.cueSheetPath();
    return {};
}

void AudioImageJob::Work::prepared(const NSError &error)
{
    if (const NSError failure = cancellationOr(error))
        endWith(failure);
    else if (hasData())
        makeData();
    else
        writeInBackground();
}

void AudioImageJob::Work::makeData()
{
    const std::uint64_t frames = audioLayoutOf(album.tracks, order.isGapless).frames;
    result.data.volumeName =
        order.volumeName.isEmpty() ? stringWithFileSystemRepresentation(dataSource->name) : order.volumeName;
    ImageMakerOrder making;
    making.sources = {*dataSource};
    making.rootIsOnlySource = true;
    making.volumeName = result.data.volumeName;
    making.isVolumeNameGiven = !order.volumeName.isEmpty();
    making.filesystems = allDiscFilesystems;
    making.path = stage.pathForWriting();
    making.descriptor = stage.descriptor();
    making.finalPath = stage.imagePath();
    making.isSynchronized = false; // the whole image is, in the end
    making.isBeforeAudio = true;
    making.checkSize = [this, frames](std::uint64_t bytes) {
        return errorOfCapacity(bytes / CDSound::bytesPerFrame + frames, order.capacity);
    };
    maker = std::make_unique<ImageMaker>(std::move(making));
    maker->start([this] { dataMade(); });
}

void AudioImageJob::Work::dataMade()
{
    const QString volumeName = result.data.volumeName;
    result.data = maker->result();
    result.data.volumeName = volumeName;
    const NSError error = std::exchange(result.data.error, {});
    const std::shared_ptr<const TableOfContents> contents = maker->contents();
    dataBytes = result.data.bytes;
    filesFound += result.data.files;
    foldersFound = result.data.folders;
    maker.reset();
    if (error || isCancelled()) {
        endWith(error ? error : discJobCancellation());
        return;
    }
    dataTrack = *contents->tracks().front();
    writeInBackground();
}

void AudioImageJob::Work::writeInBackground()
{
    runInBackground([this](const std::stop_token &stop) { return write(stop); },
                    [this](const NSError &error) { endWith(error ? cancellationOr(error) : error); });
}

/// Measures the sounds, where that is asked for, and brings them into the image.
NSError AudioImageJob::Work::write(const std::stop_token &stop)
{
    phase = DiscJobPhase::Planning;
    const std::uint64_t dataFrames = hasData() ? dataTrack.storedBlocks() : 0;
    const AudioLayout layout = audioLayoutOf(album.tracks, order.isGapless, dataFrames);
    describeTracks(layout);
    result.frames = dataFrames + layout.frames;
    if (NSError error = errorOfCapacity(result.frames, order.capacity))
        return error;
    const TableOfContents contents = contentsOfDisc(layout);
    const ImageFinisher finisher(TessaronDiscImageFormat(order.format), contents);
    tellWhatIsLost(finisher);
    if (NSError error = finisher.hasCDTextFile() ? stage.makeCDTextFile(cdTextSources) : NSError())
        return error;
    result.cdTextPath = stage.cdTextPath();
    if (NSError error = stage.goesIntoStream() ? NSError() : makeRoom(contents.storedBytes()))
        return error;
    const Result<std::vector<double>> factors = gains(stop);
    if (!factors)
        return factors.error();
    phase = DiscJobPhase::Writing;
    if (stage.goesIntoStream())
        (void)::lseek(stage.descriptor(), 0, SEEK_END); // a file in its place has another position for the data
    const AudioDecoding decoding{helpers, soundBytesDone, stop};
    const Result<std::vector<AudioDamageReport>> damage = stage.goesIntoStream()
        ? streamAudioFiles(files, *factors, layout, stage.descriptor(), decoding)
        : writeAudioFiles(files, *factors, layout, stage.descriptor(), decoding);
    if (!damage)
        return damage.error();
    for (std::size_t file = 0; file < damage->size(); ++file)
        distributeDamage(file, (*damage)[file], album.tracks, &result.tracks);
    phase = DiscJobPhase::Finishing;
    return stage.finish(imageOrder, contents, &result.bytes, stop);
}

void AudioImageJob::Work::describeTracks(const AudioLayout &layout)
{
    for (std::size_t number = 0; number < album.tracks.size(); ++number) {
        const AlbumTrack &planned = album.tracks[number];
        const AudioTrackPlace &place = layout.places[number];
        AudioImageTrack &track = result.tracks.emplace_back();
        track.number = std::uint32_t(number + (hasData() ? 2 : 1));
        track.source = files[planned.sound.front().file].path;
        for (const SoundRun &run : planned.sound)
            track.samples += run.samples;
        track.pregap = place.pregap;
        track.firstFrame = place.firstFrame;
        track.frames = place.frames;
        track.isTooShort = track.frames < shortestTrack;
    }
}

TableOfContents AudioImageJob::Work::contentsOfDisc(const AudioLayout &layout)
{
    std::vector<DiscTrack> tracks = discTracksOf(album.tracks, layout);
    if (hasData())
        tracks.insert(tracks.begin(), dataTrack);
    TableOfContents contents = contentsOf(std::move(tracks));
    contents.mediaCatalogNumber = album.mediaCatalogNumber;
    addTexts(&contents);
    return contents;
}

/// CD-TEXT and ISRCs: those of the order go before those of cue sheets, and these before those of tags.
void AudioImageJob::Work::addTexts(TableOfContents *contents)
{
    AudioTexts texts;
    if (order.hasCDText) {
        AudioTextSources sources;
        for (const AlbumTrack &track : album.tracks) {
            sources.tags.push_back(track.ownFile ? files[*track.ownFile].tags : QMap<QString, QString>());
            sources.tracks.push_back(track.texts);
        }
        sources.disc = album.texts;
        takeOver(order.discTitle, &sources.disc);
        for (std::size_t number = 0; number < sources.tracks.size(); ++number)
            takeOver(order.titles.value(qsizetype(number)), &sources.tracks[number]);
        sources.firstTrack = hasData() ? 2 : 1;
        texts = audioTextsOf(sources);
        contents->cdText = texts.text;
        result.changedTexts = texts.changes;
        result.areTextsLost = texts.isAnyLost;
    }
    std::vector<DiscTrack> &tracks = contents->sessions.front().tracks;
    const std::size_t first = hasData() ? 1 : 0;
    for (std::size_t number = 0; number < result.tracks.size(); ++number) {
        DiscTrack &track = tracks[number + first];
        const QByteArray code = soundIsrc(QString::fromUtf8(order.isrcs.value(qsizetype(number))));
        if (!code.isEmpty())
            track.isrc = code;
        else if (track.isrc.isEmpty() && order.hasCDText)
            track.isrc = texts.isrcs[number];
        result.tracks[number].isrc = track.isrc;
        if (texts.text.isEmpty())
            continue;
        const auto textOf = [&](CDTextKind kind) {
            const auto found = texts.text.blocks.front().texts.find(kind);
            return found == texts.text.blocks.front().texts.end() ? QString() : found->second[number + 1];
        };
        result.tracks[number].title = textOf(CDTextKind::Title);
        result.tracks[number].performer = textOf(CDTextKind::Performer);
    }
}

/// What the format of the image cannot say.
void AudioImageJob::Work::tellWhatIsLost(const ImageFinisher &finisher)
{
    const QString format =
        order.format == DiscFormat::BIN ? QStringLiteral("a cue sheet") : QStringLiteral("a VANT image");
    for (const QString &what : finisher.lost()) {
        result.changedTexts << QStringLiteral("%1 cannot say %2, which is left out").arg(format, what);
        result.areTextsLost = true;
    }
}

/// The factor for each file; 1 for all where nothing is to be normalized.
Result<std::vector<double>> AudioImageJob::Work::gains(const std::stop_token &stop)
{
    std::vector<double> factors(files.size(), 1);
    if (order.normalization == AudioNormalization::None)
        return factors;
    phase = DiscJobPhase::Measuring;
    const Result<std::vector<std::unique_ptr<LoudnessMeter>>> meters =
        measureAudioFiles(files, {helpers, soundBytesDone, stop});
    if (!meters)
        return meters.error();
    const double ofAll = normalizingGain(LoudnessMeter::loudnessOf(*meters));
    for (std::size_t track = 0; track < album.tracks.size(); ++track) {
        const std::size_t file = album.tracks[track].sound.front().file;
        const SoundLoudness loudness = (*meters)[file]->loudness();
        AudioImageTrack &told = result.tracks[track];
        told.loudness = loudness.loudness;
        if (loudness.truePeak > 0)
            told.truePeak = loudness.truePeakLevel();
    }
    for (std::size_t file = 0; file < files.size(); ++file)
        factors[file] =
            order.normalization == AudioNormalization::Album ? ofAll : normalizingGain((*meters)[file]->loudness());
    for (std::size_t track = 0; track < album.tracks.size(); ++track)
        result.tracks[track].gain = 20 * std::log10(factors[album.tracks[track].sound.front().file]);
    return factors;
}

/// The file gets its length at once, so that each sound finds its place. What no sound covers stays zero.
NSError AudioImageJob::Work::makeRoom(std::uint64_t bytes) const
{
    struct stat status = {};
    const bool isKnown = ::fstat(stage.descriptor(), &status) == 0;
    const std::uint64_t missing = bytes - std::min(bytes, isKnown ? std::uint64_t(status.st_size) : 0);
    const std::optional<std::uint64_t> free = freeSpaceForPlainWriting(stage.descriptor());
    if (free && *free < missing)
        return discJobError(DiscJobErrorCode::Space,
                            QStringLiteral("the disk is too full: the image needs %1 bytes, but only %2 are free")
                                .arg(missing)
                                .arg(*free),
                            QStringLiteral("Make room, or choose another place for the output."), stage.imagePath());
    if (::ftruncate(stage.descriptor(), off_t(bytes)) == 0)
        return {};
    return discJobError(DiscJobErrorCode::Write,
                        QStringLiteral("the image cannot be written: %1").arg(systemText(errno)), {}, stage.imagePath(),
                        statusForErrno(errno));
}

void AudioImageJob::Work::endWith(const NSError &error)
{
    result.error = error;
    // Files that have not got their names go before the end is announced, so that a script finds the place as it was.
    stage.close();
    helpers.endIdle();
    end(error);
}

void AudioImageJob::Work::stop()
{
    if (maker)
        maker->cancel();
}

void AudioImageJob::Work::lookAhead()
{
    if (maker)
        maker->lookAhead();
}

DiscJobProgress AudioImageJob::Work::progress() const
{
    DiscJobProgress state;
    state.phase = phase;
    state.files = filesFound;
    state.folders = foldersFound;
    std::uint64_t ofData = dataBytes;
    std::uint64_t dataTotal = ofData;
    if (maker) {
        const DiscJobProgress making = maker->progress();
        state.phase = making.phase;
        state.files += making.files;
        state.folders = making.folders;
        ofData = making.bytesDone;
        dataTotal = making.bytesTotal;
    }
    state.bytesDone = ofData + soundBytesDone;
    // Known once all of it is.
    if (!hasData() || dataTotal > 0)
        state.bytesTotal = dataTotal + soundBytesTotal;
    return state;
}

AudioImageJob::AudioImageJob(AudioImageOrder order, QObject *parent)
    : DiscJob(std::make_unique<Work>(std::move(order)), parent)
{
}

AudioImageJob::~AudioImageJob() = default;

const AudioImageResult &AudioImageJob::result() const
{
    return static_cast<const Work &>(work()).result;
}

void AudioImageJob::announceResult()
{
    Q_EMIT finished(result());
}

} // namespace Tessaron
