#include "imaging/jobs/DataDisc.h"
#include "imaging/jobs/DiscJobWork.h"
#include "imaging/jobs/ImageMaker.h"
#include "imaging/jobs/ImageStage.h"
#include "platform/discrecording/objects/DRStorageReport.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include <TessaronClasses/DiscImageJob.h>
#include <TessaronClasses/DiscJobErrors.h>
#include <TessaronClasses/DiscNames.h>

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

} // namespace

bool DiscImageResult::isComplete() const
{
    return !error && unreadable.empty() && !isVolumeNameLost && (!report || report->lostCount() == 0);
}

class DiscImageJob::Work final : public DiscJobWork
{
public:
    explicit Work(DiscImageOrder imageOrder)
        : order(std::move(imageOrder))
    {
    }

    void begin() override;
    void stop() override;
    void lookAhead() override;
    [[nodiscard]] DiscJobProgress progress() const override;

    [[nodiscard]] NSError prepare(const std::stop_token &stop);
    [[nodiscard]] NSError findSources();
    [[nodiscard]] QString volumeName() const;
    void prepared(const NSError &error);
    void imageMade();
    void endWith(const NSError &error);

    const DiscImageOrder order;
    DiscImageResult result;
    std::vector<DiscSource> sources;
    DiscJobProgress reached; ///< while there is no maker
    ImageStage stage;
    std::uint64_t finishedBytes = 0; ///< length of the file in the end; the worker's while it runs
    std::unique_ptr<ImageMaker> maker;
};

NSError DiscImageJob::Work::prepare(const std::stop_token &stop)
{
    if (NSError error = errorOfEnvironment())
        return error;
    if (order.tree && !order.sources.isEmpty())
        return discJobError(DiscJobErrorCode::InvalidOrder,
                            QStringLiteral("an image is made of a tree or of sources, not of both"));
    if (NSError error = order.tree ? NSError() : findSources())
        return error;
    if (NSError error = stage.open(order, order.tree ? filesOfTree(*order.tree) : sources, stop))
        return error;
    result.imagePath = stage.imagePath();
    result.cueSheetPath = stage.cueSheetPath();
    result.volumeName = volumeName();
    if (order.tree ? isDvdVideo(*order.tree) : isDvdVideo(sources))
        result.volumeName = dvdName(result.volumeName);
    return {};
}

NSError DiscImageJob::Work::findSources()
{
    Result<std::vector<DiscSource>> found = discSourcesAtPaths(order.sources);
    if (!found)
        return found.error();
    sources = std::move(*found);
    return errorOfSourcesSideBySide(sources);
}

QString DiscImageJob::Work::volumeName() const
{
    if (!order.volumeName.isEmpty())
        return order.volumeName;
    const bool hasFolderName = isOneFolder(sources) && sources.front().name != "/";
    return stringWithFileSystemRepresentation(hasFolderName ? sources.front().name
                                                            : withoutExtension(stage.imageName()));
}

void DiscImageJob::Work::begin()
{
    runInBackground([this](const std::stop_token &stop) { return prepare(stop); },
                    [this](const NSError &error) { prepared(error); });
}

void DiscImageJob::Work::prepared(const NSError &error)
{
    if (const NSError failure = cancellationOr(error)) {
        endWith(failure);
        return;
    }
    ImageMakerOrder making;
    making.sources = sources;
    making.tree = order.tree;
    making.rootIsOnlySource = isOneFolder(sources);
    making.volumeName = result.volumeName;
    making.isVolumeNameGiven = !order.volumeName.isEmpty();
    making.isVolumeNameChanged = making.isVolumeNameGiven && result.volumeName != order.volumeName;
    making.filesystems = order.filesystems;
    making.relocatesDeepFolders = order.relocatesDeepFolders;
    making.isStrict = order.isStrict;
    making.path = stage.pathForWriting();
    making.descriptor = stage.descriptor();
    making.finalPath = stage.imagePath();
    making.isSynchronized = order.isSynchronized;
    maker = std::make_unique<ImageMaker>(std::move(making));
    maker->start([this] { imageMade(); });
}

void DiscImageJob::Work::imageMade()
{
    const DiscImageResult &made = maker->result();
    result.bytes = made.bytes;
    result.files = made.files;
    result.folders = made.folders;
    result.unreadable = made.unreadable;
    result.isVolumeNameLost = made.isVolumeNameLost;
    result.report = made.report;
    const NSError error = made.error;
    const std::shared_ptr<const TableOfContents> contents = maker->contents();
    reached = maker->progress();
    maker.reset();
    if (error || isCancelled()) {
        endWith(error ? error : discJobCancellation());
        return;
    }
    reached.phase = DiscJobPhase::Finishing;
    runInBackground(
        [this, contents](const std::stop_token &stop) { return stage.finish(order, *contents, &finishedBytes, stop); },
        [this](const NSError &finishError) {
            if (!finishError)
                result.bytes = reached.bytesDone = reached.bytesTotal = finishedBytes;
            endWith(finishError);
        });
}

void DiscImageJob::Work::endWith(const NSError &error)
{
    result.error = error;
    // Files that have not got their names go before the end is announced, so that a script finds the place as it was.
    stage.close();
    end(error);
}

void DiscImageJob::Work::stop()
{
    if (maker)
        maker->cancel();
}

void DiscImageJob::Work::lookAhead()
{
    if (maker)
        maker->lookAhead();
}

DiscJobProgress DiscImageJob::Work::progress() const
{
    return maker ? maker->progress() : reached;
}

DiscImageJob::DiscImageJob(DiscImageOrder order, QObject *parent)
    : DiscJob(std::make_unique<Work>(std::move(order)), parent)
{
}

DiscImageJob::~DiscImageJob() = default;

const DiscImageResult &DiscImageJob::result() const
{
    return static_cast<const Work &>(work()).result;
}

void DiscImageJob::announceResult()
{
    Q_EMIT finished(result());
}

} // namespace Tessaron
