#include "platform/workspace/SleepWatch.h"

#include "platform/workspace/SystemBus.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

#include <utility>

namespace Tessaron
{

namespace
{

const QString service = QStringLiteral("org.freedesktop.login1");
const QString managerPath = QStringLiteral("/org/freedesktop/login1");
const QString managerInterface = QStringLiteral("org.freedesktop.login1.Manager");

} // namespace

SleepWatch::SleepWatch(std::function<void()> willSleep, std::function<void()> didWake)
    : m_willSleep(std::move(willSleep))
    , m_didWake(std::move(didWake))
    , m_service(service, systemBus(), QDBusServiceWatcher::WatchForRegistration)
{
    if (!systemBus().isConnected())
        return;
    systemBus().connect(service, managerPath, managerInterface, QStringLiteral("PrepareForSleep"), this,
                        SLOT(prepareForSleep(bool)));
    connect(&m_service, &QDBusServiceWatcher::serviceRegistered, this, [this] { askForDelay(); });
    askForDelay();
}

void SleepWatch::askForDelay()
{
    QDBusMessage call =
        QDBusMessage::createMethodCall(service, managerPath, managerInterface, QStringLiteral("Inhibit"));
    const QString name = QCoreApplication::applicationName();
    call << QStringLiteral("sleep") << (name.isEmpty() ? QStringLiteral("TessaronClasses") : name)
         << QStringLiteral("The DVD is paused before the machine sleeps") << QStringLiteral("delay");
    call.setAutoStartService(false);
    auto *const reply = new QDBusPendingCallWatcher(systemBus().asyncCall(call), this);
    connect(reply, &QDBusPendingCallWatcher::finished, this, [this, reply] {
        const QDBusPendingReply<QDBusUnixFileDescriptor> delay = *reply;
        reply->deleteLater();
        // While it falls asleep, the machine must not be held up for a notification that has gone out.
        if (!delay.isError() && !m_isAsleep)
            m_delay = delay.value();
    });
} // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks): the watcher belongs to its parent

void SleepWatch::prepareForSleep(bool begins)
{
    m_isAsleep = begins;
    if (begins) {
        const QDBusUnixFileDescriptor delay = std::exchange(m_delay, {}); // closed whatever happens
        m_willSleep();
        return;
    }
    m_didWake();
    askForDelay();
}

} // namespace Tessaron
