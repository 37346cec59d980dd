#include "tests/fileevents/EventListener.h"

#include "platform/fileevents/FileEventRecord.h"
#include "platform/fileevents/WatchedRoots.h"
#include "tests/support/EventLoop.h"

#include <algorithm>

namespace Tessaron::Testing
{

void PrintTo(Mechanism mechanism, std::ostream *stream)
{
    *stream << (mechanism == Mechanism::Fanotify ? "fanotify" : "inotify");
}

std::string nameOfMechanism(const testing::TestParamInfo<Mechanism> &info)
{
    return testing::PrintToString(info.param);
}

std::unique_ptr<FileEventSource> makeSource(Mechanism mechanism)
{
    return mechanism == Mechanism::Fanotify ? makeFanotifySource() : makeInotifySource();
}

std::string reasonWhyNot(Mechanism mechanism, const QByteArray &folder)
{
    WatchedRoots roots({folder});
    roots.resolve();
    FileEventRecord record;
    const NSError error = makeSource(mechanism)->begin(roots, record, currentMounts());
    return error ? "this user may not use the service here: " + error.localizedDescription().toStdString() : "";
}

EventListener::EventListener(Mechanism mechanism, const std::vector<QByteArray> &paths,
                             std::chrono::duration<double> latency)
    : m_mechanism(mechanism)
    , m_paths(paths)
{
    const FSEventStreamContext context{this, [this](const NSError &problem) { problems.push_back(problem); }};
    const auto made = FSEventStream::create(hear, context, paths, kFSEventStreamEventIdSinceNow, latency,
                                            kFSEventStreamCreateFlagNone);
    EXPECT_TRUE(made.hasValue());
    stream = *made;
    stream->scheduleWithRunLoop();
    EXPECT_FALSE(start());
    settle();
}

NSError EventListener::start()
{
    return stream->start([this] { return makeSource(m_mechanism); });
}

void EventListener::settle()
{
    if (m_mechanism == Mechanism::Inotify) {
        // Fails where a test does not wait for it, since all watches have been set then.
        EXPECT_TRUE(runEventLoopUntil([this] {
            return std::count_if(
                       heard.begin(), heard.end(),
                       [](const Heard &event) { return event.flags == kFSEventStreamEventFlagMustScanSubDirs; })
                >= static_cast<std::ptrdiff_t>(m_paths.size());
        }));
    }
    heard.clear();
    batches.clear();
}

bool EventListener::waitFor(const QByteArray &folder, FSEventStreamEventFlags flags)
{
    return runEventLoopUntil([&] { return hasHeardOf(folder, flags); });
}

bool EventListener::waitForTheRest(const TemporaryTree &tree, const QByteArray &quietFolder)
{
    // An event with flags may come from before, and one without them may be swallowed where watching begins again.
    int file = 0;
    heard.clear();
    return runEventLoopUntil([&] {
        tree.makeFile(quietFolder + "/quiet" + QByteArray::number(++file));
        return std::any_of(heard.begin(), heard.end(), [&](const Heard &event) {
            return event.path == tree.path(quietFolder) + '/' && event.flags == kFSEventStreamEventFlagNone;
        });
    });
}

bool EventListener::hasHeardOf(const QByteArray &folder, FSEventStreamEventFlags flags) const
{
    return std::any_of(heard.begin(), heard.end(), [&](const Heard &event) {
        return event.path == folder + '/' && (event.flags & flags) == flags;
    });
}

bool EventListener::hasHeardFromInside(const QByteArray &folder) const
{
    return std::any_of(heard.begin(), heard.end(),
                       [&](const Heard &event) { return event.path.startsWith(folder + '/'); });
}

void EventListener::hear(ConstFSEventStreamRef stream, void *listener, std::size_t count, void *paths,
                         const FSEventStreamEventFlags *flags, const FSEventStreamEventId *identifiers)
{
    auto *self = static_cast<EventListener *>(listener);
    EXPECT_EQ(stream, self->stream.get());
    for (std::size_t event = 0; event < count; ++event)
        self->heard.push_back(Heard{static_cast<const char *const *>(paths)[event], flags[event], identifiers[event]});
    self->batches.push_back(count);
    if (self->inCallback)
        self->inCallback();
}

void EachMechanism::SetUp()
{
    if (const std::string reason = reasonWhyNot(GetParam(), tree.path()); !reason.empty())
        GTEST_SKIP() << reason;
}

} // namespace Tessaron::Testing
