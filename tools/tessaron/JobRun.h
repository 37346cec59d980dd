#pragma once

#include "platform/foundation/SignalWatcher.h"
#include "tools/tessaron/Arguments.h"
#include "tools/tessaron/ProgressDisplay.h"
#include <TessaronClasses/DiscJob.h>
#include <TessaronClasses/UnfinishedFiles.h>

#include <QEventLoop>

#include <chrono>
#include <functional>
#include <memory>

namespace Tessaron::Tool
{

/// What a command has around its job: the display of how far it is, and the time since the command began. Make it
/// first.
class JobRun
{
public:
    /// Without a display.
    JobRun() = default;
    /// With the display that the arguments ask for.
    explicit JobRun(const Arguments &arguments)
        : m_display(ProgressDisplay::create(arguments.progress, arguments.verbosity))
    {
    }

    /// Runs a job to its end and gives its result. A signal cancels it; it is heard from before the first file is made.
    /// What the display shows is gone when this returns.
    template <typename Job>
    [[nodiscard]] auto resultOf(Job &job)
    {
        return resultOf(job, [this](const DiscJobProgress &progress) { m_display->show(progress); });
    }

    /// The same with a function that is called with how far the job is and shows it on display().
    template <typename Job>
    [[nodiscard]] auto resultOf(Job &job, const std::function<void(const DiscJobProgress &)> &show)
    {
        const SignalWatcher signalWatcher([&job] { job.cancel(); }, removeUnfinishedFiles);
        QEventLoop loop;
        QObject::connect(&job, &DiscJob::progressed, &loop, show);
        QObject::connect(&job, &Job::finished, &loop, &QEventLoop::quit);
        job.start();
        loop.exec();
        m_display->clear();
        return job.result();
    }

    [[nodiscard]] ProgressDisplay &display() const { return *m_display; }

    [[nodiscard]] double seconds() const
    {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - m_start).count();
    }

private:
    const std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
    const std::unique_ptr<ProgressDisplay> m_display = ProgressDisplay::create(ProgressMode::None, Verbosity::Normal);
};

} // namespace Tessaron::Tool
