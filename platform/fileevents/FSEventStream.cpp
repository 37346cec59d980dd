#include "platform/fileevents/FSEventStream.h"

#include "platform/fileevents/FileEventSource.h"
#include "platform/fileevents/FileEventWatcher.h"
#include "platform/foundation/MessageTexts.h"
#include "platform/foundation/RunLoopQueue.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Tessaron
{

namespace
{

NSError wrongUse(const QString &text)
{
    return NSError(NSOSStatusErrorDomain, paramErr, {{NSLocalizedDescriptionKey, text}});
}

} // namespace

Result<std::shared_ptr<FSEventStream>>
FSEventStream::create(FSEventStreamCallback callback, const FSEventStreamContext &context,
                      const std::vector<QByteArray> &pathsToWatch, FSEventStreamEventId sinceWhen,
                      std::chrono::duration<double> latency, FSEventStreamCreateFlags flags)
{
    if (!callback || pathsToWatch.empty())
        return wrongUse(QStringLiteral("An event stream needs a callback and a path to watch."));
    for (const QByteArray &path : pathsToWatch) {
        if (!path.startsWith('/') || path.contains('\0'))
            return wrongUse(QStringLiteral("An event stream watches absolute paths; %1 is not one.").arg(quoted(path)));
    }
    if (sinceWhen != kFSEventStreamEventIdSinceNow)
        return wrongUse(QStringLiteral("The system keeps no history of changes: events begin now."));
    if (!std::isfinite(latency.count()) || latency.count() < 0)
        return wrongUse(QStringLiteral("The latency of an event stream is a number of seconds, at least 0."));
    if (flags != kFSEventStreamCreateFlagNone)
        return wrongUse(QStringLiteral("An event stream has no options."));
    return std::make_shared<FSEventStream>(ConstructionKey(), callback, context, pathsToWatch, latency);
}

FSEventStream::FSEventStream(ConstructionKey /*key*/, FSEventStreamCallback callback,
                             const FSEventStreamContext &context, const std::vector<QByteArray> &pathsToWatch,
                             std::chrono::duration<double> latency)
    : m_callback(callback)
    , m_context(context)
    , m_paths(pathsToWatch)
    , m_latency(latency)
{
}

FSEventStream::~FSEventStream()
{
    invalidate();
}

void FSEventStream::scheduleWithRunLoop()
{
    if (!m_runLoop)
        m_runLoop = std::make_unique<RunLoopQueue>();
}

NSError FSEventStream::start()
{
    // A refusal means that fanotify is not permitted or not possible here, which is what inotify is for.
    return start(makeFanotifySource) ? start(makeInotifySource) : NSError();
}

NSError FSEventStream::start(const SourceFactory &source)
{
    if (!m_runLoop)
        return wrongUse(QStringLiteral("An event stream is scheduled on a run loop before it is started."));
    if (m_watcher)
        return wrongUse(QStringLiteral("The event stream is started already."));
    return startWith(source());
}

NSError FSEventStream::startWith(std::unique_ptr<FileEventSource> source)
{
    auto watcher = std::make_shared<FileEventWatcher>(m_paths, m_latency, [this] {
        // The watcher has joined its thread before the stream and its queue go.
        m_runLoop->perform([weak = weak_from_this()] {
            if (const std::shared_ptr<FSEventStream> stream = weak.lock())
                stream->deliver();
        });
    });
    NSError error = watcher->start(std::move(source));
    if (!error)
        m_watcher = std::move(watcher);
    return error;
}

void FSEventStream::stop()
{
    m_watcher.reset();
}

void FSEventStream::invalidate()
{
    stop();
    m_runLoop.reset();
}

void FSEventStream::deliver()
{
    // A delivery that was asked for before a stop comes to nothing, or to the next run's record.
    if (!m_watcher)
        return;
    const std::weak_ptr<FileEventWatcher> run = m_watcher;
    const FileEventRecord::Batch batch = m_watcher->record().take();
    const auto isOver = [&] { return run.expired(); };
    for (const NSError &problem : batch.problems) {
        if (m_context.problem)
            m_context.problem(problem);
        if (isOver())
            return;
    }
    if (batch.events.empty())
        return;
    std::vector<const char *> paths;
    std::vector<FSEventStreamEventFlags> flags;
    std::vector<FSEventStreamEventId> identifiers;
    for (const FileEventRecord::Event &event : batch.events) {
        paths.push_back(event.path.constData());
        flags.push_back(event.flags);
        identifiers.push_back(event.identifier);
    }
    m_callback(this, m_context.info, batch.events.size(), static_cast<void *>(paths.data()), flags.data(),
               identifiers.data());
}

} // namespace Tessaron
