#include "platform/foundation/MainThread.h"

#include "platform/foundation/RunLoopQueue.h"

#include <QCoreApplication>
#include <QThread>

#include <mutex>
#include <semaphore>
#include <utility>

namespace Tessaron
{

namespace
{

/// The queue of the main thread; null without a QCoreApplication. Each application gets one of its own: functions that
/// waited for the last application must not run under the next.
std::shared_ptr<RunLoopQueue> mainThreadQueue()
{
    static std::mutex mutex;
    static std::shared_ptr<RunLoopQueue> queue;
    const std::lock_guard lock(mutex);
    QCoreApplication *const application = QCoreApplication::instance();
    if (application && !queue) {
        queue = std::make_shared<RunLoopQueue>(application->thread());
        QObject::connect(application, &QObject::destroyed, application, [] {
            std::shared_ptr<RunLoopQueue> ending;
            const std::lock_guard lockAtEnd(mutex);
            ending.swap(queue);
        });
    }
    return queue;
}

} // namespace

bool isMainThread()
{
    const QCoreApplication *const application = QCoreApplication::instance();
    return application && QThread::currentThread() == application->thread();
}

void performOnMainThread(std::function<void()> function)
{
    if (const std::shared_ptr<RunLoopQueue> queue = mainThreadQueue())
        queue->perform(std::move(function));
}

void performOnMainThreadAndWait(const std::function<void()> &function)
{
    if (isMainThread()) {
        function();
        return;
    }
    const std::shared_ptr<RunLoopQueue> queue = mainThreadQueue();
    if (!queue)
        return;
    // The copy in the queue may be dropped when the application ends, so the caller waits for the end of that copy.
    const auto hasEnded = std::make_shared<std::binary_semaphore>(0);
    queue->perform([&function, atEnd = std::shared_ptr<void>(nullptr, [hasEnded](void *) { hasEnded->release(); })] {
        function();
    });
    hasEnded->acquire();
}

} // namespace Tessaron
