#include "imaging/burning/AudioBurnPlan.h"
#include "imaging/burning/BurnSources.h"
#include "imaging/burning/BurntDiscCheck.h"
#include "imaging/burning/ChosenDrive.h"
#include "imaging/burning/DescribedTrackWriter.h"
#include "imaging/burning/EarlierFiles.h"
#include "imaging/burning/SoundPipe.h"
#include "imaging/jobs/AudioDiscMaker.h"
#include "imaging/jobs/DataDisc.h"
#include "imaging/jobs/DiscJobWork.h"
#include "imaging/jobs/ImageMaker.h"
#include "imaging/jobs/LayoutWriting.h"
#include "platform/discrecording/drives/DriveFaults.h"
#include "platform/discrecording/objects/DRStorageReport.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MessageTexts.h"
#include <TessaronClasses/BurnDiscJob.h>
#include <TessaronClasses/DiscJobErrors.h>
#include <TessaronClasses/DiscNames.h>
#include <TessaronClasses/KRFileHierarchyItem.h>

#include <cmath>
#include <mutex>

namespace Tessaron
{

namespace
{

/// The volume's name where the order has none: that of the only folder.
QString nameOfSources(const std::vector<DiscSource> &sources)
{
    const bool hasFolderName = isOneFolder(sources) && sources.front().name != "/";
    return hasFolderName ? stringWithFileSystemRepresentation(sources.front().name) : QStringLiteral("Untitled");
}

NSError noDifference(const VerificationResult &verification)
{
    if (verification.error || verification.differences.count() == 0)
        return verification.error;
    return discJobError(DiscJobErrorCode::Write, QStringLiteral("what is on the disc differs from what was written"),
                        QStringLiteral("Write another disc, at a slower speed."));
}

} // namespace

bool BurnDiscResult::isComplete() const
{
    return !error && !isAnythingLost && (isImage || data.isComplete());
}

class BurnDiscJob::Work final : public DiscJobWork
{
public:
    explicit Work(BurnDiscOrder burnOrder)
        : order(std::move(burnOrder))
    {
    }

    void begin() override;
    void stop() override;
    void lookAhead() override;
    [[nodiscard]] DiscJobProgress progress() const override;

    [[nodiscard]] NSError prepare(const std::stop_token &stop);
    [[nodiscard]] NSError errorOfTree() const;
    [[nodiscard]] NSError findSources(const std::stop_token &stop);
    [[nodiscard]] NSError prepareSound(const std::stop_token &stop);
    [[nodiscard]] TableOfContents leastContents() const;
    [[nodiscard]] NSError openDrive();
    [[nodiscard]] DRBurnOptions burnOptions() const;
    [[nodiscard]] NSError readEarlierFiles(const std::stop_token &stop);
    [[nodiscard]] NSError chooseFilesystems();
    [[nodiscard]] NSError planGrowth();
    void prepared(const NSError &error);
    void makeData();
    void dataMade();
    void describeImage();
    [[nodiscard]] NSError writeImage(const std::stop_token &stop);
    [[nodiscard]] NSError writeSound(const std::stop_token &stop);
    [[nodiscard]] NSError write(const BurnPlan &plan, const std::stop_token &stop);
    void noteDamage();
    void written(const NSError &error);
    [[nodiscard]] NSError finish(const NSError &writeError, const std::stop_token &stop);
    [[nodiscard]] NSError check(const std::stop_token &stop);
    [[nodiscard]] NSError checkImage(const std::stop_token &stop);
    [[nodiscard]] NSError checkSound(const std::stop_token &stop);
    [[nodiscard]] NSError checkTracks(const BurnPlan &plan, const std::stop_token &stop);
    void tell(const DiscJobProgress &now);

