#pragma once

#include "platform/foundation/NSError.h"

#include <QByteArray>
#include <QString>

#include <functional>

namespace Tessaron
{

/// Unmounts the volume that a path lies on, and opens its drive. On the main thread, with an event loop.
class DiscEjector
{
public:
    using Ejected = std::function<void(const NSError &error)>;

    /// By udisks2, or by the process's own rights where the service does not run. Returns at once; calls back on the
    /// main thread, once.
    static void eject(const QString &path, Ejected ejected);
    /// By the process's own rights, on a thread.
    static void ejectAloneInBackground(const QString &path, const QByteArray &mountPoint, const Ejected &ejected);
};

} // namespace Tessaron
