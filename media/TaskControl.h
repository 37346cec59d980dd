#pragma once

#include <QString>

#include <cstdint>
#include <functional>
#include <memory>

class QObject;

namespace Tessaron
{

class RunLoopQueue;

/// Follows the notifications that control a launcher, those of this process and those from the bus of the session, and
/// acts on the thread that made it. Made and destroyed on one thread.
class TaskControl
{
public:
    struct Actions {
        std::function<void()> terminate;
        std::function<void()> suspend;
        std::function<void()> resume;
    };

    /// For notifications about this identifier. An action may destroy this object.
    TaskControl(std::int32_t identifier, const Actions &actions);
    ~TaskControl();
    TaskControl(const TaskControl &) = delete;
    TaskControl &operator=(const TaskControl &) = delete;

private:
    void observe(const QString &name, const QString &object, const std::function<void()> &action);

    const std::shared_ptr<RunLoopQueue> m_queue; ///< of the thread that acts
    std::shared_ptr<QObject> m_busContext; ///< belongs to the main thread; null without one
};

} // namespace Tessaron
