#include "tests/support/EventLoop.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>

namespace Tessaron::Testing
{

bool runEventLoopUntil(const std::function<bool()> &condition, std::chrono::milliseconds atMost)
{
    const QDeadlineTimer deadline(atMost);
    QTimer wakeUp; // a condition may change without any event
    wakeUp.start(std::chrono::milliseconds(10));
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

void drainEventLoop()
{
    for (int round = 0; round < 10; ++round) {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    }
}

} // namespace Tessaron::Testing
