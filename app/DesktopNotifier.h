#pragma once

#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QObject>
#include <QWidget>

#include <memory>

namespace Tessaron::Desktop
{

struct JobOutcome;

/// Tells of the end of a piece of work by a notification of the desktop, where its window is not the active one
/// (Desktop Notifications Specification 1.2). Silent where there is no bus or no service for that. On the main thread.
class DesktopNotifier final : public QObject
{
    Q_OBJECT

public:
    /// `window` has to outlive the notifier.
    DesktopNotifier(QWidget &window, const QDBusConnection &bus, QObject *parent = nullptr);

    /// Not for what the user has ended.
    void tellOf(const JobOutcome &outcome);

Q_SIGNALS:
    /// The user has clicked on a notification.
    void chosen();

private Q_SLOTS:
    void hearOfAction(uint id, const QString &action);

private:
    QWidget &m_window;
    QDBusConnection m_bus;
    std::unique_ptr<QDBusPendingCallWatcher> m_answer; ///< to the last one
    uint m_last = 0; ///< which the next one replaces; 0 before the first
};

} // namespace Tessaron::Desktop
