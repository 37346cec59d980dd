#include "platform/coreservices/FSCatalog.h"
#include "platform/coreservices/FSRef.h"
#include "platform/coreservices/FSRefAccess.h"
#include "platform/coreservices/FileLocator.h"
#include "platform/coreservices/PathAccess.h"
#include "platform/foundation/UniqueDescriptor.h"
#include "tests/support/MountTest.h"
#include "tests/support/TemporaryTree.h"

#include <atomic>
#include <cstdio>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/mount.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace Tessaron
{

namespace
{

/// Files with references that are then renamed, moved and removed.
class FSRefMoves : public ::testing::Test
{
protected:
    FSRef ref(const QByteArray &relative) const
    {
        FSRef made;
        EXPECT_EQ(FSPathMakeRef(tree.path(relative), &made, nullptr), noErr);
        return made;
    }

    void rename(const QByteArray &from, const QByteArray &to) const
    {
        ASSERT_EQ(std::rename(tree.path(from).constData(), tree.path(to).constData()), 0);
    }

    /// The path now, relative to the tree; "<gone>" for a reference that is not valid.
    QByteArray placeOf(const FSRef &made) const
    {
        char buffer[1024];
        if (FSRefMakePath(&made, buffer, sizeof buffer) != noErr)
            return "<gone>";
        return QByteArray(buffer).mid(tree.path().size() + 1);
    }

    bool systemFindsInodes() const
    {
        const UniqueDescriptor folder(::open(tree.path().constData(), O_RDONLY | O_DIRECTORY));
        struct statx facts;
        bool isGone = false;
        return statDescriptor(folder.get(), STATX_INO, &facts) == 0
            && !pathOfInode(folder.get(), facts.stx_ino, &isGone).isEmpty();
    }

    const Testing::TemporaryTree tree;
};

/// The same without the right to ask the system for a file by its inode.
class FSRefMovesWithoutRights : public FSRefMoves
{
protected:
    void SetUp() override
    {
        tree.setMode("", 0777);
        m_rights = std::make_unique<Testing::WithoutRootRights>();
    }

private:
    std::unique_ptr<Testing::WithoutRootRights> m_rights;
};

} // namespace

TEST_F(FSRefMoves, aRenamedFile_isFoundInItsFolder)
{
    tree.makeFile("old", "x");
    const FSRef file = ref("old");
    rename("old", "new");
    EXPECT_EQ(placeOf(file), "new");
    EXPECT_EQ(lastKnownPath(file), tree.path("new"));
    rename("new", "newer");
    EXPECT_EQ(placeOf(file), "newer");
    rename("newer", "old");
    EXPECT_EQ(placeOf(file), "old");
    EXPECT_EQ(lastKnownPath(file), tree.path("old"));
}

TEST_F(FSRefMovesWithoutRights, aRenamedFile_isFoundInItsFolder)
{
    tree.makeFile("old", "x");
    const FSRef file = ref("old");
    rename("old", "new");
    EXPECT_EQ(placeOf(file), "new");
}

TEST_F(FSRefMoves, aRemovedFile_isGone)
{
    tree.makeFile("file", "x");
    const FSRef file = ref("file");
    tree.remove("file");
    EXPECT_EQ(FSGetCatalogInfo(&file, kFSCatInfoNone, nullptr), fnfErr);
    EXPECT_EQ(placeOf(file), "<gone>");
}

TEST_F(FSRefMoves, aFileInAnothersPlace_isNotMistakenForIt)
{
    tree.makeFile("file", "first");
    const FSRef first = ref("file");
    tree.makeFile("other", "second");
    rename("file", "elsewhere");
    rename("other", "file");
    const FSRef second = ref("file");
    EXPECT_EQ(placeOf(first), "elsewhere");
    EXPECT_EQ(placeOf(second), "file");
    EXPECT_EQ(placeOf(first), "elsewhere");
}

TEST_F(FSRefMoves, filesThatChangePlaces_areBothFound)
{
    tree.makeFile("one", "1");
    tree.makeFile("two", "2");
    const FSRef one = ref("one");
    const FSRef two = ref("two");
    rename("one", "spare");
    rename("two", "one");
    rename("spare", "two");
    EXPECT_EQ(placeOf(one), "two");
    EXPECT_EQ(placeOf(two), "one");
}

TEST_F(FSRefMoves, aFileMovedToAnotherFolder_isFound_whereTheSystemCanTell)
{
    if (!systemFindsInodes())
        GTEST_SKIP() << "this file system, or this user, cannot look up inodes";
    tree.makeFile("here/file", "x");
    tree.makeFolder("there/below");
    const FSRef file = ref("here/file");
    rename("here/file", "there/below/renamed");
    EXPECT_EQ(placeOf(file), "there/below/renamed");
}

TEST_F(FSRefMoves, aRenamedFolder_isFollowedByAllItHolds)
{
    tree.makeFile("folder/deep/one", "1");
    tree.makeFile("folder/deep/two", "2");
    const FSRef one = ref("folder/deep/one");
    const FSRef two = ref("folder/deep/two");
    rename("folder", "renamed");
    EXPECT_EQ(placeOf(one), "renamed/deep/one");
    EXPECT_EQ(placeOf(two), "renamed/deep/two");
}

TEST_F(FSRefMovesWithoutRights, aRenamedFolder_isFollowedByAllItHolds)
{
    tree.makeFile("folder/deep/one", "1");
    tree.makeFile("folder/deep/two", "2");
    const FSRef one = ref("folder/deep/one");
    const FSRef two = ref("folder/deep/two");
    rename("folder", "renamed");
    EXPECT_EQ(placeOf(one), "renamed/deep/one");
    // Found at once: the folder's new place is known.
    EXPECT_EQ(lastKnownPath(two), tree.path("renamed/deep/two"));
}

TEST_F(FSRefMovesWithoutRights, fileAndFoldersRenamedTogether_areFound)
{
    tree.makeFile("a/b/c/file", "x");
    const FSRef file = ref("a/b/c/file");
    rename("a/b/c/file", "a/b/c/file2");
    rename("a/b/c", "a/b/c2");
    rename("a/b", "a/b2");
    rename("a", "a2");
    EXPECT_EQ(placeOf(file), "a2/b2/c2/file2");
}

TEST_F(FSRefMovesWithoutRights, aNewFolderInTheOldOnesPlace_doesNotHideItsFiles)
{
    tree.makeFile("folder/file", "old");
    const FSRef old = ref("folder/file");
    rename("folder", "kept");
    tree.makeFile("folder/file", "new");
    const FSRef fresh = ref("folder/file");
    EXPECT_EQ(placeOf(fresh), "folder/file");
    EXPECT_EQ(placeOf(old), "kept/file");
    EXPECT_EQ(placeOf(fresh), "folder/file");
}

TEST_F(FSRefMovesWithoutRights, aFolderThatComesBack_isFoundInItsOldPlace)
{
    tree.makeFile("folder/file", "x");
    const FSRef file = ref("folder/file");
    rename("folder", "away");
    EXPECT_EQ(placeOf(file), "away/file");
    rename("away", "folder");
    EXPECT_EQ(placeOf(file), "folder/file");
    EXPECT_EQ(lastKnownPath(file), tree.path("folder/file"));
}

TEST_F(FSRefMoves, foldersThatMoveIntoEachOthersPlaces_sendNobodyInCircles)
{
    if (!systemFindsInodes())
        GTEST_SKIP() << "this file system, or this user, cannot look up inodes";
    tree.makeFile("one/file", "1");
    tree.makeFile("two/file", "2");
    const FSRef one = ref("one/file");
    const FSRef two = ref("two/file");
    rename("one", "two/inner");
    EXPECT_EQ(placeOf(one), "two/inner/file");
    rename("two/inner", "one");
    rename("two", "one/inner");
    EXPECT_EQ(placeOf(two), "one/inner/file");
    EXPECT_EQ(placeOf(one), "one/file");
}

TEST_F(FSRefMoves, aHardLink_isReachedThroughItsOtherName_whenOneGoes)
{
    tree.makeFile("first", "x");
    tree.makeHardLink("second", "first");
    const FSRef first = ref("first");
    const FSRef second = ref("second");
    tree.remove("first");
    EXPECT_EQ(placeOf(first), "second");
    EXPECT_EQ(placeOf(second), "second");
}

TEST_F(FSRefMoves, aLinkOnTheWay_staysInThePath_whenTheFileIsRenamed)
{
    tree.makeFile("real/file", "x");
    tree.makeSymbolicLink("link", "real");
    const FSRef file = ref("link/file");
    rename("real/file", "real/renamed");
    EXPECT_EQ(placeOf(file), "link/renamed");
}

TEST_F(FSRefMovesWithoutRights, manyVanishedFilesOfOneFolder_areFoundMissingQuickly)
{
    std::vector<FSRef> refs;
    for (int number = 0; number < 3000; ++number) {
        const QByteArray name = "folder/" + QByteArray::number(number);
        tree.makeFile(name);
        refs.push_back(ref(name));
    }
    for (int number = 0; number < 3000; number += 2)
        tree.remove("folder/" + QByteArray::number(number));
    int gone = 0;
    for (const FSRef &made : refs)
        gone += FSGetCatalogInfo(&made, kFSCatInfoNone, nullptr) == fnfErr ? 1 : 0;
    EXPECT_EQ(gone, 1500);
}

TEST_F(FSRefMoves, references_mayBeLookedForByManyThreads_whileFilesMove)
{
    tree.makeFile("folder/file", "x");
    const FSRef file = ref("folder/file");
    std::atomic<bool> isOver = false;
    std::atomic<int> finds = 0;
    std::vector<std::jthread> threads;
    threads.reserve(3);
    for (int thread = 0; thread < 3; ++thread) {
        threads.emplace_back([&] {
            while (!isOver) {
                finds += FSGetCatalogInfo(&file, kFSCatInfoNone, nullptr) == noErr ? 1 : 0;
                (void)lastKnownPath(file);
            }
        });
    }
    for (int round = 0; round < 100; ++round) {
        rename("folder", "other");
        rename("other/file", "other/file2");
        rename("other/file2", "other/file");
        rename("other", "folder");
    }
    isOver = true;
    threads.clear();
    EXPECT_EQ(placeOf(file), "folder/file");
}

TEST_F(FSRefMoves, aRemovedFile_isNotTakenForALaterOne_thatGotItsInode)
{
    int reused = 0;
    for (int round = 0; round < 50; ++round) {
        tree.makeFile("removed", "x");
        const FSRef removed = ref("removed");
        ASSERT_EQ(::unlink(tree.path("removed").constData()), 0);
        tree.makeFile("newcomer", "foreign");
        reused += ref("newcomer").inode == removed.inode ? 1 : 0;
        EXPECT_EQ(placeOf(removed), "<gone>");
        ASSERT_EQ(::unlink(tree.path("newcomer").constData()), 0);
    }
    RecordProperty("reused", reused);
}

TEST_F(FSRefMovesWithoutRights, aRemovedFile_isNotTakenForALaterOne_thatGotItsInode)
{
    for (int round = 0; round < 50; ++round) {
        tree.makeFile("removed", "x");
        const FSRef removed = ref("removed");
        ASSERT_EQ(::unlink(tree.path("removed").constData()), 0);
        tree.makeFile("newcomer", "foreign");
        EXPECT_EQ(placeOf(removed), "<gone>");
        ASSERT_EQ(::unlink(tree.path("newcomer").constData()), 0);
    }
}

TEST_F(FSRefMoves, aListedFileThatWasRemoved_isNotTakenForALaterOne)
{
    for (int round = 0; round < 20; ++round) {
        tree.makeFile("folder/removed", "x");
        OSStatus status = noErr;
        const auto iterator = FSOpenIterator(ref("folder"), &status);
        FSBulkEntry entry;
        std::uint32_t actual = 0;
        (void)FSGetCatalogInfoBulk(*iterator, 1, &actual, kFSCatInfoNone, &entry);
        ASSERT_EQ(actual, 1u);
        ASSERT_EQ(::unlink(tree.path("folder/removed").constData()), 0);
        tree.makeFile("folder/newcomer", "foreign");
        EXPECT_EQ(placeOf(entry.ref), "<gone>");
        ASSERT_EQ(::unlink(tree.path("folder/newcomer").constData()), 0);
    }
}

TEST_F(FSRefMovesWithoutRights, aFileSavedByReplacingIt_isTheFileAtItsPath)
{
    tree.makeFile("folder/file", "first");
    const FSRef file = ref("folder/file");
    tree.makeFile("folder/temporary", "second, longer");
    rename("folder/temporary", "folder/file");
    EXPECT_EQ(placeOf(file), "folder/file");
    struct statx facts;
    ASSERT_EQ(statFSRef(file, STATX_SIZE, &facts), 0);
    EXPECT_EQ(facts.stx_size, 14u);
    // Again, and then with its folder.
    tree.makeFile("folder/temporary", "third");
    rename("folder/temporary", "folder/file");
    EXPECT_EQ(placeOf(file), "folder/file");
    rename("folder", "moved");
    EXPECT_EQ(placeOf(file), "moved/file");
}

TEST_F(FSRefMoves, aFileReplacedBySomethingOfAnotherKind_isGone)
{
    tree.makeFile("file", "x");
    tree.makeFolder("folder");
    const FSRef file = ref("file");
    const FSRef folder = ref("folder");
    tree.remove("file");
    tree.remove("folder");
    tree.makeFolder("file");
    tree.makeSymbolicLink("folder", "file");
    EXPECT_EQ(placeOf(file), "<gone>");
    EXPECT_EQ(placeOf(folder), "<gone>");
}

TEST_F(FSRefMoves, aFileMovedIntoANewFolderInAnOldOnesPlace_hasOnePlaceForAllCalls)
{
    tree.makeFile("X/other", "o");
    tree.makeFile("D/r", "r");
    const FSRef other = ref("X/other");
    const FSRef moved = ref("D/r");
    rename("X", "Y");
    EXPECT_EQ(placeOf(other), "Y/other");
    tree.makeFolder("X");
    rename("D/r", "X/r");
    if (!systemFindsInodes())
        GTEST_SKIP() << "this file system, or this user, cannot look up inodes";
    EXPECT_EQ(placeOf(moved), "X/r");
    EXPECT_EQ(lastKnownPath(moved), tree.path("X/r"));
    int error = 0;
    EXPECT_TRUE(openFSRef(moved, O_RDONLY, &error)) << error;
    EXPECT_EQ(placeOf(other), "Y/other");
    EXPECT_EQ(lastKnownPath(other), tree.path("Y/other"));
}

TEST_F(FSRefMovesWithoutRights, openingAndAsking_followTheFile_asItsPathDoes)
{
    tree.makeFile("folder/file", "mine");
    tree.makeSymbolicLink("folder/link", "target");
    const FSRef file = ref("folder/file");
    FSRef link;
    ASSERT_EQ(FSPathMakeRefWithOptions(tree.path("folder/link"), kFSPathMakeRefDoNotFollowLeafSymlink, &link, nullptr),
              noErr);
    rename("folder/file", "folder/renamed");
    rename("folder/link", "folder/renamed link");
    tree.makeFile("folder/file", "another's");
    int error = 0;
    const UniqueDescriptor opened = openFSRef(file, O_RDONLY, &error);
    ASSERT_TRUE(opened) << error;
    char text[8] = {};
    EXPECT_EQ(::read(opened.get(), text, sizeof text), 4);
    EXPECT_EQ(QByteArray(text), "mine");
    QByteArray target;
    EXPECT_EQ(readLinkTarget(link, &target), 0);
    EXPECT_EQ(target, "target");
    rename("folder/renamed", "folder/renamed again");
    struct statx facts;
    ASSERT_EQ(statFSRef(file, STATX_SIZE, &facts), 0);
    EXPECT_EQ(facts.stx_size, 4u);
}

class FSRefMounts : public Testing::MountTest
{
};

TEST_F(FSRefMounts, aFileOfAVolumeMountedInThePlace_isAnother)
{
    const QByteArray point = tree.makeFolder("point");
    runApart([&] {
        const auto mountWithFile = [&point](const char *size) {
            if (::mount("tmpfs", point.constData(), "tmpfs", 0, size) != 0)
                return mayNotMount;
            return ::close(::open((point + "/file").constData(), O_WRONLY | O_CREAT, 0644));
        };
        if (const int failure = mountWithFile("size=1m"))
            return failure;
        FSRef ref;
        if (FSPathMakeRef(point + "/file", &ref, nullptr) != noErr)
            return 2;
        // Within a tick the new volume's file would be equal in every number that the system gives it.
        Testing::TemporaryTree::letBirthTimesPass();
        if (::umount(point.constData()) != 0 || mountWithFile("size=2m") != 0)
            return 3;
        return FSGetCatalogInfo(&ref, kFSCatInfoNone, nullptr) == fnfErr ? 0 : 4;
    });
}

TEST_F(FSRefMounts, aFileOfAnOverlay_staysTheSame_whenItIsWrittenTo)
{
    tree.makeFile("lower/folder/file", "line");
    for (const char *const folder : {"both", "merged"})
        tree.makeFolder(folder);
    runApart([&] {
        // The two layers are on different file systems, where an overlay makes inode numbers up.
        if (::mount("tmpfs", tree.path("both").constData(), "tmpfs", 0, nullptr) != 0)
            return mayNotMount;
        ::mkdir(tree.path("both/upper").constData(), 0755);
        ::mkdir(tree.path("both/work").constData(), 0755);
        const QByteArray options = "lowerdir=" + tree.path("lower") + ",upperdir=" + tree.path("both/upper")
            + ",workdir=" + tree.path("both/work") + ",xino=off";
        const QByteArray merged = tree.path("merged");
        if (::mount("overlay", merged.constData(), "overlay", 0, options.constData()) != 0)
            return mayNotMount;
        FSRef ref;
        if (FSPathMakeRef(merged + "/folder/file", &ref, nullptr) != noErr)
            return 2;
        const int file = ::open((merged + "/folder/file").constData(), O_WRONLY | O_APPEND);
        if (::write(file, "more", 4) != 4 || ::close(file) != 0)
            return 3;
        FSCatalogInfo info;
        if (FSGetCatalogInfo(&ref, kFSCatInfoDataSizes, &info) != noErr)
            return 4;
        return info.dataLogicalSize == 8 ? 0 : 5;
    });
}

} // namespace Tessaron
