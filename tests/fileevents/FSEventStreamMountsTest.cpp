#include "tests/fileevents/EventListener.h"
#include "tests/support/EventLoop.h"
#include "tests/support/MountTest.h"

#include <QFile>

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>

namespace Tessaron::Testing
{

/// Each step answers its number when what it waits for does not come.
class FSEventStreamMountsTest : public MountTest
{
public:
    int mountInsideARoot(Mechanism mechanism) const
    {
        const QByteArray point = tree.path("root/point");
        EventListener listener(mechanism, {tree.path("root")});
        if (::mount("none", point.constData(), "tmpfs", 0, nullptr) != 0)
            return mayNotMount;
        if (!listener.waitFor(point, kFSEventStreamEventFlagMount))
            return 1;
        // The watch may be set a little later than that is told: then the folder is told again.
        if (!listener.waitFor(point, kFSEventStreamEventFlagMustScanSubDirs))
            return 2;
        listener.forget();
        tree.makeFile("root/point/sub/file");
        if (!listener.waitFor(tree.path("root/point/sub")) && !listener.hasHeardOf(point))
            return 3;
        listener.forget();
        // Watching does not keep a volume from being unmounted.
        if (::umount(point.constData()) != 0)
            return 4;
        if (!listener.waitFor(point, kFSEventStreamEventFlagUnmount))
            return 5;
        listener.forget();
        tree.makeFile("root/point/below");
        return listener.waitFor(point) ? 0 : 6;
    }

    int mountOverARoot(Mechanism mechanism) const
    {
        const QByteArray root = tree.path("root");
        EventListener listener(mechanism, {root});
        if (::mount("none", root.constData(), "tmpfs", 0, nullptr) != 0)
            return mayNotMount;
        if (!listener.waitFor(root, kFSEventStreamEventFlagRootChanged))
            return 1;
        listener.forget();
        tree.makeFile("root/file");
        return listener.waitFor(root) ? 0 : 2;
    }

    void forEachMechanism(int (FSEventStreamMountsTest::*steps)(Mechanism) const) const
    {
        tree.makeFolder("root/point");
        for (const Mechanism mechanism : {Mechanism::Fanotify, Mechanism::Inotify}) {
            SCOPED_TRACE(mechanism == Mechanism::Fanotify ? "fanotify" : "inotify");
            if (reasonWhyNot(mechanism, tree.path()).empty())
                runApart([&] { return (this->*steps)(mechanism); });
        }
    }
};

TEST_F(FSEventStreamMountsTest, whatIsMountedInsideARoot_isToldOf_andWatched)
{
    forEachMechanism(&FSEventStreamMountsTest::mountInsideARoot);
}

TEST_F(FSEventStreamMountsTest, whatIsMountedOverARoot_isTheRootFromThenOn)
{
    forEachMechanism(&FSEventStreamMountsTest::mountOverARoot);
}

TEST_F(FSEventStreamMountsTest, tooManyFolders_areToldOf_withWhatToDo)
{
    for (int folder = 0; folder < 20; ++folder)
        tree.makeFolder(QByteArray::number(folder));
    runApart([this] {
        if (::unshare(CLONE_NEWUSER) != 0)
            return mayNotMount;
        QFile limit(QStringLiteral("/proc/sys/user/max_inotify_watches"));
        if (!limit.open(QIODevice::WriteOnly) || limit.write("10") != 2 || !limit.flush())
            return mayNotMount;
        EventListener listener(Mechanism::Inotify, {tree.path()});
        if (listener.problems.size() != 1)
            return 1;
        if (!listener.problems[0].localizedRecoverySuggestion().contains(QStringLiteral("fs.inotify.max_user_watches")))
            return 2;
        // What could be watched still is, and what could not has been named.
        tree.makeFile("file");
        if (!listener.waitFor(tree.path()))
            return 3;
        tree.makeFile("new/file");
        return listener.waitFor(tree.path("new"),
                                kFSEventStreamEventFlagMustScanSubDirs | kFSEventStreamEventFlagUserDropped)
            ? 0
            : 5;
    });
}

} // namespace Tessaron::Testing
