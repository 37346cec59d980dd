#pragma once

#include "platform/foundation/Export.h"
#include "platform/foundation/NSError.h"
#include "platform/foundation/NSNotificationCenter.h"

#include <QPointer>
#include <QString>

#include <functional>

namespace Tessaron
{

// Notifications of NSWorkspace::notificationCenter(), posted on the main thread.

/// A volume has been mounted where this process sees it; its mount point is under NSDevicePathKey.
inline const QString NSWorkspaceDidMountNotification = QStringLiteral("NSWorkspaceDidMountNotification");
/// The machine is about to sleep, and waits until the notification has been heard, a few seconds at most.
inline const QString NSWorkspaceWillSleepNotification = QStringLiteral("NSWorkspaceWillSleepNotification");
/// The machine has slept.
inline const QString NSWorkspaceDidWakeNotification = QStringLiteral("NSWorkspaceDidWakeNotification");

/// In the user information of NSWorkspaceDidMountNotification: a path, QString.
inline const QString NSDevicePathKey = QStringLiteral("NSDevicePath");

/// The machine around the process: its volumes, its sleep. On the main thread, in a program with an event loop.
///
/// Mounts are those of /proc/self/mountinfo, and those that udisks2 tells of besides; sleep is what logind announces.
/// Where these services are missing, their notifications never come.
class TESSARON_EXPORT NSWorkspace
{
public:
    [[nodiscard]] static NSWorkspace &sharedWorkspace();

    /// Listening begins with the first call: what is mounted then is not told.
    [[nodiscard]] NSNotificationCenter &notificationCenter();

    /// Told how ejecting ended, on the main thread; the null error when the disc is out.
    using Ejected = std::function<void(const NSError &error)>;
    /// Unmounts the volume that holds `path`, and opens the tray of its drive; without waiting. By udisks2, or without
    /// that service by the process's own rights.
    void unmountAndEjectDeviceAtPath(const QString &path, Ejected ejected);

    NSWorkspace(const NSWorkspace &) = delete;
    NSWorkspace &operator=(const NSWorkspace &) = delete;

private:
    class Listener;

    NSWorkspace() = default;

    NSNotificationCenter m_center;
    QPointer<Listener> m_listener; ///< ends with the application
};

} // namespace Tessaron
