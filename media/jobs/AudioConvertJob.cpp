#include "imaging/jobs/DiscJobWork.h"
#include "media/jobs/CarriedTags.h"
#include "media/jobs/MediaFileWalk.h"
#include "media/jobs/ResultCheck.h"
#include "media/jobs/ResultPlaces.h"
#include "media/jobs/ToolReport.h"
#include "platform/foundation/DescriptorLimit.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MessageTexts.h"
#include "platform/quicktime/SoundHelpers.h"
#include <TessaronClasses/AudioConvertJob.h>
#include <TessaronClasses/DiscJobErrors.h>
#include <TessaronClasses/KRAudioConverter.h>

#include <QDir>

#include <algorithm>
#include <deque>
#include <optional>
#include <thread>
#include <utility>

namespace Tessaron
{

namespace
{

NSError failure(const QByteArray &source, const QString &reason, const QString &suggestion = {}, qint64 status = 0)
{
    return discJobError(DiscJobErrorCode::Write,
                        QStringLiteral("%1 cannot be converted: %2").arg(quoted(source), reason), suggestion, source,
                        status);
}

NSError failure(const QByteArray &source, const NSError &why)
{
    return failure(source, why.localizedDescription(), why.localizedRecoverySuggestion(),
                   isLackOfDescriptors(why) ? tmfoErr : 0);
}

/// True for a failure that the next file would have, too.
bool isLackOfDescriptorsBehind(const NSError &error)
{
    return error.userInfo().value(DiscJobUnderlyingStatusKey).toLongLong() == tmfoErr;
}

QString absolutePath(const QByteArray &path)
{
    return QDir::current().absoluteFilePath(stringWithFileSystemRepresentation(path));
}

NSError errorOfOrder(const AudioConvertOrder &order)
{
    const bool isKnown =
        order.format >= KRAudioConverter::waveFormat && order.format <= KRAudioConverter::mp3FormatConstant160;
    if (!isKnown)
        return discJobError(DiscJobErrorCode::InvalidOrder,
                            QStringLiteral("there is no format %1 to convert to").arg(order.format));
    if (order.carriesTags && !isMP3Format(order.format))
        return discJobError(DiscJobErrorCode::InvalidOrder, QStringLiteral("tags are carried into MP3 files only"));
    if (isMP3Format(order.format) && !KRAudioConverter::hasEncoder())
        return discJobError(DiscJobErrorCode::InvalidOrder,
                            QStringLiteral("the program “lame”, which makes MP3 files, cannot be found"),
                            QStringLiteral("Install it (in Debian the package lame), or convert to WAVE or AIFF."));
    return {};
}

} // namespace

std::size_t AudioConvertResult::failures() const
{
    return std::size_t(
        std::count_if(files.begin(), files.end(), [](const ConvertedFile &file) { return bool(file.error); }));
}

bool AudioConvertResult::isComplete() const
{
    const auto isWhole = [](const ConvertedFile &file) {
        return !file.error && !file.isDamaged && file.notes.isEmpty();
    };
    return !error && unreadable.empty() && std::all_of(files.begin(), files.end(), isWhole);
}

/// Lists the files, then leads each through three steps: a place for its result is made in the background, a converter
/// makes it, and in the background again it is looked at and gets its name.
class AudioConvertJob::Work final : public DiscJobWork
{
public:
    explicit Work(AudioConvertOrder given)
        : order(std::move(given))
        , places(order.destination, order.isFlat, order.format)
    {
    }

    void begin() override;
    void stop() override;
    [[nodiscard]] DiscJobProgress progress() const override;
    [[nodiscard]] std::vector<RunningConversion> running() const;
    void setSuspended(bool suspended);

    const AudioConvertOrder order;
    AudioConvertResult result;

private:
    struct Conversion {
        std::size_t number = 0; ///< in the list
        std::unique_ptr<StagedResult> stage; ///< null until its place is made
        ConvertedFile file;
    };
    /// One of those that work side by side.
    struct Lane {
        enum class State : std::uint8_t { Idle, Preparing, Prepared, Converting };

        State state = State::Idle;
        double fraction = 0;
        std::shared_ptr<Conversion> conversion; ///< null while idle
        /// Behind the conversion: its tools end before what they write into goes.
        std::shared_ptr<KRAudioConverter> converter = KRAudioConverter::init();
    };
    /// Work for the background, one piece after the other.
    struct Step {
        std::function<NSError(const std::stop_token &)> work;
        std::function<void(const NSError &)> whenEnded;
    };

