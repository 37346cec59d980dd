#include "imaging/jobs/DiscJobWork.h"
#include "media/jobs/AudioFileList.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MessageTexts.h"
#include "platform/foundation/PathBytes.h"
#include "platform/foundation/Result.h"
#include "platform/foundation/UniqueDescriptor.h"
#include <TessaronClasses/AudioConvertJob.h>
#include <TessaronClasses/DiscJobErrors.h>
#include <TessaronClasses/KRAudioConverter.h>
#include <TessaronClasses/PathHelpers.h>

#include <QDir>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <thread>

namespace Tessaron
{

namespace
{

/// What QrlMov2Wav and DummyRedbook return when something in the source is broken and the rest is there.
constexpr int writtenWithDamage = 3;

QByteArray extensionOfFormat(std::int32_t format)
{
    if (format == KRAudioConverter::waveFormat)
        return ".wav";
    return format == KRAudioConverter::aiffFormat ? ".aiff" : ".mp3";
}

QByteArray nameOfResult(const QByteArray &source, std::int32_t format)
{
    QByteArray name = lastPathComponent(source).toByteArray();
    if (const qsizetype dot = name.lastIndexOf('.'); dot > 0)
        name.truncate(dot);
    return name + extensionOfFormat(format);
}

/// The first free name, taken by an empty file, so that no other conversion takes it.
Result<QByteArray> takeUnusedName(const QByteArray &wanted)
{
    for (;;) {
        const QByteArray path = fileSystemRepresentation(unusedName(stringWithFileSystemRepresentation(wanted)));
        const UniqueDescriptor file(::open(path.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
        if (file)
            return path;
        if (errno != EEXIST)
            return NSError::errorWithErrno(errno, stringWithFileSystemRepresentation(path));
    }
}

NSError failure(const QByteArray &source, const QString &reason)
{
    return discJobError(DiscJobErrorCode::Write,
                        QStringLiteral("%1 cannot be converted: %2").arg(quoted(source), reason), {}, source);
}

/// The last line that a tool has printed, without the tool's name; empty where it has printed nothing.
QString lastLine(const QString &message)
{
    const QString line = message.section(u'\n', -1);
    return line.section(QStringLiteral(": "), 1);
}

} // namespace

std::size_t AudioConvertResult::failures() const
{
    return std::size_t(
        std::count_if(files.begin(), files.end(), [](const ConvertedFile &file) { return bool(file.error); }));
}

bool AudioConvertResult::isComplete() const
{
    const auto isWhole = [](const ConvertedFile &file) { return !file.error && !file.isDamaged; };
    return !error && unreadable.empty() && std::all_of(files.begin(), files.end(), isWhole);
}

class AudioConvertJob::Work final : public DiscJobWork
{
public:
    explicit Work(AudioConvertOrder given)
        : order(std::move(given))
    {
    }
    ~Work() override;

    void begin() override;
    void stop() override;
    [[nodiscard]] DiscJobProgress progress() const override;
    void setSuspended(bool suspended);

    const AudioConvertOrder order;
    AudioConvertResult result;

private:
    /// One of those that work side by side.
    struct Lane {
        std::shared_ptr<KRAudioConverter> converter = KRAudioConverter::init();
        AudioFile file;
        QByteArray destination; ///< empty while it does nothing
        double fraction = 0;
    };

    void listed(const NSError &error);
    void startFiles();
    [[nodiscard]] bool startNext(Lane &lane);
    [[nodiscard]] Result<QByteArray> destinationOf(const AudioFile &file) const;
    void laneEnded(Lane &lane, const NSError &error);
    [[nodiscard]] NSError errorOfTools(const Lane &lane, bool *isDamaged) const;
    void finishIfIdle();

    AudioFileList list;
    std::size_t next = 0;
    std::uint64_t bytesTotal = 0;
    std::uint64_t bytesDone = 0;
    std::vector<std::unique_ptr<Lane>> lanes;
    bool isSuspended = false;
    bool isListed = false;
    bool hasEnded = false;
};

/// Nothing is left of what is not whole.
AudioConvertJob::Work::~Work()
{
    for (const std::unique_ptr<Lane> &lane : lanes) {
        lane->converter.reset();
        if (!lane->destination.isEmpty())
            ::unlink(lane->destination.constData());
    }
}

void AudioConvertJob::Work::begin()
{
    runInBackground(
        [this](const std::stop_token &stopToken) {
            list = audioFilesAtPaths(order.sources, order.isFlat, stopToken);
            const QString folder = stringWithFileSystemRepresentation(order.destination);
            if (!list.error && !QDir().mkpath(folder))
                return discJobError(DiscJobErrorCode::Destination,
                                    QStringLiteral("the folder %1 cannot be made").arg(quoted(order.destination)),
                                    QStringLiteral("Name another folder, or make it first."), order.destination);
            return list.error;
        },
        [this](const NSError &error) { listed(error); });
}

void AudioConvertJob::Work::listed(const NSError &error)
{
    isListed = true;
    result.unreadable = list.unreadable;
    result.leftOut = list.leftOut;
    result.error = cancellationOr(error);
    if (result.error) {
        hasEnded = true;
        end(result.error);
        return;
    }
    for (const AudioFile &file : list.files)
        bytesTotal += file.bytes;
    const unsigned int wanted = order.jobs != 0 ? order.jobs : std::max(std::thread::hardware_concurrency(), 1U);
    lanes.resize(std::min<std::size_t>(wanted, list.files.size()));
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
        delegate.KRAudioConverterDidFailWithError = [this, &lane = *lane](KRAudioConverter &, const NSError &why) {
            laneEnded(lane, failure(lane.file.path, why.localizedDescription()));
        };
        lane->converter->setDelegate(delegate);
    }
    startFiles();
}

void AudioConvertJob::Work::startFiles()
{
    for (const std::unique_ptr<Lane> &lane : lanes) {
        while (lane->destination.isEmpty() && next < list.files.size() && !isSuspended && !isCancelled()) {
            if (startNext(*lane))
                break;
        }
    }
    finishIfIdle();
}

/// False when the file could not be begun, which is in the result then.
bool AudioConvertJob::Work::startNext(Lane &lane)
{
    lane.file = list.files[next++];
    lane.fraction = 0;
    Result<QByteArray> destination = destinationOf(lane.file);
    if (!destination) {
        bytesDone += lane.file.bytes;
        result.files.push_back(
            {lane.file.path, {}, failure(lane.file.path, destination.error().localizedDescription()), false});
        return false;
    }
    lane.destination = *std::move(destination);
    // Absolute paths, here and above: a leading "~" means something to the launcher of the tools.
    const QString source = QDir::current().absoluteFilePath(stringWithFileSystemRepresentation(lane.file.path));
    lane.converter->convertAudioFiles(QStringList{source},
                                      QStringList{stringWithFileSystemRepresentation(lane.destination)}, order.format);
    return true;
}

Result<QByteArray> AudioConvertJob::Work::destinationOf(const AudioFile &file) const
{
    const QString top = QDir(stringWithFileSystemRepresentation(order.destination)).absolutePath();
    QByteArray folder = fileSystemRepresentation(top);
    if (!file.folder.isEmpty())
        folder = childPath(folder, file.folder);
    if (!QDir().mkpath(stringWithFileSystemRepresentation(folder)))
        return NSError::errorWithErrno(errno, stringWithFileSystemRepresentation(folder));
    return takeUnusedName(childPath(folder, nameOfResult(file.path, order.format)));
}

void AudioConvertJob::Work::laneEnded(Lane &lane, const NSError &error)
{
    if (lane.destination.isEmpty())
        return;
    ConvertedFile file{lane.file.path, lane.destination, error, false};
    if (!error)
        file.error = errorOfTools(lane, &file.isDamaged);
    if (file.error)
        ::unlink(lane.destination.constData());
    bytesDone += lane.file.bytes;
    lane.destination.clear();
    lane.fraction = 0;
    result.files.push_back(std::move(file));
    startFiles();
}

/// The converter goes on without a word when a tool fails: here it is noticed.
NSError AudioConvertJob::Work::errorOfTools(const Lane &lane, bool *isDamaged) const
{
    const QString message = lastLine(lane.converter->lastTaskMessage());
    const QString reason = message.isEmpty() ? QStringLiteral("the program that reads it has failed") : message;
    const std::vector<taskLauncher::TaskEnd> &ends = lane.converter->lastTaskEnds();
    for (std::size_t stage = 0; stage < ends.size(); ++stage) {
        const taskLauncher::TaskEnd &one = ends[stage];
        const bool isDecoder = stage == 0;
        if (one.hasEnded && !one.isBySignal && isDecoder && one.status == writtenWithDamage)
            *isDamaged = true;
        else if (one.isBySignal)
            return failure(lane.file.path, QStringLiteral("the program was ended by signal %1").arg(one.status));
        else if (!one.hasEnded || one.status != 0)
            return failure(lane.file.path, reason);
    }
    struct stat status;
    if (::stat(lane.destination.constData(), &status) != 0 || status.st_size == 0)
        return failure(lane.file.path, QStringLiteral("the result is empty"));
    return {};
}

void AudioConvertJob::Work::finishIfIdle()
{
    const bool isBusy = std::any_of(lanes.begin(), lanes.end(),
                                    [](const std::unique_ptr<Lane> &lane) { return !lane->destination.isEmpty(); });
    const bool isOver = next == list.files.size() || isCancelled();
    if (isBusy || !isOver || std::exchange(hasEnded, true))
        return;
    result.error = cancellationOr({});
    end(result.error);
}

void AudioConvertJob::Work::stop()
{
    for (const std::unique_ptr<Lane> &lane : lanes) {
        if (!lane->destination.isEmpty())
            lane->converter->abort();
    }
    if (isListed && !hasEnded)
        finishIfIdle();
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
    if (!suspended && isListed && !hasEnded)
        startFiles();
}

DiscJobProgress AudioConvertJob::Work::progress() const
{
    DiscJobProgress progress;
    if (!isListed)
        return progress;
    progress.phase = DiscJobPhase::Writing;
    progress.files = result.files.size();
    progress.bytesTotal = bytesTotal;
    progress.bytesDone = bytesDone;
    for (const std::unique_ptr<Lane> &lane : lanes)
        progress.bytesDone += std::uint64_t(lane->fraction * double(lane->file.bytes));
    return progress;
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

const AudioConvertResult &AudioConvertJob::result() const
{
    return m_work->result;
}

void AudioConvertJob::announceResult()
{
    Q_EMIT finished(result());
}

} // namespace Tessaron
