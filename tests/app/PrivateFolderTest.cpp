#include "app/PrivateFolder.h"

#include "tests/support/RunProgram.h"
#include "tests/support/TemporaryTree.h"

#include <gtest/gtest.h>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

using namespace Tessaron;
using namespace Tessaron::Desktop;
using namespace Tessaron::Testing;

namespace
{

bool isThere(const QByteArray &path)
{
    struct stat info = {};
    return ::lstat(path.constData(), &info) == 0;
}

} // namespace

TEST(PrivateFolder, isTheUsersOwn_andGoesWithAllThatIsInIt)
{
    const TemporaryTree tree;
    QByteArray path;
    {
        const Result<PrivateFolder> folder = PrivateFolder::makeBelow(tree.path("cache/lent"));
        ASSERT_TRUE(folder) << folder.error().localizedDescription().toStdString();
        path = folder->path();
        struct stat info = {};
        ASSERT_EQ(::stat(path.constData(), &info), 0);
        EXPECT_EQ(info.st_mode & 0777U, 0700U);
        const QByteArray name = path.mid(tree.path().size() + 1);
        tree.makeFile(name + "/sub/file", "x");
        tree.makeFile("kept", "y");
        tree.makeSymbolicLink(name + "/link", tree.path("kept"));
    }
    EXPECT_FALSE(isThere(path));
    EXPECT_TRUE(tree.exists("kept"));
}

TEST(PrivateFolder, removesWhatWasLeftBehind_andNothingOfALivingProcess)
{
    const TemporaryTree tree;
    tree.makeFile("lent/abandoned/file", "x");
    tree.makeFolder("lent/held");
    // Another process that holds a folder, as this class does.
    const RunningProgram holder(
        "flock", {"-F", tree.path("lent/held"), "sh", "-c", "touch \"$0\" && exec sleep 600", tree.path("ready")});
    while (holder.isRunning() && !tree.exists("ready"))
        ::usleep(1000);
    ASSERT_TRUE(tree.exists("ready"));
    const Result<PrivateFolder> folder = PrivateFolder::makeBelow(tree.path("lent"));
    ASSERT_TRUE(folder);
    EXPECT_FALSE(tree.exists("lent/abandoned"));
    EXPECT_TRUE(tree.exists("lent/held"));
    // Nor one of this process itself.
    const Result<PrivateFolder> second = PrivateFolder::makeBelow(tree.path("lent"));
    ASSERT_TRUE(second);
    EXPECT_TRUE(isThere(folder->path()));
}

TEST(PrivateFolder, whatCannotBeMade_isToldByName)
{
    const TemporaryTree tree;
    tree.makeFile("file", "x");
    const Result<PrivateFolder> folder = PrivateFolder::makeBelow(tree.path("file/below"));
    ASSERT_FALSE(folder);
    EXPECT_EQ(folder.error().filePath(), tree.pathText("file/below"));
}
