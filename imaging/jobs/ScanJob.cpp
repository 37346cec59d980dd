#include "imaging/jobs/BackgroundTask.h"
#include "imaging/jobs/SourceGatherer.h"
#include <TessaronClasses/DiscJobErrors.h>
#include <TessaronClasses/KRFileHierarchyItem.h>
#include <TessaronClasses/ScanJob.h>

namespace Tessaron
{

class ScanJob::Private
{
public:
    QList<QByteArray> paths;
    ScanResult result;
    std::vector<DiscSource> sources;
    std::unique_ptr<SourceGatherer> gatherer;
    DiscJobPhase phase = DiscJobPhase::Preparing;
    BackgroundTask task; ///< last member: it ends before what it works on goes
};

ScanJob::ScanJob(QList<QByteArray> paths, QObject *parent)
    : DiscJob(parent)
    , d(std::make_unique<Private>())
{
    d->paths = std::move(paths);
}

ScanJob::~ScanJob() = default;

const ScanResult &ScanJob::result() const
{
    return d->result;
}

void ScanJob::begin()
{
    d->task.start(
        [d = d.get()](const std::stop_token &) {
            Result<std::vector<DiscSource>> sources = discSourcesAtPaths(d->paths);
            if (sources)
                d->sources = std::move(*sources);
            return sources.error();
        },
        [this](const NSError &error) { prepared(error); });
}

void ScanJob::prepared(const NSError &error)
{
    if (error || isCancelled()) {
        endWith(isCancelled() ? discJobCancellation() : error);
        return;
    }
    d->phase = DiscJobPhase::Scanning;
    d->gatherer = std::make_unique<SourceGatherer>(d->sources);
    d->gatherer->start([this] { gathered(); });
}

void ScanJob::gathered()
{
    d->result.unreadable = d->gatherer->unreadable();
    if (d->gatherer->error() || d->gatherer->isCancelled()) {
        endWith(d->gatherer->isCancelled() ? discJobCancellation() : d->gatherer->error());
        return;
    }
    for (std::size_t index = 0; index < d->sources.size(); ++index) {
        GatheredSource &found = d->gatherer->gathered()[index];
        d->result.sources.push_back({d->sources[index].argument, found.files, found.folders, 0, std::move(found.item)});
    }
    // A tree of a million items takes a while to add up.
    d->task.start(
        [d = d.get()](const std::stop_token &) {
            for (ScannedSource &source : d->result.sources)
                source.sizeOnDisk = source.tree->contentsPhysicalSize();
            return NSError();
        },
        [this](const NSError &error) { endWith(isCancelled() ? discJobCancellation() : error); });
}

void ScanJob::endWith(const NSError &error)
{
    d->result.error = error;
    if (error)
        d->result.sources.clear();
    else
        d->phase = DiscJobPhase::Done;
    end();
}

void ScanJob::stop()
{
    d->task.requestStop();
    if (d->gatherer)
        d->gatherer->cancel();
}

DiscJobProgress ScanJob::currentProgress() const
{
    DiscJobProgress progress;
    progress.phase = d->phase;
    if (d->gatherer) {
        progress.files = d->gatherer->files();
        progress.folders = d->gatherer->folders();
    }
    return progress;
}

void ScanJob::announceResult()
{
    Q_EMIT finished(d->result);
}

} // namespace Tessaron
