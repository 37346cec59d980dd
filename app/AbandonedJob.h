#pragma once

#include <QObject>

#include <memory>

namespace Tessaron::Desktop
{

/// Gives up a job without waiting for it: a drive may answer a minute later only. The job goes when it has ended; its
/// signals reach no one any more. Null is fine. Not from inside a slot that hears one of its signals.
template <typename Job>
void abandonJob(std::unique_ptr<Job> job)
{
    if (!job || !job->isRunning())
        return;
    job->disconnect();
    Job *const abandoned = job.release();
    QObject::connect(abandoned, &Job::finished, abandoned, &QObject::deleteLater);
    abandoned->cancel();
}

} // namespace Tessaron::Desktop
