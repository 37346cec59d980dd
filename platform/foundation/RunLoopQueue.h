#pragma once

#include "platform/foundation/Export.h"

#include <QObject>

#include <deque>
#include <functional>
#include <memory>
#include <mutex>

class QThread;

namespace Tessaron
{

/// Functions that wait to be run by one thread's event loop, in the order in which threads handed them over. They do
/// not travel in Qt's events, so that our own mutex orders the threads and ThreadSanitizer sees it.
class TESSARON_EXPORT RunLoopQueue
{
public:
    /// For the event loop of the calling thread, or of another one.
    RunLoopQueue();
    explicit RunLoopQueue(QThread *thread);
    /// On the queue's thread, or when that thread has ended. Drops the functions that still wait.
    ~RunLoopQueue();
    RunLoopQueue(const RunLoopQueue &) = delete;
    RunLoopQueue &operator=(const RunLoopQueue &) = delete;

    /// Hands a function over; from any thread. After close() it is dropped.
    void perform(std::function<void()> function);
    /// Drops the functions that wait and all later ones. On the queue's thread.
    void close();

private:
    class Receiver;

    void performNext();

    std::mutex m_mutex; ///< guards the members below
    std::unique_ptr<Receiver> m_receiver; ///< null once the queue is closed
    std::deque<std::function<void()>> m_functions;
};

} // namespace Tessaron
