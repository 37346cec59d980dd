#pragma once

#include "platform/coreservices/Mounts.h"
#include "platform/fileevents/FSEventStream.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <memory>
#include <stop_token>
#include <vector>

namespace Tessaron
{

class FileEventRecord;
class WatchedRoots;

/// A service of the system that tells of changes in folders. begin() is called on the thread that starts a stream, all
/// else on the one that listens; neither call waits for anything to happen.
class FileEventSource
{
public:
    FileEventSource() = default;
    virtual ~FileEventSource() = default;
    FileEventSource(const FileEventSource &) = delete;
    FileEventSource &operator=(const FileEventSource &) = delete;

    /// Takes what it needs from the system. The roots are resolved; they and the record live as long as the source.
    /// What happens after this is told, or named by an event with MustScanSubDirs.
    [[nodiscard]] NSError begin(WatchedRoots &roots, FileEventRecord &record, const std::vector<Mount> &mounts)
    {
        m_roots = &roots;
        m_record = &record;
        return open(mounts);
    }
    /// The listening thread has begun: whatever may take long is done now.
    virtual void continueOnThread() = 0;
    /// Begins again, since a root leads elsewhere or events were lost. When all is watched, each root has an event with
    /// MustScanSubDirs and the flags.
    virtual void watchAnew(const std::vector<Mount> &mounts, FSEventStreamEventFlags flags) = 0;
    /// Something else lies at a mount point inside a root now.
    virtual void mountHasChanged(const std::vector<Mount> &mounts, const QByteArray &point) = 0;

    /// Readable when events wait; -1 for a source without a descriptor. May change with every other call.
    [[nodiscard]] int descriptor() const { return m_events.get(); }
    /// Records the events that wait, or a good deal of them.
    virtual void readEvents() = 0;
    /// One step of setting up what is not watched yet; false when nothing is left to do.
    virtual bool watchMore() { return false; }

protected:
    /// What begin() does with the system.
    [[nodiscard]] virtual NSError open(const std::vector<Mount> &mounts) = 0;

    WatchedRoots *m_roots = nullptr; ///< set by begin(), as is the record
    FileEventRecord *m_record = nullptr;
    UniqueDescriptor m_events; ///< where the system tells of them
};

[[nodiscard]] std::unique_ptr<FileEventSource> makeFanotifySource();
[[nodiscard]] std::unique_ptr<FileEventSource> makeInotifySource();

/// True for types such as "proc", whose files come and go without a notice and are not a person's.
[[nodiscard]] bool holdsSystemFilesOnly(const QByteArray &fileSystemType);

/// The error for a place that is not watched: what, why, and what to do.
[[nodiscard]] NSError cannotWatch(const QByteArray &path, const QString &reason, const QString &remedy);

} // namespace Tessaron
