#include "media/TaskControl.h"

#include "platform/foundation/MainThread.h"
#include "platform/foundation/NSDistributedNotificationCenter.h"
#include "platform/foundation/NSNotificationCenter.h"
#include "platform/foundation/RunLoopQueue.h"
#include <TessaronClasses/taskLauncher.h>

#include <QCoreApplication>
#include <QThread>

namespace Tessaron
{

const QString zelKillTasks = QStringLiteral("zelKillTasks");
const QString zelPauseTasks = QStringLiteral("zelPauseTasks");
const QString zelResumeTasks = QStringLiteral("zelResumeTasks");

namespace
{

/// At once on the main thread, later from any other one.
void onMainThread(const std::function<void()> &function)
{
    if (isMainThread())
        function();
    else
        performOnMainThread(function);
}

} // namespace

TaskControl::TaskControl(std::int32_t identifier, const Actions &actions)
    : m_queue(std::make_shared<RunLoopQueue>())
{
    if (QCoreApplication *const application = QCoreApplication::instance()) {
        m_busContext = std::make_shared<QObject>();
        m_busContext->moveToThread(application->thread());
    }
    const QString object = QString::number(identifier);
    observe(zelKillTasks, object, actions.terminate);
    observe(zelPauseTasks, object, actions.suspend);
    observe(zelResumeTasks, object, actions.resume);
}

TaskControl::~TaskControl()
{
    NSNotificationCenter::defaultCenter().removeObserver(this);
    m_queue->close();
    if (!m_busContext)
        return;
    onMainThread([context = std::move(m_busContext)] {
        NSDistributedNotificationCenter::defaultCenter().removeObserver(context.get());
    });
}

void TaskControl::observe(const QString &name, const QString &object, const std::function<void()> &action)
{
    const auto act = [queue = m_queue, action, thread = QThread::currentThreadId()] {
        if (QThread::currentThreadId() == thread)
            action();
        else
            queue->perform(action);
    };
    NSNotificationCenter::defaultCenter().addObserver(this, name, object, [act](const NSNotification &) { act(); });
    if (!m_busContext)
        return;
    onMainThread([context = m_busContext, name, object, act] {
        // Without a bus there is no other process to hear from.
        static_cast<void>(NSDistributedNotificationCenter::defaultCenter().addObserver(
            context.get(), name, object, [act](const NSDistributedNotification &) { act(); }));
    });
}

} // namespace Tessaron
