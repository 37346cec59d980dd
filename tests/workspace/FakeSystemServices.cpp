#include "tests/workspace/FakeSystemServices.h"

#include "platform/coreservices/Mounts.h"

#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusUnixFileDescriptor>

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

namespace Tessaron::Testing
{

namespace
{

using Interfaces = QMap<QString, QVariantMap>;
using Objects = QMap<QDBusObjectPath, Interfaces>;

const QString disks = QStringLiteral("org.freedesktop.UDisks2");
const QString volumes = QStringLiteral("/org/freedesktop/UDisks2/block_devices/");
const QString drive = QStringLiteral("/org/freedesktop/UDisks2/drives/Writer");

/// As the service sends them: with a zero byte behind.
QVariant pathsOf(QByteArrayList points)
{
    for (QByteArray &point : points)
        point += '\0';
    return QVariant::fromValue(points);
}

} // namespace

FakeSystemServices::FakeSystemServices()
    : m_connection(QDBusConnection::connectToBus(QString::fromUtf8(m_bus.address()), QStringLiteral("fake services")))
{
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", m_bus.address());
    qDBusRegisterMetaType<QByteArrayList>();
    qDBusRegisterMetaType<Interfaces>();
    qDBusRegisterMetaType<Objects>();
    EXPECT_TRUE(m_connection.registerVirtualObject(QStringLiteral("/"), this, QDBusConnection::SubPath));
}

FakeSystemServices::~FakeSystemServices()
{
    QDBusConnection::disconnectFromBus(QStringLiteral("fake services"));
}

void FakeSystemServices::startDisks()
{
    EXPECT_TRUE(m_connection.registerService(disks));
}

void FakeSystemServices::startLogin()
{
    EXPECT_TRUE(m_connection.registerService(QStringLiteral("org.freedesktop.login1")));
}

void FakeSystemServices::mountWhereIs(const QByteArray &path)
{
    mountPoint.clear();
    for (const Mount &one : currentMounts()) {
        const bool leads = one.point == "/" || (path + '/').startsWith(one.point + '/');
        if (leads && one.point.size() > mountPoint.size())
            mountPoint = one.point;
    }
}

void FakeSystemServices::tell(const QString &volume, const QString &interface, const QVariantMap &changed)
{
    QDBusMessage message = QDBusMessage::createSignal(
        volumes + volume, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("PropertiesChanged"));
    message << interface << changed << QStringList();
    EXPECT_TRUE(m_connection.send(message));
}

void FakeSystemServices::tellMountPoints(const QString &volume, const QByteArrayList &points)
{
    tell(volume, disks + QStringLiteral(".Filesystem"), {{QStringLiteral("MountPoints"), pathsOf(points)}});
}

void FakeSystemServices::tellOtherChanges(const QString &volume)
{
    tell(volume, disks + QStringLiteral(".Filesystem"), {{QStringLiteral("Size"), 2048}});
    tell(volume, disks + QStringLiteral(".Block"), {{QStringLiteral("MountPoints"), pathsOf({"/nowhere"})}});
}

void FakeSystemServices::tellSleep(bool begins)
{
    QDBusMessage message =
        QDBusMessage::createSignal(QStringLiteral("/org/freedesktop/login1"),
                                   QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("PrepareForSleep"));
    message << begins;
    EXPECT_TRUE(m_connection.send(message));
}

int FakeSystemServices::heldDelays() const
{
    return int(std::count_if(m_delays.begin(), m_delays.end(), [](const UniqueDescriptor &delay) {
        struct pollfd end = {delay.get(), POLLIN, 0};
        return ::poll(&end, 1, 0) == 0;
    }));
}

QString FakeSystemServices::introspect(const QString & /*path*/) const
{
    return {};
}

bool FakeSystemServices::handleMessage(const QDBusMessage &message, const QDBusConnection &connection)
{
    QStringList words = {message.member(), message.path()};
    for (const QVariant &argument : message.arguments()) {
        if (argument.typeId() == QMetaType::QString)
            words << argument.toString();
    }
    calls << words.join(QLatin1Char(' '));
    if (message.member() == QStringLiteral("GetManagedObjects"))
        return connection.send(message.createReply(managedObjects()));
    if (message.member() == QStringLiteral("Inhibit"))
        return connection.send(message.createReply(newDelay()));
    if (message.member() == QStringLiteral("Unmount") && refusesUnmount)
        return connection.send(message.createErrorReply(QStringLiteral("org.freedesktop.UDisks2.Error.DeviceBusy"),
                                                        QStringLiteral("target is busy")));
    return connection.send(message.createReply());
}

QVariant FakeSystemServices::managedObjects() const
{
    const QVariantMap volume = {{QStringLiteral("MountPoints"), pathsOf({mountPoint})}};
    const QVariantMap block = {{QStringLiteral("Drive"), QVariant::fromValue(QDBusObjectPath(drive))}};
    const QVariantMap ofDrive = {{QStringLiteral("Ejectable"), isEjectable}};
    Objects objects;
    objects[QDBusObjectPath(volumes + QStringLiteral("sr0"))] = {{disks + QStringLiteral(".Filesystem"), volume},
                                                                 {disks + QStringLiteral(".Block"), block}};
    objects[QDBusObjectPath(volumes + QStringLiteral("sr1"))] = {{disks + QStringLiteral(".Block"), block}};
    objects[QDBusObjectPath(drive)] = {{disks + QStringLiteral(".Drive"), ofDrive}};
    return QVariant::fromValue(objects);
}

QVariant FakeSystemServices::newDelay()
{
    std::array<int, 2> ends = {-1, -1};
    EXPECT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    m_delays.emplace_back(ends[0]);
    const UniqueDescriptor lock(ends[1]);
    return QVariant::fromValue(QDBusUnixFileDescriptor(lock.get()));
}

} // namespace Tessaron::Testing
