#pragma once

#include <QObject>

#include <chrono>
#include <memory>

namespace Tessaron::Desktop
{

/// Remembers an object until it goes: what only its own thread knows of is not lost.
void rememberUntilGone(QObject *object);

/// Runs the event loop until all that is remembered has gone; false when some of it is still there after this time. For
/// the end of a program, on the main thread.
[[nodiscard]] bool waitUntilAllAreGone(std::chrono::milliseconds atMost);

/// Gives up a job without waiting for it: a drive may take a minute to answer. The job is deleted when it has ended;
/// its signals are cut off at once. Null is fine. Not from inside a slot that hears one of its signals.
template <typename Job>
void abandonJob(std::unique_ptr<Job> job)
{
    if (!job || !job->isRunning())
        return;
    job->disconnect();
    Job *const abandoned = job.release();
    rememberUntilGone(abandoned);
    QObject::connect(abandoned, &Job::finished, abandoned, &QObject::deleteLater);
    abandoned->cancel();
}

} // namespace Tessaron::Desktop
