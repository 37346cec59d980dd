#include "platform/coreservices/Mounts.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>

namespace Tessaron
{

TEST(Mounts, mountsFromText_readsPointRootAndType)
{
    const std::vector<Mount> mounts = mountsFromText(
        "36 35 98:0 /mnt1 /mnt/My\\040Disc rw,noatime master:1 shared:2 - ext3 /dev/root rw,errors=continue\n"
        "40 35 0:5 / /dev rw - devtmpfs udev rw\n");
    ASSERT_EQ(mounts.size(), 2u);
    EXPECT_EQ(mounts[0].number, 36u);
    EXPECT_EQ(mounts[0].root, "/mnt1");
    EXPECT_EQ(mounts[0].point, "/mnt/My Disc");
    EXPECT_EQ(mounts[0].type, "ext3");
    EXPECT_EQ(mounts[1].point, "/dev");
}

TEST(Mounts, mountsFromText_leavesOutLinesThatMakeNoSense)
{
    EXPECT_TRUE(mountsFromText("").empty());
    EXPECT_TRUE(mountsFromText("36 35 98:0 /mnt1 /mnt2 rw,noatime").empty());
    EXPECT_TRUE(mountsFromText("36 35 98:0 /mnt1 /mnt2 rw -").empty());
    EXPECT_TRUE(mountsFromText("- - - - - - - - -").empty());
    std::mt19937 random(3);
    for (int round = 0; round < 2000; ++round) {
        QByteArray noise(static_cast<qsizetype>(random() % 200), ' ');
        for (char &byte : noise)
            byte = "/-\\ 07\na"[random() % 8];
        for (const Mount &mount : mountsFromText(noise))
            EXPECT_TRUE(mount.point.startsWith('/'));
    }
}

TEST(Mounts, currentMounts_holdTheRootFolder)
{
    const std::vector<Mount> mounts = currentMounts();
    EXPECT_TRUE(std::any_of(mounts.begin(), mounts.end(), [](const Mount &mount) { return mount.point == "/"; }));
}

} // namespace Tessaron
