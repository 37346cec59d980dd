#include "app/AbandonedJob.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QSet>

#include <thread>

namespace Tessaron::Desktop
{

namespace
{

QSet<QObject *> &remembered()
{
    // Never destroyed: at the end of the program a job may still wait for the system.
    static auto *const objects = new QSet<QObject *>;
    return *objects;
}

} // namespace

void rememberUntilGone(QObject *object)
{
    remembered().insert(object);
    QObject::connect(object, &QObject::destroyed, [object] { remembered().remove(object); });
}

bool waitUntilAllAreGone(std::chrono::milliseconds atMost)
{
    constexpr int turn = 10; // milliseconds
    const QDeadlineTimer end(atMost);
    while (!remembered().isEmpty() && !end.hasExpired()) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, turn);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return remembered().isEmpty();
}

} // namespace Tessaron::Desktop
