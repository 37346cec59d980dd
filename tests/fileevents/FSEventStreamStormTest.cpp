#include "platform/fileevents/FileEventRecord.h"
#include "platform/fileevents/WatchedRoots.h"
#include "tests/fileevents/EventListener.h"
#include "tests/support/EventLoop.h"
#include "tests/support/FewDescriptors.h"
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

FileEventRecord::Batch takeAll(FileEventRecord &record)
{
    record.handOver({});
    return record.take();
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
    (void)takeAll(record);
    // Without a thread that listens the queue is full for certain.
    makeAndRemove(tree.path("sub"), length + 100);
    const auto readAll = [&] {
        for (int turn = 0; turn < 100; ++turn) {
            source->readEvents();
            while (source->watchMore()) { }
        }
    };
    readAll();
    const FileEventRecord::Batch storm = takeAll(record);
    ASSERT_EQ(storm.events.size(), 1u);
    EXPECT_EQ(storm.events[0].path, tree.path() + '/');
    EXPECT_EQ(storm.events[0].flags & droppedByKernel, droppedByKernel);
    // Folders whose making was lost are watched, too.
    tree.makeFile("sub/file");
    readAll();
    const FileEventRecord::Batch later = takeAll(record);
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

/// A source that is driven by hand: its events are read when the test says so, with as many descriptors as it leaves.
class FileEventSourceFailure : public EachMechanism
{
protected:
    void begin()
    {
        roots.resolve();
        source = makeSource(GetParam());
        ASSERT_FALSE(source->begin(roots, record, currentMounts()));
        record.setRoots(roots.places());
    }

    WatchedRoots roots{{tree.path()}};
    FileEventRecord record;
    std::unique_ptr<FileEventSource> source;
};
INSTANTIATE_TEST_SUITE_P(With, FileEventSourceFailure, testing::Values(Mechanism::Fanotify, Mechanism::Inotify),
                         nameOfMechanism);

TEST_P(FileEventSourceFailure, event_isToldOf_alsoWhenNoDescriptorIsLeftToFindItsPlace)
{
    tree.makeFolder("sub");
    begin();
    source->continueOnThread();
    while (source->watchMore()) { }
    int heard = 0;
    for (int descriptors = 0; descriptors < 8; ++descriptors) {
        (void)takeAll(record);
        tree.makeFile("sub/file" + QByteArray::number(descriptors));
        {
            const FewDescriptors few(descriptors);
            source->readEvents();
        }
        const FileEventRecord::Batch batch = takeAll(record);
        ASSERT_EQ(batch.events.size(), 1u) << descriptors;
        if (batch.events[0].path == tree.path("sub") + '/') {
            ++heard;
            continue;
        }
        EXPECT_EQ(batch.events[0].path, tree.path() + '/') << descriptors;
        EXPECT_EQ(batch.events[0].flags, kFSEventStreamEventFlagMustScanSubDirs | kFSEventStreamEventFlagUserDropped);
    }
    EXPECT_GE(heard, 1);
    if (GetParam() == Mechanism::Fanotify) {
        EXPECT_LE(heard, 5) << "without descriptors the place cannot be found";
    }
}

/// The other service marks whole file systems, not the folders on the way.
class InotifySourceFailure : public FileEventSourceFailure
{
};
INSTANTIATE_TEST_SUITE_P(With, InotifySourceFailure, testing::Values(Mechanism::Inotify), nameOfMechanism);

TEST_P(InotifySourceFailure, wayToARoot_thatCannotBeWatched_isAProblem)
{
    begin();
    {
        const FewDescriptors none(0);
        source->continueOnThread();
    }
    const FileEventRecord::Batch batch = takeAll(record);
    ASSERT_FALSE(batch.problems.empty());
    EXPECT_TRUE(batch.problems[0].localizedFailureReason().contains(QStringLiteral("Too many open files")))
        << qUtf8Printable(batch.problems[0].localizedFailureReason());
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
    const FileEventRecord::Batch batch = takeAll(record);
    ASSERT_FALSE(batch.events.empty());
    EXPECT_EQ(batch.events.back().path, tree.path() + '/');
    EXPECT_NE(batch.events.back().flags & kFSEventStreamEventFlagUserDropped, 0u);
}

} // namespace Tessaron::Testing
