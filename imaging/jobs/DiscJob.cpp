#include "imaging/jobs/DiscJobWork.h"
#include "platform/foundation/MainThread.h"
#include <TessaronClasses/DiscJobErrors.h>
#include <TessaronClasses/TransferRate.h>

#include <QTimer>

#include <algorithm>
#include <cmath>

namespace Tessaron
{

namespace
{

constexpr std::chrono::milliseconds lookInterval(50);
constexpr std::chrono::milliseconds shortestInterval(100); // ten times a second is as fast as people read

bool countsBytes(DiscJobPhase phase)
{
    return phase == DiscJobPhase::Measuring || phase == DiscJobPhase::Writing || phase == DiscJobPhase::Comparing
        || phase == DiscJobPhase::Finishing;
}

} // namespace

double DiscJobProgress::percent() const
{
    if (phase == DiscJobPhase::Done)
        return 100;
    if (!countsBytes(phase) || bytesTotal == 0)
        return 0;
    return std::min(std::floor(1000.0 * double(bytesDone) / double(bytesTotal)) / 10, 99.9);
}

class DiscJob::Private
{
public:
    enum class State : std::uint8_t { New, Running, Ended };

    std::unique_ptr<DiscJobWork> work;
    BackgroundTask task; ///< behind `work`, so that it ends before what it works on goes
    State state = State::New;
    bool isCancelled = false;
    bool isBeginning = false; ///< within begin() of the work
    bool hasBegun = false;
    bool hasEndedWell = false;
    QTimer timer;
    TransferRate rate;
    std::optional<DiscJobPhase> toldPhase;
    TransferRate::Time toldAt;
    /// Its end silences what is scheduled.
    std::shared_ptr<const void> life = std::make_shared<int>();

    void stop()
    {
        task.requestStop();
        work->stop();
    }
};

DiscJob::DiscJob(std::unique_ptr<DiscJobWork> work, QObject *parent)
    : QObject(parent)
    , d(std::make_unique<Private>())
{
    d->work = std::move(work);
    d->work->m_job = this;
    connect(&d->timer, &QTimer::timeout, this, [this] {
        d->work->lookAhead();
        tell();
    });
}

DiscJob::~DiscJob() = default;

const DiscJobWork &DiscJob::work() const
{
    return *d->work;
}

void DiscJob::start()
{
    if (d->state != Private::State::New)
        return;
    d->state = Private::State::Running;
    d->timer.start(lookInterval);
    performOnMainThread([this, life = CallbackContext(d->life)] {
        if (!life.isAlive())
            return;
        tell();
        if (!life.isAlive())
            return;
        d->isBeginning = true;
        d->work->begin();
        d->isBeginning = false;
        d->hasBegun = true;
        if (d->isCancelled)
            d->stop();
    });
}

void DiscJob::cancel()
{
    if (d->state == Private::State::Ended || std::exchange(d->isCancelled, true))
        return;
    if (d->hasBegun)
        d->stop();
}

bool DiscJob::isRunning() const
{
    return d->state == Private::State::Running;
}

bool DiscJob::isCancelled() const
{
    return d->isCancelled;
}

DiscJobProgress DiscJob::progress() const
{
    DiscJobProgress progress = d->work->progress();
    if (d->hasEndedWell)
        progress.phase = DiscJobPhase::Done;
    if (countsBytes(progress.phase))
        progress.remaining = d->rate.remaining(progress.bytesTotal);
    progress.bytesPerSecond = d->rate.bytesPerSecond();
    return progress;
}

void DiscJob::tell()
{
    DiscJobProgress now = progress();
    const TransferRate::Time time = std::chrono::steady_clock::now();
    const bool isNewPhase = d->toldPhase != now.phase;
    if (!isNewPhase && time - d->toldAt < shortestInterval)
        return;
    if (countsBytes(now.phase) && now.bytesTotal > 0)
        d->rate.add(time, now.bytesDone);
    d->toldPhase = now.phase;
    d->toldAt = time;
    now = progress();
    const CallbackContext life(d->life);
    if (isNewPhase)
        Q_EMIT phaseChanged(now.phase);
    if (life.isAlive())
        Q_EMIT progressed(now);
}

void DiscJobWork::runInBackground(std::function<NSError(const std::stop_token &)> work,
                                  std::function<void(const NSError &)> whenEnded)
{
    // What was cancelled before it began touches nothing: a stop could reach the thread after its first steps.
    if (m_job->d->isBeginning && m_job->d->isCancelled)
        work = [](const std::stop_token &) { return discJobCancellation(); };
    m_job->d->task.start(std::move(work), std::move(whenEnded));
}

bool DiscJobWork::isCancelled() const
{
    return m_job->isCancelled();
}

NSError DiscJobWork::cancellationOr(const NSError &error) const
{
    return isCancelled() ? discJobCancellation() : error;
}

void DiscJobWork::end(const NSError &error)
{
    m_job->d->hasEndedWell = !error;
    // Not from inside a callback of an object that the work is about to let go.
    performOnMainThread([job = m_job, life = CallbackContext(m_job->d->life)] {
        if (!life.isAlive() || job->d->state != DiscJob::Private::State::Running)
            return;
        job->d->timer.stop();
        job->tell();
        if (!life.isAlive())
            return;
        job->d->state = DiscJob::Private::State::Ended;
        job->announceResult();
    });
}

} // namespace Tessaron
