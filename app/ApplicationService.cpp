#include "app/ApplicationService.h"

#include "app/FileDrops.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>

namespace Tessaron::Desktop
{

namespace
{

const QString programName = QStringLiteral("org.tessaron.Desktop");
const QString programPath = QStringLiteral("/org/tessaron/Desktop"); // made of the name
const QString programInterface = QStringLiteral("org.freedesktop.Application");
constexpr int answerTime = 5000;

/// What this process was given by the one that started it, for the window of the other one.
QVariantMap platformData()
{
    QVariantMap data;
    for (const auto &[variable, key] : {std::pair("XDG_ACTIVATION_TOKEN", "activation-token"),
                                        std::pair("DESKTOP_STARTUP_ID", "desktop-startup-id")}) {
        if (const QByteArray value = qgetenv(variable); !value.isEmpty())
            data.insert(QString::fromLatin1(key), QString::fromUtf8(value));
    }
    return data;
}

} // namespace

ApplicationService::ApplicationService(QObject *parent)
    : QObject(parent)
    , m_bus(QString()) // connected to nothing
{
}

ApplicationService::~ApplicationService()
{
    if (m_bus.isConnected()) {
        m_bus.unregisterService(programName);
        m_bus.unregisterObject(programPath);
    }
}

bool ApplicationService::take(const QDBusConnection &bus)
{
    if (!bus.isConnected())
        return false;
    // The object first: with the name come the calls that have waited for it.
    QDBusConnection own = bus;
    if (!own.registerObject(programPath, this, QDBusConnection::ExportScriptableSlots))
        return false;
    const auto reply = own.interface()->registerService(programName, QDBusConnectionInterface::DontQueueService);
    if (!reply.isValid() || reply.value() != QDBusConnectionInterface::ServiceRegistered) {
        own.unregisterObject(programPath);
        return false;
    }
    m_bus = own;
    return true;
}

bool ApplicationService::handOver(const QDBusConnection &bus, const QList<QByteArray> &paths)
{
    if (!bus.isConnected() || !bus.interface()->isServiceRegistered(programName))
        return false;
    QStringList uris;
    for (const QByteArray &path : paths)
        uris << QStringLiteral("file://") + QString::fromLatin1(path.toPercentEncoding("/"));
    QDBusMessage call =
        QDBusMessage::createMethodCall(programName, programPath, programInterface,
                                       uris.isEmpty() ? QStringLiteral("Activate") : QStringLiteral("Open"));
    if (!uris.isEmpty())
        call << uris;
    call << platformData();
    return bus.call(call, QDBus::Block, answerTime).type() == QDBusMessage::ReplyMessage;
}

void ApplicationService::Activate(const QVariantMap &platformData)
{
    Q_EMIT activated(platformData.value(QStringLiteral("activation-token")).toString().toUtf8());
}

void ApplicationService::Open(const QStringList &uris, const QVariantMap &platformData)
{
    Activate(platformData);
    QList<QByteArray> paths;
    for (const QString &uri : uris) {
        if (const QByteArray path = pathOfUri(uri.toUtf8()); !path.isEmpty())
            paths << path;
    }
    if (!paths.isEmpty())
        Q_EMIT filesGiven(paths);
}

void ApplicationService::ActivateAction(const QString &, const QVariantList &, const QVariantMap &platformData)
{
    Activate(platformData);
}

} // namespace Tessaron::Desktop
