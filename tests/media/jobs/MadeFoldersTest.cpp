#include "media/jobs/MadeFolders.h"

#include "tests/support/TemporaryTree.h"

#include <cerrno>
#include <gtest/gtest.h>

using namespace Tessaron;
using namespace Tessaron::Testing;

TEST(MadeFolders, emptyOnes_goAgain_andOthersStay)
{
    const TemporaryTree tree;
    tree.makeFolder("there");
    {
        MadeFolders folders;
        for (const char *const path : {"there", "there/empty/deep", "there/full/deep", "there/full/other", "new/one/"})
            EXPECT_EQ(folders.make(tree.path(path)), 0) << path;
        tree.makeFile("there/full/deep/file");
    }
    EXPECT_TRUE(tree.exists("there")) << "it was there before";
    EXPECT_TRUE(tree.exists("there/full/deep/file"));
    EXPECT_FALSE(tree.exists("there/full/other"));
    EXPECT_FALSE(tree.exists("there/empty"));
    EXPECT_FALSE(tree.exists("new"));
}

TEST(MadeFolders, whatIsRemoved_isMadeAgain)
{
    const TemporaryTree tree;
    MadeFolders folders;
    ASSERT_EQ(folders.make(tree.path("a/b")), 0);
    folders.removeEmpty();
    EXPECT_FALSE(tree.exists("a"));
    ASSERT_EQ(folders.make(tree.path("a/b")), 0);
    EXPECT_TRUE(tree.exists("a/b"));
    folders.removeEmpty();
    EXPECT_FALSE(tree.exists("a"));
}

TEST(MadeFolders, making_fails_whereAFileIsInTheWay)
{
    const TemporaryTree tree;
    tree.makeFile("file");
    MadeFolders folders;
    EXPECT_EQ(folders.make(tree.path("file")), ENOTDIR);
    EXPECT_EQ(folders.make(tree.path("file/a/b")), ENOTDIR);
    EXPECT_EQ(folders.make("/proc/no such process/a"), ENOENT);
}
