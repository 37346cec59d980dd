#include "platform/discrecording/burn/DRNotificationCenter.h"

#include "platform/discrecording/burn/DRBurn.h"
#include "platform/foundation/RunLoopQueue.h"

#include <algorithm>
#include <mutex>
#include <utility>
#include <vector>

namespace Tessaron
{

class DRNotificationCenter::Private
{
public:
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
        queue.close();
        std::vector<Observer> dropped; // ends outside the lock: the handlers may hold anything
        const std::lock_guard lock(mutex);
        dropped.swap(observers);
    }

    [[nodiscard]] bool isRegistered(std::uint64_t identifier)
    {
        const std::lock_guard lock(mutex);
        return std::ranges::any_of(observers, [=](const Observer &each) { return each.identifier == identifier; });
    }

    /// Calls the observers, on the centre's thread. A handler may take observers out, itself included, and may add
    /// some, which hear of later notifications only.
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

    RunLoopQueue queue;
    std::mutex mutex; ///< guards what follows
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
    d->queue.perform([center = std::weak_ptr<Private>(d), name, sender, around = std::move(around)] {
        const std::shared_ptr<Private> open = center.lock();
        // Held for the calls, so that a handler may let go of the burn.
        const std::shared_ptr<DRBurn> burn = sender.lock();
        if (open && burn)
            around([&] { open->callObservers(name, *burn); });
    });
}

} // namespace Tessaron
