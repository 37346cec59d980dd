#include "platform/workspace/DiscEjector.h"

#include "platform/coreservices/Mounts.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MainThread.h"
#include "platform/foundation/UniqueDescriptor.h"
#include "platform/workspace/SystemBus.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QFile>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <linux/cdrom.h>
#include <memory>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <system_error>
#include <thread>

namespace Tessaron
{

namespace
{

const QString service = QStringLiteral("org.freedesktop.UDisks2");
const QString filesystemInterface = service + QStringLiteral(".Filesystem");
const QString driveInterface = service + QStringLiteral(".Drive");
/// A user may be asked for a password meanwhile, and a drive may have to write first.
constexpr int patience = 120'000;

using Interfaces = QMap<QString, QVariantMap>; ///< properties by interface
using Objects = QMap<QDBusObjectPath, Interfaces>;

NSError error(const QString &path, const QString &reason)
{
    return NSError(NSOSStatusErrorDomain, ioErr,
                   {{NSFilePathErrorKey, path},
                    {NSLocalizedDescriptionKey,
                     QStringLiteral("The disc at “%1” could not be ejected: %2").arg(displayableText(path), reason)},
                    {NSLocalizedFailureReasonErrorKey, reason}});
}

QString reasonOf(int errnoValue)
{
    return NSError::errorWithErrno(errnoValue, {}).localizedFailureReason();
}

QString notOnDisc()
{
    return QStringLiteral("it is not in a drive that can be opened");
}

/// The mount point that leads to a file; empty where there is no such file.
QByteArray mountPointOf(const QByteArray &path)
{
    const std::unique_ptr<char, decltype(&::free)> real(::realpath(path.constData(), nullptr), &::free);
    if (!real)
        return {};
    const QByteArray place = real.get();
    QByteArray longest;
    for (const Mount &mount : currentMounts()) {
        const bool leads = mount.point == "/" || place == mount.point || place.startsWith(mount.point + '/');
        if (leads && mount.point.size() >= longest.size())
            longest = mount.point;
    }
    return longest;
}

/// The device of what is mounted, as a path below /dev; empty where it is on none, or on one that stays where it is.
QByteArray removableDeviceOf(const QByteArray &mountPoint)
{
    struct stat facts;
    if (::stat(mountPoint.constData(), &facts) != 0 || major(facts.st_dev) == 0)
        return {};
    const QByteArray number = QByteArray::number(major(facts.st_dev)) + ':' + QByteArray::number(minor(facts.st_dev));
    // A partition's device is the folder above its own.
    for (const char *const place : {"/removable", "/../removable"}) {
        QFile file(QString::fromLatin1("/sys/dev/block/" + number + place));
        if (file.open(QIODevice::ReadOnly) && file.readAll().trimmed() == "1")
            return "/dev/block/" + number;
    }
    return {};
}

/// With the process's own rights; waits for the drive.
NSError ejectAlone(const QString &path, const QByteArray &mountPoint)
{
    const QByteArray device = removableDeviceOf(mountPoint);
    if (device.isEmpty())
        return error(path, notOnDisc());
    const UniqueDescriptor drive(::open(device.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (!drive)
        return error(path, reasonOf(errno));
    if (::umount2(mountPoint.constData(), UMOUNT_NOFOLLOW) != 0)
        return error(path, reasonOf(errno));
    if (::ioctl(drive.get(), CDROMEJECT) != 0)
        return error(path, QStringLiteral("it is unmounted, but its drive does not open (%1)").arg(reasonOf(errno)));
    return {};
}

/// One disc on its way out, by means of udisks2. Ends itself when it has called back.
class Ejection : public QObject
{
public:
    Ejection(const QString &path, const QByteArray &mountPoint, DiscEjector::Ejected ejected)
        : QObject(QCoreApplication::instance())
        , m_path(path)
        , m_mountPoint(mountPoint)
        , m_ejected(std::move(ejected))
    {
        qDBusRegisterMetaType<Interfaces>();
        qDBusRegisterMetaType<Objects>();
    }

    void begin()
    {
        call(QStringLiteral("/org/freedesktop/UDisks2"), QStringLiteral("org.freedesktop.DBus.ObjectManager"),
             QStringLiteral("GetManagedObjects"), {}, [this](const QDBusMessage &reply) { findVolume(reply); });
    }

private:
    using Answered = std::function<void(const QDBusMessage &reply)>;

    /// Calls the service; a failure ends the ejection, unless it is that there is no such service.
    void call(const QString &object, const QString &interface, const QString &method, const QVariantList &arguments,
              const Answered &answered)
    {
        QDBusMessage message = QDBusMessage::createMethodCall(service, object, interface, method);
        message.setArguments(arguments);
        message.setInteractiveAuthorizationAllowed(true);
        auto *const waiting = new QDBusPendingCallWatcher(systemBus().asyncCall(message, patience), this);
        connect(waiting, &QDBusPendingCallWatcher::finished, this, [this, waiting, answered] {
            const QDBusMessage reply = waiting->reply();
            waiting->deleteLater();
            if (reply.type() == QDBusMessage::ReplyMessage)
                answered(reply);
            else if (isWithoutService(waiting->error()))
                ejectWithoutService();
            else
                end(error(m_path, waiting->error().message()));
        });
    } // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks): the watcher belongs to its parent
    [[nodiscard]] static bool isWithoutService(const QDBusError &failure)
    {
        return failure.type() == QDBusError::ServiceUnknown || failure.type() == QDBusError::Disconnected
            || failure.name() == QStringLiteral("org.freedesktop.DBus.Error.NameHasNoOwner");
    }

    void findVolume(const QDBusMessage &reply)
    {
        const auto objects = qdbus_cast<Objects>(reply.arguments().value(0));
        for (auto object = objects.begin(); object != objects.end(); ++object) {
            const QVariant points = object->value(filesystemInterface).value(QStringLiteral("MountPoints"));
            const auto list = qdbus_cast<QByteArrayList>(points);
            // With the zero byte behind, or without.
            if (!list.contains(m_mountPoint + '\0') && !list.contains(m_mountPoint))
                continue;
            const auto drive = qdbus_cast<QDBusObjectPath>(
                object->value(service + QStringLiteral(".Block")).value(QStringLiteral("Drive")));
            if (!objects.value(drive).value(driveInterface).value(QStringLiteral("Ejectable")).toBool())
                break; // The disk that the system runs from is not to be unmounted.
            unmount(object.key().path(), drive.path());
            return;
        }
        end(error(m_path, notOnDisc()));
    }
    void unmount(const QString &volume, const QString &drive)
    {
        call(volume, filesystemInterface, QStringLiteral("Unmount"), {QVariantMap()}, [this, drive](const auto &) {
            call(drive, driveInterface, QStringLiteral("Eject"), {QVariantMap()}, [this](const auto &) { end({}); });
        });
    }
    void ejectWithoutService()
    {
        DiscEjector::ejectAloneInBackground(m_path, m_mountPoint, m_ejected);
        deleteLater();
    }
    void end(const NSError &how)
    {
        m_ejected(how);
        deleteLater();
    }

    const QString m_path;
    const QByteArray m_mountPoint;
    const DiscEjector::Ejected m_ejected;
};

} // namespace

void DiscEjector::eject(const QString &path, Ejected ejected)
{
    const QByteArray mountPoint = mountPointOf(fileSystemRepresentation(path));
    if (mountPoint.isEmpty())
        performOnMainThread(
            [path, ejected = std::move(ejected)] { ejected(error(path, QStringLiteral("there is no such file"))); });
    else if (systemBus().isConnected())
        (new Ejection(path, mountPoint, std::move(ejected)))->begin();
    else
        ejectAloneInBackground(path, mountPoint, ejected);
}

void DiscEjector::ejectAloneInBackground(const QString &path, const QByteArray &mountPoint, const Ejected &ejected)
{
    static std::jthread worker; // waits for the one before, and at the end of the process for the last one
    try {
        worker = std::jthread([path, mountPoint, ejected] {
            performOnMainThread([ejected, how = ejectAlone(path, mountPoint)] { ejected(how); });
        });
    } catch (const std::system_error &failure) {
        performOnMainThread([ejected, how = error(path, QString::fromLocal8Bit(failure.what()))] { ejected(how); });
    }
}

} // namespace Tessaron
