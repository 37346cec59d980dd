#pragma once

#include "tools/tessaron/ProgressDisplay.h"
#include "tools/tessaron/SignalWatcher.h"
#include <TessaronClasses/DiscJob.h>

#include <QEventLoop>

namespace Tessaron::Tool
{

/// Runs a job to its end and gives its result. A signal cancels it; it is heard from before the first file is made. The
/// display, unless null, shows how far the job is.
template <typename Job>
[[nodiscard]] auto runToItsEnd(Job &job, ProgressDisplay *display = nullptr)
{
    const SignalWatcher signalWatcher([&job] { job.cancel(); });
    QEventLoop loop;
    if (display)
        QObject::connect(&job, &DiscJob::progressed, &loop,
                         [display](const DiscJobProgress &progress) { display->show(progress); });
    QObject::connect(&job, &Job::finished, &loop, &QEventLoop::quit);
    job.start();
    loop.exec();
    return job.result();
}

} // namespace Tessaron::Tool
