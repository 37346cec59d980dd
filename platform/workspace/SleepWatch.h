#pragma once

#include <QDBusServiceWatcher>
#include <QDBusUnixFileDescriptor>
#include <QObject>

#include <functional>

namespace Tessaron
{

/// Hears from logind when the machine goes to sleep and wakes up, and has it wait for what must be done before. On one
/// thread, with an event loop; hears nothing where the service does not run.
class SleepWatch : public QObject
{
    Q_OBJECT

public:
    /// The machine sleeps once `willSleep` has returned, or when its patience of some seconds has ended.
    SleepWatch(std::function<void()> willSleep, std::function<void()> didWake);

private Q_SLOTS:
    void prepareForSleep(bool begins);

private:
    void askForDelay();

    const std::function<void()> m_willSleep;
    const std::function<void()> m_didWake;
    QDBusServiceWatcher m_service;
    QDBusUnixFileDescriptor m_delay; ///< sleep waits until it is closed
    bool m_isAsleep = false;
};

} // namespace Tessaron
