#include "platform/foundation/NSNotificationCenter.h"

#include <algorithm>
#include <mutex>
#include <vector>

namespace Tessaron
{

struct NSNotificationCenter::Private {
    struct Observer {
        const void *observer = nullptr;
        QString name;
        QString object;
        Callback callback;
    };

    std::mutex mutex; ///< guards the observers
    std::vector<std::shared_ptr<const Observer>> observers;
};

NSNotificationCenter::NSNotificationCenter()
    : d(std::make_unique<Private>())
{
}

NSNotificationCenter::~NSNotificationCenter() = default;

NSNotificationCenter &NSNotificationCenter::defaultCenter()
{
    // Never destroyed: objects that observe may end after static ones do.
    static auto *const center = new NSNotificationCenter;
    return *center;
}

void NSNotificationCenter::postNotificationName(const QString &name, const QString &object, const QVariantMap &userInfo)
{
    const NSNotification notification{name, object, userInfo};
    std::vector<std::shared_ptr<const Private::Observer>> observers;
    {
        const std::lock_guard lock(d->mutex);
        observers = d->observers;
    }
    for (const auto &one : observers) {
        if (one->name != name || (!one->object.isEmpty() && one->object != object))
            continue;
        const auto isStillThere = [&] {
            const std::lock_guard lock(d->mutex);
            return std::find(d->observers.begin(), d->observers.end(), one) != d->observers.end();
        };
        if (isStillThere()) // A callback before this one may have removed it.
            one->callback(notification);
    }
}

void NSNotificationCenter::addObserver(const void *observer, const QString &name, const QString &object,
                                       const Callback &callback)
{
    const std::lock_guard lock(d->mutex);
    d->observers.push_back(std::make_shared<Private::Observer>(Private::Observer{observer, name, object, callback}));
}

void NSNotificationCenter::removeObserver(const void *observer)
{
    std::vector<std::shared_ptr<const Private::Observer>> removed; // end outside the lock: they may hold anything
    const std::lock_guard lock(d->mutex);
    const auto isOfOther = [observer](const auto &one) { return one->observer != observer; };
    const auto firstRemoved = std::stable_partition(d->observers.begin(), d->observers.end(), isOfOther);
    removed.assign(firstRemoved, d->observers.end());
    d->observers.erase(firstRemoved, d->observers.end());
}

} // namespace Tessaron
