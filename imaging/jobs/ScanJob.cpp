#include "imaging/jobs/DiscJobWork.h"
#include "imaging/jobs/SourceGatherer.h"
#include <TessaronClasses/DiscJobErrors.h>
#include <TessaronClasses/KRFileHierarchyItem.h>
#include <TessaronClasses/ScanJob.h>

namespace Tessaron
{

class ScanJob::Work final : public DiscJobWork
{
public:
    explicit Work(QList<QByteArray> scannedPaths)
        : paths(std::move(scannedPaths))
    {
    }

    void begin() override;
    void stop() override;
    [[nodiscard]] DiscJobProgress progress() const override;

    void prepared(const NSError &error);
    void gathered();
    void endWith(const NSError &error);

    const QList<QByteArray> paths;
    ScanResult result;
    std::vector<DiscSource> sources;
    std::unique_ptr<SourceGatherer> gatherer;
};

void ScanJob::Work::begin()
{
    runInBackground(
        [this](const std::stop_token &) {
            Result<std::vector<DiscSource>> found = discSourcesAtPaths(paths);
            if (found)
                sources = std::move(*found);
            return found.error();
        },
        [this](const NSError &error) { prepared(error); });
}

void ScanJob::Work::prepared(const NSError &error)
{
    if (const NSError failure = cancellationOr(error)) {
        endWith(failure);
        return;
    }
    gatherer = std::make_unique<SourceGatherer>(sources);
    gatherer->start([this] { gathered(); });
}

void ScanJob::Work::gathered()
{
    result.unreadable = gatherer->unreadable();
    if (const NSError failure = cancellationOr(gatherer->error())) {
        endWith(failure);
        return;
    }
    for (std::size_t index = 0; index < sources.size(); ++index) {
        GatheredSource &found = gatherer->gathered()[index];
        result.sources.push_back({sources[index].argument, found.files, found.folders, 0, std::move(found.item)});
    }
    // A tree of a million items takes a while to add up.
    runInBackground(
        [this](const std::stop_token &) {
            for (ScannedSource &source : result.sources)
                source.sizeOnDisk = source.tree->contentsPhysicalSize();
            return NSError();
        },
        [this](const NSError &error) { endWith(cancellationOr(error)); });
}

void ScanJob::Work::endWith(const NSError &error)
{
    result.error = error;
    if (error)
        result.sources.clear();
    end(error);
}

void ScanJob::Work::stop()
{
    if (gatherer)
        gatherer->cancel();
}

DiscJobProgress ScanJob::Work::progress() const
{
    DiscJobProgress progress;
    if (gatherer) {
        progress.phase = DiscJobPhase::Scanning;
        progress.files = gatherer->files();
        progress.folders = gatherer->folders();
    }
    return progress;
}

ScanJob::ScanJob(QList<QByteArray> paths, QObject *parent)
    : DiscJob(std::make_unique<Work>(std::move(paths)), parent)
{
}

ScanJob::~ScanJob() = default;

const ScanResult &ScanJob::result() const
{
    return static_cast<const Work &>(work()).result;
}

void ScanJob::announceResult()
{
    Q_EMIT finished(result());
}

} // namespace Tessaron
