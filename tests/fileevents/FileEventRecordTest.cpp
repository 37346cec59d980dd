#include "platform/fileevents/FileEventRecord.h"

#include "platform/fileevents/WatchedRoots.h"
#include "tests/support/TemporaryTree.h"

#include <cerrno>
#include <gtest/gtest.h>

namespace Tessaron::Testing
{

namespace
{

constexpr FSEventStreamEventFlags droppedHere =
    kFSEventStreamEventFlagMustScanSubDirs | kFSEventStreamEventFlagUserDropped;

FileEventRecord::Batch takeAll(FileEventRecord &record)
{
    record.handOver({});
    return record.take();
}

} // namespace

TEST(FileEventRecord, take_givesEachFolderOnce_inTheOrderOfTheLastChange)
{
    FileEventRecord record;
    record.add("/one", kFSEventStreamEventFlagNone);
    record.add("/", kFSEventStreamEventFlagNone);
    record.add("/one", kFSEventStreamEventFlagMustScanSubDirs);
    const FileEventRecord::Batch batch = takeAll(record);
    ASSERT_EQ(batch.events.size(), 2u);
    EXPECT_EQ(batch.events[0].path, "/");
    EXPECT_EQ(batch.events[1].path, "/one/");
    EXPECT_EQ(batch.events[1].flags, kFSEventStreamEventFlagMustScanSubDirs);
    EXPECT_EQ(batch.events[1].identifier, batch.events[0].identifier + 1);
    EXPECT_TRUE(takeAll(record).events.empty());
}

TEST(FileEventRecord, waitsSince_isTheFirstChange_untilADeliveryIsOnItsWay)
{
    FileEventRecord record;
    EXPECT_FALSE(record.waitsSince());
    const auto before = std::chrono::steady_clock::now();
    record.add("/one", kFSEventStreamEventFlagNone);
    const auto since = record.waitsSince();
    ASSERT_TRUE(since);
    EXPECT_GE(*since, before);
    record.add("/two", kFSEventStreamEventFlagNone);
    EXPECT_EQ(record.waitsSince(), since);
    record.handOver({});
    EXPECT_FALSE(record.waitsSince());
    record.add("/three", kFSEventStreamEventFlagNone);
    EXPECT_FALSE(record.waitsSince());
    EXPECT_EQ(takeAll(record).events.size(), 3u);
    record.add("/four", kFSEventStreamEventFlagNone);
    EXPECT_TRUE(record.waitsSince());
}

TEST(FileEventRecord, moreThanItKeeps_becomesAnEventOfEachRoot)
{
    FileEventRecord record(10000);
    record.setRoots({"/a", "/b"});
    record.add("/a", kFSEventStreamEventFlagRootChanged);
    record.add("/a/mounted", kFSEventStreamEventFlagMount);
    for (int folder = 0; folder < 1000; ++folder)
        record.add("/a/" + QByteArray::number(folder), kFSEventStreamEventFlagNone);
    const FileEventRecord::Batch batch = takeAll(record);
    ASSERT_EQ(batch.events.size(), 3u);
    EXPECT_EQ(batch.events[0].path, "/a/mounted/");
    EXPECT_EQ(batch.events[0].flags, kFSEventStreamEventFlagMount);
    EXPECT_EQ(batch.events[1].path, "/a/");
    EXPECT_EQ(batch.events[1].flags, droppedHere | kFSEventStreamEventFlagRootChanged);
    EXPECT_EQ(batch.events[2].path, "/b/");
    EXPECT_EQ(batch.events[2].flags, droppedHere);
    record.add("/a/new", kFSEventStreamEventFlagNone);
    EXPECT_EQ(takeAll(record).events.size(), 1u);
}

TEST(FileEventRecord, lost_keepsWhatOtherEventsSaid)
{
    FileEventRecord record;
    record.setRoots({"/"});
    record.add("/unwatched", droppedHere);
    record.lost(kFSEventStreamEventFlagKernelDropped);
    const FileEventRecord::Batch batch = takeAll(record);
    ASSERT_EQ(batch.events.size(), 1u);
    EXPECT_EQ(batch.events[0].path, "/");
    EXPECT_EQ(batch.events[0].flags, droppedHere | kFSEventStreamEventFlagKernelDropped);
}

TEST(FileEventRecord, problems_doNotWait_andTheLastSaysThatThereAreMore)
{
    FileEventRecord record;
    for (std::size_t problem = 0; problem <= FileEventRecord::mostProblems; ++problem)
        record.addProblem(NSError(NSOSStatusErrorDomain, static_cast<qint64>(problem) + 1));
    EXPECT_EQ(record.waitsSince(), std::chrono::steady_clock::time_point());
    const FileEventRecord::Batch batch = takeAll(record);
    ASSERT_EQ(batch.problems.size(), FileEventRecord::mostProblems);
    EXPECT_EQ(batch.problems[0].code(), 1);
    EXPECT_EQ(batch.problems.back().localizedDescription(),
              QStringLiteral("More cannot be watched than is told here."));
    EXPECT_FALSE(record.waitsSince());
}

TEST(FileEventRecord, problem_doesNotHurryTheEventsThatWait)
{
    FileEventRecord record;
    record.add("/one", kFSEventStreamEventFlagNone);
    const auto since = record.waitsSince();
    record.addProblem(NSError(NSOSStatusErrorDomain, 1));
    record.handOver(std::chrono::hours(1));
    EXPECT_EQ(record.waitsSince(), since) << "the events wait on";
    record.addProblem(NSError(NSOSStatusErrorDomain, 2));
    const FileEventRecord::Batch problems = record.take();
    EXPECT_EQ(problems.problems.size(), 2u);
    EXPECT_TRUE(problems.events.empty());
    EXPECT_EQ(record.waitsSince(), since);
    const FileEventRecord::Batch events = takeAll(record);
    EXPECT_TRUE(events.problems.empty());
    ASSERT_EQ(events.events.size(), 1u);
    EXPECT_EQ(events.events[0].path, "/one/");
    EXPECT_FALSE(record.waitsSince());
}

TEST(FileEventRecord, handOverThatFailed_isAskedForAgain)
{
    FileEventRecord record;
    record.add("/one", kFSEventStreamEventFlagNone);
    record.addProblem(NSError(NSOSStatusErrorDomain, 1));
    record.handOver({});
    EXPECT_FALSE(record.waitsSince());
    record.handOverHasFailed();
    EXPECT_TRUE(record.waitsSince());
    EXPECT_EQ(takeAll(record).events.size(), 1u);
}

TEST(WatchedRoots, resolve_followsLinks_andKnowsTheWay)
{
    const TemporaryTree tree;
    tree.makeFolder("real/folder");
    tree.makeSymbolicLink("second", "real");
    tree.makeSymbolicLink("first", tree.path("second"));
    WatchedRoots roots({tree.path("./first//folder/../folder")});
    roots.resolve();
    EXPECT_EQ(roots.roots()[0].real, tree.path("real/folder"));
    EXPECT_TRUE(roots.contains(tree.path("real/folder/below")));
    EXPECT_FALSE(roots.contains(tree.path("real/folders")));
    EXPECT_TRUE(roots.leadsThrough(tree.path("real")));
    for (const char *entry : {"first", "second", "real", "real/folder"}) {
        roots.resolve();
        EXPECT_FALSE(roots.haveChanged());
        roots.entryHasChanged(tree.path(entry));
        EXPECT_TRUE(roots.haveChanged()) << entry;
    }
    roots.resolve();
    roots.entryHasChanged(tree.path("real/other"));
    EXPECT_FALSE(roots.haveChanged());
}

TEST(WatchedRoots, resolve_saysWhyAPathLeadsNowhere)
{
    const TemporaryTree tree;
    tree.makeFile("file");
    tree.makeSymbolicLink("circle", "circle");
    WatchedRoots roots({tree.path("missing/below"), tree.path("file"), tree.path("circle"), "/"});
    roots.resolve();
    EXPECT_EQ(roots.roots()[0].error, ENOENT);
    EXPECT_EQ(roots.roots()[1].error, ENOTDIR);
    EXPECT_EQ(roots.roots()[2].error, ELOOP);
    EXPECT_EQ(roots.roots()[3].error, 0);
    EXPECT_EQ(roots.roots()[3].real, "/");
    EXPECT_EQ(roots.places(),
              (std::vector<QByteArray>{tree.path("missing/below"), tree.path("file"), tree.path("circle"), "/"}));
}

} // namespace Tessaron::Testing
