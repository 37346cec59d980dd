#pragma once

#include "platform/fileevents/FSEventStream.h"

#include <QByteArray>
#include <QHash>

#include <chrono>
#include <cstddef>
#include <mutex>
#include <optional>
#include <vector>

namespace Tessaron
{

/// Events and problems that wait for delivery: one event for each folder, and a bounded number of bytes. Events come
/// from the listening thread and are taken on the stream's.
class FileEventRecord
{
public:
    struct Event {
        FSEventStreamEventId identifier = 0;
        FSEventStreamEventFlags flags = kFSEventStreamEventFlagNone;
        QByteArray path; ///< with a slash at the end
    };
    struct Batch {
        std::vector<Event> events; ///< by identifier
        std::vector<NSError> problems;
    };

    static constexpr std::size_t mostBytesByDefault = std::size_t(8) * 1024 * 1024;
    static constexpr std::size_t mostProblems = 64;

    explicit FileEventRecord(std::size_t mostBytes = mostBytesByDefault)
        : m_mostBytes(mostBytes)
    {
    }

    /// Where lost() says that something happened.
    void setRoots(std::vector<QByteArray> roots);
    void add(const QByteArray &folder, FSEventStreamEventFlags flags);
    /// Puts an event for each root, with MustScanSubDirs and the flags, in the place of all that wait, except those
    /// that tell of roots and mounts. Needs no memory.
    void lost(FSEventStreamEventFlags flags);
    /// Beyond `mostProblems` that wait, the last one says that there are more.
    void addProblem(const NSError &problem);

    /// When the first thing that waits came; for a problem, which should not wait, the begin of all times. No value
    /// when nothing waits that is not on its way.
    [[nodiscard]] std::optional<std::chrono::steady_clock::time_point> waitsSince() const;
    /// A delivery is on its way, and ends in take(): of the problems, and of the events once the first of them has
    /// waited for the latency. Events are not hurried by a problem.
    void handOver(std::chrono::duration<double> latency);
    /// It could not be sent.
    void handOverHasFailed();
    /// The problems, and the events if they were handed over; those that came after that are among them.
    [[nodiscard]] Batch take();

private:
    struct Waiting {
        FSEventStreamEventId identifier = 0;
        FSEventStreamEventFlags flags = kFSEventStreamEventFlagNone;
    };

    void addLocked(const QByteArray &folder, FSEventStreamEventFlags flags);
    void loseLocked(FSEventStreamEventFlags flags);
    void noteTime();

    const std::size_t m_mostBytes;
    mutable std::mutex m_mutex; ///< guards the members below
    std::vector<QByteArray> m_roots;
    QHash<QByteArray, Waiting> m_events;
    std::size_t m_bytes = 0; ///< about what m_events takes
    FSEventStreamEventFlags m_lost = kFSEventStreamEventFlagNone; ///< not None: all roots have changed
    std::vector<NSError> m_problems;
    std::optional<std::chrono::steady_clock::time_point> m_since;
    bool m_problemsAreHandedOver = false;
    bool m_eventsAreHandedOver = false;
};

} // namespace Tessaron
