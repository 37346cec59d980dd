#include "platform/foundation/MainThread.h"
#include <TessaronClasses/DiscJob.h>
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
    return phase == DiscJobPhase::Writing || phase == DiscJobPhase::Comparing || phase == DiscJobPhase::Finishing;
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

    State state = State::New;
    bool isCancelled = false;
    bool hasBegun = false;
    QTimer timer;
    TransferRate rate;
    std::optional<DiscJobPhase> toldPhase;
    TransferRate::Time toldAt;
    /// Its end silences what is scheduled.
    std::shared_ptr<const void> life = std::make_shared<int>();
};

DiscJob::DiscJob(QObject *parent)
    : QObject(parent)
    , d(std::make_unique<Private>())
{
    connect(&d->timer, &QTimer::timeout, this, [this] {
        lookAhead();
        tell();
    });
}

DiscJob::~DiscJob() = default;

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
        begin();
        d->hasBegun = true;
        if (d->isCancelled)
            stop();
    });
}

void DiscJob::cancel()
{
    if (d->state != Private::State::Running || std::exchange(d->isCancelled, true))
        return;
    if (d->hasBegun)
        stop();
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
    DiscJobProgress progress = currentProgress();
    if (countsBytes(progress.phase)) {
        progress.bytesPerSecond = d->rate.bytesPerSecond();
        progress.remaining = d->rate.remaining(progress.bytesTotal);
    }
    return progress;
}

void DiscJob::tell()
{
    DiscJobProgress now = currentProgress();
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

void DiscJob::end()
{
    // Not from inside a callback of an object that the job is about to let go.
    performOnMainThread([this, life = CallbackContext(d->life)] {
        if (!life.isAlive() || d->state != Private::State::Running)
            return;
        d->timer.stop();
        tell();
        if (!life.isAlive())
            return;
        d->state = Private::State::Ended;
        announceResult();
    });
}

} // namespace Tessaron
