#include "imaging/jobs/BackgroundTask.h"
#include <TessaronClasses/DiscJobErrors.h>
#include <TessaronClasses/InspectJob.h>

#include <atomic>

namespace Tessaron
{

class InspectJob::Private
{
public:
    NSError work(const std::stop_token &stop)
    {
        Result<OpenedDiscImage> opened = openDiscImage(path);
        if (!opened)
            return opened.error();
        result.image = std::make_shared<const OpenedDiscImage>(std::move(*opened));
        phase = DiscJobPhase::Scanning;
        for (const FoundVolume &volume : result.image->volumes)
            result.censuses.push_back(volume.reader ? censusOf(*volume.reader, stop) : VolumeCensus());
        check(stop);
        return stop.stop_requested() ? discJobCancellation() : NSError();
    }

    void check(const std::stop_token &stop)
    {
        constexpr std::size_t keptProblems = 100;
        result.bootCatalog = readBootCatalog(*result.image->source);
        const auto keep = [this](const VolumeProblem &problem) {
            result.unsupportedCount += problem.kind == VolumeProblem::Kind::Unsupported ? 1 : 0;
            if (result.problems.size() < keptProblems)
                result.problems.push_back(problem);
            return true;
        };
        result.problemCount = checkDiscImage(result.image->source, keep, stop);
    }

    QByteArray path;
    ImageInspection result; ///< the worker's until the job has ended
    std::atomic<DiscJobPhase> phase = DiscJobPhase::Preparing;
    BackgroundTask task; ///< last member: it ends before what it works on goes
};

InspectJob::InspectJob(QByteArray path, QObject *parent)
    : DiscJob(parent)
    , d(std::make_unique<Private>())
{
    d->path = std::move(path);
}

InspectJob::~InspectJob() = default;

const ImageInspection &InspectJob::result() const
{
    return d->result;
}

void InspectJob::begin()
{
    d->task.start([d = d.get()](const std::stop_token &stop) { return d->work(stop); },
                  [this](const NSError &error) {
                      d->result.error = error;
                      if (!error)
                          d->phase = DiscJobPhase::Done;
                      end();
                  });
}

void InspectJob::stop()
{
    d->task.requestStop();
}

DiscJobProgress InspectJob::currentProgress() const
{
    DiscJobProgress progress;
    progress.phase = d->phase;
    return progress;
}

void InspectJob::announceResult()
{
    Q_EMIT finished(d->result);
}

} // namespace Tessaron
