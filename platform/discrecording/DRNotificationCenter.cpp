#include "platform/discrecording/DRNotificationCenter.h"

#include "platform/discrecording/DRBurn.h"

#include <QCoreApplication>
#include <QEvent>

#include <algorithm>
#include <deque>
#include <mutex>
#include <utility>
#include <vector>

namespace Tessaron
{

class DRNotificationCenter::Private
{
public:
    /// Wakes on the centre's thread: each event that it gets stands for one notification in the queue. The
    /// notifications themselves do not travel in Qt's events, so that what orders the threads is our own mutex, which
    /// ThreadSanitizer sees.
    class Receiver final : public QObject
    {
    public:
        explicit Receiver(Private &center)
            : m_center(center)
        {
        }
        bool event(QEvent * /*event*/) override
        {
            m_center.deliverNext();
            return true;
        }

    private:
        Private &m_center;
    };

    struct Posted {
        QString name;
        std::weak_ptr<DRBurn> sender;
        Around around;
    };

    struct Observer {
        std::uint64_t identifier = 0;
        const void *observer = nullptr;
        QString name;
        const DRBurn *sender = nullptr;
        Handler handler;
    };

    /// Ends the posting; on the centre's thread, whose end it is.
    void close()
    {
        std::unique_ptr<QObject> ending;
        std::deque<Posted> droppedPosts; // these two end outside the lock: they may hold anything
        std::vector<Observer> droppedObservers;
        const std::lock_guard lock(mutex);
        ending = std::move(receiver);
        droppedPosts.swap(queue);
        droppedObservers.swap(observers);
    }

    void deliverNext()
    {
        Posted next;
        {
            const std::lock_guard lock(mutex);
            if (queue.empty())
                return;
            next = std::move(queue.front());
            queue.pop_front();
        }
        // Held for the calls, so that a handler may let go of the burn.
        if (const std::shared_ptr<DRBurn> burn = next.sender.lock())
            next.around([&] { callObservers(next.name, *burn); });
    }

    [[nodiscard]] bool isRegistered(std::uint64_t identifier)
    {
        const std::lock_guard lock(mutex);
        return std::ranges::any_of(observers, [=](const Observer &each) { return each.identifier == identifier; });
    }

    /// Calls who observes, on the centre's thread. A handler may take observers out, itself included, and may add some:
    /// those hear of later notifications only.
    void callObservers(const QString &name, DRBurn &sender)
    {
        std::vector<std::pair<std::uint64_t, Handler>> called;
        {
            const std::lock_guard lock(mutex);
            for (const Observer &each : observers)
                if (each.name == name && (!each.sender || each.sender == &sender))
                    called.emplace_back(each.identifier, each.handler);
        }
        for (const auto &[identifier, handler] : called)
            if (isRegistered(identifier))
                handler(sender);
    }

    std::mutex mutex; ///< guards everything below
    std::unique_ptr<QObject> receiver = std::make_unique<Receiver>(*this); ///< null once the thread has ended
    std::deque<Posted> queue;
    std::vector<Observer> observers;
    std::uint64_t lastIdentifier = 0;
};

DRNotificationCenter::DRNotificationCenter()
    : d(std::make_shared<Private>())
{
}

DRNotificationCenter::~DRNotificationCenter() = default;

std::shared_ptr<DRNotificationCenter> DRNotificationCenter::currentRunLoopCenter()
{
    // Burns may hold the centre longer than its thread lives, so it is closed with the thread, not destroyed.
    struct CenterOfThread {
        std::shared_ptr<DRNotificationCenter> center{new DRNotificationCenter};
        CenterOfThread() = default;
        CenterOfThread(const CenterOfThread &) = delete;
        CenterOfThread &operator=(const CenterOfThread &) = delete;
        ~CenterOfThread() { center->d->close(); }
    };
    static thread_local const CenterOfThread ofThisThread;
    return ofThisThread.center;
}

void DRNotificationCenter::addObserver(const void *observer, const QString &name, const DRBurn *sender, Handler handler)
{
    const std::lock_guard lock(d->mutex);
    d->observers.push_back({++d->lastIdentifier, observer, name, sender, std::move(handler)});
}

void DRNotificationCenter::removeObserver(const void *observer, const QString &name, const DRBurn *sender)
{
    std::vector<Private::Observer> removed; // their handlers end outside the lock: they may hold anything
    const std::lock_guard lock(d->mutex);
    const auto first = std::stable_partition(d->observers.begin(), d->observers.end(), [&](const auto &each) {
        return each.observer != observer || (!name.isNull() && each.name != name) || (sender && each.sender != sender);
    });
    removed.assign(std::make_move_iterator(first), std::make_move_iterator(d->observers.end()));
    d->observers.erase(first, d->observers.end());
}

void DRNotificationCenter::post(const QString &name, const std::weak_ptr<DRBurn> &sender)
{
    post(name, sender, [](const std::function<void()> &callObservers) { callObservers(); });
}

void DRNotificationCenter::post(const QString &name, const std::weak_ptr<DRBurn> &sender, Around around)
{
    const std::lock_guard lock(d->mutex);
    if (!d->receiver)
        return;
    d->queue.push_back({name, sender, std::move(around)});
    QCoreApplication::postEvent(d->receiver.get(), new QEvent(QEvent::User));
}

} // namespace Tessaron
