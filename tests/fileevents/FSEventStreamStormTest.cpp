#include "platform/fileevents/FileEventRecord.h"
#include "platform/fileevents/WatchedRoots.h"
#include "tests/fileevents/EventListener.h"
#include "tests/support/EventLoop.h"
#include "tests/support/MeasurableMemory.h"

#include <QFile>

#include <algorithm>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaron::Testing
{

namespace
{

/// The events that the kernel keeps for a reader.
int lengthOfQueue(Mechanism mechanism)
{
    QFile limit(QLatin1String(mechanism == Mechanism::Fanotify ? "/proc/sys/fs/fanotify/max_queued_events"
                                                               : "/proc/sys/fs/inotify/max_queued_events"));
    return limit.open(QIODevice::ReadOnly) ? limit.readAll().trimmed().toInt() : 16384;
}

/// A name of its own for each file; what happens to the same name fanotify makes one event of.
void makeAndRemove(const QByteArray &folder, int files)
{
    for (int file = 0; file < files; ++file) {
        const QByteArray path = folder + '/' + QByteArray::number(file);
        const int descriptor = ::open(path.constData(), O_CREAT | O_WRONLY | O_CLOEXEC, 0644);
        ASSERT_GE(descriptor, 0) << path.constData();
        ::close(descriptor);
        ASSERT_EQ(::unlink(path.constData()), 0);
    }
}

std::int64_t mostMemoryUntilNow()
{
    rusage usage = {};
    ::getrusage(RUSAGE_SELF, &usage);
    return static_cast<std::int64_t>(usage.ru_maxrss) * 1024;
}

constexpr FSEventStreamEventFlags droppedByKernel =
    kFSEventStreamEventFlagMustScanSubDirs | kFSEventStreamEventFlagKernelDropped;

} // namespace

using FSEventStreamStormTest = EachMechanism;
INSTANTIATE_TEST_SUITE_P(With, FSEventStreamStormTest, testing::Values(Mechanism::Fanotify, Mechanism::Inotify),
                         nameOfMechanism);

TEST_P(FSEventStreamStormTest, moreThanTheKernelKeeps_isAnEventThatSaysSo)
{
    const int length = lengthOfQueue(GetParam());
    if (length > 200000)
        GTEST_SKIP() << "the kernel keeps " << length << " events here";
    tree.makeFolder("sub");
    WatchedRoots roots({tree.path()});
    roots.resolve();
    FileEventRecord record;
    const std::unique_ptr<FileEventSource> source = makeSource(GetParam());
    ASSERT_FALSE(source->begin(roots, record, currentMounts()));
    record.setRoots(roots.places());
    source->continueOnThread();
    while (source->watchMore()) { }
    (void)record.take();
    // Without a thread that listens the queue is full for certain.
    makeAndRemove(tree.path("sub"), length + 100);
    const auto readAll = [&] {
        for (int turn = 0; turn < 100; ++turn) {
            source->readEvents();
            while (source->watchMore()) { }
        }
    };
    readAll();
    const FileEventRecord::Batch storm = record.take();
    ASSERT_EQ(storm.events.size(), 1u);
    EXPECT_EQ(storm.events[0].path, tree.path() + '/');
    EXPECT_EQ(storm.events[0].flags & droppedByKernel, droppedByKernel);
    // Folders whose making was lost are watched, too.
    tree.makeFile("sub/file");
    readAll();
    const FileEventRecord::Batch later = record.take();
    ASSERT_EQ(later.events.size(), 1u);
    EXPECT_EQ(later.events[0].path, tree.path("sub") + '/');
}

TEST_P(FSEventStreamStormTest, foldersMadeInAStorm_areWatchedAfterIt)
{
    constexpr int folders = 2000;
    EventListener listener(GetParam(), {tree.path()});
    for (int folder = 0; folder < folders; ++folder)
        ASSERT_EQ(::mkdir(tree.path("new" + QByteArray::number(folder)).constData(), 0755), 0);
    tree.makeFile("new1999/first");
    ASSERT_TRUE(runEventLoopUntil([&] {
        return listener.hasHeardOf(tree.path("new1999")) || listener.hasHeardOf(tree.path(), droppedByKernel);
    }));
    for (const int folder : {0, 1000, folders - 1}) {
        listener.forget();
        const QByteArray name = "new" + QByteArray::number(folder);
        tree.makeFile(name + "/file");
        EXPECT_TRUE(listener.waitFor(tree.path(name)));
    }
}

TEST_P(FSEventStreamStormTest, aHundredThousandEvents_costBoundedMemory_andAreToldInAFewOfTheStream)
{
    constexpr int files = 50000;
    tree.makeFolder("sub");
    EventListener listener(GetParam(), {tree.path()}, std::chrono::milliseconds(50));
    const std::int64_t before = mostMemoryUntilNow();
    // The event loop stands still meanwhile, as that of a program at work.
    makeAndRemove(tree.path("sub"), files);
    ASSERT_TRUE(runEventLoopUntil(
        [&] { return listener.hasHeardOf(tree.path("sub")) || listener.hasHeardOf(tree.path(), droppedByKernel); }));
    EXPECT_LE(listener.heard.size(), 10u);
    if (memoryIsMeasurable) {
        EXPECT_LE(mostMemoryUntilNow() - before, 4 * 1024 * 1024);
    }
    // Nothing is stuck.
    tree.makeFolder("another");
    listener.forget();
    tree.makeFile("another/file");
    EXPECT_TRUE(listener.waitFor(tree.path("another")));
}

TEST(FileEventRecordStorm, aHundredThousandFolders_costBoundedMemory_onAThreadThatDoesNotListen)
{
    const TemporaryTree tree;
    FileEventRecord record;
    record.setRoots({tree.path()});
    const std::int64_t before = mostMemoryUntilNow();
    for (int folder = 0; folder < 100000; ++folder)
        record.add(tree.path(QByteArray(100, 'n') + QByteArray::number(folder)), kFSEventStreamEventFlagNone);
    if (memoryIsMeasurable) {
        EXPECT_LE(mostMemoryUntilNow() - before, 2 * static_cast<std::int64_t>(FileEventRecord::mostBytesByDefault));
    }
    const FileEventRecord::Batch batch = record.take();
    ASSERT_FALSE(batch.events.empty());
    EXPECT_EQ(batch.events.back().path, tree.path() + '/');
    EXPECT_NE(batch.events.back().flags & kFSEventStreamEventFlagUserDropped, 0u);
}

} // namespace Tessaron::Testing
