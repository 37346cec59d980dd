#pragma once

#include "platform/fileevents/FileEventRecord.h"
#include "platform/fileevents/FileEventSource.h"
#include "platform/fileevents/WatchedRoots.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <QByteArray>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <thread>
#include <vector>

namespace Tessaron
{

/// The thread that listens to a source, and asks for a delivery when the first event that waits has waited for the
/// latency.
class FileEventWatcher
{
public:
    /// `wantsDelivery` is called on the watcher's thread; it has record().take() called on some other one.
    FileEventWatcher(const std::vector<QByteArray> &paths, std::chrono::duration<double> latency,
                     std::function<void()> wantsDelivery);
    /// Stops, and waits for the thread.
    ~FileEventWatcher();
    FileEventWatcher(const FileEventWatcher &) = delete;
    FileEventWatcher &operator=(const FileEventWatcher &) = delete;

    [[nodiscard]] NSError start(std::unique_ptr<FileEventSource> source);
    [[nodiscard]] FileEventRecord &record() { return m_record; }

private:
    void run(const std::stop_token &stop);
    void runOnce();
    [[nodiscard]] bool wait();
    [[nodiscard]] int millisecondsToWait() const;
    void lookAtMounts();
    void lookAtRoots();
    void tellOfMissingRoots();
    void askForDelivery();

    const std::chrono::duration<double> m_latency;
    const std::function<void()> m_wantsDelivery;
    FileEventRecord m_record;
    WatchedRoots m_roots; ///< the thread's own, like all below, while it runs
    std::vector<Mount> m_mounts;
    std::unique_ptr<FileEventSource> m_source;
    UniqueDescriptor m_mountList; ///< tells of changes; invalid where there is no /proc
    UniqueDescriptor m_wakeUp; ///< readable when the thread is to stop
    bool m_hasMoreToWatch = true;
    bool m_mustBeginAnew = false; ///< memory ran out, and the watches may be incomplete
    bool m_sourceIsReadable = false;
    bool m_mountsHaveChanged = false;
    std::jthread m_thread;
};

} // namespace Tessaron
