#include "platform/coreservices/FSCatalog.h"

#include "platform/coreservices/FSForks.h"
#include "platform/coreservices/ForkAttributes.h"
#include "tests/support/TemporaryTree.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace Tessaron
{

namespace
{

FSRef refOf(const QByteArray &path)
{
    FSRef ref;
    EXPECT_EQ(FSPathMakeRefWithOptions(path, kFSPathMakeRefDoNotFollowLeafSymlink, &ref, nullptr), noErr);
    return ref;
}

FSCatalogInfo infoOf(const QByteArray &path, std::uint32_t which)
{
    const FSRef ref = refOf(path);
    FSCatalogInfo info;
    EXPECT_EQ(FSGetCatalogInfo(&ref, which, &info), noErr);
    return info;
}

std::uint64_t blockSizeAt(const QByteArray &path)
{
    struct statfs facts;
    EXPECT_EQ(::statfs(path.constData(), &facts), 0);
    return static_cast<std::uint64_t>(facts.f_bsize);
}

bool keepsAttributes(const Testing::TemporaryTree &tree)
{
    const QByteArray path = tree.makeFile("attribute-probe");
    return ::setxattr(path.constData(), "user.probe", "1", 1, 0) == 0;
}

} // namespace

TEST(FSCatalog, FSGetCatalogInfo_tellsLogicalAndAllocatedSizes)
{
    const Testing::TemporaryTree tree;
    tree.makeFile("file", QByteArray(5000, 'x'));
    tree.makeSparseFile("sparse", 10 << 20);
    const FSCatalogInfo file = infoOf(tree.path("file"), kFSCatInfoDataSizes | kFSCatInfoRsrcSizes);
    EXPECT_EQ(file.dataLogicalSize, 5000u);
    EXPECT_GE(file.dataPhysicalSize, 5000u);
    EXPECT_EQ(file.dataPhysicalSize % 512, 0u);
    EXPECT_EQ(file.rsrcLogicalSize, 0u);
    EXPECT_EQ(file.rsrcPhysicalSize, 0u);
    const FSCatalogInfo sparse = infoOf(tree.path("sparse"), kFSCatInfoDataSizes);
    EXPECT_EQ(sparse.dataLogicalSize, 10u << 20);
    EXPECT_LT(sparse.dataPhysicalSize, 1u << 20);
}

TEST(FSCatalog, FSGetCatalogInfo_countsAResourceFork_inWholeBlocks)
{
    const Testing::TemporaryTree tree;
    if (!keepsAttributes(tree))
        GTEST_SKIP() << "this file system keeps no extended attributes";
    tree.makeFile("file", "data");
    tree.setExtendedAttribute("file", resourceForkAttribute, QByteArray(100, 'r'));
    const FSCatalogInfo info = infoOf(tree.path("file"), kFSCatInfoRsrcSizes);
    EXPECT_EQ(info.rsrcLogicalSize, 100u);
    EXPECT_EQ(info.rsrcPhysicalSize, blockSizeAt(tree.path("file")));
}

TEST(FSCatalog, FSGetCatalogInfo_readsFinderInformationOfFilesAndFolders)
{
    const Testing::TemporaryTree tree;
    if (!keepsAttributes(tree))
        GTEST_SKIP() << "this file system keeps no extended attributes";
    QByteArray bytes;
    for (char byte = 0; byte < 32; ++byte)
        bytes += byte;
    tree.makeFile("file");
    tree.makeFolder("folder");
    tree.makeFile("plain");
    for (const char *const name : {"file", "folder"}) {
        tree.setExtendedAttribute(name, finderInfoAttribute, bytes);
        const FSCatalogInfo info = infoOf(tree.path(name), kFSCatInfoFinderInfo | kFSCatInfoFinderXInfo);
        EXPECT_EQ(QByteArray(reinterpret_cast<const char *>(info.finderInfo), 16), bytes.first(16));
        EXPECT_EQ(QByteArray(reinterpret_cast<const char *>(info.extFinderInfo), 16), bytes.last(16));
    }
    const FSCatalogInfo plain = infoOf(tree.path("plain"), kFSCatInfoFinderInfo | kFSCatInfoFinderXInfo);
    EXPECT_EQ(QByteArray(reinterpret_cast<const char *>(plain.finderInfo), 16), QByteArray(16, '\0'));
}

TEST(FSCatalog, FSGetCatalogInfo_ignoresFinderInformationOfAWrongLength)
{
    const Testing::TemporaryTree tree;
    if (!keepsAttributes(tree))
        GTEST_SKIP() << "this file system keeps no extended attributes";
    tree.makeFile("file");
    tree.setExtendedAttribute("file", finderInfoAttribute, QByteArray(200, 'z'));
    const FSCatalogInfo info = infoOf(tree.path("file"), kFSCatInfoFinderInfo);
    EXPECT_EQ(QByteArray(reinterpret_cast<const char *>(info.finderInfo), 16), QByteArray(16, '\0'));
}

TEST(FSCatalog, FSGetCatalogInfo_describesTheLinkItself)
{
    const Testing::TemporaryTree tree;
    tree.makeFile("target", QByteArray(9999, 'x'));
    tree.makeSymbolicLink("link", "target");
    const FSCatalogInfo info = infoOf(
        tree.path("link"), kFSCatInfoNodeFlags | kFSCatInfoDataSizes | kFSCatInfoRsrcSizes | kFSCatInfoPermissions);
    EXPECT_EQ(info.dataLogicalSize, 6u);
    EXPECT_TRUE(S_ISLNK(info.mode));
    EXPECT_EQ(info.nodeFlags & kFSNodeIsDirectoryMask, 0);
}

TEST(FSCatalog, FSGetCatalogInfo_tellsTimesAndRights)
{
    const Testing::TemporaryTree tree;
    tree.makeFile("file", "x");
    tree.makeHardLink("other", "file");
    tree.setMode("file", 0640);
    tree.setModificationTime("file", 1234567890);
    const FSCatalogInfo info = infoOf(tree.path("file"), kFSCatInfoDates | kFSCatInfoPermissions);
    EXPECT_EQ(info.contentModDate.seconds, 1234567890);
    EXPECT_GT(info.attributeModDate.seconds, 1234567890);
    EXPECT_EQ(info.mode, static_cast<std::uint32_t>(S_IFREG | 0640));
    EXPECT_EQ(info.userId, ::geteuid());
    EXPECT_EQ(info.linkCount, 2u);
}

TEST(FSCatalog, FSGetCatalogInfo_neverOpensAFile_soThatAFifoHoldsNobodyUp)
{
    const Testing::TemporaryTree tree;
    tree.makeFifo("fifo");
    const FSCatalogInfo info = infoOf(tree.path("fifo"),
                                      kFSCatInfoNodeFlags | kFSCatInfoDataSizes | kFSCatInfoRsrcSizes
                                          | kFSCatInfoFinderInfo | kFSCatInfoPermissions);
    EXPECT_TRUE(S_ISFIFO(info.mode));
    EXPECT_EQ(info.dataPhysicalSize, 0u);
}

TEST(FSCatalog, FSGetCatalogInfo_refusesWhatItCannotUse)
{
    const Testing::TemporaryTree tree;
    const FSRef ref = refOf(tree.makeFile("file"));
    FSCatalogInfo info;
    EXPECT_EQ(FSGetCatalogInfo(nullptr, kFSCatInfoNone, nullptr), paramErr);
    EXPECT_EQ(FSGetCatalogInfo(&ref, kFSCatInfoDates, nullptr), paramErr);
    EXPECT_EQ(FSGetCatalogInfo(&ref, kFSCatInfoNone, nullptr), noErr);
    tree.remove("file");
    EXPECT_EQ(FSGetCatalogInfo(&ref, kFSCatInfoDataSizes, &info), fnfErr);
}

TEST(FSCatalog, aMemoryFileSystem_servesToo)
{
    const Testing::TemporaryTree tree(QStringLiteral("/dev/shm"));
    tree.makeFile("file", QByteArray(5000, 'x'));
    const FSCatalogInfo info =
        infoOf(tree.path("file"), kFSCatInfoDataSizes | kFSCatInfoRsrcSizes | kFSCatInfoFinderInfo);
    EXPECT_EQ(info.dataLogicalSize, 5000u);
    EXPECT_EQ(info.rsrcLogicalSize, 0u);
}

TEST(FSForks, FSIterateForks_givesTheDataForkAndThenANonEmptyResourceFork)
{
    const Testing::TemporaryTree tree;
    if (!keepsAttributes(tree))
        GTEST_SKIP() << "this file system keeps no extended attributes";
    tree.makeFile("file", "data");
    tree.setExtendedAttribute("file", resourceForkAttribute, "resource");
    const FSRef ref = refOf(tree.path("file"));
    FSForkPosition position;
    FSForkInfo fork;
    ASSERT_EQ(FSIterateForks(&ref, &position, &fork), noErr);
    EXPECT_EQ(fork.logicalSize, 4u);
    ASSERT_EQ(FSIterateForks(&ref, &position, &fork), noErr);
    EXPECT_EQ(fork.logicalSize, 8u);
    EXPECT_EQ(FSIterateForks(&ref, &position, &fork), errFSNoMoreItems);
    EXPECT_EQ(FSIterateForks(&ref, &position, &fork), errFSNoMoreItems);
}

TEST(FSForks, FSIterateForks_countsNoEmptyResourceFork)
{
    const Testing::TemporaryTree tree;
    if (!keepsAttributes(tree))
        GTEST_SKIP() << "this file system keeps no extended attributes";
    tree.makeFile("file", "data");
    tree.setExtendedAttribute("file", resourceForkAttribute, "");
    const FSRef ref = refOf(tree.path("file"));
    FSForkPosition position;
    FSForkInfo fork;
    EXPECT_EQ(FSIterateForks(&ref, &position, &fork), noErr);
    EXPECT_EQ(FSIterateForks(&ref, &position, &fork), errFSNoMoreItems);
}

TEST(FSForks, FSIterateForks_findsNoForksInAFolder)
{
    const Testing::TemporaryTree tree;
    const FSRef ref = refOf(tree.makeFolder("folder"));
    FSForkPosition position;
    FSForkInfo fork;
    EXPECT_EQ(FSIterateForks(&ref, &position, &fork), errFSNoMoreItems);
}

} // namespace Tessaron
