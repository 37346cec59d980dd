#pragma once

#include <QString>

#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>

namespace Tessaron
{

/// Posts the progress of a job as distributed notifications, with the fraction done under "progress". Works on a thread
/// of its own: a bus that is slow, or that never answers, does not hold the job up. Without a bus nothing is posted.
class ProgressPoster
{
public:
    /// No thread and no notification for an empty name.
    explicit ProgressPoster(const QString &notificationName);
    /// Ends the process's wait for a bus that does not answer: the thread is left behind then, so this is for the end
    /// of a program only.
    ~ProgressPoster();
    ProgressPoster(const ProgressPoster &) = delete;
    ProgressPoster &operator=(const ProgressPoster &) = delete;

    /// From 0 to 1. Never waits; values that follow each other fast are left out, the last one never.
    void setProgress(double progress);

    /// Waits until the bus has everything, a second at most.
    void finish();

private:
    struct Shared;
    static void run(const std::shared_ptr<Shared> &shared, const QString &name);

    const std::shared_ptr<Shared> m_shared;
    std::thread m_thread;
};

} // namespace Tessaron
