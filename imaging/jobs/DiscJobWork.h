#pragma once

#include "imaging/jobs/BackgroundTask.h"
#include <TessaronClasses/DiscJob.h>

#include <functional>
#include <stop_token>

namespace Tessaron
{

/// What a job does, apart from the object with signals that programs hold. The DiscJob owns it, starts and stops it,
/// asks how far it has come, and destroys it when no worker uses it any more. Everything here runs on the main thread,
/// except the work that is handed to runInBackground().
class DiscJobWork
{
public:
    DiscJobWork() = default;
    virtual ~DiscJobWork() = default;
    DiscJobWork(const DiscJobWork &) = delete;
    DiscJobWork &operator=(const DiscJobWork &) = delete;

    /// Starts; called once. end() has to follow, exactly once.
    virtual void begin() = 0;
    /// Stops what runs, as soon as it can; called once at most. The background task is stopped already.
    virtual void stop() { }
    /// Phase, files, folders and bytes as they are now. The job adds the rate, and the phase Done at the end.
    [[nodiscard]] virtual DiscJobProgress progress() const = 0;
    /// Called about twenty times a second.
    virtual void lookAhead() { }

protected:
    /// See BackgroundTask::start(). The job ends the task before it destroys this object. Where the job was cancelled
    /// before begin(), the work that begin() hands over is not done, and ends with an error of code Cancelled.
    void runInBackground(std::function<NSError(const std::stop_token &)> work,
                         std::function<void(const NSError &)> whenEnded);
    /// True once cancel() of the job was called.
    [[nodiscard]] bool isCancelled() const;
    /// Of code Cancelled once the job is cancelled, else `error`.
    [[nodiscard]] NSError cancellationOr(const NSError &error) const;
    /// The work is over, well if the error is null. The job announces the result through the event loop.
    void end(const NSError &error);

private:
    friend class DiscJob;

    DiscJob *m_job = nullptr; ///< set before begin()
};

} // namespace Tessaron
