#pragma once

#include "tools/tessaron/ProgressDisplay.h"
#include "tools/tessaron/SignalWatcher.h"
#include <TessaronClasses/DiscJob.h>

#include <QEventLoop>

#include <functional>

namespace Tessaron::Tool
{

/// Runs a job to its end and gives its result. A signal cancels it; it is heard from before the first file is made. The
/// function is called with how far the job is.
template <typename Job>
[[nodiscard]] auto runShowing(Job &job, const std::function<void(const DiscJobProgress &)> &show)
{
    const SignalWatcher signalWatcher([&job] { job.cancel(); });
    QEventLoop loop;
    QObject::connect(&job, &DiscJob::progressed, &loop, show);
    QObject::connect(&job, &Job::finished, &loop, &QEventLoop::quit);
    job.start();
    loop.exec();
    return job.result();
}

/// The same with a display, unless it is null.
template <typename Job>
[[nodiscard]] auto runToItsEnd(Job &job, ProgressDisplay *display = nullptr)
{
    return runShowing(job, [display](const DiscJobProgress &progress) {
        if (display)
            display->show(progress);
    });
}

} // namespace Tessaron::Tool
