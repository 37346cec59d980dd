#pragma once

#include "platform/foundation/Export.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <QSocketNotifier>

#include <functional>
#include <memory>

namespace Tessaron
{

/// Hears SIGINT, SIGTERM and SIGHUP on the event loop. A signal that was ignored when the program started (nohup, a
/// shell's background job) stays ignored. SIGPIPE and SIGXFSZ are ignored from then on, so that writing to a closed
/// pipe or beyond the limit on a file's size is an error value.
///
/// The first signal calls `whenInterrupted`, once. The second one means that the user will not wait: `lastAct` is
/// called, inside the signal's handler, and the process ends at once with status 130. One watcher at a time, on the
/// main thread. When it is gone, a first signal does nothing: the program is about to end by itself, with the status
/// that its work has earned.
class TESSARON_EXPORT SignalWatcher
{
public:
    explicit SignalWatcher(std::function<void()> whenInterrupted, void (*lastAct)() = nullptr);
    ~SignalWatcher();
    SignalWatcher(const SignalWatcher &) = delete;
    SignalWatcher &operator=(const SignalWatcher &) = delete;

    /// True when a signal has come, also while no event loop runs.
    [[nodiscard]] bool isInterrupted() const;

private:
    void readPipe();

    const std::function<void()> m_whenInterrupted;
    UniqueDescriptor m_readEnd;
    UniqueDescriptor m_writeEnd;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace Tessaron
