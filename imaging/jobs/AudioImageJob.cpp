#include "imaging/jobs/AudioDecoding.h"
#include "imaging/jobs/AudioSourceList.h"
#include "imaging/jobs/AudioTexts.h"
#include "imaging/jobs/AudioTrackLayout.h"
#include "imaging/jobs/DiscJobWork.h"
#include "imaging/jobs/FreeSpace.h"
#include "imaging/jobs/ImageStage.h"
#include "platform/foundation/MessageTexts.h"
#include <TessaronClasses/AudioImageJob.h>
#include <TessaronClasses/DiscJobErrors.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <numeric>
#include <optional>
#include <unistd.h>

namespace Tessaron
{

namespace
{

constexpr qsizetype mostTracks = 99;
constexpr std::uint64_t shortestTrack = 300; // frames

QString lengthText(std::uint64_t frames)
{
    return MSF::ofFrames(std::int64_t(frames)).text();
}

NSError errorOfIsrcs(const QList<QByteArray> &codes, qsizetype tracks)
{
    if (codes.size() > tracks)
        return discJobError(DiscJobErrorCode::InvalidOrder,
                            QStringLiteral("there are %1 ISRCs for %2")
                                .arg(codes.size())
                                .arg(counted(std::uint64_t(tracks), "track", "tracks")));
    for (const QByteArray &code : codes) {
        if (!code.isEmpty() && soundIsrc(QString::fromUtf8(code)).isEmpty())
            return discJobError(
                DiscJobErrorCode::InvalidOrder, QStringLiteral("%1 is no ISRC").arg(quoted(code)),
                QStringLiteral("It has two letters for the country, three characters for the owner, and "
                               "seven digits."));
    }
    return {};
}

NSError errorOfOrder(const AudioImageOrder &order, const QList<QByteArray> &sources)
{
    if (order.format != DiscFormat::BIN && order.format != DiscFormat::VANT)
        return discJobError(DiscJobErrorCode::InvalidOrder,
                            QStringLiteral("an image of sound has the format bin or vant"),
                            QStringLiteral("Name an output that ends in .bin or .vant."), order.output);
    if (sources.isEmpty())
        return discJobError(DiscJobErrorCode::InvalidOrder, QStringLiteral("there is no file to make a track of"));
    if (sources.size() > mostTracks)
        return discJobError(
            DiscJobErrorCode::InvalidOrder,
            QStringLiteral("there are %1 files, and a CD has %2 tracks at most").arg(sources.size()).arg(mostTracks),
            QStringLiteral("Make several images."));
    return errorOfIsrcs(order.isrcs, sources.size());
}

NSError errorOfCapacity(std::uint64_t frames, std::uint32_t capacity)
{
    if (capacity == 0 || frames <= capacity)
        return {};
    return discJobError(
        DiscJobErrorCode::Space,
        QStringLiteral("the tracks and gaps take %1 (minutes, seconds, frames), which is %2 more than the "
                       "%3 of the disc")
            .arg(lengthText(frames), lengthText(frames - capacity), lengthText(capacity)),
        QStringLiteral("Leave files out, or take a longer disc."));
}

} // namespace

bool AudioImageResult::isComplete() const
{
    return !error && !areTextsLost && std::all_of(tracks.begin(), tracks.end(), [](const AudioImageTrack &track) {
        return track.damage.isEmpty();
    });
}

class AudioImageJob::Work final : public DiscJobWork
{
public:
    explicit Work(AudioImageOrder givenOrder)
        : order(std::move(givenOrder))
    {
    }

    void begin() override;
    [[nodiscard]] DiscJobProgress progress() const override;

    [[nodiscard]] NSError make(const std::stop_token &stop);
    [[nodiscard]] NSError openStage(const std::vector<DiscSource> &sources, const std::stop_token &stop);
    [[nodiscard]] NSError makeRoom(std::uint64_t bytes) const;
    [[nodiscard]] NSError write(std::vector<OpenedSound> &sounds, const std::stop_token &stop);
    void addIsrcs(TableOfContents *contents);
    void addTexts(const std::vector<OpenedSound> &sounds, TableOfContents *contents);
    void endWith(const NSError &error);

