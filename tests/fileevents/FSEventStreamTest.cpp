#include "platform/fileevents/FSEventStream.h"

#include "tests/fileevents/EventListener.h"
#include "tests/support/EventLoop.h"

#include <QDir>
#include <QEventLoop>

#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <limits>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace Tessaron::Testing
{

namespace
{

void move(const QByteArray &from, const QByteArray &to)
{
    ASSERT_EQ(std::rename(from.constData(), to.constData()), 0) << from.constData();
}

void append(const QByteArray &path)
{
    const int file = ::open(path.constData(), O_WRONLY | O_APPEND | O_CLOEXEC);
    ASSERT_GE(file, 0) << path.constData();
    EXPECT_EQ(::write(file, "x", 1), 1);
    ::close(file);
}

qsizetype entriesOf(const char *folder)
{
    return QDir(QString::fromLatin1(folder)).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size();
}

} // namespace

using FSEventStreamTest = EachMechanism;
INSTANTIATE_TEST_SUITE_P(With, FSEventStreamTest, testing::Values(Mechanism::Fanotify, Mechanism::Inotify),
                         nameOfMechanism);

TEST_P(FSEventStreamTest, event_namesTheFolder_whateverHappensInIt)
{
    tree.makeFolder("sub");
    EventListener listener(GetParam(), {tree.path()});
    const QByteArray folder = tree.path("sub");
    const QByteArray file = tree.path("sub/file");
    const std::vector<std::pair<const char *, std::function<void()>>> changes = {
        {"made", [&] { tree.makeFile("sub/file"); }},
        {"written", [&] { append(file); }},
        {"given another mode", [&] { EXPECT_EQ(::chmod(file.constData(), 0600), 0); }},
        {"renamed", [&] { move(file, tree.path("sub/other")); }},
        {"linked", [&] { tree.makeSymbolicLink("sub/link", "other"); }},
        {"removed", [&] { EXPECT_EQ(::unlink(tree.path("sub/other").constData()), 0); }},
        {"folder made", [&] { EXPECT_EQ(::mkdir(tree.path("sub/folder").constData(), 0700), 0); }},
        {"folder removed", [&] { EXPECT_EQ(::rmdir(tree.path("sub/folder").constData()), 0); }},
    };
    for (const auto &[name, change] : changes) {
        SCOPED_TRACE(name);
        listener.forget();
        change();
        EXPECT_TRUE(listener.waitFor(folder));
        EXPECT_FALSE(listener.hasHeardOf(tree.path()));
    }
    EXPECT_TRUE(listener.problems.empty());
}

TEST_P(FSEventStreamTest, changesInOneFolder_areOneEvent_withinTheLatency)
{
    tree.makeFolder("sub");
    EventListener listener(GetParam(), {tree.path()}, std::chrono::seconds(1));
    const auto begin = std::chrono::steady_clock::now();
    for (int file = 0; file < 100; ++file)
        tree.makeFile("sub/" + QByteArray::number(file));
    ASSERT_TRUE(listener.waitFor(tree.path("sub")));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::seconds(1));
    ASSERT_EQ(listener.heard.size(), 1u);
    EXPECT_EQ(listener.heard[0].flags, kFSEventStreamEventFlagNone);
    EXPECT_GE(listener.heard[0].identifier, 100u); // that of the last of them
}

TEST_P(FSEventStreamTest, identifiers_grow_fromEventToEvent)
{
    tree.makeFolder("one");
    tree.makeFolder("two");
    EventListener listener(GetParam(), {tree.path()}, std::chrono::milliseconds(200));
    tree.makeFile("two/file");
    tree.makeFile("one/file");
    ASSERT_TRUE(listener.waitFor(tree.path("one")));
    tree.makeFile("two/another");
    const std::size_t before = listener.heard.size();
    ASSERT_TRUE(runEventLoopUntil([&] { return listener.heard.size() > before; }));
    ASSERT_GE(listener.heard.size(), 3u);
    EXPECT_EQ(listener.heard.front().path, tree.path("two") + '/');
    EXPECT_TRUE(std::is_sorted(listener.heard.begin(), listener.heard.end(),
                               [](const auto &one, const auto &other) { return one.identifier <= other.identifier; }));
}

