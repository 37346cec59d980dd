#include "platform/coreservices/AbsolutePath.h"

#include "tests/support/TemporaryTree.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <unistd.h>

namespace Tessaron
{

namespace
{

QByteArray absolute(const QByteArray &path, LeafLink leaf = LeafLink::NotFollowed)
{
    QByteArray result;
    return makeAbsolutePath(path, leaf, &result) == 0 ? result : QByteArray("<error>");
}

QByteArray workingFolder()
{
    char buffer[4096];
    return ::getcwd(buffer, sizeof buffer) ? QByteArray(buffer) : QByteArray();
}

} // namespace

TEST(AbsolutePath, makeAbsolutePath_dropsDotsAndDoubledSlashes)
{
    EXPECT_EQ(absolute("/nowhere//a/./b/"), "/nowhere/a/b");
    EXPECT_EQ(absolute("/usr/bin/../b"), "/usr/b");
    EXPECT_EQ(absolute("/.."), "/");
    EXPECT_EQ(absolute("/../../x"), "/x");
    EXPECT_EQ(absolute("//"), "/");
    EXPECT_EQ(absolute("/."), "/");
}

TEST(AbsolutePath, makeAbsolutePath_refusesTwoDots_behindWhatIsNoFolder)
{
    const Testing::TemporaryTree tree;
    tree.makeFile("file");
    QByteArray result;
    EXPECT_EQ(makeAbsolutePath(tree.path("missing/../file"), LeafLink::NotFollowed, &result), ENOENT);
    EXPECT_EQ(makeAbsolutePath(tree.path("file/../file"), LeafLink::NotFollowed, &result), ENOTDIR);
    EXPECT_TRUE(result.isNull());
}

TEST(AbsolutePath, makeAbsolutePath_startsAtTheWorkingFolder_forARelativePath)
{
    EXPECT_EQ(absolute("x/y"), QByteArray(workingFolder()).append("/x/y"));
    EXPECT_EQ(absolute("."), workingFolder());
}

TEST(AbsolutePath, makeAbsolutePath_fails_forNoPath)
{
    QByteArray result("untouched");
    EXPECT_EQ(makeAbsolutePath("", LeafLink::Followed, &result), ENOENT);
    EXPECT_EQ(makeAbsolutePath(QByteArray("/a\0b", 4), LeafLink::Followed, &result), ENOENT);
    EXPECT_EQ(result, "untouched");
}

TEST(AbsolutePath, makeAbsolutePath_keepsLinksOnTheWay)
{
    const Testing::TemporaryTree tree;
    tree.makeFile("real/file");
    tree.makeSymbolicLink("link", "real");
    EXPECT_EQ(absolute(tree.path("link/file")), tree.path("link/file"));
}

TEST(AbsolutePath, makeAbsolutePath_goesToTheTargetsFolder_whenDotsFollowALink)
{
    const Testing::TemporaryTree tree;
    tree.makeFolder("far/away/folder");
    tree.makeSymbolicLink("link", "far/away/folder");
    EXPECT_EQ(absolute(tree.path("link/../x")), tree.path("far/away/x"));
}

TEST(AbsolutePath, makeAbsolutePath_followsChainsOfLinksAtTheEnd_onlyWhenAsked)
{
    const Testing::TemporaryTree tree;
    tree.makeFile("folder/file");
    tree.makeSymbolicLink("one", "folder/two");
    tree.makeSymbolicLink("folder/two", "../folder/./file");
    EXPECT_EQ(absolute(tree.path("one")), tree.path("one"));
    EXPECT_EQ(absolute(tree.path("one"), LeafLink::Followed), tree.path("folder/file"));
}

TEST(AbsolutePath, makeAbsolutePath_meansTheTarget_whenASlashFollowsALink)
{
    const Testing::TemporaryTree tree;
    tree.makeFolder("folder");
    tree.makeSymbolicLink("link", "folder");
    EXPECT_EQ(absolute(tree.path("link/")), tree.path("folder"));
}

TEST(AbsolutePath, makeAbsolutePath_reportsALoop_whenLinksLeadToThemselves)
{
    const Testing::TemporaryTree tree;
    tree.makeSymbolicLink("one", "two");
    tree.makeSymbolicLink("two", "one");
    QByteArray result;
    EXPECT_EQ(makeAbsolutePath(tree.path("one"), LeafLink::Followed, &result), ELOOP);
}

} // namespace Tessaron
