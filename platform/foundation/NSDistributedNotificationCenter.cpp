#include "platform/foundation/NSDistributedNotificationCenter.h"

#include "platform/foundation/FileSystemRepresentation.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QFileInfo>
#include <QPointer>

#include <vector>

namespace Tessaron
{

namespace
{

const QString busPath = QStringLiteral("/org/tessaron/DistributedNotifications");
const QString busInterface = QStringLiteral("org.tessaron.DistributedNotifications");
const QString busMember = QStringLiteral("Posted");

/// Asked before the bus is: without an address the library behind QtDBus may start a bus of its own.
bool sessionHasBus()
{
    if (!qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS"))
        return true;
    const QString runtimeFolder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    return !runtimeFolder.isEmpty() && QFileInfo::exists(runtimeFolder + QStringLiteral("/bus"));
}

/// A connection of our own: the one that QtDBus shares would carry our observation into the program's.
QDBusConnection connectionToSession()
{
    const QString name = QStringLiteral("org.tessaron.DistributedNotifications");
    return sessionHasBus() ? QDBusConnection::connectToBus(QDBusConnection::SessionBus, name) : QDBusConnection(name);
}

/// Lists and records inside of a record arrive as bytes of the bus.
QVariant plainValue(const QVariant &value)
{
    if (value.metaType() != QMetaType::fromType<QDBusArgument>())
        return value;
    const QDBusArgument argument = value.value<QDBusArgument>();
    switch (argument.currentType()) {
    case QDBusArgument::ArrayType: {
        QVariantList list;
        argument >> list;
        for (QVariant &inner : list)
            inner = plainValue(inner);
        return list;
    }
    case QDBusArgument::MapType: {
        QVariantMap map;
        argument >> map;
        for (QVariant &inner : map)
            inner = plainValue(inner);
        return map;
    }
    default:
        return argument.asVariant();
    }
}

NSError noBusError()
{
    return NSError(
        NSOSStatusErrorDomain, coreFoundationUnknownErr,
        {{NSLocalizedFailureReasonErrorKey, QStringLiteral("the session has no D-Bus, or it does not answer")}});
}

} // namespace

struct NSDistributedNotificationCenter::Private {
    struct Observer {
        QPointer<QObject> context;
        QString name;
        QString object;
        Callback callback;
    };

    QDBusConnection connection = connectionToSession();
    bool isObserving = false; ///< main thread only, like the observers
    std::vector<Observer> observers;
};

NSDistributedNotificationCenter::NSDistributedNotificationCenter()
    : d(std::make_unique<Private>())
{
    if (QCoreApplication::instance())
        moveToThread(QCoreApplication::instance()->thread());
}

NSDistributedNotificationCenter::~NSDistributedNotificationCenter() = default;

NSDistributedNotificationCenter &NSDistributedNotificationCenter::defaultCenter()
{
    // Never destroyed: at the end of the process QtDBus may be gone before it.
    static auto *const center = new NSDistributedNotificationCenter;
    return *center;
}

bool NSDistributedNotificationCenter::isConnected() const
{
    return d->connection.isConnected();
}

NSError NSDistributedNotificationCenter::postNotificationName(const QString &name, const QString &object,
                                                              const QVariantMap &userInfo)
{
    QDBusMessage message = QDBusMessage::createSignal(busPath, busInterface, busMember);
    // The bus takes valid UTF-8 only.
    message << displayableText(name) << displayableText(object) << userInfo;
    return isConnected() && d->connection.send(message) ? NSError() : noBusError();
}

bool NSDistributedNotificationCenter::waitUntilPosted(int milliseconds) const
{
    if (!isConnected())
        return false;
    // The bus answers in order: when this call is answered, all before it has arrived.
    const QDBusMessage ping =
        QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
                                       QStringLiteral("org.freedesktop.DBus.Peer"), QStringLiteral("Ping"));
    return d->connection.call(ping, QDBus::Block, milliseconds).type() == QDBusMessage::ReplyMessage;
}

NSError NSDistributedNotificationCenter::addObserver(QObject *context, const QString &name, const QString &object,
                                                     const Callback &callback)
{
    if (!d->isObserving)
        d->isObserving = isConnected()
            && d->connection.connect(QString(), busPath, busInterface, busMember, this,
                                     SLOT(deliver(QString, QString, QVariantMap)));
    if (!d->isObserving)
        return noBusError();
    d->observers.push_back({context, displayableText(name), displayableText(object), callback});
    return {};
}

void NSDistributedNotificationCenter::removeObserver(QObject *context)
{
    std::erase_if(d->observers,
                  [context](const Private::Observer &one) { return !one.context || one.context == context; });
}

void NSDistributedNotificationCenter::deliver(const QString &name, const QString &object, const QVariantMap &userInfo)
{
    NSDistributedNotification notification{name, object, userInfo};
    for (QVariant &value : notification.userInfo)
        value = plainValue(value);
    // A callback may add and remove observers.
    const std::vector<Private::Observer> observers = d->observers;
    for (const Private::Observer &one : observers) {
        const auto isSame = [&one](const Private::Observer &other) { return other.context == one.context; };
        const bool isStillThere = one.context && std::any_of(d->observers.begin(), d->observers.end(), isSame);
        if (isStillThere && one.name == name && (one.object.isEmpty() || one.object == object))
            one.callback(notification);
    }
}

} // namespace Tessaron
