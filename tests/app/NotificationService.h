#pragma once

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantMap>

namespace Tessaron::Testing
{

/// In place of the desktop: remembers what it is to show.
class NotificationService final : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

public:
    struct Notification {
        uint replaced = 0;
        QString title;
        QString text;
        QVariantMap hints;
    };
    QList<Notification> shown;

public Q_SLOTS:
    Q_SCRIPTABLE uint Notify(const QString &, uint replaced, const QString &, const QString &title, const QString &text,
                             const QStringList &, const QVariantMap &hints, int)
    {
        shown << Notification{replaced, title, text, hints};
        return 7;
    }

Q_SIGNALS:
    Q_SCRIPTABLE void ActionInvoked(uint id, const QString &action);
};

} // namespace Tessaron::Testing
