#include "platform/coreservices/FSCatalog.h"
#include "platform/coreservices/FSRef.h"
#include "platform/coreservices/FileLocator.h"
#include "platform/coreservices/PathAccess.h"
#include "platform/foundation/UniqueDescriptor.h"
#include "tests/support/TemporaryTree.h"

#include <atomic>
#include <cstdio>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
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

} // namespace Tessaron