TEST_P(FSEventStreamTest, newFolders_areWatched_howeverQuicklyTheyAreFilled)
{
    EventListener listener(GetParam(), {tree.path()});
    // No turn of the listening thread can be counted on between two of these.
    for (int round = 0; round < 50; ++round) {
        SCOPED_TRACE(round);
        const QByteArray top = QByteArray::number(round);
        tree.makeFile(top + "/a/b/c/d/file");
        EXPECT_TRUE(listener.waitFor(tree.path(top + "/a/b/c/d")));
        listener.forget();
        append(tree.path(top + "/a/b/c/d/file"));
        EXPECT_TRUE(listener.waitFor(tree.path(top + "/a/b/c/d")));
    }
}

TEST_P(FSEventStreamTest, movedFolder_isToldWithItsNewPath)
{
    tree.makeFile("from/moved/sub/file");
    tree.makeFolder("to");
    EventListener listener(GetParam(), {tree.path()});
    move(tree.path("from/moved"), tree.path("to/there"));
    EXPECT_TRUE(listener.waitFor(tree.path("to/there"), kFSEventStreamEventFlagMustScanSubDirs));
    EXPECT_TRUE(listener.waitFor(tree.path("from")));
    EXPECT_TRUE(listener.waitFor(tree.path("to")));
    listener.forget();
    append(tree.path("to/there/sub/file"));
    EXPECT_TRUE(listener.waitFor(tree.path("to/there/sub")));
    EXPECT_FALSE(listener.hasHeardFromInside(tree.path("from")));
}

TEST_P(FSEventStreamTest, folderThatIsMovedBackAndForth_isStillWatched)
{
    tree.makeFile("a/sub/file");
    tree.makeFolder("quiet");
    EventListener listener(GetParam(), {tree.path()});
    for (int round = 0; round < 100; ++round) {
        move(tree.path("a"), tree.path("b"));
        move(tree.path("b"), tree.path("a"));
    }
    ASSERT_TRUE(listener.waitForTheRest(tree, "quiet"));
    listener.forget();
    append(tree.path("a/sub/file"));
    EXPECT_TRUE(listener.waitFor(tree.path("a/sub")));
}

TEST_P(FSEventStreamTest, folderMovedOut_isNotToldOfAnyMore)
{
    tree.makeFile("root/moved/sub/file");
    tree.makeFolder("root/quiet");
    EventListener listener(GetParam(), {tree.path("root")});
    move(tree.path("root/moved"), tree.path("outside"));
    EXPECT_TRUE(listener.waitFor(tree.path("root")));
    listener.forget();
    append(tree.path("outside/sub/file"));
    ASSERT_TRUE(listener.waitForTheRest(tree, "root/quiet"));
    EXPECT_TRUE(std::all_of(listener.heard.begin(), listener.heard.end(),
                            [&](const auto &event) { return event.path == tree.path("root/quiet") + '/'; }));
}

TEST_P(FSEventStreamTest, folderMovedIn_isToScan_andWatched)
{
    tree.makeFolder("root/quiet");
    tree.makeFile("outside/sub/file");
    EventListener listener(GetParam(), {tree.path("root")});
    move(tree.path("outside"), tree.path("root/inside"));
    EXPECT_TRUE(listener.waitFor(tree.path("root/inside"), kFSEventStreamEventFlagMustScanSubDirs));
    ASSERT_TRUE(listener.waitForTheRest(tree, "root/quiet"));
    listener.forget();
    append(tree.path("root/inside/sub/file"));
    EXPECT_TRUE(listener.waitFor(tree.path("root/inside/sub")));
}

TEST_P(FSEventStreamTest, removedFolders_areToldByTheFolderAbove)
{
    tree.makeFile("sub/a/b/file");
    EventListener listener(GetParam(), {tree.path()});
    ASSERT_TRUE(QDir(tree.pathText("sub/a")).removeRecursively());
    EXPECT_TRUE(listener.waitFor(tree.path("sub")));
    listener.forget();
    tree.makeFile("sub/a/b/file");
    EXPECT_TRUE(listener.waitFor(tree.path("sub/a/b")));
}

