#include "platform/workspace/MountWatch.h"

#include "tests/support/EventLoop.h"
#include "tests/support/MountTest.h"
#include "tests/support/RunProgram.h"

#include <QByteArrayList>

#include <algorithm>
#include <gtest/gtest.h>
#include <sys/mount.h>

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

Mount mountOfType(const QByteArray &type, const QByteArray &root = "/")
{
    Mount mount;
    mount.type = type;
    mount.root = root;
    mount.point = "/media/disc";
    return mount;
}

} // namespace

TEST(Volumes, areWhatPeopleMount)
{
    for (const char *const type : {"udf", "iso9660", "ext4", "btrfs", "vfat", "fuse", "fuseblk", "fuse.bindfs", "nfs4"})
        EXPECT_TRUE(isVolume(mountOfType(type))) << type;
    for (const char *const type : {"proc", "sysfs", "tmpfs", "cgroup2", "overlay", "nsfs", "autofs", "fusectl", ""})
        EXPECT_FALSE(isVolume(mountOfType(type))) << type;
    EXPECT_FALSE(isVolume(mountOfType("ext4", "/home"))) << "a part, mounted once more";
}

class MountWatchTest : public MountTest
{
};

TEST_F(MountWatchTest, tellsVolumesThatAreMounted_onceEach)
{
    const QByteArray disc = tree.makeFolder("disc"), point = tree.makeFolder("a point"),
                     other = tree.makeFolder("other");
    tree.makeFile("disc/file");
    runApart([&] {
        QByteArrayList told;
        MountWatch watch([&told](const QByteArray &mountPoint) { told << mountPoint; });
        if (runProgram("bindfs", {"--no-allow-other", disc, point}).status != 0)
            return mayNotMount;
        if (!runEventLoopUntil([&] { return !told.isEmpty(); }) || told != QByteArrayList{point})
            return 1;
        if (!watch.holds(point) || watch.holds(other))
            return 2;
        if (::mount("none", other.constData(), "tmpfs", 0, nullptr) != 0)
            return mayNotMount;
        if (!runEventLoopUntil([&] { return watch.holds(other); }) || told.size() != 1)
            return 3; // memory is not a volume
        if (::umount2(point.constData(), MNT_DETACH) != 0 || !runEventLoopUntil([&] { return !watch.holds(point); }))
            return 4;
        if (runProgram("bindfs", {"--no-allow-other", disc, point}).status != 0
            || !runEventLoopUntil([&] { return told.size() == 2; }))
            return 5;
        watch.look();
        drainEventLoop();
        ::umount2(point.constData(), MNT_DETACH);
        return told == QByteArrayList({point, point}) ? 0 : 6;
    });
}
