#include "imaging/PrivateFolder.h"
#include "imaging/ProcessFolder.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/TemporaryFiles.h>

#include <QFileInfo>

#include <array>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <set>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

mode_t modeOf(const QByteArray &path)
{
    struct stat status = {};
    EXPECT_EQ(::lstat(path.constData(), &status), 0) << path.constData();
    return status.st_mode;
}

bool isPrivateFolder(const QByteArray &path)
{
    return modeOf(path) == (S_IFDIR | 0700);
}

const void *objectAt(std::uintptr_t address)
{
    // The address stands for an object and is never followed.
    return reinterpret_cast<const void *>(address); // NOLINT(performance-no-int-to-ptr)
}

} // namespace

TEST(PrivateFolder, path_isMadeForTheUserAlone)
{
    const TemporaryTree tree;
    const mode_t before = ::umask(0);
    PrivateFolder folder(tree.path(), "qorvu-somebody");
    EXPECT_EQ(folder.path(), tree.path("qorvu-somebody"));
    ::umask(0277);
    PrivateFolder other(tree.path(), "qorvu-other");
    EXPECT_EQ(other.path(), tree.path("qorvu-other"));
    ::umask(before);
    EXPECT_TRUE(isPrivateFolder(tree.path("qorvu-somebody")));
    EXPECT_TRUE(isPrivateFolder(tree.path("qorvu-other")));
}

TEST(PrivateFolder, path_isTheSame_forEveryProgramOfTheUser)
{
    const TemporaryTree tree;
    EXPECT_EQ(PrivateFolder(tree.path(), "qorvu-a").path(), tree.path("qorvu-a"));
    EXPECT_EQ(PrivateFolder(tree.path(), "qorvu-a").path(), tree.path("qorvu-a"));
}

TEST(PrivateFolder, path_makesTheFolderAgain_whenItWasRemoved)
{
    const TemporaryTree tree;
    PrivateFolder folder(tree.path(), "qorvu-a");
    ASSERT_EQ(::rmdir(folder.path().constData()), 0);
    EXPECT_EQ(folder.path(), tree.path("qorvu-a"));
    EXPECT_TRUE(isPrivateFolder(tree.path("qorvu-a")));
}

TEST(PrivateFolder, path_doesNotFollowAPlantedLink)
{
    const TemporaryTree tree;
    tree.makeFolder("target");
    tree.setMode("target", 0700);
    tree.makeSymbolicLink("qorvu-a", tree.path("target"));
    PrivateFolder folder(tree.path(), "qorvu-a");
    const QByteArray path = folder.path();
    EXPECT_TRUE(path.startsWith(tree.path("qorvu-a-"))) << path.constData();
    EXPECT_TRUE(isPrivateFolder(path));
    EXPECT_EQ(folder.path(), path) << "the substitute stays";
    EXPECT_TRUE(QFileInfo(tree.pathText("qorvu-a")).isSymLink());
}

TEST(PrivateFolder, path_doesNotFollowALinkToNothing)
{
    const TemporaryTree tree;
    tree.makeSymbolicLink("qorvu-a", tree.path("not-yet"));
    EXPECT_TRUE(PrivateFolder(tree.path(), "qorvu-a").path().startsWith(tree.path("qorvu-a-")));
    EXPECT_FALSE(tree.exists("not-yet"));
}

TEST(PrivateFolder, path_avoidsAFolderThatOthersMayEnter)
{
    for (const unsigned int mode : {0755u, 0701u, 0770u, 01777u}) {
        const TemporaryTree tree;
        tree.makeFolder("qorvu-a");
        tree.setMode("qorvu-a", mode);
        EXPECT_TRUE(PrivateFolder(tree.path(), "qorvu-a").path().startsWith(tree.path("qorvu-a-"))) << mode;
        EXPECT_EQ(modeOf(tree.path("qorvu-a")) & 07777, mode) << "what is not ours is left as it is";
    }
}

TEST(PrivateFolder, path_avoidsAFile)
{
    const TemporaryTree tree;
    tree.makeFile("qorvu-a", "mine");
    EXPECT_TRUE(PrivateFolder(tree.path(), "qorvu-a").path().startsWith(tree.path("qorvu-a-")));
    EXPECT_EQ(tree.contents("qorvu-a"), "mine");
}

TEST(PrivateFolder, path_avoidsAFolderOfAnotherUser)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can make a folder of another user";
    const TemporaryTree tree;
    tree.makeFolder("qorvu-a");
    tree.setMode("qorvu-a", 0700);
    ASSERT_EQ(::chown(tree.path("qorvu-a").constData(), 65534, 65534), 0);
    EXPECT_TRUE(PrivateFolder(tree.path(), "qorvu-a").path().startsWith(tree.path("qorvu-a-")));
}

