#include "platform/discrecording/drives/DriveAddress.h"

#include "tests/support/TemporaryTree.h"

#include <gtest/gtest.h>

namespace Tessaron
{

namespace
{

using Testing::TemporaryTree;

TEST(DriveAddress, regularFile_standsForADrive_whenItIsCalledOne)
{
    const TemporaryTree tree;
    const QByteArray path = tree.makeFile("disc.img", "old");
    const Result<DriveAddress> address = driveAddress("stdio:" + path, DriveFileIs::There);
    ASSERT_TRUE(address);
    EXPECT_EQ(address->kind, DriveAddress::Kind::File);
    EXPECT_EQ(address->path, path);
    EXPECT_FALSE(driveAddress(path, DriveFileIs::There)) << "without the prefix it is meant as a drive";
}

TEST(DriveAddress, missingFile_isTaken_onlyWhereItMayBeNew)
{
    const TemporaryTree tree;
    const QByteArray address = "stdio:" + tree.path("new.img");
    EXPECT_TRUE(driveAddress(address, DriveFileIs::ThereOrNew));
    EXPECT_FALSE(driveAddress(address, DriveFileIs::There));
    EXPECT_FALSE(tree.exists("new.img"));
}

TEST(DriveAddress, everythingElse_isRefused_withWhatToNameInstead)
{
    const TemporaryTree tree;
    tree.makeFolder("folder");
    tree.makeFifo("fifo");
    const QByteArrayList addresses = {"stdio:" + tree.path("folder"),
                                      "stdio:" + tree.path("fifo"),
                                      "stdio:/dev/null",
                                      "stdio:/dev/full",
                                      "stdio:",
                                      "stdio:-",
                                      "stdio:/dev/fd/1",
                                      "/dev/null",
                                      tree.path("folder"),
                                      "/dev/no such drive",
                                      ""};
    for (const QByteArray &address : addresses) {
        const Result<DriveAddress> result = driveAddress(address, DriveFileIs::There);
        ASSERT_FALSE(result) << address.constData();
        EXPECT_FALSE(result.error().localizedDescription().isEmpty());
    }
    EXPECT_TRUE(driveAddress("stdio:/dev/null", DriveFileIs::ThereOrNew)
                    .error()
                    .localizedRecoverySuggestion()
                    .contains(QStringLiteral("/dev/sr0")));
}

} // namespace

} // namespace Tessaron
