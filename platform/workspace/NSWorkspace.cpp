#include "platform/workspace/NSWorkspace.h"

#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/workspace/DiscEjector.h"
#include "platform/workspace/MountWatch.h"
#include "platform/workspace/SleepWatch.h"
#include "platform/workspace/SystemBus.h"
#include "platform/workspace/UDisksWatch.h"

#include <QCoreApplication>

namespace Tessaron
{

/// What hears the system, as long as the application lives.
class NSWorkspace::Listener : public QObject
{
public:
    Listener(NSNotificationCenter &center, QObject *application)
        : QObject(application)
        , m_center(center)
        , m_mounts([this](const QByteArray &point) { tellMount(point); })
        , m_disks([this](const QByteArray &point) { hearOfMount(point); })
        , m_sleep([this] { m_center.postNotificationName(NSWorkspaceWillSleepNotification); },
                  [this] { m_center.postNotificationName(NSWorkspaceDidWakeNotification); })
    {
    }

private:
    void tellMount(const QByteArray &point)
    {
        m_center.postNotificationName(NSWorkspaceDidMountNotification, {},
                                      {{NSDevicePathKey, stringWithFileSystemRepresentation(point)}});
    }
    /// The list of mounts comes first, so that a mount that both know of is told once.
    void hearOfMount(const QByteArray &point)
    {
        m_mounts.look();
        if (!m_mounts.holds(point))
            tellMount(point);
    }

    NSNotificationCenter &m_center;
    MountWatch m_mounts;
    UDisksWatch m_disks;
    SleepWatch m_sleep;
};

NSWorkspace &NSWorkspace::sharedWorkspace()
{
    // Never destroyed: objects that observe may end after static ones do.
    static auto *const workspace = new NSWorkspace;
    return *workspace;
}

NSNotificationCenter &NSWorkspace::notificationCenter()
{
    if (!m_listener && QCoreApplication::instance())
        m_listener = new Listener(m_center, QCoreApplication::instance());
    return m_center;
}

void NSWorkspace::unmountAndEjectDeviceAtPath(const QString &path, Ejected ejected)
{
    DiscEjector::eject(path, std::move(ejected));
}

} // namespace Tessaron