TEST_P(FSEventStreamTest, names_areBytes)
{
    const QByteArray name = "not\xff utf-8\n\xc3\x28";
    tree.makeFolder(name);
    EventListener listener(GetParam(), {tree.path()});
    tree.makeFile(name + "/\xfe");
    EXPECT_TRUE(listener.waitFor(tree.path(name)));
    tree.makeFile("\x80/new/file");
    EXPECT_TRUE(listener.waitFor(tree.path("\x80/new")));
}

TEST_P(FSEventStreamTest, symbolicLinksBelowARoot_areNotFollowed)
{
    tree.makeFolder("outside");
    tree.makeFolder("root/quiet");
    tree.makeSymbolicLink("root/link", "../outside");
    EventListener listener(GetParam(), {tree.path("root")});
    tree.makeFile("outside/file");
    ASSERT_TRUE(listener.waitForTheRest(tree, "root/quiet"));
    EXPECT_TRUE(std::all_of(listener.heard.begin(), listener.heard.end(),
                            [&](const auto &event) { return event.path == tree.path("root/quiet") + '/'; }));
}

TEST_P(FSEventStreamTest, rootsInsideOneAnother_tellOnce)
{
    tree.makeFolder("sub");
    EventListener listener(GetParam(), {tree.path(), tree.path("sub")}, std::chrono::milliseconds(200));
    tree.makeFile("sub/file");
    ASSERT_TRUE(listener.waitFor(tree.path("sub")));
    EXPECT_EQ(listener.heard.size(), 1u);
}

TEST_P(FSEventStreamTest, stop_endsDescriptorsAndThreads)
{
    tree.makeFolder("sub");
    std::jthread([] {}).join(); // with its first one, ThreadSanitizer starts a thread of its own
    drainEventLoop();
    EventListener listener(GetParam(), {tree.path()});
    listener.stream->stop();
    const qsizetype descriptors = entriesOf("/proc/self/fd");
    const qsizetype threads = entriesOf("/proc/self/task");
    ASSERT_FALSE(listener.start());
    listener.settle();
    EXPECT_GT(entriesOf("/proc/self/fd"), descriptors);
    EXPECT_EQ(entriesOf("/proc/self/task"), threads + 1);
    tree.makeFile("sub/file");
    EXPECT_TRUE(listener.waitFor(tree.path("sub")));
    listener.stream->stop();
    EXPECT_EQ(entriesOf("/proc/self/fd"), descriptors);
    EXPECT_EQ(entriesOf("/proc/self/task"), threads);
}

TEST_P(FSEventStreamTest, stop_dropsWhatWaits)
{
    EventListener listener(GetParam(), {tree.path()}, std::chrono::milliseconds(300));
    tree.makeFile("file");
    listener.stream->stop();
    EXPECT_FALSE(runEventLoopUntil([&] { return !listener.heard.empty(); }, std::chrono::milliseconds(600)));
}

TEST_P(FSEventStreamTest, stream_mayBeStoppedInItsCallback)
{
    tree.makeFolder("sub");
    EventListener listener(GetParam(), {tree.path()});
    listener.inCallback = [&] { listener.stream->stop(); };
    tree.makeFile("sub/file");
    ASSERT_TRUE(listener.waitFor(tree.path("sub")));
    tree.makeFile("sub/another");
    EXPECT_FALSE(runEventLoopUntil([&] { return listener.batches.size() > 1; }, std::chrono::milliseconds(300)));
    listener.inCallback = nullptr;
    ASSERT_FALSE(listener.start());
    listener.settle();
    tree.makeFile("sub/third");
    EXPECT_TRUE(listener.waitFor(tree.path("sub")));
}

TEST_P(FSEventStreamTest, stream_mayEndInItsCallback)
{
    tree.makeFolder("sub");
    EventListener listener(GetParam(), {tree.path()});
    const std::weak_ptr<FSEventStream> stream = listener.stream;
    listener.inCallback = [&] {
        listener.stream->invalidate();
        listener.stream.reset();
        EXPECT_FALSE(stream.expired()); // the callback's own
    };
    tree.makeFile("sub/file");
    ASSERT_TRUE(listener.waitFor(tree.path("sub")));
    drainEventLoop();
    EXPECT_TRUE(stream.expired());
}

