#include "platform/coreservices/Aliases.h"

#include "platform/coreservices/AliasRecord.h"
#include "platform/coreservices/FSCatalog.h"
#include "platform/coreservices/FSRefAccess.h"
#include "platform/coreservices/ForkAttributes.h"
#include "platform/coreservices/Mounts.h"
#include "tests/support/MountTest.h"
#include "tests/support/TemporaryTree.h"

#include <cstdio>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <random>
#include <sys/mount.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace Tessaron
{

namespace
{

class Aliases : public ::testing::Test
{
protected:
    FSRef ref(const QByteArray &relative) const
    {
        FSRef made;
        EXPECT_EQ(FSPathMakeRefWithOptions(tree.path(relative), kFSPathMakeRefDoNotFollowLeafSymlink, &made, nullptr),
                  noErr);
        return made;
    }

    QByteArray aliasOf(const QByteArray &relative) const
    {
        const FSRef made = ref(relative);
        QByteArray alias;
        EXPECT_EQ(FSNewAliasMinimal(&made, &alias), noErr);
        return alias;
    }

    /// Where an alias leads, relative to the tree, or "<status>".
    QByteArray resolved(const QByteArray &alias, bool *wasChanged = nullptr) const
    {
        FSRef target;
        const OSErr status = FSResolveAliasWithMountFlags(nullptr, alias, &target, wasChanged, kResolveAliasFileNoUI);
        if (status != noErr)
            return '<' + QByteArray::number(status) + '>';
        return lastKnownPath(target).mid(tree.path().size() + 1);
    }

    void rename(const QByteArray &from, const QByteArray &to) const
    {
        ASSERT_EQ(std::rename(tree.path(from).constData(), tree.path(to).constData()), 0);
    }

    bool keepsAttributes() const
    {
        return ::setxattr(tree.makeFile("attribute-probe").constData(), "user.probe", "1", 1, 0) == 0;
    }

    const Testing::TemporaryTree tree;
};

class AliasMounts : public Testing::MountTest
{
};

} // namespace

TEST_F(Aliases, alias_leadsToTheFile)
{
    tree.makeFile("folder/caf\xE9.txt", "x");
    bool wasChanged = true;
    EXPECT_EQ(resolved(aliasOf("folder/caf\xE9.txt"), &wasChanged), "folder/caf\xE9.txt");
    EXPECT_FALSE(wasChanged);
    EXPECT_EQ(resolved(aliasOf("folder")), "folder");
}

TEST_F(Aliases, alias_survivesARenameInItsFolder)
{
    tree.makeFile("folder/old", "x");
    const QByteArray alias = aliasOf("folder/old");
    rename("folder/old", "folder/new");
    bool wasChanged = false;
    EXPECT_EQ(resolved(alias, &wasChanged), "folder/new");
    EXPECT_TRUE(wasChanged);
}

TEST_F(Aliases, alias_survivesAMoveNearby_evenWithoutRights)
{
    tree.makeFile("folder/file", "x");
    tree.makeFolder("other/deep");
    tree.setMode("", 0777);
    const QByteArray alias = aliasOf("folder/file");
    rename("folder/file", "other/deep/moved");
    const Testing::WithoutRootRights rights;
    EXPECT_EQ(resolved(alias), "other/deep/moved");
}

TEST_F(Aliases, alias_survivesTheRenamesOfFoldersAbove)
{
    tree.makeFile("a/b/file", "x");
    const QByteArray alias = aliasOf("a/b/file");
    rename("a/b", "a/c");
    rename("a", "d");
    EXPECT_EQ(resolved(alias), "d/c/file");
}

TEST_F(Aliases, alias_prefersTheFileItself_toAnotherInItsPlace)
{
    tree.makeFile("file", "first");
    const QByteArray alias = aliasOf("file");
    rename("file", "moved");
    tree.makeFile("file", "second");
    EXPECT_EQ(resolved(alias), "moved");
}

TEST_F(Aliases, alias_leadsToTheSuccessor_ofAFileSavedByReplacingIt)
{
    tree.makeFile("file", "first");
    const QByteArray alias = aliasOf("file");
    tree.makeFile("temporary", "second");
    tree.letBirthTimesPass();
    rename("temporary", "file");
    bool wasChanged = false;
    EXPECT_EQ(resolved(alias, &wasChanged), "file");
    EXPECT_TRUE(wasChanged);
}

TEST_F(Aliases, alias_doesNotTakeAFolderForAFile)
{
    tree.makeFile("thing", "x");
    const QByteArray alias = aliasOf("thing");
    tree.remove("thing");
    tree.makeFolder("thing");
    EXPECT_EQ(resolved(alias), "<-43>");
}

TEST_F(Aliases, alias_findsItsFile_whenItsVolumeIsMountedElsewhere)
{
    tree.makeFile("file", "x");
    std::optional<AliasRecord> record = aliasRecordFromData(aliasOf("file"));
    ASSERT_TRUE(record);
    record->path = "/old/mount/point/file";
    EXPECT_EQ(resolved(aliasDataFromRecord(*record)), "file");
}

TEST_F(Aliases, alias_reportsAMissingVolume_andLeavesTheOutputAlone)
{
    tree.makeFile("file", "x");
    std::optional<AliasRecord> record = aliasRecordFromData(aliasOf("file"));
    ASSERT_TRUE(record);
    record->path = "/no/such/volume/file";
    record->volumeIdentifier = ~record->volumeIdentifier;
    FSRef target;
    target.inode = 42;
    EXPECT_EQ(FSResolveAliasWithMountFlags(nullptr, aliasDataFromRecord(*record), &target, nullptr, 0), nsvErr);
    EXPECT_EQ(FSResolveAliasWithMountFlags(nullptr, "nonsense", &target, nullptr, 0), paramErr);
    EXPECT_EQ(FSResolveAliasWithMountFlags(nullptr, QByteArray(), &target, nullptr, 0), paramErr);
    EXPECT_EQ(target.inode, 42u);
}

TEST_F(Aliases, aliasOfARemovedFile_leadsNowhere_whenALaterFileHasItsInode)
{
    for (int round = 0; round < 50; ++round) {
        tree.makeFile("removed", "x");
        const QByteArray alias = aliasOf("removed");
        ASSERT_EQ(::unlink(tree.path("removed").constData()), 0);
        tree.makeFile("newcomer", "foreign");
        EXPECT_EQ(resolved(alias), "<-43>") << round;
        ASSERT_EQ(::unlink(tree.path("newcomer").constData()), 0);
    }
}

TEST_F(Aliases, FSNewAliasMinimal_fails_forAFileThatIsGone)
{
    tree.makeFile("file");
    const FSRef gone = ref("file");
    tree.remove("file");
    QByteArray alias("untouched");
    EXPECT_EQ(FSNewAliasMinimal(&gone, &alias), fnfErr);
    EXPECT_EQ(FSNewAliasMinimal(nullptr, &alias), paramErr);
    EXPECT_EQ(alias, "untouched");
}

TEST_F(Aliases, hostileRecords_resolveToAStatus)
{
    tree.makeFile("file", "x");
    const std::optional<AliasRecord> good = aliasRecordFromData(aliasOf("file"));
    ASSERT_TRUE(good);
    std::mt19937 random(7);
    for (int round = 0; round < 100; ++round) {
        AliasRecord record = *good;
        record.path = QByteArray("/nowhere/").append(QByteArray::number(qulonglong(random())));
        record.pathInVolume = record.path;
        record.handle.resize(static_cast<qsizetype>(random() % 300));
        for (char &byte : record.handle)
            byte = static_cast<char>(random());
        record.inode = random();
        record.volumeIdentifier = round % 2 == 0 ? good->volumeIdentifier : random();
        FSRef target;
        EXPECT_NE(FSResolveAliasWithMountFlags(nullptr, aliasDataFromRecord(record), &target, nullptr, 0), noErr);
    }
}

TEST_F(Aliases, aliasFile_isToldFromOthers_andResolved)
{
    if (!keepsAttributes())
        GTEST_SKIP() << "this file system keeps no extended attributes";
    tree.makeFile("target", "x");
    tree.makeFolder("folder");
    tree.makeSymbolicLink("link", "target");
    ASSERT_EQ(writeAliasFile(tree.path("alias"), ref("target")), noErr);
    ASSERT_EQ(writeAliasFile(tree.path("folderAlias"), ref("folder")), noErr);
    for (const char *const name : {"target", "folder", "link", "alias", "folderAlias"}) {
        const FSRef made = ref(name);
        bool isAlias = false;
        bool isFolder = true;
        EXPECT_EQ(FSIsAliasFile(&made, &isAlias, &isFolder), noErr);
        EXPECT_EQ(isAlias, QByteArray(name).endsWith("lias")) << name;
        EXPECT_EQ(isFolder, QByteArray(name) == "folder") << name;
    }
    FSRef at = ref("folderAlias");
    bool isFolder = false;
    bool wasAliased = false;
    EXPECT_EQ(FSResolveAliasFile(&at, true, &isFolder, &wasAliased), noErr);
    EXPECT_EQ(at, ref("folder"));
    EXPECT_TRUE(isFolder);
    EXPECT_TRUE(wasAliased);
    at = ref("target");
    EXPECT_EQ(FSResolveAliasFile(&at, true, &isFolder, &wasAliased), noErr);
    EXPECT_EQ(at, ref("target"));
    EXPECT_FALSE(wasAliased);
}

TEST_F(Aliases, aliasFile_mayKeepItsDataInTheResourceFork)
{
    if (!keepsAttributes())
        GTEST_SKIP() << "this file system keeps no extended attributes";
    tree.makeFile("target", "x");
    ASSERT_EQ(writeAliasFile(tree.path("alias"), ref("target")), noErr);
    tree.setExtendedAttribute("alias", resourceForkAttribute, tree.contents("alias"));
    ASSERT_EQ(::truncate(tree.path("alias").constData(), 0), 0);
    FSRef at = ref("alias");
    EXPECT_EQ(FSResolveAliasFile(&at, true, nullptr, nullptr), noErr);
    EXPECT_EQ(at, ref("target"));
}

TEST_F(Aliases, aliasFile_withTheFlagAlone_isOneThatLeadsNowhere)
{
    if (!keepsAttributes())
        GTEST_SKIP() << "this file system keeps no extended attributes";
    QByteArray info(32, '\0');
    info[8] = static_cast<char>(0x80);
    tree.makeFile("file", "no alias data");
    tree.setExtendedAttribute("file", finderInfoAttribute, info);
    const FSRef made = ref("file");
    bool isAlias = false;
    EXPECT_EQ(FSIsAliasFile(&made, &isAlias, nullptr), noErr);
    EXPECT_TRUE(isAlias);
    FSRef at = made;
    EXPECT_NE(FSResolveAliasFile(&at, true, nullptr, nullptr), noErr);
    EXPECT_EQ(at, made);
}

TEST_F(Aliases, alias_madeThroughASymbolicLink_isFoundOnItsVolumeElsewhere)
{
    tree.makeFile("real/file", "x");
    tree.makeSymbolicLink("link", "real");
    const std::optional<AliasRecord> through = aliasRecordFromData(aliasOf("link/file"));
    const std::optional<AliasRecord> straight = aliasRecordFromData(aliasOf("real/file"));
    ASSERT_TRUE(through && straight);
    EXPECT_EQ(through->path, tree.path("link/file"));
    EXPECT_EQ(through->pathInVolume, straight->pathInVolume);
    EXPECT_EQ(through->volumeType, straight->volumeType);
    ASSERT_EQ(::unlink(tree.path("link").constData()), 0);
    EXPECT_EQ(resolved(aliasDataFromRecord(*through)), "real/file");
}

TEST_F(AliasMounts, alias_doesNotLeadToAnotherVolumesFile_ofTheSameName)
{
    const QByteArray point = tree.makeFolder("point");
    runApart([&] {
        const auto mountWithFile = [&point] {
            if (::mount("tmpfs", point.constData(), "tmpfs", 0, nullptr) != 0)
                return mayNotMount;
            return ::close(::open((point + "/file").constData(), O_WRONLY | O_CREAT, 0644));
        };
        if (const int failure = mountWithFile())
            return failure;
        if (volumeIdentifierAt(point) == 0)
            return mayNotMount; // an old kernel, which does not tell one memory file system from the next
        FSRef file;
        QByteArray alias;
        if (FSPathMakeRef(point + "/file", &file, nullptr) != noErr || FSNewAliasMinimal(&file, &alias) != noErr)
            return 2;
        if (::umount(point.constData()) != 0 || mountWithFile() != 0)
            return 3;
        FSRef target;
        target.inode = 42;
        const OSErr status = FSResolveAliasWithMountFlags(nullptr, alias, &target, nullptr, kResolveAliasFileNoUI);
        return status == nsvErr && target.inode == 42 ? 0 : 4;
    });
}

TEST_F(AliasMounts, alias_isResolvedInAChangedRoot)
{
    tree.makeFile("folder/old", "x");
    tree.makeFolder("proc");
    runApart([&] {
        if (::mount("proc", tree.path("proc").constData(), "proc", 0, nullptr) != 0
            || ::chroot(tree.path().constData()) != 0 || ::chdir("/") != 0)
            return mayNotMount;
        const std::vector<Mount> mounts = currentMounts();
        if (mounts.empty() || mounts.front().point != "/" || mounts.front().type.isEmpty())
            return 2;
        FSRef file;
        QByteArray alias;
        if (FSPathMakeRef("/folder/old", &file, nullptr) != noErr || FSNewAliasMinimal(&file, &alias) != noErr)
            return 3;
        if (::rename("/folder", "/renamed") != 0)
            return 4;
        FSRef target;
        if (FSResolveAliasWithMountFlags(nullptr, alias, &target, nullptr, kResolveAliasFileNoUI) != noErr)
            return 5;
        if (lastKnownPath(target) != "/renamed/old")
            return 6;
        // What is gone is said to be gone, not to lie on a volume that is missing.
        ::unlink("/renamed/old");
        return FSResolveAliasWithMountFlags(nullptr, alias, &target, nullptr, 0) == fnfErr ? 0 : 7;
    });
}

TEST_F(Aliases, chainsOfAliasFiles_areFollowed_onlyWhenAsked)
{
    if (!keepsAttributes())
        GTEST_SKIP() << "this file system keeps no extended attributes";
    tree.makeFile("target", "x");
    ASSERT_EQ(writeAliasFile(tree.path("inner"), ref("target")), noErr);
    ASSERT_EQ(writeAliasFile(tree.path("outer"), ref("inner")), noErr);
    FSRef at = ref("outer");
    EXPECT_EQ(FSResolveAliasFile(&at, true, nullptr, nullptr), noErr);
    EXPECT_EQ(at, ref("target"));
    at = ref("outer");
    EXPECT_EQ(FSResolveAliasFile(&at, false, nullptr, nullptr), noErr);
    EXPECT_EQ(at, ref("inner"));
}

TEST_F(Aliases, aLoopOfAliasFiles_isAnErrorAndLeavesTheReference)
{
    if (!keepsAttributes())
        GTEST_SKIP() << "this file system keeps no extended attributes";
    tree.makeFile("one", "x");
    ASSERT_EQ(writeAliasFile(tree.path("two"), ref("one")), noErr);
    const FSRef one = ref("one");
    const QByteArray toTwo = aliasOf("two");
    tree.setExtendedAttribute("one", resourceForkAttribute, toTwo);
    QByteArray info(32, '\0');
    info[8] = static_cast<char>(0x80);
    tree.setExtendedAttribute("one", finderInfoAttribute, info);
    FSRef at = one;
    EXPECT_EQ(FSResolveAliasFile(&at, true, nullptr, nullptr), fnfErr);
    EXPECT_EQ(at, one);
}

TEST_F(Aliases, anAliasFileWhoseTargetIsGone_isAnError)
{
    if (!keepsAttributes())
        GTEST_SKIP() << "this file system keeps no extended attributes";
    tree.makeFile("target", "x");
    ASSERT_EQ(writeAliasFile(tree.path("alias"), ref("target")), noErr);
    tree.remove("target");
    FSRef at = ref("alias");
    EXPECT_EQ(FSResolveAliasFile(&at, true, nullptr, nullptr), fnfErr);
    EXPECT_EQ(at, ref("alias"));
}

TEST_F(Aliases, writeAliasFile_replacesNothing)
{
    tree.makeFile("target", "x");
    tree.makeFile("taken", "precious");
    EXPECT_NE(writeAliasFile(tree.path("taken"), ref("target")), noErr);
    EXPECT_EQ(tree.contents("taken"), "precious");
}

} // namespace Tessaron