TEST(PrivateFolder, path_isEmpty_whenNothingCanBeMade)
{
    const TemporaryTree tree;
    EXPECT_EQ(PrivateFolder(tree.path("missing"), "qorvu-a").path(), "");
    tree.setMode("", 0555);
    const WithoutRootRights rights;
    EXPECT_EQ(PrivateFolder(tree.path(), "qorvu-a").path(), "");
}

TEST(PrivateFolder, path_isOneFolder_whenManyThreadsAsk)
{
    const TemporaryTree tree;
    tree.makeFile("qorvu-a");
    PrivateFolder folder(tree.path(), "qorvu-a");
    std::vector<QByteArray> paths(8);
    std::vector<std::thread> threads;
    threads.reserve(paths.size());
    for (QByteArray &path : paths)
        threads.emplace_back([&folder, &path] { path = folder.path(); });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(std::set<QByteArray>(paths.begin(), paths.end()).size(), 1u);
}

TEST(TemporaryFiles, temporaryFolder_isNamedAfterTheUser)
{
    const QByteArray user = ::getpwuid(::geteuid())->pw_name;
    const QByteArray place = QFileInfo(QStringLiteral("/private/tmp")).isDir() ? "/private/tmp" : "/tmp";
    const QByteArray path = fileSystemRepresentation(temporaryFolder());
    EXPECT_TRUE(path.startsWith(place + "/qorvu-" + user)) << path.constData();
    EXPECT_TRUE(isPrivateFolder(path));
}

TEST(TemporaryFiles, temporaryFilesExtension_isTempFile)
{
    EXPECT_EQ(temporaryFilesExtension(), QStringLiteral("tempFile"));
}

TEST(TemporaryFiles, temporaryFileForObject_isNamedByTheIdentityAsASigned32BitNumber)
{
    const QString folder = temporaryFolder();
    EXPECT_EQ(temporaryFileForObject(objectAt(0x12345)), folder + QStringLiteral("/74565.tempFile"));
    EXPECT_EQ(temporaryFileForObject(objectAt(0xFFFFFFFF)), folder + QStringLiteral("/-1.tempFile"));
    EXPECT_EQ(temporaryFileForObject(objectAt(0x80000000)), folder + QStringLiteral("/-2147483648.tempFile"));
    EXPECT_EQ(temporaryFileForObject(objectAt(0x7FFF00000002)), folder + QStringLiteral("/2.tempFile"));
    EXPECT_EQ(temporaryFileForObject(nullptr), folder + QStringLiteral("/0.tempFile"));
    EXPECT_FALSE(QFileInfo::exists(temporaryFileForObject(objectAt(0x12345)))) << "the file is not made";
}

TEST(TemporaryFiles, temporaryFolderForObject_isMadeForTheUserAlone)
{
    const int object = 0;
    const QString path = temporaryFolderForObject(&object);
    const auto number = std::int32_t(reinterpret_cast<std::uintptr_t>(&object));
    EXPECT_EQ(path, QStringLiteral("%1/%2").arg(temporaryFolder()).arg(number));
    EXPECT_TRUE(isPrivateFolder(fileSystemRepresentation(path)));
    EXPECT_EQ(temporaryFolderForObject(&object), path);
    EXPECT_EQ(::rmdir(fileSystemRepresentation(path).constData()), 0);
}

TEST(TemporaryFiles, whatObjectsLeave_goesWithTheNextStart_whenTheirProcessIsKilled)
{
    int paths[2] = {-1, -1};
    ASSERT_EQ(::pipe(paths), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        const int object = 0;
        const QByteArray folder = fileSystemRepresentation(temporaryFolderForObject(&object));
        const QByteArray file = fileSystemRepresentation(temporaryFileForObject(&object));
        ::close(::open((folder + "/tempWavFile.wav").constData(), O_WRONLY | O_CREAT, 0600));
        ::close(::open((file + ".mov").constData(), O_WRONLY | O_CREAT, 0600));
        (void)!::write(paths[1], file.constData(), std::size_t(file.size()));
        for (;;)
            ::pause();
    }
    std::array<char, 1000> told = {};
    ASSERT_GT(::read(paths[0], told.data(), told.size() - 1), 0);
    const QString file = stringWithFileSystemRepresentation(told.data());
    const QString folder = file.chopped(qsizetype(sizeof ".tempFile") - 1);
    EXPECT_TRUE(QFileInfo::exists(file + QStringLiteral(".mov")));
    EXPECT_TRUE(QFileInfo::exists(folder + QStringLiteral("/tempWavFile.wav")));
    ::kill(child, SIGKILL);
    ASSERT_EQ(::waitpid(child, nullptr, 0), child);
    // What a program does that starts now.
    EXPECT_FALSE(ProcessFolder([] { return fileSystemRepresentation(temporaryFolder()); }).path().isEmpty());
    EXPECT_FALSE(QFileInfo::exists(file + QStringLiteral(".mov")));
    EXPECT_FALSE(QFileInfo::exists(folder));
    ::close(paths[0]);
    ::close(paths[1]);
}
