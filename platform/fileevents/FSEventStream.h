#pragma once

#include "platform/foundation/Export.h"
#include "platform/foundation/NSError.h"
#include "platform/foundation/Result.h"

#include <QByteArray>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace Tessaron
{

class FileEventSource;
class FileEventWatcher;
class FSEventStream;
class RunLoopQueue;

using ConstFSEventStreamRef = const FSEventStream *;

/// Counts up from 1 within the process, over all its streams. An event that stands for several has the last one's.
using FSEventStreamEventId = std::uint64_t;
/// Events from the start on: the one choice there is, since the system keeps no history.
inline constexpr FSEventStreamEventId kFSEventStreamEventIdSinceNow = ~FSEventStreamEventId(0);

using FSEventStreamCreateFlags = std::uint32_t;
inline constexpr FSEventStreamCreateFlags kFSEventStreamCreateFlagNone = 0;

/// What an event says beyond "something changed in this folder"; several may be set.
using FSEventStreamEventFlags = std::uint32_t;
inline constexpr FSEventStreamEventFlags kFSEventStreamEventFlagNone = 0;
/// Anything may have changed in the folder and in all folders below it.
inline constexpr FSEventStreamEventFlags kFSEventStreamEventFlagMustScanSubDirs = 0x01;
/// Together with MustScanSubDirs: more happened than this process keeps in memory, or a folder cannot be watched.
inline constexpr FSEventStreamEventFlags kFSEventStreamEventFlagUserDropped = 0x02;
/// Together with MustScanSubDirs: more happened than the kernel keeps until it is read.
inline constexpr FSEventStreamEventFlags kFSEventStreamEventFlagKernelDropped = 0x04;
/// A watched path, which the event names as it was given, leads to another folder now, or to nothing.
inline constexpr FSEventStreamEventFlags kFSEventStreamEventFlagRootChanged = 0x20;
/// Something was mounted at the path.
inline constexpr FSEventStreamEventFlags kFSEventStreamEventFlagMount = 0x40;
/// Something that was mounted at the path is gone.
inline constexpr FSEventStreamEventFlags kFSEventStreamEventFlagUnmount = 0x80;

/// Gets a batch of events, oldest first, on the thread whose run loop the stream is scheduled on. `eventPaths` is a
/// `const char *const *`: absolute paths of folders as bytes, with a slash at the end. All is valid during the call.
/// The stream may be stopped and its last pointer dropped in it.
using FSEventStreamCallback = void (*)(ConstFSEventStreamRef streamRef, void *clientCallBackInfo, std::size_t numEvents,
                                       void *eventPaths, const FSEventStreamEventFlags *eventFlags,
                                       const FSEventStreamEventId *eventIds);

/// What a stream's callback is called with, and who hears what a stream cannot watch.
struct FSEventStreamContext {
    void *info = nullptr; ///< passed on as it is; not owned
    /// May be empty. Each failure to watch something, once, with what to do about it, on the same thread as events and
    /// before them; the events of such a place carry UserDropped besides.
    std::function<void(const NSError &)> problem;
};

/// Tells of changes below folders, in batches.
///
/// An event names a folder in which something was made, removed, renamed, written or given other attributes. What
/// happens in the same folder within the latency is one event. Events inside a folder that is gone by now are left to
/// the event of the folder above it. A folder that comes from elsewhere has an event of its own, with MustScanSubDirs.
///
/// A watched path must be absolute. Symbolic links that lead to it are followed, and events name the folder's real
/// path; links below it are not followed. The path may lead to nothing for now, to something else later, or be moved
/// away: RootChanged says so, and what lies at the path then is watched.
///
/// What is told comes from fanotify(7) where this process may use it on the file systems of all the paths, which costs
/// nothing however many folders there are; else from inotify(7). That needs a watch, and about 200 bytes here and a
/// kilobyte in the kernel, for each folder; they are set in the background after the start. As soon as all are, each
/// path has an event with MustScanSubDirs: what changed until then may not have been told. File systems without files
/// of people's (proc, sysfs and the like) are left out, and so are changes that other machines make on a network
/// volume.
///
/// Memory for events is bounded, on a thread that does not come to its event loop, too: when they would take more than
/// 8 MiB, or more come than the kernel keeps, one event with MustScanSubDirs for each watched path takes their place.
///
/// Belongs to one thread, the one it is scheduled on. A thread of its own listens from start() to stop(), which waits
/// for it; should that thread hang in a call of the system, on a dead network volume, then so long.
class TESSARON_EXPORT FSEventStream final : public std::enable_shared_from_this<FSEventStream>
{
    struct ConstructionKey {
        explicit ConstructionKey() = default;
    };

public:
    /// Makes the source of events that a stream listens to.
    using SourceFactory = std::function<std::unique_ptr<FileEventSource>()>;

    /// A stream that does nothing yet. `latency` is how long events are gathered, from the first one on, before they
    /// are delivered. Fails with paramErr for no path, a path that is not absolute, a negative latency, `sinceWhen`
    /// other than kFSEventStreamEventIdSinceNow, and flags.
    [[nodiscard]] static Result<std::shared_ptr<FSEventStream>>
    create(FSEventStreamCallback callback, const FSEventStreamContext &context,
           const std::vector<QByteArray> &pathsToWatch, FSEventStreamEventId sinceWhen,
           std::chrono::duration<double> latency, FSEventStreamCreateFlags flags);

    /// For create() only.
    FSEventStream(ConstructionKey, FSEventStreamCallback callback, const FSEventStreamContext &context,
                  const std::vector<QByteArray> &pathsToWatch, std::chrono::duration<double> latency);
    /// Stops.
    ~FSEventStream();
    FSEventStream(const FSEventStream &) = delete;
    FSEventStream &operator=(const FSEventStream &) = delete;

    /// Callbacks come on the calling thread, through its event loop.
    void scheduleWithRunLoop();
    /// Begins to listen. Fails when the stream is not scheduled or already started, and when the system grants neither
    /// of its services. A stream that was stopped may be started again.
    [[nodiscard]] NSError start();
    /// The same, listening to a certain source.
    [[nodiscard]] NSError start(const SourceFactory &source);
    /// Ends listening: no callback comes after this, and no descriptor and thread is left. What was not delivered yet
    /// is dropped.
    void stop();
    /// Stops, and takes the stream off the run loop.
    void invalidate();

private:
    [[nodiscard]] NSError startWith(std::unique_ptr<FileEventSource> source);
    void deliver();

    const FSEventStreamCallback m_callback;
    const FSEventStreamContext m_context;
    const std::vector<QByteArray> m_paths;
    const std::chrono::duration<double> m_latency;
    std::unique_ptr<RunLoopQueue> m_runLoop; ///< null unless scheduled
    std::shared_ptr<FileEventWatcher> m_watcher; ///< null unless started
};

} // namespace Tessaron
