#include "platform/workspace/NSWorkspace.h"

#include "platform/foundation/FileSystemRepresentation.h"
#include "tests/support/EventLoop.h"
#include "tests/support/TemporaryTree.h"
#include "tests/workspace/FakeSystemServices.h"

#include <QCoreApplication>
#include <QStringList>

#include <gtest/gtest.h>
#include <optional>

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

const QString sr0 = QStringLiteral("sr0"), sr1 = QStringLiteral("sr1");

/// A workspace on the fake bus, and what it notifies of.
class Workspace : public testing::Test
{
protected:
    Workspace()
    {
        for (const QString &name :
             {NSWorkspaceDidMountNotification, NSWorkspaceWillSleepNotification, NSWorkspaceDidWakeNotification}) {
            center.addObserver(this, name, {}, [this](const NSNotification &one) {
                told << one.name + one.userInfo.value(NSDevicePathKey).toString();
                delaysWhenTold = services.heldDelays();
            });
        }
    }
    ~Workspace() override { center.removeObserver(this); }

    [[nodiscard]] static QString mount(const QByteArray &point)
    {
        return NSWorkspaceDidMountNotification + stringWithFileSystemRepresentation(point);
    }
    /// Waits until what was told so far has arrived: services tell in order.
    void settle()
    {
        const auto count = told.size();
        services.tellSleep(false);
        ASSERT_TRUE(
            runEventLoopUntil([&] { return told.size() > count && told.last() == NSWorkspaceDidWakeNotification; }));
        told.removeLast();
    }
    [[nodiscard]] NSError eject(const QString &path)
    {
        std::optional<NSError> result;
        NSWorkspace::sharedWorkspace().unmountAndEjectDeviceAtPath(path, [&](const NSError &error) { result = error; });
        EXPECT_FALSE(result) << "it does not wait";
        EXPECT_TRUE(runEventLoopUntil([&] { return result.has_value(); }));
        return result.value_or(NSError());
    }
    FakeSystemServices services;
    NSNotificationCenter &center = NSWorkspace::sharedWorkspace().notificationCenter();
    const TemporaryTree tree;
    QStringList told;
    int delaysWhenTold = -1;
};

} // namespace

TEST_F(Workspace, mountsOfTheDiskService_areToldOnce)
{
    services.startDisks();
    services.startLogin();
    settle();
    services.tellMountPoints(sr0, {"/media/FILM"});
    services.tellMountPoints(sr0, {"/media/FILM"});
    services.tellOtherChanges(sr0);
    services.tellMountPoints(sr1, {});
    services.tellMountPoints(sr0, {"/media/FILM", "/mnt/f\xfclm"});
    settle();
    EXPECT_EQ(told, QStringList({mount("/media/FILM"), mount("/mnt/f\xfclm")}));
    told.clear();
    services.tellMountPoints(sr0, {});
    services.tellMountPoints(sr1, {"/media/FILM"});
    services.tellMountPoints(sr1, {"", "media"});
    settle();
    EXPECT_EQ(told, QStringList({mount("/media/FILM")})) << "mounted anew, and no path";
}

TEST_F(Workspace, mountsThatTheListHas_areNotToldByTheDiskServiceAgain)
{
    services.startDisks();
    services.startLogin();
    settle();
    services.tellMountPoints(sr0, {"/"});
    settle();
    EXPECT_EQ(told, QStringList());
}

TEST_F(Workspace, sleep_waitsUntilItIsHeard)
{
    services.startLogin();
    ASSERT_TRUE(runEventLoopUntil([&] { return services.heldDelays() == 1; }));
    EXPECT_EQ(services.calls.value(0),
              QStringLiteral("Inhibit /org/freedesktop/login1 sleep ") + QCoreApplication::applicationName()
                  + QStringLiteral(" The DVD is paused before the machine sleeps delay"));
    services.tellSleep(true);
    ASSERT_TRUE(runEventLoopUntil([&] { return services.heldDelays() == 0; }));
    EXPECT_EQ(told, QStringList(NSWorkspaceWillSleepNotification));
    EXPECT_EQ(delaysWhenTold, 1) << "the machine sleeps after it is told";
    services.tellSleep(false);
    ASSERT_TRUE(runEventLoopUntil([&] { return services.heldDelays() == 1; }));
    EXPECT_EQ(told, QStringList({NSWorkspaceWillSleepNotification, NSWorkspaceDidWakeNotification}));
}

TEST_F(Workspace, eject_unmountsAndOpensTheDrive)
{
    services.startDisks();
    services.mountWhereIs(tree.path());
    EXPECT_FALSE(eject(QString::fromUtf8(tree.makeFolder("VIDEO_TS"))));
    EXPECT_EQ(services.calls,
              QStringList({QStringLiteral("GetManagedObjects /org/freedesktop/UDisks2"),
                           QStringLiteral("Unmount /org/freedesktop/UDisks2/block_devices/sr0"),
                           QStringLiteral("Eject /org/freedesktop/UDisks2/drives/Writer")}));
}

TEST_F(Workspace, eject_saysWhatFails)
{
    services.startDisks();
    const QString path = QString::fromUtf8(tree.makeFolder("VIDEO_TS"));
    services.mountPoint = "/media/other";
    EXPECT_EQ(eject(path).localizedFailureReason(), QStringLiteral("it is not in a drive that can be opened"));
    services.mountWhereIs(tree.path());
    services.isEjectable = false;
    EXPECT_EQ(eject(path).localizedFailureReason(), QStringLiteral("it is not in a drive that can be opened"));
    services.isEjectable = true;
    services.refusesUnmount = true;
    const NSError busy = eject(path);
    EXPECT_EQ(busy.localizedFailureReason(), QStringLiteral("target is busy"));
    EXPECT_EQ(busy.filePath(), path);
    EXPECT_TRUE(busy.localizedDescription().contains(path));
    EXPECT_FALSE(services.calls.last().startsWith(QStringLiteral("Eject")));
    EXPECT_EQ(eject(tree.pathText("missing")).localizedFailureReason(), QStringLiteral("there is no such file"));
}

TEST_F(Workspace, eject_withoutTheService_takesDrivesOnly)
{
    EXPECT_EQ(eject(QString::fromUtf8(tree.makeFolder("VIDEO_TS"))).localizedFailureReason(),
              QStringLiteral("it is not in a drive that can be opened"));
    EXPECT_EQ(services.calls, QStringList());
}

TEST(WorkspaceWithoutABus, isQuiet)
{
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus");
    const TemporaryTree tree;
    NSNotificationCenter &center = NSWorkspace::sharedWorkspace().notificationCenter();
    int count = 0;
    center.addObserver(&count, NSWorkspaceDidMountNotification, {}, [&](const auto &) { ++count; });
    drainEventLoop();
    EXPECT_EQ(count, 0);
    center.removeObserver(&count);
    std::optional<NSError> result;
    NSWorkspace::sharedWorkspace().unmountAndEjectDeviceAtPath(tree.pathText(),
                                                               [&](const NSError &error) { result = error; });
    ASSERT_TRUE(runEventLoopUntil([&] { return result.has_value(); }));
    EXPECT_TRUE(*result);
}
