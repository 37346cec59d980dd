#include "imaging/jobs/BackgroundTask.h"
#include "platform/foundation/MessageTexts.h"
#include <TessaronClasses/DiscJobErrors.h>
#include <TessaronClasses/DiscSources.h>
#include <TessaronClasses/OpenedDiscImage.h>
#include <TessaronClasses/VerifyJob.h>

#include <mutex>

namespace Tessaron
{

class VerifyJob::Private
{
public:
    NSError work(const std::stop_token &stop);
    NSError prepare(VerificationRequest *request) const;

    VerifyOrder order;
    VerificationResult result; ///< the worker's until the job has ended
    std::mutex mutex;
    DiscJobProgress progress; ///< guarded by `mutex`
    BackgroundTask task; ///< last member: it ends before what it works on goes
};

NSError VerifyJob::Private::prepare(VerificationRequest *request) const
{
    Result<OpenedDiscImage> opened = openDiscImage(order.image);
    if (!opened)
        return opened.error();
    if (opened->volumes.empty() && !order.filesystems)
        return discJobError(DiscJobErrorCode::Source,
                            QStringLiteral("no filesystem was found in %1").arg(quoted(order.image)),
                            QStringLiteral("Known are ISO 9660, Rock Ridge, Joliet, UDF and HFS+."), order.image);
    Result<std::vector<DiscSource>> sources = discSourcesAtPaths(order.sources);
    if (!sources)
        return sources.error();
    if (NSError error = errorOfSourcesSideBySide(*sources))
        return error;
    request->image = opened->source;
    request->volumes = std::move(opened->volumes);
    request->sources = std::move(*sources);
    request->filesystems = order.filesystems;
    return {};
}

NSError VerifyJob::Private::work(const std::stop_token &stop)
{
    VerificationRequest request;
    if (NSError error = prepare(&request))
        return error;
    result = verifyImage(request, stop, [this](const DiscJobProgress &now) {
        const std::lock_guard lock(mutex);
        progress = now;
    });
    return result.error;
}

VerifyJob::VerifyJob(VerifyOrder order, QObject *parent)
    : DiscJob(parent)
    , d(std::make_unique<Private>())
{
    d->order = std::move(order);
}

VerifyJob::~VerifyJob() = default;

const VerificationResult &VerifyJob::result() const
{
    return d->result;
}

void VerifyJob::begin()
{
    d->task.start([d = d.get()](const std::stop_token &stop) { return d->work(stop); },
                  [this](const NSError &error) {
                      d->result.error = error;
                      if (!error)
                          d->progress.phase = DiscJobPhase::Done;
                      end();
                  });
}

void VerifyJob::stop()
{
    d->task.requestStop();
}

DiscJobProgress VerifyJob::currentProgress() const
{
    const std::lock_guard lock(d->mutex);
    return d->progress;
}

void VerifyJob::announceResult()
{
    Q_EMIT finished(d->result);
}

} // namespace Tessaron
