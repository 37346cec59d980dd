#include "platform/foundation/MainThread.h"

#include <QCoreApplication>
#include <QThread>

namespace Tessaron
{

bool isMainThread()
{
    const QCoreApplication *const application = QCoreApplication::instance();
    return application && QThread::currentThread() == application->thread();
}

void performOnMainThread(std::function<void()> function)
{
    if (QCoreApplication *const application = QCoreApplication::instance())
        QMetaObject::invokeMethod(application, std::move(function), Qt::QueuedConnection);
}

void performOnMainThreadAndWait(const std::function<void()> &function)
{
    QCoreApplication *const application = QCoreApplication::instance();
    if (!application)
        return;
    if (isMainThread())
        function();
    else
        QMetaObject::invokeMethod(application, function, Qt::BlockingQueuedConnection);
}

} // namespace Tessaron