    const BurnDiscOrder order;
    // A worker's while it runs; then the main thread's.
    BurnDiscResult result;
    std::shared_ptr<DRDevice> device;
    BurnSources sources;
    AudioImageResult sound; ///< of a disc of sound
    std::unique_ptr<AudioDiscMaker> audio; ///< null for another disc
    TableOfContents soundContents;
    std::shared_ptr<EarlierFiles> earlier; ///< null unless data go onto a disc that has some
    DiscFilesystems filesystems; ///< that are written
    // The main thread's.
    std::unique_ptr<ImageMaker> maker;
    // Shared.
    mutable std::mutex mutex; ///< guards the next one
    DiscJobProgress told; ///< while there is no maker
};

void BurnDiscJob::Work::begin()
{
    runInBackground([this](const std::stop_token &stop) { return prepare(stop); },
                    [this](const NSError &error) { prepared(error); });
}

NSError BurnDiscJob::Work::prepare(const std::stop_token &stop)
{
    if (NSError error = errorOfEnvironment())
        return error;
    if (order.audio)
        return prepareSound(stop);
    if (NSError error = order.tree ? errorOfTree() : findSources(stop))
        return error;
    if (stop.stop_requested())
        return discJobCancellation();
    if (NSError error = openDrive())
        return error;
    return sources.image ? NSError() : readEarlierFiles(stop);
}

NSError BurnDiscJob::Work::errorOfTree() const
{
    if (!order.sources.isEmpty())
        return discJobError(DiscJobErrorCode::InvalidOrder,
                            QStringLiteral("a disc is made of a tree or of sources, not of both"));
    if (order.tree->items().empty())
        return discJobError(DiscJobErrorCode::InvalidOrder, QStringLiteral("there is nothing to write"));
    BurnSources files;
    files.sources = filesOfTree(*order.tree);
    return errorOfDriveAmongSources(files, order.drive);
}

NSError BurnDiscJob::Work::findSources(const std::stop_token &stop)
{
    if (order.sources.isEmpty())
        return discJobError(DiscJobErrorCode::InvalidOrder, QStringLiteral("there is nothing to write"));
    Result<BurnSources> found = burnSourcesAtPaths(order.sources, stop);
    if (!found)
        return found.error();
    sources = *std::move(found);
    result.notes = sources.notes;
    return errorOfDriveAmongSources(sources, order.drive);
}

/// Opens it, and finds out early what would be refused in the end: before a large folder is scanned.
NSError BurnDiscJob::Work::openDrive()
{
    Result<std::shared_ptr<DRDevice>> opened = openChosenDrive(order.drive, true);
    if (!opened) {
        result.fault = opened.error().userInfo().value(DriveFaultKey).toString();
        return opened.error();
    }
    device = *std::move(opened);
    result.disc = device->disc();
    result.driveName = device->name();
    device->setBurnOptions(burnOptions());
    if (sources.image && order.leavesOpen && isOverwritten(result.disc.family))
        return discJobError(DiscJobErrorCode::InvalidOrder,
                            QStringLiteral("an image is written from the begin of such a disc, and not added to it"),
                            QStringLiteral("Leave --multi out to replace what is on it, or add folders and files."));
    return jobErrorOfBurn(device->errorOfBurn(leastContents()));
}

/// What is known before much is looked at.
TableOfContents BurnDiscJob::Work::leastContents() const
{
    if (sources.image)
        return sources.image->disc.contents;
    DiscTrack track;
    track.length = 1;
    if (order.audio) {
        track.kind = TrackKind::Audio;
        track.blockSize = CDSound::bytesPerFrame;
    }
    TableOfContents least = TableOfContents::withTrack(track);
    least.sessions.front().firstBlock = device->firstBlock();
    return least;
}

/// Opens the drive and then the sounds, and finds out what the disc will be.
NSError BurnDiscJob::Work::prepareSound(const std::stop_token &stop)
{
    if (!order.sources.isEmpty() || order.tree)
        return discJobError(DiscJobErrorCode::InvalidOrder,
                            QStringLiteral("a disc is made of sound, or of a tree, or of sources"));
    if (!order.audio->dataFolder.isEmpty())
        return discJobError(DiscJobErrorCode::InvalidOrder,
                            QStringLiteral("sound behind a track of data is written from an image only"),
                            QStringLiteral("Make an image of it, and burn that."));
    audio = std::make_unique<AudioDiscMaker>(*order.audio, sound);
    if (NSError error = audio->findSources())
        return error;
    if (NSError error = openDrive())
        return error;
    if (NSError error = audio->openFiles(stop))
        return error;
    soundContents = audio->plan({});
    result.isImage = true;
    result.data.bytes = soundContents.storedBytes();
    result.tracks = std::uint32_t(soundContents.trackCount());
    result.sessions = 1;
    result.notes << sound.notes << sound.changedTexts;
    result.isAnythingLost = sound.areTextsLost;
    return jobErrorOfBurn(device->errorOfBurn(soundContents));
}

DRBurnOptions BurnDiscJob::Work::burnOptions() const
{
    DRBurnOptions options;
    options.isSimulated = order.isSimulated;
    options.leavesOpen = order.leavesOpen;
    options.overburns = order.overburns;
    options.speed = std::uint32_t(std::ceil(order.speed * singleSpeed(result.disc.profile) / 1000));
    return options;
}

/// What is added to a disc leads to the files that are there.
NSError BurnDiscJob::Work::readEarlierFiles(const std::stop_token &stop)
{
    filesystems = order.filesystems;
    const bool isOver = isOverwritten(device->disc().family);
    if (isOver ? !order.leavesOpen : device->firstBlock() == BlockAddress())
        return {};
    if (NSError error = isOver ? NSError() : chooseFilesystems())
        return error;
    Result<std::shared_ptr<EarlierFiles>> found = EarlierFiles::read(*device, stop);
    if (!found)
        return found.error();
    earlier = *std::move(found);
    if (earlier && earlier->startsComputers()) {
        result.isStartLost = true;
        result.isAnythingLost = true;
        result.notes << QStringLiteral(
            "computers can be started from the disc as it is (El Torito), and not any more once "
            "something is added; where that is needed, write everything onto another disc, "
            "from an image that starts computers");
    }
    return isOver && earlier ? planGrowth() : NSError();
}

/// Only some filesystems can lead to what lies in front of them.
NSError BurnDiscJob::Work::chooseFilesystems()
{
    const DiscFilesystems possible = DiscFilesystems(DiscFilesystem::ISO9660) | DiscFilesystem::Joliet;
    if (order.filesystems == allDiscFilesystems) {
        filesystems = possible;
        result.notes << QStringLiteral(
            "what is added has ISO 9660 with Rock Ridge and Joliet; UDF and HFS+ cannot go on "
            "from what the disc has");
    } else if ((order.filesystems & ~possible) != 0) {
        return discJobError(DiscJobErrorCode::InvalidOrder,
                            QStringLiteral("UDF and HFS+ cannot go on from what the disc has"),
                            QStringLiteral("Name iso9660 and joliet alone, or put an empty disc in."));
    }
    return {};
}

/// Finds the place for what is added to a disc without sessions, or to a file.
NSError BurnDiscJob::Work::planGrowth()
{
    if (NSError error = chooseFilesystems())
        return error;
    // Block 16 on: a descriptor for each view, and the one that ends them.
    const std::uint64_t endOfDescriptors = filesystems.testFlag(DiscFilesystem::Joliet) ? 19 : 18;
    if (earlier->firstBlockOfContents().value_or(endOfDescriptors) < endOfDescriptors)
        return discJobError(DiscJobErrorCode::Destination,
                            QStringLiteral("nothing can be added to the disc: a file lies where its descriptors go"),
                            QStringLiteral("Leave --multi out to replace what is on it."));
    if (earlier->hasUDF() || earlier->hasHFSPlus())
        result.notes << QStringLiteral("UDF and HFS+ that the disc had would go on showing its earlier files alone: "
                                       "they are taken away");
    const std::uint64_t unit = DriveGrowth::alignment;
    std::uint64_t end = earlier->endBlock();
    if (device->isFile())
        end = std::max(end, device->disc().readableBlocks);
    DRBurnOptions options = burnOptions();
    options.growth = DriveGrowth{(end + unit - 1) / unit * unit, earlier->hasUDF()};
    device->setBurnOptions(options);
    return {};
}

void BurnDiscJob::Work::prepared(const NSError &error)
{
    if (const NSError failure = cancellationOr(error)) {
        written(failure);
        return;
    }
    if (audio) {
        if (order.isPlanOnly)
            written({});
        else
            runInBackground([this](const std::stop_token &stop) { return writeSound(stop); },
                            [this](const NSError &soundError) { written(soundError); });
        return;
    }
    if (!sources.image) {
        makeData();
        return;
    }
    result.isImage = true;
    describeImage();
    if (order.isPlanOnly) {
        result.data.bytes = sources.image->disc.contents.storedBytes();
        written({});
        return;
    }
    runInBackground([this](const std::stop_token &stop) { return writeImage(stop); },
                    [this](const NSError &imageError) { written(imageError); });
}

void BurnDiscJob::Work::makeData()
{
    QString name = order.volumeName;
    if (name.isEmpty() && earlier)
        name = earlier->volumeName(); // it stays the same disc
    if (name.isEmpty())
        name = nameOfSources(sources.sources);
    if (order.tree ? isDvdVideo(*order.tree) : isDvdVideo(sources.sources))
        name = dvdName(name);
    result.data.volumeName = name;
    ImageMakerOrder making;
    making.sources = sources.sources;
    making.tree = order.tree;
    making.rootIsOnlySource = isOneFolder(sources.sources);
    making.volumeName = name;
    making.isVolumeNameGiven = !order.volumeName.isEmpty();
    making.isVolumeNameChanged = making.isVolumeNameGiven && name != order.volumeName;
    making.filesystems = filesystems;
    making.relocatesDeepFolders = order.relocatesDeepFolders;
    making.isStrict = order.isStrict;
    making.device = device;
    making.isPlanOnly = order.isPlanOnly;
    if (earlier)
        making.completeLayout = [this](DRFolder &layout) { return earlier->addTo(layout); };
    maker = std::make_unique<ImageMaker>(std::move(making));
    maker->start([this] { dataMade(); });
}

void BurnDiscJob::Work::dataMade()
{
    const QString name = result.data.volumeName;
    result.data = maker->result();
    result.data.volumeName = name;
    if (earlier && maker->contents()) {
        result.keptFiles = earlier->keptFiles();
        result.keptFolders = earlier->keptFolders();
        result.replaced = earlier->replaced();
        result.data.files -= result.keptFiles;
        result.data.folders -= result.keptFolders;
    }
    NSError error = std::exchange(result.data.error, {});
    if (const std::shared_ptr<const TableOfContents> contents = maker->contents()) {
        result.tracks = std::uint32_t(contents->trackCount());
        result.sessions = std::uint32_t(contents->sessions.size());
        if (order.isPlanOnly && !isCancelled())
            error = jobErrorOfBurn(device->errorOfBurn(*contents));
        else if (order.isPlanOnly)
            error = discJobCancellation();
    }
    tell(maker->progress());
    maker.reset();
    written(error);
}

NSError BurnDiscJob::Work::writeImage(const std::stop_token &stop)
{
    DescribedDiscNotes notes;
    const CueSheet &disc = sources.image->disc;
    const Result<BurnPlan> plan = planDescribedDisc(disc, notes, stop);
    if (!plan)
        return jobErrorOfBurn(plan.error());
    NSError error = write(*plan, stop);
    result.notes << notes.damages;
    result.isAnythingLost = !notes.damages.isEmpty();
    result.data.bytes = plan->bytes;
    return error;
}

NSError BurnDiscJob::Work::write(const BurnPlan &plan, const std::stop_token &stop)
{
    DiscJobProgress now;
    now.phase = DiscJobPhase::Writing;
    now.bytesTotal = plan.bytes;
    tell(now);
    return jobErrorOfBurn(writeDisc(plan, *device->sinkForBurn(stop), stop, [this, &now](std::uint64_t bytes) {
        now.bytesDone += bytes;
        tell(now);
    }));
}

/// Decodes on one thread what another one gives to the drive.
NSError BurnDiscJob::Work::writeSound(const std::stop_token &stop)
{
    DiscJobProgress measuring;
    measuring.phase = DiscJobPhase::Measuring;
    if (order.audio->normalization != AudioNormalization::None)
        tell(measuring);
    NSError error = audio->measure(stop);
    if (!error) {
        SoundPipe pipe;
        error = pipe.start(
            [this](int out, const std::stop_token &ends) {
                return audio->decodeInto(out, AudioDiscMaker::Output::Stream, ends);
            },
            stop);
        if (!error)
            error = write(planPipedDisc(soundContents, pipe), stop);
    }
    noteDamage();
    result.audioTracks = sound.tracks;
    return error;
}

void BurnDiscJob::Work::noteDamage()
{
    for (const AudioImageTrack &track : sound.tracks) {
        for (const AudioDamage &place : track.damage.places)
            result.notes << QStringLiteral("%1 is damaged at %2 s: %3")
                                .arg(quoted(track.source), QString::number(place.seconds, 'f', 2), place.what);
        result.isAnythingLost = result.isAnythingLost || !track.damage.isEmpty();
    }
}

void BurnDiscJob::Work::describeImage()
{
    result.tracks = std::uint32_t(sources.image->disc.contents.trackCount());
    result.sessions = std::uint32_t(sources.image->disc.contents.sessions.size());
}

/// What is written is written, or it failed: the rest takes its time, too.
void BurnDiscJob::Work::written(const NSError &error)
{
    runInBackground([this, error](const std::stop_token &stop) { return finish(error, stop); },
                    [this](const NSError &finishError) {
                        result.error = finishError;
                        end(finishError);
                    });
}

NSError BurnDiscJob::Work::finish(const NSError &writeError, const std::stop_token &stop)
{
    NSError error = writeError;
    if (!device)
        return error;
    result.condition = device->conditionAfterBurn();
    result.waits = device->activity().waits;
    if (const QStringList lost = device->lostByBurn(); !lost.isEmpty()) {
        result.notes << lost;
        result.isAnythingLost = true;
    }
    if (!error && order.verifies && !order.isSimulated && !order.isPlanOnly) {
        error = check(stop);
        if (isDiscJobError(error, DiscJobErrorCode::Cancelled))
            error = discJobError(DiscJobErrorCode::Cancelled, error.localizedDescription(),
                                 QStringLiteral("The disc is written, but was not compared to its end."));
    }
    if (error)
        result.fault = error.userInfo().value(DriveFaultKey).toString();
    if (audio)
        audio->endIdleHelpers();
    // The disc is what it is, but its tray may be in all the same.
    result.notes << releaseDrive(*device, order.ejects && !order.isPlanOnly);
    device.reset();
    return error;
}

NSError BurnDiscJob::Work::check(const std::stop_token &stop)
{
    if (audio)
        return checkSound(stop);
    if (sources.image)
        return checkImage(stop);
    const auto progress = [this](const DiscJobProgress &now) { tell(now); };
    // What is overwritten is compared as systems will see it: from its begin.
    const bool isOver = isOverwritten(result.disc.family);
    const std::uint64_t first = result.disc.state == DiscState::Appendable ? result.disc.nextBlock.value_or(0) : 0;
    const std::uint64_t inFront = isOver ? std::uint64_t(device->firstBlock().number()) : 0;
    VerificationRequest wanted;
    wanted.sources = sources.sources;
    wanted.tree = order.tree;
    wanted.filesystems = filesystems;
    const WrittenData written{first, inFront + result.data.bytes / 2048, earlier.get()};
    result.verification = checkWrittenData(*device, written, std::move(wanted), stop, progress);
    return noDifference(*result.verification);
}

NSError BurnDiscJob::Work::checkImage(const std::stop_token &stop)
{
    DescribedDiscNotes notes;
    const Result<BurnPlan> plan = planDescribedDisc(sources.image->disc, notes, stop);
    return plan ? checkTracks(*plan, stop) : jobErrorOfBurn(plan.error());
}

/// Decodes everything once more, and holds it against the disc.
NSError BurnDiscJob::Work::checkSound(const std::stop_token &stop)
{
    SoundPipe pipe;
    const NSError error = pipe.start(
        [this](int out, const std::stop_token &ends) {
            return audio->decodeInto(out, AudioDiscMaker::Output::Stream, ends);
        },
        stop);
    return error ? error : checkTracks(planPipedDisc(soundContents, pipe), stop);
}

NSError BurnDiscJob::Work::checkTracks(const BurnPlan &plan, const std::stop_token &stop)
{
    const auto progress = [this](const DiscJobProgress &now) { tell(now); };
    const std::size_t firstTrack = result.disc.tracks.size();
    WrittenImageCheck checked = checkWrittenImage(*device, plan, firstTrack, stop, progress);
    result.notes << checked.notes;
    result.bytesCompared = checked.bytesCompared;
    return jobErrorOfBurn(checked.error);
}

void BurnDiscJob::Work::stop()
{
    if (maker)
        maker->cancel();
}

void BurnDiscJob::Work::lookAhead()
{
    if (maker)
        maker->lookAhead();
}

void BurnDiscJob::Work::tell(const DiscJobProgress &now)
{
    const std::lock_guard lock(mutex);
    told = now;
}

DiscJobProgress BurnDiscJob::Work::progress() const
{
    const std::lock_guard lock(mutex);
    DiscJobProgress now = maker ? maker->progress() : told;
    // All bytes are on their way, and the drive ends the disc, which takes minutes.
    if (now.phase == DiscJobPhase::Writing && now.bytesTotal > 0 && now.bytesDone == now.bytesTotal)
        now.phase = DiscJobPhase::Finishing;
    return now;
}

BurnDiscJob::BurnDiscJob(BurnDiscOrder order, QObject *parent)
    : DiscJob(std::make_unique<Work>(std::move(order)), parent)
{
}

BurnDiscJob::~BurnDiscJob() = default;

const BurnDiscResult &BurnDiscJob::result() const
{
    return static_cast<const Work &>(work()).result;
}

void BurnDiscJob::announceResult()
{
    Q_EMIT finished(result());
}

} // namespace Tessaron
