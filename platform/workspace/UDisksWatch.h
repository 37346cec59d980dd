#pragma once

#include <QByteArray>
#include <QMap>
#include <QObject>
#include <QVariantMap>

#include <functional>
#include <set>

class QDBusMessage;

namespace Tessaron
{

/// Hears from udisks2 where file systems are mounted. On one thread, with an event loop; hears nothing where the
/// service does not run.
class UDisksWatch : public QObject
{
    Q_OBJECT

public:
    /// `appeared` is told each mount point that the service names and did not name for that device before.
    explicit UDisksWatch(std::function<void(const QByteArray &point)> appeared);

private Q_SLOTS:
    void propertiesChanged(const QString &interface, const QVariantMap &changed, const QStringList &invalidated,
                           const QDBusMessage &message);

private:
    const std::function<void(const QByteArray &point)> m_appeared;
    QMap<QString, std::set<QByteArray>> m_pointsOfDevices; ///< by the object of the device
};

} // namespace Tessaron
