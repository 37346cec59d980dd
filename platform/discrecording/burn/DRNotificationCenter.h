#pragma once

#include "platform/foundation/Export.h"

#include <QObject>
#include <QString>

#include <functional>
#include <memory>

namespace Tessaron
{

class DRBurn;

/// Posts the notifications of the disc-recording service on one thread's event loop. Observers are called on that
/// thread only.
class TESSARON_EXPORT DRNotificationCenter
{
public:
    using Handler = std::function<void(DRBurn &sender)>;
    /// Is given the function that calls the observers, and must call it once.
    using Around = std::function<void(const std::function<void()> &callObservers)>;

    ~DRNotificationCenter();

    /// The centre of the calling thread's event loop; made on first use, lives until the thread's end.
    [[nodiscard]] static std::shared_ptr<DRNotificationCenter> currentRunLoopCenter();

    /// `observer` identifies the observer and is never dereferenced; a null `sender` means every burn. On the centre's
    /// thread.
    void addObserver(const void *observer, const QString &name, const DRBurn *sender, Handler handler);
    /// Takes out what `observer` registered under `name` for `sender`; null means any. Nothing reaches it afterwards,
    /// not even what was posted already. On the centre's thread.
    void removeObserver(const void *observer, const QString &name, const DRBurn *sender);

    /// Schedules a notification on the centre's thread, from any thread. Posts of one sender arrive in order; when the
    /// sender is gone they are dropped.
    void post(const QString &name, const std::weak_ptr<DRBurn> &sender);
    /// The same; the observers are called through `around`, which runs on the centre's thread. It lets a sender show
    /// them what was true when the notification was posted.
    void post(const QString &name, const std::weak_ptr<DRBurn> &sender, Around around);

private:
    class Private;
    DRNotificationCenter();
    const std::shared_ptr<Private> d;
};

} // namespace Tessaron
