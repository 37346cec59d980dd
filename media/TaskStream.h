#pragma once

#include "platform/foundation/UniqueDescriptor.h"

#include <QByteArray>

#include <functional>
#include <memory>

class QSocketNotifier;

namespace Tessaron
{

/// The reading end of a pipe, read by the event loop of the thread that made it: one piece in a turn, so that a writer
/// that never stops neither holds up the loop nor takes memory.
class TaskStream
{
public:
    /// Calls `received` with each piece and, once, with an empty one at the end. It may destroy the stream.
    TaskStream(UniqueDescriptor descriptor, std::function<void(const QByteArray &)> received);
    ~TaskStream();
    TaskStream(const TaskStream &) = delete;
    TaskStream &operator=(const TaskStream &) = delete;

    [[nodiscard]] bool hasEnded() const { return !m_descriptor; }

    /// Reads what the pipe holds now, without waiting for more: no more than a pipe's own size, from a writer that
    /// never stops.
    void readWhatIsThere();

private:
    void read();
    void stop();

    UniqueDescriptor m_descriptor;
    const std::function<void(const QByteArray &)> m_received;
    QSocketNotifier *m_notifier = nullptr; ///< deletes itself behind the signal that may be sending
};

} // namespace Tessaron
