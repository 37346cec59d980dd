#pragma once

#include "platform/foundation/UniqueDescriptor.h"

#include <QSocketNotifier>

#include <functional>
#include <memory>

namespace Tessaron::Tool
{

/// Hears SIGTSTP, which Ctrl-Z sends, on the event loop: calls `beforeStop`, stops this process as the signal does
/// without a watcher, and calls `afterContinue` when it goes on. Does nothing where the signal is ignored. One watcher
/// at a time, on the main thread.
class StopWatcher
{
public:
    StopWatcher(std::function<void()> beforeStop, std::function<void()> afterContinue);
    ~StopWatcher();
    StopWatcher(const StopWatcher &) = delete;
    StopWatcher &operator=(const StopWatcher &) = delete;

private:
    void readPipe();

    const std::function<void()> m_beforeStop;
    const std::function<void()> m_afterContinue;
    UniqueDescriptor m_readEnd;
    UniqueDescriptor m_writeEnd;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace Tessaron::Tool
