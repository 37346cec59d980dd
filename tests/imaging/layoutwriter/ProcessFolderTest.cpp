#include "imaging/ProcessFolder.h"

#include "platform/foundation/DirectoryStream.h"
#include "tests/support/TemporaryTree.h"

#include <csignal>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

QByteArray parentFolder;

QByteArray parent()
{
    return parentFolder;
}

class ProcessFolders : public testing::Test
{
protected:
    ProcessFolders() { parentFolder = tree.path(); }

    [[nodiscard]] int foldersLeft() const
    {
        int count = 0;
        const DirectoryStream stream(::opendir(tree.path().constData()));
        while (const dirent *const entry = ::readdir(stream.get()))
            count += QByteArrayView(entry->d_name).startsWith("process-") ? 1 : 0;
        return count;
    }
    static bool exists(const QByteArray &path)
    {
        struct stat status;
        return ::lstat(path.constData(), &status) == 0;
    }

    const TemporaryTree tree;
};

} // namespace

TEST_F(ProcessFolders, path_isAPrivateFolder_thatGoesWithItsFiles)
{
    const mode_t before = ::umask(0277);
    QByteArray path;
    {
        ProcessFolder folder(&parent);
        EXPECT_EQ(foldersLeft(), 0) << "nothing is made before it is needed";
        path = folder.path();
        ::umask(before);
        EXPECT_EQ(folder.path(), path);
        struct stat status = {};
        ASSERT_EQ(::stat(path.constData(), &status), 0);
        EXPECT_EQ(status.st_mode, mode_t(S_IFDIR | 0700));
        ASSERT_EQ(::mkfifo((path + "/pipe").constData(), 0600), 0);
    }
    EXPECT_FALSE(exists(path));
}

TEST_F(ProcessFolders, whatAKilledProcessLeaves_goesWithTheNextStart_andWhatALivingOneHasStays)
{
    int numbers[2] = {-1, -1};
    ASSERT_EQ(::pipe(numbers), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        ProcessFolder folder(&parent);
        const QByteArray path = folder.path();
        const bool isMade = ::mkfifo((path + "/pipe").constData(), 0600) == 0;
        (void)!::write(numbers[1], isMade ? "y" : "n", 1);
        for (;;)
            ::pause();
    }
    char isMade = 0;
    ASSERT_EQ(::read(numbers[0], &isMade, 1), 1);
    EXPECT_EQ(isMade, 'y');
    ProcessFolder living(&parent);
    const QByteArray livingPath = living.path();
    EXPECT_EQ(foldersLeft(), 2);
    ::kill(child, SIGKILL);
    ASSERT_EQ(::waitpid(child, nullptr, 0), child);
    EXPECT_EQ(foldersLeft(), 2);
    ProcessFolder next(&parent);
    EXPECT_FALSE(next.path().isEmpty());
    EXPECT_EQ(foldersLeft(), 2) << "the living one's and the new one";
    EXPECT_TRUE(exists(livingPath));
    ::close(numbers[0]);
    ::close(numbers[1]);
}

TEST_F(ProcessFolders, path_isMadeAgain_whenItWasRemoved_andEmptyWhenItCannotBeMade)
{
    ProcessFolder folder(&parent);
    ASSERT_EQ(::rmdir(folder.path().constData()), 0);
    EXPECT_TRUE(exists(folder.path()));
    ProcessFolder nowhere([] { return QByteArray(); });
    EXPECT_TRUE(nowhere.path().isEmpty());
    ProcessFolder missing([] { return QByteArray("/missing/place"); });
    EXPECT_TRUE(missing.path().isEmpty());
}

TEST_F(ProcessFolders, leftovers_thatAreNoFoldersStay)
{
    tree.makeFile("process-file", "contents");
    tree.makeFolder("other");
    tree.makeSymbolicLink("process-link", "other");
    ProcessFolder folder(&parent);
    EXPECT_FALSE(folder.path().isEmpty());
    EXPECT_EQ(tree.contents("process-file"), "contents");
    EXPECT_TRUE(tree.exists("process-link"));
}
