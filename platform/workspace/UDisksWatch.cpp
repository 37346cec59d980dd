#include "platform/workspace/UDisksWatch.h"

#include "platform/workspace/SystemBus.h"

#include <QDBusArgument>
#include <QDBusMessage>

#include <algorithm>
#include <iterator>
#include <vector>

namespace Tessaron
{

UDisksWatch::UDisksWatch(std::function<void(const QByteArray &point)> appeared)
    : m_appeared(std::move(appeared))
{
    systemBus().connect(QStringLiteral("org.freedesktop.UDisks2"), QString(),
                        QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("PropertiesChanged"), this,
                        SLOT(propertiesChanged(QString, QVariantMap, QStringList, QDBusMessage)));
}

void UDisksWatch::propertiesChanged(const QString &interface, const QVariantMap &changed,
                                    const QStringList & /*invalidated*/, const QDBusMessage &message)
{
    const auto found = changed.find(QStringLiteral("MountPoints"));
    if (interface != QStringLiteral("org.freedesktop.UDisks2.Filesystem") || found == changed.end())
        return;
    std::set<QByteArray> points;
    for (QByteArray point : qdbus_cast<QByteArrayList>(*found)) {
        while (point.endsWith('\0'))
            point.chop(1);
        if (point.startsWith('/'))
            points.insert(point);
    }
    std::set<QByteArray> &known = m_pointsOfDevices[message.path()];
    std::vector<QByteArray> appeared;
    std::set_difference(points.begin(), points.end(), known.begin(), known.end(), std::back_inserter(appeared));
    known = std::move(points);
    for (const QByteArray &point : appeared)
        m_appeared(point);
}

} // namespace Tessaron
