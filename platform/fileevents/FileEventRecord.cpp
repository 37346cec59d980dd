#include "platform/fileevents/FileEventRecord.h"

#include <algorithm>
#include <atomic>
#include <utility>

namespace Tessaron
{

namespace
{

/// What an entry takes besides its path: the path's own head, its place in the table and its number, measured at about
/// a hundred bytes.
constexpr std::size_t bytesOfAnEntry = 96;

constexpr FSEventStreamEventFlags toldInAnyCase =
    kFSEventStreamEventFlagRootChanged | kFSEventStreamEventFlagMount | kFSEventStreamEventFlagUnmount;

FSEventStreamEventId nextIdentifier()
{
    static std::atomic<FSEventStreamEventId> last = 0;
    return last.fetch_add(1, std::memory_order_relaxed) + 1;
}

std::size_t bytesFor(const QByteArray &folder)
{
    return static_cast<std::size_t>(folder.size()) + bytesOfAnEntry;
}

} // namespace

void FileEventRecord::setRoots(std::vector<QByteArray> roots)
{
    const std::lock_guard lock(m_mutex);
    m_roots.swap(roots);
}

void FileEventRecord::add(const QByteArray &folder, FSEventStreamEventFlags flags)
{
    const std::lock_guard lock(m_mutex);
    addLocked(folder, flags);
    noteTime();
    if (m_bytes > m_mostBytes)
        loseLocked(kFSEventStreamEventFlagUserDropped);
}

void FileEventRecord::lost(FSEventStreamEventFlags flags)
{
    const std::lock_guard lock(m_mutex);
    loseLocked(flags);
    noteTime();
}

void FileEventRecord::addProblem(const NSError &problem)
{
    const std::lock_guard lock(m_mutex);
    if (m_problems.size() < mostProblems) {
        m_problems.push_back(problem);
    } else {
        const QString text = QStringLiteral("More cannot be watched than is told here.");
        m_problems.back() = NSError(NSOSStatusErrorDomain, ioErr, {{NSLocalizedDescriptionKey, text}});
    }
}

std::optional<std::chrono::steady_clock::time_point> FileEventRecord::waitsSince() const
{
    const std::lock_guard lock(m_mutex);
    if (!m_problems.empty() && !m_problemsAreHandedOver)
        return std::chrono::steady_clock::time_point();
    return m_eventsAreHandedOver ? std::nullopt : m_since;
}

void FileEventRecord::handOver(std::chrono::duration<double> latency)
{
    const std::lock_guard lock(m_mutex);
    m_problemsAreHandedOver = !m_problems.empty();
    if (m_since && std::chrono::steady_clock::now() - *m_since >= latency)
        m_eventsAreHandedOver = true;
}

void FileEventRecord::handOverHasFailed()
{
    const std::lock_guard lock(m_mutex);
    m_problemsAreHandedOver = m_eventsAreHandedOver = false;
}

FileEventRecord::Batch FileEventRecord::take()
{
    Batch batch;
    const std::lock_guard lock(m_mutex);
    batch.problems.swap(m_problems);
    m_problemsAreHandedOver = false;
    if (!std::exchange(m_eventsAreHandedOver, false))
        return batch;
    if (const FSEventStreamEventFlags flags = std::exchange(m_lost, kFSEventStreamEventFlagNone); flags != 0) {
        for (const QByteArray &root : m_roots)
            addLocked(root, flags);
    }
    batch.events.reserve(static_cast<std::size_t>(m_events.size()));
    for (auto event = m_events.cbegin(); event != m_events.cend(); ++event) {
        QByteArray path = event.key();
        if (!path.endsWith('/'))
            path.append('/');
        batch.events.push_back(Event{event->identifier, event->flags, std::move(path)});
    }
    std::sort(batch.events.begin(), batch.events.end(),
              [](const Event &one, const Event &other) { return one.identifier < other.identifier; });
    m_events = {};
    m_bytes = 0;
    m_since.reset();
    return batch;
}

void FileEventRecord::addLocked(const QByteArray &folder, FSEventStreamEventFlags flags)
{
    // What is to be scanned altogether need not be told folder by folder.
    if (m_lost != kFSEventStreamEventFlagNone && (flags & toldInAnyCase) == 0) {
        m_lost |= flags;
        return;
    }
    const auto event = m_events.find(folder);
    if (event != m_events.end()) {
        event->flags |= flags;
        event->identifier = nextIdentifier();
        return;
    }
    m_events.insert(folder, Waiting{nextIdentifier(), flags});
    m_bytes += bytesFor(folder);
}

void FileEventRecord::loseLocked(FSEventStreamEventFlags flags)
{
    m_lost |= flags | kFSEventStreamEventFlagMustScanSubDirs;
    for (const Waiting &event : std::as_const(m_events))
        m_lost |= event.flags & ~toldInAnyCase;
    m_events.removeIf([](QHash<QByteArray, Waiting>::iterator event) { return (event->flags & toldInAnyCase) == 0; });
    m_bytes = 0;
    for (auto event = m_events.cbegin(); event != m_events.cend(); ++event)
        m_bytes += bytesFor(event.key());
}

void FileEventRecord::noteTime()
{
    if (!m_since)
        m_since = std::chrono::steady_clock::now();
}

} // namespace Tessaron
