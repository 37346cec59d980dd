#include "imaging/jobs/BackgroundTask.h"
#include "imaging/jobs/ImageMaker.h"
#include "imaging/jobs/ImageStage.h"
#include "platform/discrecording/objects/DRStorageReport.h"
#include "platform/discrecording/planning/DiscImagePlan.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MessageTexts.h"
#include <TessaronClasses/DiscImageJob.h>
#include <TessaronClasses/DiscJobErrors.h>
#include <TessaronClasses/DiscNames.h>

#include <algorithm>
#include <sys/stat.h>

namespace Tessaron
{

namespace
{

/// A name without its extension, unless it is all extension.
QByteArray withoutExtension(const QByteArray &name)
{
    const qsizetype dot = name.lastIndexOf('.');
    return dot > 0 ? name.left(dot) : name;
}

/// The variable is set to get reproducible bytes: a value that means nothing must not be ignored.
NSError errorOfEnvironment()
{
    const QByteArray value = qgetenv("SOURCE_DATE_EPOCH");
    if (value.isEmpty() || sourceDateEpochFromEnvironment())
        return {};
    return discJobError(DiscJobErrorCode::InvalidOrder,
                        QStringLiteral("SOURCE_DATE_EPOCH is %1, which is no number of seconds").arg(quoted(value)),
                        QStringLiteral("Set it to the seconds since 1970, or unset it."));
}

bool isOneFolder(const std::vector<DiscSource> &sources)
{
    return sources.size() == 1 && sources.front().isFolder;
}

/// True when a player will take the disc for DVD-Video.
bool isDvdVideo(const std::vector<DiscSource> &sources)
{
    const QByteArray folderName = QByteArrayLiteral("VIDEO_TS");
    struct stat status;
    if (isOneFolder(sources))
        return ::lstat((sources.front().path + '/' + folderName).constData(), &status) == 0 && S_ISDIR(status.st_mode);
    return std::any_of(sources.begin(), sources.end(), [&folderName](const DiscSource &source) {
        return source.isFolder && source.name == folderName;
    });
}

} // namespace

bool DiscImageResult::isComplete() const
{
    return !error && unreadable.empty() && !isVolumeNameLost && (!report || report->lostCount() == 0);
}

class DiscImageJob::Private
{
public:
    DiscImageOrder order;
    DiscImageResult result;
    std::vector<DiscSource> sources;
    DiscJobPhase phase = DiscJobPhase::Preparing;
    ImageStage stage;
    std::uint64_t finishedBytes = 0; ///< length of the file in the end; the worker's while it runs
    std::unique_ptr<ImageMaker> maker;
    BackgroundTask task; ///< last member: it ends before what it works on goes

    [[nodiscard]] NSError prepare(const std::stop_token &stop);
    [[nodiscard]] QString volumeName() const;
};

NSError DiscImageJob::Private::prepare(const std::stop_token &stop)
{
    if (NSError error = errorOfEnvironment())
        return error;
    Result<std::vector<DiscSource>> found = discSourcesAtPaths(order.sources);
    if (!found)
        return found.error();
    sources = std::move(*found);
    if (NSError error = errorOfSourcesSideBySide(sources))
        return error;
    if (NSError error = stage.open(order, sources, stop))
        return error;
    result.imagePath = stage.imagePath();
    result.cueSheetPath = stage.cueSheetPath();
    result.volumeName = volumeName();
    if (isDvdVideo(sources))
        result.volumeName = dvdName(result.volumeName);
    return {};
}

QString DiscImageJob::Private::volumeName() const
{
    if (!order.volumeName.isEmpty())
        return order.volumeName;
    const bool hasFolderName = isOneFolder(sources) && sources.front().name != "/";
    return stringWithFileSystemRepresentation(hasFolderName ? sources.front().name
                                                            : withoutExtension(stage.imageName()));
}

DiscImageJob::DiscImageJob(DiscImageOrder order, QObject *parent)
    : DiscJob(parent)
    , d(std::make_unique<Private>())
{
    d->order = std::move(order);
}

DiscImageJob::~DiscImageJob() = default;

const DiscImageResult &DiscImageJob::result() const
{
    return d->result;
}

void DiscImageJob::begin()
{
    d->task.start([d = d.get()](const std::stop_token &stop) { return d->prepare(stop); },
                  [this](const NSError &error) { prepared(error); });
}

void DiscImageJob::prepared(const NSError &error)
{
    if (error || isCancelled()) {
        endWith(isCancelled() ? discJobCancellation() : error);
        return;
    }
    ImageMakerOrder order;
    order.sources = d->sources;
    order.rootIsOnlySource = isOneFolder(d->sources);
    order.volumeName = d->result.volumeName;
    order.isVolumeNameGiven = !d->order.volumeName.isEmpty();
    order.isVolumeNameChanged = order.isVolumeNameGiven && d->result.volumeName != d->order.volumeName;
    order.filesystems = d->order.filesystems;
    order.relocatesDeepFolders = d->order.relocatesDeepFolders;
    order.isStrict = d->order.isStrict;
    order.path = d->stage.pathForWriting();
    order.descriptor = d->stage.descriptor();
    order.finalPath = d->stage.imagePath();
    order.isSynchronized = d->order.isSynchronized;
    d->maker = std::make_unique<ImageMaker>(std::move(order));
    d->maker->start([this] { imageMade(); });
}

void DiscImageJob::imageMade()
{
    const DiscImageResult &made = d->maker->result();
    d->result.bytes = made.bytes;
    d->result.files = made.files;
    d->result.folders = made.folders;
    d->result.unreadable = made.unreadable;
    d->result.isVolumeNameLost = made.isVolumeNameLost;
    d->result.report = made.report;
    const NSError error = made.error;
    const std::shared_ptr<const TableOfContents> contents = d->maker->contents();
    d->maker.reset();
    if (error || isCancelled()) {
        endWith(error ? error : discJobCancellation());
        return;
    }
    d->phase = DiscJobPhase::Finishing;
    d->task.start(
        [d = d.get(), contents](const std::stop_token &stop) {
            return d->stage.finish(d->order, *contents, &d->finishedBytes, stop);
        },
        [this](const NSError &finishError) {
            if (!finishError)
                d->result.bytes = d->finishedBytes;
            endWith(finishError);
        });
}

void DiscImageJob::endWith(const NSError &error)
{
    d->result.error = error;
    // What has not got its name goes before anybody is told, so that a script finds the place as it was.
    d->stage.close();
    if (!error)
        d->phase = DiscJobPhase::Done;
    end();
}

void DiscImageJob::stop()
{
    d->task.requestStop();
    if (d->maker)
        d->maker->cancel();
}

void DiscImageJob::lookAhead()
{
    if (d->maker)
        d->maker->lookAhead();
}

DiscJobProgress DiscImageJob::currentProgress() const
{
    if (d->maker)
        return d->maker->progress();
    DiscJobProgress progress;
    progress.phase = d->phase;
    progress.files = d->result.files;
    progress.folders = d->result.folders;
    if (d->phase != DiscJobPhase::Finishing && d->phase != DiscJobPhase::Done)
        return progress;
    progress.bytesDone = d->result.bytes;
    progress.bytesTotal = d->result.bytes;
    return progress;
}

void DiscImageJob::announceResult()
{
    Q_EMIT finished(d->result);
}

} // namespace Tessaron
