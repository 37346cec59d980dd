#include "app/DesktopNotifier.h"

#include "app/DesktopPanel.h"

#include <TessaronClasses/DiscJobErrors.h>

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace Tessaron::Desktop
{

namespace
{

const QString notificationService = QStringLiteral("org.freedesktop.Notifications");
const QString notificationPath = QStringLiteral("/org/freedesktop/Notifications");
const QString programEntry = QStringLiteral("org.tessaron.Desktop");
const QString showAction = QStringLiteral("default"); // of a click on the notification itself

} // namespace

DesktopNotifier::DesktopNotifier(QWidget &window, const QDBusConnection &bus, QObject *parent)
    : QObject(parent)
    , m_window(window)
    , m_bus(bus)
{
    if (m_bus.isConnected())
        m_bus.connect(notificationService, notificationPath, notificationService, QStringLiteral("ActionInvoked"), this,
                      SLOT(hearOfAction(uint, QString)));
}

void DesktopNotifier::tellOf(const JobOutcome &outcome)
{
    if (!m_bus.isConnected() || m_window.isActiveWindow() || isDiscJobError(outcome.error, DiscJobErrorCode::Cancelled))
        return;
    const QString title = outcome.error ? tr("It did not succeed")
        : outcome.isComplete            ? tr("Finished")
                                        : tr("Finished, but not everything is as it should be");
    const QVariantMap hints = {{QStringLiteral("desktop-entry"), programEntry},
                               {QStringLiteral("category"), QStringLiteral("transfer.complete")}};
    QDBusMessage call = QDBusMessage::createMethodCall(notificationService, notificationPath, notificationService,
                                                       QStringLiteral("Notify"));
    // The text counts as markup; how long it is shown is left to the desktop.
    call << QStringLiteral("Tessaron") << m_last << programEntry << title << outcome.summary.toHtmlEscaped()
         << QStringList({showAction, tr("Show")}) << hints << -1;
    m_answer = std::make_unique<QDBusPendingCallWatcher>(m_bus.asyncCall(call));
    connect(m_answer.get(), &QDBusPendingCallWatcher::finished, this, [this] {
        const QDBusPendingReply<uint> reply = *m_answer;
        if (reply.isValid())
            m_last = reply.value();
    });
}

void DesktopNotifier::hearOfAction(uint id, const QString &action)
{
    if (id == m_last && action == showAction)
        Q_EMIT chosen();
}

} // namespace Tessaron::Desktop
