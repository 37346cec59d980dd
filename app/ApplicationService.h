#pragma once

#include <QByteArray>
#include <QDBusConnection>
#include <QList>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

namespace Tessaron::Desktop
{

/// The program as the session bus sees it, under the name of its desktop file. A second start, or a file opened from
/// the file manager, reaches the program that runs already (Desktop Entry Specification, "D-Bus Activation"). On the
/// main thread.
class ApplicationService final : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    explicit ApplicationService(QObject *parent = nullptr);
    ~ApplicationService() override;

    /// Takes the program's name on the bus. False when another process has it, or there is no bus.
    [[nodiscard]] bool take(const QDBusConnection &bus);

    /// Hands files to the process that has the name, or, without files, brings its window up. False when that does not
    /// answer within some seconds, or nothing has the name.
    [[nodiscard]] static bool handOver(const QDBusConnection &bus, const QList<QByteArray> &paths);

public Q_SLOTS: // what the bus calls
    Q_SCRIPTABLE void Activate(const QVariantMap &platformData);
    Q_SCRIPTABLE void Open(const QStringList &uris, const QVariantMap &platformData);
    /// The desktop file names no actions.
    Q_SCRIPTABLE void ActivateAction(const QString &name, const QVariantList &parameter,
                                     const QVariantMap &platformData);

Q_SIGNALS:
    /// The window is wanted in front; `token` is the compositor's leave for that, and may be empty.
    void activated(const QByteArray &token);
    void filesGiven(const QList<QByteArray> &paths);

private:
    QDBusConnection m_bus;
};

} // namespace Tessaron::Desktop
