#include "platform/coreservices/PathAccess.h"
#include "tests/fileevents/EventListener.h"
#include "tests/support/EventLoop.h"

#include <QDir>

#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaron::Testing
{

namespace
{

void move(const QByteArray &from, const QByteArray &to)
{
    ASSERT_EQ(std::rename(from.constData(), to.constData()), 0) << from.constData();
}

constexpr FSEventStreamEventFlags leadsElsewhere =
    kFSEventStreamEventFlagRootChanged | kFSEventStreamEventFlagMustScanSubDirs;

} // namespace

using FSEventStreamRootsTest = EachMechanism;
INSTANTIATE_TEST_SUITE_P(With, FSEventStreamRootsTest, testing::Values(Mechanism::Fanotify, Mechanism::Inotify),
                         nameOfMechanism);

TEST_P(FSEventStreamRootsTest, rootThatIsRemoved_isToldOf_andWatchedWhenItIsMadeAgain)
{
    tree.makeFile("root/sub/file");
    EventListener listener(GetParam(), {tree.path("root")});
    ASSERT_TRUE(QDir(tree.pathText("root")).removeRecursively());
    EXPECT_TRUE(listener.waitFor(tree.path("root"), leadsElsewhere));
    ASSERT_TRUE(runEventLoopUntil([&] { return !listener.problems.empty(); }));
    EXPECT_EQ(listener.problems[0].filePath(), tree.pathText("root"));
    EXPECT_FALSE(listener.problems[0].localizedFailureReason().isEmpty());
    EXPECT_FALSE(listener.problems[0].localizedRecoverySuggestion().isEmpty());
    listener.forget();
    tree.makeFolder("root/sub");
    EXPECT_TRUE(listener.waitFor(tree.path("root"), leadsElsewhere));
    listener.forget();
    tree.makeFile("root/sub/file");
    EXPECT_TRUE(listener.waitFor(tree.path("root/sub")));
}

TEST_P(FSEventStreamRootsTest, rootThatIsReplaced_isToldOf_andTheNewOneIsWatched)
{
    tree.makeFile("root/sub/file");
    tree.makeFile("new/sub/file");
    tree.makeFolder("quiet");
    EventListener listener(GetParam(), {tree.path("root"), tree.path("quiet")});
    move(tree.path("root"), tree.path("old"));
    move(tree.path("new"), tree.path("root"));
    EXPECT_TRUE(listener.waitFor(tree.path("root"), leadsElsewhere));
    ASSERT_TRUE(listener.waitForTheRest(tree, "quiet"));
    listener.forget();
    tree.makeFile("old/sub/another");
    tree.makeFile("root/sub/another");
    EXPECT_TRUE(listener.waitFor(tree.path("root/sub")));
    EXPECT_FALSE(listener.hasHeardFromInside(tree.path("old")));
}

TEST_P(FSEventStreamRootsTest, folderOnTheWay_thatIsRenamed_isToldOfAsTheRoot)
{
    tree.makeFolder("way/root/sub");
    EventListener listener(GetParam(), {tree.path("way/root")});
    move(tree.path("way"), tree.path("elsewhere"));
    EXPECT_TRUE(listener.waitFor(tree.path("way/root"), leadsElsewhere));
    listener.forget();
    move(tree.path("elsewhere"), tree.path("way"));
    EXPECT_TRUE(listener.waitFor(tree.path("way/root"), leadsElsewhere));
    listener.forget();
    tree.makeFile("way/root/sub/file");
    EXPECT_TRUE(listener.waitFor(tree.path("way/root/sub")));
}

TEST_P(FSEventStreamRootsTest, rootThatIsNotThere_isToldOf_andWatchedWhenItComes)
{
    tree.makeFolder("quiet");
    EventListener listener(GetParam(), {tree.path("way/to/root"), tree.path("quiet")});
    ASSERT_TRUE(runEventLoopUntil([&] { return !listener.problems.empty(); }));
    EXPECT_EQ(listener.problems[0].filePath(), tree.pathText("way/to/root"));
    tree.makeFolder("way/to/root");
    EXPECT_TRUE(listener.waitFor(tree.path("way/to/root"), leadsElsewhere));
    // The folders on the way may have been seen one by one.
    ASSERT_TRUE(listener.waitForTheRest(tree, "quiet"));
    listener.forget();
    tree.makeFile("way/to/root/sub/file");
    EXPECT_TRUE(listener.waitFor(tree.path("way/to/root/sub")));
}

TEST_P(FSEventStreamRootsTest, rootBehindALink_isNamedAsItReallyIs_andFollowsTheLink)
{
    tree.makeFolder("first/sub");
    tree.makeFolder("second/sub");
    tree.makeSymbolicLink("link", "first");
    EventListener listener(GetParam(), {tree.path("link")});
    tree.makeFile("first/sub/file");
    EXPECT_TRUE(listener.waitFor(tree.path("first/sub")));
    listener.forget();
    tree.makeSymbolicLink("other", "second");
    move(tree.path("other"), tree.path("link"));
    EXPECT_TRUE(listener.waitFor(tree.path("link"), leadsElsewhere));
    listener.forget();
    tree.makeFile("first/sub/another");
    tree.makeFile("second/sub/file");
    EXPECT_TRUE(listener.waitFor(tree.path("second/sub")));
    EXPECT_FALSE(listener.hasHeardFromInside(tree.path("first")));
}

TEST_P(FSEventStreamRootsTest, rootThatBecomesAFile_leadsNowhere)
{
    tree.makeFolder("root");
    EventListener listener(GetParam(), {tree.path("root")});
    ASSERT_EQ(::rmdir(tree.path("root").constData()), 0);
    tree.makeFile("root");
    EXPECT_TRUE(listener.waitFor(tree.path("root"), leadsElsewhere));
    EXPECT_TRUE(runEventLoopUntil([&] { return !listener.problems.empty(); }));
}

/// The kernel gives a path of at most 4095 bytes.
TEST_P(FSEventStreamRootsTest, foldersBeyondTheLongestPath_areTold)
{
    QByteArray path = tree.path();
    while (path.size() < 6000) {
        path += '/' + QByteArray(200, 'd');
        const PathAccess access(path);
        ASSERT_EQ(::mkdirat(access.folder(), access.path(), 0755), 0);
    }
    EventListener listener(GetParam(), {tree.path()});
    const PathAccess access(path + "/file");
    ::close(::openat(access.folder(), access.path(), O_CREAT | O_WRONLY | O_CLOEXEC, 0644));
    EXPECT_TRUE(runEventLoopUntil([&] {
        return listener.hasHeardOf(path)
            || listener.hasHeardOf(tree.path(),
                                   kFSEventStreamEventFlagMustScanSubDirs | kFSEventStreamEventFlagUserDropped);
    }));
}

TEST(InotifyLimits, unreadableFolder_isToldOf)
{
    const TemporaryTree tree;
    ASSERT_EQ(::chmod(tree.path().constData(), 0777), 0);
    tree.makeFolder("hidden");
    tree.makeFolder("secret");
    tree.setMode("hidden", 0711);
    tree.setMode("secret", 0711);
    const WithoutRootRights normalUser;
    EventListener listener(Mechanism::Inotify, {tree.path()});
    ASSERT_EQ(listener.problems.size(), 1u);
    EXPECT_TRUE(listener.problems[0].localizedFailureReason().contains(QStringLiteral("it and 1 other folder")));
    tree.makeFile("file");
    EXPECT_TRUE(listener.waitFor(tree.path()));
}

} // namespace Tessaron::Testing
