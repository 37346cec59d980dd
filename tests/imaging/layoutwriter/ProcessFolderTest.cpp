#include "imaging/ProcessFolder.h"

#include "platform/foundation/DirectoryStream.h"
#include "tests/support/TemporaryTree.h"

#include <csignal>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
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

    /// Has a process of its own do `work` in a folder of its own, and kills it then.
    static void doInAKilledProcess(const std::function<bool(ProcessFolder &)> &work)
    {
        int numbers[2] = {-1, -1};
        ASSERT_EQ(::pipe(numbers), 0);
        const pid_t child = ::fork();
        if (child == 0) {
            ProcessFolder folder(&parent);
            (void)!::write(numbers[1], work(folder) ? "y" : "n", 1);
            for (;;)
                ::pause();
        }
        char isDone = 0;
        EXPECT_EQ(::read(numbers[0], &isDone, 1), 1);
        EXPECT_EQ(isDone, 'y');
        ::kill(child, SIGKILL);
        EXPECT_EQ(::waitpid(child, nullptr, 0), child);
        ::close(numbers[0]);
        ::close(numbers[1]);
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
    std::unique_ptr<ProcessFolder> living;
    QByteArray livingPath;
    doInAKilledProcess(
        [](ProcessFolder &folder) { return ::mkfifo((folder.path() + "/pipe").constData(), 0600) == 0; });
    EXPECT_EQ(foldersLeft(), 1);
    living = std::make_unique<ProcessFolder>(&parent);
    livingPath = living->path();
    EXPECT_EQ(foldersLeft(), 1) << "the new one";
    ProcessFolder next(&parent);
    EXPECT_FALSE(next.path().isEmpty());
    EXPECT_EQ(foldersLeft(), 2) << "the living one's and the new one";
    EXPECT_TRUE(exists(livingPath));
}

TEST_F(ProcessFolders, foldersInIt_goToo_andLinksAreNotFollowed)
{
    tree.makeFile("elsewhere/precious", "contents");
    doInAKilledProcess([](ProcessFolder &folder) {
        const QByteArray inner = folder.path() + "/excerpt";
        const QByteArray deeper = inner + "/deeper";
        return ::mkdir(inner.constData(), 0700) == 0 && ::mkdir(deeper.constData(), 0700) == 0
            && ::mkfifo((deeper + "/pipe").constData(), 0600) == 0
            && ::symlink((parentFolder + "/elsewhere").constData(), (inner + "/link").constData()) == 0;
    });
    EXPECT_EQ(foldersLeft(), 1);
    {
        ProcessFolder next(&parent);
        EXPECT_EQ(::mkdir((next.path() + "/excerpt").constData(), 0700), 0);
        EXPECT_EQ(foldersLeft(), 1) << "the new one";
    }
    EXPECT_EQ(foldersLeft(), 0) << "at an ordinary end, too";
    EXPECT_EQ(tree.contents("elsewhere/precious"), "contents");
}

TEST_F(ProcessFolders, notedObjects_goWithTheProcess_unlessALivingOneHasThemToo)
{
    for (const char *const name : {"12", "12.tempFile.mov", "-34.tempFile", "-56.tempFile", "123", "1.tempFile"})
        tree.makeFile(name, "contents");
    tree.makeFile("-34/link.wav", "contents");
    ProcessFolder living(&parent);
    living.noteObject("-56");
    doInAKilledProcess([](ProcessFolder &folder) {
        for (const char *const name : {"12", "-34", "-56", "78"})
            folder.noteObject(name);
        return true;
    });
    EXPECT_TRUE(tree.exists("12"));
    EXPECT_FALSE(ProcessFolder(&parent).path().isEmpty());
    for (const char *const name : {"12", "12.tempFile.mov", "-34", "-34.tempFile"})
        EXPECT_FALSE(tree.exists(name)) << name;
    for (const char *const name : {"123", "1.tempFile", "-56.tempFile"})
        EXPECT_TRUE(tree.exists(name)) << name;
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
