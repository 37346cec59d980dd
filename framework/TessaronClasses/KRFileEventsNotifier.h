#pragma once

#include "platform/fileevents/FSEventStream.h"
#include "platform/foundation/Export.h"
#include "platform/foundation/NSError.h"

#include <cstddef>
#include <memory>

namespace Tessaron
{

class KRFileReference;

/// Watches the whole disk and writes what changes to standard output; see fileStreamCallback() for the lines. One
/// object for the process, which keeps one stream of events. What cannot be watched is written to the log (qWarning()).
///
/// Belongs to one thread, in practice the main thread: the stream is started and stopped, and its lines are written, on
/// the same one, whose event loop must run. Standard output in a file on the disk is a change of its own each time.
class TESSARON_EXPORT KRFileEventsNotifier
{
public:
    /// The shared instance, made with the first call. Never null.
    [[nodiscard]] static std::shared_ptr<KRFileEventsNotifier> sharedNotifier();
    /// The shared instance, too: a second object is never kept.
    [[nodiscard]] static std::shared_ptr<KRFileEventsNotifier> init();

    KRFileEventsNotifier(const KRFileEventsNotifier &) = delete;
    KRFileEventsNotifier &operator=(const KRFileEventsNotifier &) = delete;

    /// Starts a stream of events from now on, below "/", gathered for 5 seconds, on the calling thread's event loop.
    /// Does nothing while one runs. The null error when a stream runs afterwards; else the reason why it does not, and
    /// the next call tries again.
    NSError startEventStream();
    /// Ends the stream; no line is written after this. Does nothing without one.
    void stopEventStream();
    /// Does nothing yet.
    void watchEventsForFileReference(const std::shared_ptr<KRFileReference> &reference);

private:
    KRFileEventsNotifier() = default;
};

/// Writes the line "EVENT", then for each event "Change IDENTIFIER in PATH, flags FLAGS", to standard output. The path
/// is the folder's as bytes, with a slash at the end.
TESSARON_EXPORT void fileStreamCallback(ConstFSEventStreamRef streamRef, void *clientCallBackInfo,
                                        std::size_t numEvents, void *eventPaths,
                                        const FSEventStreamEventFlags *eventFlags,
                                        const FSEventStreamEventId *eventIds);

} // namespace Tessaron
