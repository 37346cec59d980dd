#include "platform/discrecording/drives/DriveDescription.h"

#include "tests/support/TemporaryTree.h"

#include <gtest/gtest.h>

namespace Tessaron
{

namespace
{

using Testing::TemporaryTree;

TEST(DriveDescription, allDrives_areReadFromTheSystemsFolders_inTheOrderOfTheirNumbers)
{
    const TemporaryTree tree;
    for (const char *const name : {"sr10", "sr2", "sda"}) {
        const QByteArray folder = QByteArray("block/") + name + "/device/";
        tree.makeFile(folder + "vendor", "MAKER   \n");
        tree.makeFile(folder + "model", "BD-RE X        \n");
        tree.makeFile(folder + "rev", "1.02\n");
    }
    tree.makeFolder("id");
    tree.makeSymbolicLink("id/ata-MAKER_BD-RE_SERIAL", "../../sr2");
    const std::vector<DriveDescription> drives = allDrives(tree.path("block"), tree.path("id"));
    ASSERT_EQ(drives.size(), 2u);
    EXPECT_EQ(drives[0].path, "/dev/sr2");
    EXPECT_EQ(drives[0].vendor, QStringLiteral("MAKER"));
    EXPECT_EQ(drives[0].product, QStringLiteral("BD-RE X"));
    EXPECT_EQ(drives[0].revision, QStringLiteral("1.02"));
    EXPECT_EQ(drives[0].identity, "ata-MAKER_BD-RE_SERIAL");
    EXPECT_EQ(drives[1].path, "/dev/sr10");
    EXPECT_TRUE(drives[1].identity.isEmpty());
}

TEST(DriveDescription, allDrives_isEmpty_withoutTheFolders)
{
    const TemporaryTree tree;
    EXPECT_TRUE(allDrives(tree.path("nothing"), tree.path("nothing")).empty());
}

TEST(DriveDescription, family_followsTheProfile)
{
    EXPECT_EQ(discFamily(0x09), DiscFamily::CDR);
    EXPECT_EQ(discFamily(0x0A), DiscFamily::CDRW);
    EXPECT_EQ(discFamily(0x15), DiscFamily::DVDMinusR);
    EXPECT_EQ(discFamily(0x14), DiscFamily::DVDMinusRW);
    EXPECT_EQ(discFamily(0x13), DiscFamily::Overwritable);
    EXPECT_EQ(discFamily(0x2B), DiscFamily::DVDPlusR);
    EXPECT_EQ(discFamily(0x41), DiscFamily::BDR);
    EXPECT_EQ(discFamily(0x43), DiscFamily::Overwritable);
    EXPECT_EQ(discFamily(0xFFFF), DiscFamily::File);
    for (const std::uint32_t profile : {0x08, 0x10, 0x40, 0x42})
        EXPECT_EQ(discFamily(profile), DiscFamily::ReadOnly) << profile;
}

TEST(DriveDescription, singleSpeed_isThatOfTheKindOfDisc)
{
    EXPECT_EQ(singleSpeed(0x09), 176'400u);
    EXPECT_EQ(singleSpeed(0x1B), 1'385'000u);
    EXPECT_EQ(singleSpeed(0x43), 4'496'000u);
    EXPECT_EQ(singleSpeed(0xFFFF), 0u);
}

} // namespace

} // namespace Tessaron
