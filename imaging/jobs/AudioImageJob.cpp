#include "imaging/ImageFinisher.h"
#include "imaging/jobs/AudioDiscMaker.h"
#include "imaging/jobs/AudioOrderChecks.h"
#include "imaging/jobs/DiscJobWork.h"
#include "imaging/jobs/FreeSpace.h"
#include "imaging/jobs/ImageMaker.h"
#include "imaging/jobs/ImageStage.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MessageTexts.h"
#include <TessaronClasses/AudioImageJob.h>
#include <TessaronClasses/DiscJobErrors.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaron
{

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
    [[nodiscard]] NSError openStage(const std::stop_token &stop);
    void prepared(const NSError &error);
    void makeData();
    void dataMade();
    void writeInBackground();
    [[nodiscard]] NSError write(const std::stop_token &stop);
    void tellWhatIsLost(const ImageFinisher &finisher);
    [[nodiscard]] NSError makeRoom(std::uint64_t bytes) const;
    void endWith(const NSError &error);
    [[nodiscard]] bool hasData() const { return !order.dataFolder.isEmpty(); }

    const AudioImageOrder order;
    DiscImageOrder imageOrder; ///< the same for the stage
    // A worker's while it runs; then the main thread's.
    AudioImageResult result;
    ImageStage stage;
    AudioDiscMaker disc{order, result};
    std::optional<DiscSource> dataSource;
    std::optional<DiscTrack> dataTrack; ///< once it is written
    // The main thread's.
    std::unique_ptr<ImageMaker> maker;
    // Shared.
    std::atomic<DiscJobPhase> phase = DiscJobPhase::Preparing;
    std::atomic<std::uint64_t> dataFiles = 0;
    std::atomic<std::uint64_t> foldersFound = 0;
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
    if (NSError error = errorOfOutput(order))
        return error;
    if (NSError error = disc.findSources())
        return error;
    if (NSError error = openStage(stop))
        return error;
    phase = DiscJobPhase::Scanning;
    return disc.openFiles(stop);
}

NSError AudioImageJob::Work::openStage(const std::stop_token &stop)
{
    QList<QByteArray> paths = disc.paths();
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
                QStringLiteral("%1 is not a folder to make a track of data of").arg(quoted(order.dataFolder)),
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
    const std::uint64_t frames = disc.soundFrames();
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
    dataFiles = result.data.files;
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
    const TableOfContents contents = disc.plan(dataTrack);
    if (NSError error = errorOfCapacity(result.frames, order.capacity))
        return error;
    const ImageFinisher finisher(TessaronDiscImageFormat(order.format), contents);
    tellWhatIsLost(finisher);
    if (NSError error = finisher.hasCDTextFile() ? stage.makeCDTextFile(disc.cdTextPaths()) : NSError())
        return error;
    result.cdTextPath = stage.cdTextPath();
    if (NSError error = stage.goesIntoStream() ? NSError() : makeRoom(contents.storedBytes()))
        return error;
    if (order.normalization != AudioNormalization::None)
        phase = DiscJobPhase::Measuring;
    if (NSError error = disc.measure(stop))
        return error;
    phase = DiscJobPhase::Writing;
    if (stage.goesIntoStream())
        (void)::lseek(stage.descriptor(), 0, SEEK_END); // a file in its place has another position for the data
    const auto output = stage.goesIntoStream() ? AudioDiscMaker::Output::Stream : AudioDiscMaker::Output::File;
    if (NSError error = disc.decodeInto(stage.descriptor(), output, stop))
        return error;
    phase = DiscJobPhase::Finishing;
    return stage.finish(imageOrder, contents, &result.bytes, stop);
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
    disc.endIdleHelpers();
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
    state.files = disc.filesFound() + dataFiles;
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
    state.bytesDone = ofData + disc.bytesDone();
    // Known once all of it is.
    if (!hasData() || dataTotal > 0)
        state.bytesTotal = dataTotal + disc.bytesTotal();
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