TEST_P(FSEventStreamTest, stream_mayEndWhileADeliveryIsOnItsWay)
{
    for (int round = 0; round < 20; ++round) {
        EventListener listener(GetParam(), {tree.path()}, std::chrono::seconds(0));
        tree.makeFile(QByteArray::number(round));
        std::this_thread::sleep_for(std::chrono::milliseconds(round % 5));
        listener.stream.reset();
        drainEventLoop();
        EXPECT_TRUE(listener.heard.empty());
    }
}

TEST_P(FSEventStreamTest, callbacks_comeOnTheThreadOfTheStream)
{
    tree.makeFolder("sub");
    std::thread::id heardOn;
    std::thread::id startedOn;
    std::jthread([&] {
        startedOn = std::this_thread::get_id();
        const QEventLoop loop; // gives the thread what timers need
        EventListener listener(GetParam(), {tree.path()});
        listener.inCallback = [&] { heardOn = std::this_thread::get_id(); };
        tree.makeFile("sub/file");
        EXPECT_TRUE(listener.waitFor(tree.path("sub")));
    }).join();
    EXPECT_EQ(heardOn, startedOn);
    EXPECT_NE(heardOn, std::this_thread::get_id());
}

TEST_P(FSEventStreamTest, start_fails_unlessScheduledAndStopped)
{
    EventListener listener(GetParam(), {tree.path()});
    EXPECT_EQ(listener.start().code(), paramErr);
    listener.stream->invalidate();
    EXPECT_EQ(listener.start().code(), paramErr);
    listener.stream->scheduleWithRunLoop();
    EXPECT_FALSE(listener.start());
}

TEST(FSEventStreamCreation, create_refusesWhatMakesNoSense)
{
    const FSEventStreamCallback callback = [](ConstFSEventStreamRef, void *, std::size_t, void *,
                                              const FSEventStreamEventFlags *, const FSEventStreamEventId *) {};
    const auto code = [](const auto &result) { return result.error().code(); };
    using Seconds = std::chrono::duration<double>;
    const auto now = kFSEventStreamEventIdSinceNow;
    EXPECT_EQ(code(FSEventStream::create(nullptr, {}, {"/"}, now, Seconds(0), 0)), paramErr);
    EXPECT_EQ(code(FSEventStream::create(callback, {}, {}, now, Seconds(0), 0)), paramErr);
    EXPECT_EQ(code(FSEventStream::create(callback, {}, {"tmp"}, now, Seconds(0), 0)), paramErr);
    EXPECT_EQ(code(FSEventStream::create(callback, {}, {"/"}, 17, Seconds(0), 0)), paramErr);
    EXPECT_EQ(code(FSEventStream::create(callback, {}, {"/"}, now, Seconds(-1), 0)), paramErr);
    const Seconds never(std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(code(FSEventStream::create(callback, {}, {"/"}, now, never, 0)), paramErr);
    EXPECT_EQ(code(FSEventStream::create(callback, {}, {"/"}, now, Seconds(0), 2)), paramErr);
    EXPECT_TRUE(FSEventStream::create(callback, {}, {"/"}, now, Seconds(0), 0).hasValue());
}

TEST(FSEventStreamCreation, start_takesWhatTheSystemPermits)
{
    const TemporaryTree tree;
    ASSERT_EQ(::chmod(tree.path().constData(), 0777), 0);
    std::size_t events = 0;
    const FSEventStreamCallback count = [](ConstFSEventStreamRef, void *info, std::size_t number, void *,
                                           const FSEventStreamEventFlags *, const FSEventStreamEventId *) {
        *static_cast<std::size_t *>(info) += number;
    };
    const auto stream = FSEventStream::create(count, {&events, {}}, {tree.path()}, kFSEventStreamEventIdSinceNow,
                                              std::chrono::milliseconds(1), kFSEventStreamCreateFlagNone);
    ASSERT_TRUE(stream.hasValue());
    (*stream)->scheduleWithRunLoop();
    const WithoutRootRights normalUser;
    ASSERT_FALSE((*stream)->start());
    tree.makeFile("file");
    EXPECT_TRUE(runEventLoopUntil([&] { return events > 0; }));
}

} // namespace Tessaron::Testing