    const AudioImageOrder order;
    DiscImageOrder imageOrder; ///< the same for the stage
    // The worker's while it runs; then the main thread's.
    AudioImageResult result;
    ImageStage stage;
    // Shared.
    std::atomic<DiscJobPhase> phase = DiscJobPhase::Preparing;
    std::atomic<std::uint64_t> filesFound = 0;
    std::atomic<std::uint64_t> bytesDone = 0;
    std::atomic<std::uint64_t> bytesTotal = 0;
};

void AudioImageJob::Work::begin()
{
    runInBackground([this](const std::stop_token &stop) { return make(stop); },
                    [this](const NSError &error) { endWith(cancellationOr(error)); });
}

NSError AudioImageJob::Work::make(const std::stop_token &stop)
{
    const Result<QList<QByteArray>> paths = audioSourcesOf(order.sources);
    if (!paths)
        return paths.error();
    if (NSError error = errorOfOrder(order, *paths))
        return error;
    const Result<std::vector<DiscSource>> sources = discSourcesAtPaths(*paths);
    if (!sources)
        return sources.error();
    if (NSError error = openStage(*sources, stop))
        return error;
    filesFound = std::uint64_t(paths->size());
    phase = DiscJobPhase::Scanning;
    Result<std::vector<OpenedSound>> sounds = openSounds(*paths, stop);
    if (!sounds)
        return sounds.error();
    return write(*sounds, stop);
}

NSError AudioImageJob::Work::openStage(const std::vector<DiscSource> &sources, const std::stop_token &stop)
{
    imageOrder.output = order.output;
    imageOrder.format = order.format;
    imageOrder.isSynchronized = order.isSynchronized;
    if (isStream(order.output))
        return discJobError(
            DiscJobErrorCode::InvalidOrder,
            QStringLiteral("the output %1 is no file: tracks are written side by side").arg(quoted(order.output)),
            QStringLiteral("Name a file."), order.output);
    if (NSError error = stage.open(imageOrder, sources, stop))
        return error;
    result.imagePath = stage.imagePath();
    result.cueSheetPath = stage.cueSheetPath();
    return {};
}

/// The file gets its length at once, so that each sound finds its place. What no sound covers stays zero.
NSError AudioImageJob::Work::makeRoom(std::uint64_t bytes) const
{
    const std::optional<std::uint64_t> free = freeSpaceForPlainWriting(stage.descriptor());
    if (free && *free < bytes)
        return discJobError(DiscJobErrorCode::Space,
                            QStringLiteral("the disk is too full: the image needs %1 bytes, but only %2 are free")
                                .arg(bytes)
                                .arg(*free),
                            QStringLiteral("Make room, or choose another place for the output."), stage.imagePath());
    if (::ftruncate(stage.descriptor(), off_t(bytes)) == 0)
        return {};
    return discJobError(DiscJobErrorCode::Write,
                        QStringLiteral("the image cannot be written: %1").arg(systemText(errno)), {}, stage.imagePath(),
                        statusForErrno(errno));
}

NSError AudioImageJob::Work::write(std::vector<OpenedSound> &sounds, const std::stop_token &stop)
{
    phase = DiscJobPhase::Planning;
    std::vector<std::uint64_t> lengths(sounds.size());
    std::transform(sounds.begin(), sounds.end(), lengths.begin(), [](const OpenedSound &one) { return one.samples; });
    const std::vector<AudioTrackPlace> places = audioTrackPlaces(lengths, order.gap, order.isGapless);
    for (std::size_t number = 0; number < sounds.size(); ++number) {
        AudioImageTrack &track = result.tracks.emplace_back();
        track.source = sounds[number].path;
        track.samples = places[number].samples;
        track.pregap = places[number].pregap;
        track.firstFrame = places[number].firstFrame;
        track.frames = places[number].frames;
        track.isTooShort = track.frames < shortestTrack;
    }
    result.frames = framesOf(places);
    if (NSError error = errorOfCapacity(result.frames, order.capacity))
        return error;
    TableOfContents contents = contentsOf(places);
    if (order.hasCDText)
        addTexts(sounds, &contents);
    addIsrcs(&contents);
    if (NSError error = makeRoom(contents.storedBytes()))
        return error;
    bytesTotal = std::accumulate(lengths.begin(), lengths.end(), std::uint64_t(0)) * CDSound::bytesPerSample;
    phase = DiscJobPhase::Writing;
    Result<std::vector<AudioDamageReport>> damage = writeSounds(sounds, places, stage.descriptor(), &bytesDone, stop);
    if (!damage)
        return damage.error();
    for (std::size_t number = 0; number < sounds.size(); ++number)
        result.tracks[number].damage = std::move((*damage)[number]);
    phase = DiscJobPhase::Finishing;
    return stage.finish(imageOrder, contents, &result.bytes, stop);
}

/// Those of the order go before those of tags.
void AudioImageJob::Work::addIsrcs(TableOfContents *contents)
{
    std::vector<DiscTrack> &tracks = contents->sessions.front().tracks;
    for (std::size_t number = 0; number < tracks.size(); ++number) {
        const QByteArray code = soundIsrc(QString::fromUtf8(order.isrcs.value(qsizetype(number))));
        if (!code.isEmpty())
            tracks[number].isrc = code;
        result.tracks[number].isrc = tracks[number].isrc;
    }
}

void AudioImageJob::Work::addTexts(const std::vector<OpenedSound> &sounds, TableOfContents *contents)
{
    std::vector<QMap<QString, QString>> tags(sounds.size());
    std::transform(sounds.begin(), sounds.end(), tags.begin(), [](const OpenedSound &one) { return one.tags; });
    AudioTexts texts = audioTextsOf(tags);
    contents->cdText = std::move(texts.text);
    std::vector<DiscTrack> &tracks = contents->sessions.front().tracks;
    for (std::size_t number = 0; number < tracks.size(); ++number)
        tracks[number].isrc = texts.isrcs[number];
    for (const CDTextBlock &block : contents->cdText.blocks) {
        for (std::size_t number = 0; number < tracks.size(); ++number) {
            const auto textOf = [&](CDTextKind kind) {
                const auto found = block.texts.find(kind);
                return found == block.texts.end() ? QString() : found->second[number + 1];
            };
            result.tracks[number].title = textOf(CDTextKind::Title);
            result.tracks[number].performer = textOf(CDTextKind::Performer);
        }
    }
    result.changedTexts = texts.changes;
    result.areTextsLost = texts.isAnyLost;
}

void AudioImageJob::Work::endWith(const NSError &error)
{
    result.error = error;
    // Files that have not got their names go before the end is announced, so that a script finds the place as it was.
    stage.close();
    end(error);
}

DiscJobProgress AudioImageJob::Work::progress() const
{
    DiscJobProgress state;
    state.phase = phase;
    state.files = filesFound;
    state.bytesTotal = bytesTotal;
    state.bytesDone = bytesDone;
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