    [[nodiscard]] NSError list(const std::stop_token &stop);
    [[nodiscard]] NSError checkDescriptors() const;
    [[nodiscard]] std::size_t lanesWanted() const;
    void listed(const NSError &error);
    void makeLanes();
    void fillLanes();
    void prepare(Lane &lane);
    [[nodiscard]] NSError makePlace(Conversion &conversion);
    void prepared(Lane &lane, const NSError &error);
    void startPrepared();
    void convert(Lane &lane);
    void laneEnded(Lane &lane, const NSError &error);
    [[nodiscard]] NSError completeResult(Conversion &conversion, const std::stop_token &stop);
    void record(Conversion &conversion, const NSError &error);
    void inBackground(Step step);
    void runNextStep();
    void endIfIdle();
    void removeFoldersAndEnd();
    [[nodiscard]] std::uint64_t bytesOf(const Conversion &conversion) const { return sources[conversion.number].bytes; }

    ResultPlaces places; ///< goes behind all that is made there; steps alone use it
    SoundHelpers helpers; ///< for tags; steps alone use them
    std::vector<FoundMediaFile> sources;
    MediaFileRemarks remarks;
    std::size_t next = 0;
    std::uint64_t bytesTotal = 0;
    std::uint64_t bytesDone = 0;
    std::size_t filesDone = 0;
    NSError lackOfDescriptors; ///< of the first file that could not be converted for that reason
    std::vector<std::optional<ConvertedFile>> files; ///< by their numbers in the list
    std::deque<Step> steps;
    bool isStepRunning = false;
    bool isSuspended = false;
    bool isListed = false;
    bool hasEnded = false;
    std::vector<std::unique_ptr<Lane>> lanes;
};

void AudioConvertJob::Work::begin()
{
    inBackground({[this](const std::stop_token &stopToken) {
                      if (NSError error = errorOfOrder(order))
                          return error;
                      return list(stopToken);
                  },
                  [this](const NSError &error) { listed(error); }});
}

/// Each of those that work side by side has pipes to programs, a folder and a file; the rest is for the bus.
NSError AudioConvertJob::Work::checkDescriptors() const
{
    constexpr std::size_t descriptorsOfAll = 16, descriptorsOfEach = 8;
    const int reason = probeDescriptors(descriptorsOfAll + descriptorsOfEach * lanesWanted());
    if (!isLackOfDescriptors(reason))
        return {};
    return discJobError(DiscJobErrorCode::Source,
                        QStringLiteral("%1 at a time cannot be converted: %2")
                            .arg(counted(lanesWanted(), "file", "files"), systemText(reason)),
                        adviceOnDescriptors(), {}, tmfoErr);
}

/// How many files are converted side by side.
std::size_t AudioConvertJob::Work::lanesWanted() const
{
    const unsigned int wanted = order.jobs != 0 ? order.jobs : std::max(std::thread::hardware_concurrency(), 1U);
    return std::min<std::size_t>(wanted, sources.size());
}

NSError AudioConvertJob::Work::list(const std::stop_token &stop)
{
    MediaFileWalk walk(order.sources, order.destination);
    while (std::optional<FoundMediaFile> file = walk.next(stop))
        sources.push_back(*std::move(file));
    remarks = walk.remarks();
    if (stop.stop_requested())
        return {};
    if (NSError error = checkDescriptors())
        return error;
    return places.makeDestination();
}

void AudioConvertJob::Work::listed(const NSError &error)
{
    isListed = true;
    result.unreadable = std::move(remarks.unreadable);
    result.leftOut = remarks.leftOut;
    result.leftOutSpecial = remarks.leftOutSpecial;
    result.isDestinationLeftOut = remarks.isDestinationLeftOut;
    result.error = cancellationOr(error);
    if (result.error) {
        hasEnded = true;
        removeFoldersAndEnd();
        return;
    }
    for (const FoundMediaFile &file : sources)
        bytesTotal += file.bytes;
    files.resize(sources.size());
    makeLanes();
    fillLanes();
}

void AudioConvertJob::Work::makeLanes()
{
    lanes.resize(lanesWanted());
    for (std::unique_ptr<Lane> &lane : lanes) {
        lane = std::make_unique<Lane>();
        KRAudioConverterDelegate delegate;
        delegate.KRAudioConverterProgress = [&lane = *lane](KRAudioConverter &, float fraction) {
            lane.fraction = std::clamp(double(fraction), lane.fraction, 1.0);
        };
        delegate.KRAudioConverterDidEnd = [this, &lane = *lane](KRAudioConverter &) { laneEnded(lane, {}); };
        delegate.KRAudioConverterDidAbort = [this, &lane = *lane](KRAudioConverter &) {
            laneEnded(lane, discJobCancellation());
        };
        delegate.KRAudioConverterDidFailWithError = [this, &lane = *lane](KRAudioConverter &self, const NSError &why) {
            const NSError launchError = self.task() ? self.task()->launchError() : NSError();
            laneEnded(lane, launchError ? launchError : why);
        };
        lane->converter->setDelegate(delegate);
    }
}

void AudioConvertJob::Work::fillLanes()
{
    for (const std::unique_ptr<Lane> &lane : lanes) {
        if (lane->state == Lane::State::Idle && !isCancelled())
            prepare(*lane);
    }
    endIfIdle();
}

/// Takes the next file that can be converted, if any.
void AudioConvertJob::Work::prepare(Lane &lane)
{
    while (next < sources.size()) {
        const auto conversion = std::make_shared<Conversion>();
        conversion->number = next++;
        const FoundMediaFile &file = sources[conversion->number];
        conversion->file.source = file.path;
        if (file.error) {
            bytesDone += file.bytes;
            record(*conversion, file.error);
            continue;
        }
        lane.state = Lane::State::Preparing;
        lane.conversion = conversion;
        lane.fraction = 0;
        inBackground({[this, conversion](const std::stop_token &) { return makePlace(*conversion); },
                      [this, &lane, conversion](const NSError &error) {
                          // A cancel may have given the file up. The place goes here, since the background lets go
                          // of its work only after the end of the job is announced.
                          if (lane.conversion == conversion)
                              prepared(lane, error);
                          else
                              conversion->stage.reset();
                          endIfIdle();
                      }});
        return;
    }
}

NSError AudioConvertJob::Work::makePlace(Conversion &conversion)
{
    const FoundMediaFile &file = sources[conversion.number];
    Result<std::unique_ptr<StagedResult>> stage = places.placeFor(file);
    if (!stage)
        return failure(file.path, stage.error());
    conversion.stage = *std::move(stage);
    return {};
}

void AudioConvertJob::Work::prepared(Lane &lane, const NSError &error)
{
    if (!error) {
        lane.state = Lane::State::Prepared;
        startPrepared();
        return;
    }
    lane.state = Lane::State::Idle;
    const std::shared_ptr<Conversion> conversion = std::exchange(lane.conversion, nullptr);
    bytesDone += bytesOf(*conversion);
    record(*conversion, error);
    fillLanes();
}

void AudioConvertJob::Work::startPrepared()
{
    for (const std::unique_ptr<Lane> &lane : lanes) {
        if (lane->state == Lane::State::Prepared && !isSuspended)
            convert(*lane);
    }
}

void AudioConvertJob::Work::convert(Lane &lane)
{
    lane.state = Lane::State::Converting;
    // Absolute paths: a leading "~" means something to the launcher of the tools.
    const QString source = absolutePath(lane.conversion->file.source);
    const QString toPath = stringWithFileSystemRepresentation(lane.conversion->stage->path());
    lane.converter->convertAudioFiles(QStringList{source}, QStringList{toPath}, order.format);
}

void AudioConvertJob::Work::laneEnded(Lane &lane, const NSError &error)
{
    if (lane.state != Lane::State::Converting)
        return;
    lane.state = Lane::State::Idle;
    lane.fraction = 0;
    const std::shared_ptr<Conversion> conversion = std::exchange(lane.conversion, nullptr);
    bytesDone += bytesOf(*conversion);
    NSError reason = error;
    if (error && !isDiscJobError(error, DiscJobErrorCode::Cancelled))
        reason = failure(conversion->file.source, error);
    if (!reason) {
        const ToolReport report = reportOfTools(*lane.converter,
                                                {fileSystemRepresentation(absolutePath(conversion->file.source)),
                                                 conversion->stage->path(), conversion->stage->wanted()});
        conversion->file.isDamaged = report.isDamaged;
        conversion->file.damage = report.damage;
        if (!report.failure.isEmpty())
            reason = failure(conversion->file.source, report.failure);
    }
    if (reason)
        record(*conversion, reason);
    else
        inBackground({[this, conversion](const std::stop_token &stop) { return completeResult(*conversion, stop); },
                      [this, conversion](const NSError &why) {
                          record(*conversion, why);
                          fillLanes();
                      }});
    fillLanes();
}

NSError AudioConvertJob::Work::completeResult(Conversion &conversion, const std::stop_token &stop)
{
    const QString flaw = flawOfResult(conversion.stage->path(), order.format);
    if (!flaw.isEmpty())
        return failure(conversion.file.source, flaw);
    if (order.carriesTags) {
        const CarriedTags tags = carriedTags(conversion.file.source, helpers, stop);
        conversion.file.notes += tags.notes;
        if (const NSError error = tags.bytes.isEmpty() ? NSError() : conversion.stage->prepend(tags.bytes))
            return failure(conversion.file.source, error);
    }
    Result<QByteArray> path = conversion.stage->publish();
    if (!path)
        return failure(conversion.file.source, path.error());
    conversion.file.destination = *std::move(path);
    return {};
}

void AudioConvertJob::Work::record(Conversion &conversion, const NSError &error)
{
    conversion.stage.reset();
    ++filesDone;
    if (isLackOfDescriptorsBehind(error)) {
        // The next one would have it, too: it is told once, and no further file is begun.
        lackOfDescriptors = lackOfDescriptors ? lackOfDescriptors : error;
        next = sources.size();
        return;
    }
    conversion.file.error = error;
    files[conversion.number] = std::move(conversion.file);
}

void AudioConvertJob::Work::inBackground(Step step)
{
    steps.push_back(std::move(step));
    runNextStep();
}

void AudioConvertJob::Work::runNextStep()
{
    if (isStepRunning || steps.empty())
        return;
    isStepRunning = true;
    const Step step = std::move(steps.front());
    steps.pop_front();
    runInBackground(step.work, [this, whenEnded = step.whenEnded](const NSError &error) {
        isStepRunning = false;
        whenEnded(error);
        runNextStep();
    });
}

void AudioConvertJob::Work::endIfIdle()
{
    const bool isBusy = std::any_of(lanes.begin(), lanes.end(),
                                    [](const std::unique_ptr<Lane> &lane) { return lane->state != Lane::State::Idle; });
    const bool isOver = next == sources.size() || isCancelled();
    if (isBusy || isStepRunning || !steps.empty() || !isOver || std::exchange(hasEnded, true))
        return;
    for (std::optional<ConvertedFile> &file : files) {
        if (file)
            result.files.push_back(*std::move(file));
    }
    result.error = cancellationOr(lackOfDescriptors);
    removeFoldersAndEnd();
}

void AudioConvertJob::Work::removeFoldersAndEnd()
{
    runInBackground(
        [this](const std::stop_token &) {
            helpers.endIdle();
            places.removeEmptyFolders();
            return NSError();
        },
        [this](const NSError &) { end(result.error); });
}

/// What waits in the background is given up with what it has made; what runs there ends by itself.
void AudioConvertJob::Work::stop()
{
    if (!isListed || hasEnded)
        return;
    steps.clear();
    for (const std::unique_ptr<Lane> &lane : lanes) {
        if (lane->state == Lane::State::Converting) {
            lane->converter->abort();
        } else {
            lane->state = Lane::State::Idle;
            lane->conversion.reset();
        }
    }
    endIfIdle();
}

void AudioConvertJob::Work::setSuspended(bool suspended)
{
    isSuspended = suspended;
    for (const std::unique_ptr<Lane> &lane : lanes) {
        const std::shared_ptr<taskLauncher> task = lane->converter->task();
        if (task && suspended)
            task->suspend();
        else if (task)
            task->resume();
    }
    startPrepared();
}

DiscJobProgress AudioConvertJob::Work::progress() const
{
    DiscJobProgress progress;
    if (!isListed)
        return progress;
    progress.phase = DiscJobPhase::Writing;
    progress.files = filesDone;
    progress.bytesTotal = bytesTotal;
    progress.bytesDone = bytesDone;
    for (const std::unique_ptr<Lane> &lane : lanes) {
        if (lane->conversion)
            progress.bytesDone += std::uint64_t(lane->fraction * double(bytesOf(*lane->conversion)));
    }
    return progress;
}

std::vector<RunningConversion> AudioConvertJob::Work::running() const
{
    std::vector<RunningConversion> running;
    for (const std::unique_ptr<Lane> &lane : lanes) {
        if (lane->state == Lane::State::Converting)
            running.push_back({lane->conversion->file.source, lane->fraction});
    }
    return running;
}

AudioConvertJob::AudioConvertJob(AudioConvertOrder order, QObject *parent)
    : AudioConvertJob(std::make_unique<Work>(std::move(order)).release(), parent)
{
}

AudioConvertJob::AudioConvertJob(Work *work, QObject *parent)
    : DiscJob(std::unique_ptr<DiscJobWork>(work), parent)
    , m_work(work)
{
}

AudioConvertJob::~AudioConvertJob() = default;

void AudioConvertJob::suspend()
{
    m_work->setSuspended(true);
}

void AudioConvertJob::resume()
{
    m_work->setSuspended(false);
}

std::vector<RunningConversion> AudioConvertJob::running() const
{
    return m_work->running();
}

const AudioConvertResult &AudioConvertJob::result() const
{
    return m_work->result;
}

void AudioConvertJob::announceResult()
{
    Q_EMIT finished(result());
}

} // namespace Tessaron
