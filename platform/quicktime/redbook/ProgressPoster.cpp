#include "platform/quicktime/redbook/ProgressPoster.h"

#include "platform/foundation/NSDistributedNotificationCenter.h"

#include <chrono>
#include <memory>
#include <system_error>

namespace Tessaron
{

namespace
{

constexpr auto timeBetweenPosts = std::chrono::milliseconds(100);
constexpr auto mostTimeAtEnd = std::chrono::seconds(1);

} // namespace

/// Outlives the poster where its thread is left behind.
struct ProgressPoster::Shared {
    std::mutex mutex; ///< guards all that follows
    std::condition_variable changed;
    std::optional<double> progress; ///< not posted yet
    bool isEnding = false;
    bool hasEnded = false;
};

ProgressPoster::ProgressPoster(const QString &notificationName)
    : m_shared(std::make_shared<Shared>())
{
    if (notificationName.isEmpty())
        return;
    try {
        m_thread = std::thread(&ProgressPoster::run, m_shared, notificationName);
    } catch (const std::system_error &) {
        // Without room for a thread, the sound goes out without its progress.
    }
}

ProgressPoster::~ProgressPoster()
{
    finish();
}

void ProgressPoster::setProgress(double progress)
{
    const std::lock_guard lock(m_shared->mutex);
    // Only the first value needs to wake the thread up; it looks again by itself after a while.
    const bool isWaitedFor = !m_shared->progress;
    m_shared->progress = progress;
    if (isWaitedFor)
        m_shared->changed.notify_all();
}

void ProgressPoster::finish()
{
    if (!m_thread.joinable())
        return;
    std::unique_lock lock(m_shared->mutex);
    m_shared->isEnding = true;
    m_shared->changed.notify_all();
    const bool hasEnded = m_shared->changed.wait_for(lock, mostTimeAtEnd, [this] { return m_shared->hasEnded; });
    lock.unlock();
    if (hasEnded)
        m_thread.join();
    else
        m_thread.detach();
}

void ProgressPoster::run(const std::shared_ptr<Shared> &shared, const QString &name)
{
    NSDistributedNotificationCenter &center = NSDistributedNotificationCenter::defaultCenter();
    std::unique_lock lock(shared->mutex);
    while (center.isConnected()) {
        shared->changed.wait(lock, [&] { return shared->progress || shared->isEnding; });
        if (!shared->progress)
            break;
        const double progress = *shared->progress;
        shared->progress.reset();
        lock.unlock();
        center.postNotificationName(name, {}, {{QStringLiteral("progress"), progress}});
        lock.lock();
        shared->changed.wait_for(lock, timeBetweenPosts, [&] { return shared->isEnding; });
    }
    lock.unlock();
    const int milliseconds = int(std::chrono::milliseconds(mostTimeAtEnd).count());
    center.waitUntilPosted(milliseconds);
    lock.lock();
    shared->hasEnded = true;
    shared->changed.notify_all();
}

} // namespace Tessaron
