#include "platform/discrecording/content/FileContentsReader.h"

#include "tests/discrecording/burn/FakeBlockImage.h"
#include "tests/support/TemporaryTree.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <thread>
#include <unistd.h>

namespace Tessaron::Testing
{

namespace
{

/// What opening and comparing says of a file after `change` has happened to it.
NSError errorAfter(const std::function<void(const TemporaryTree &)> &change)
{
    const TemporaryTree tree;
    const FileContents file = fileContentsOf(tree.makeFile("file", QByteArray(5000, 'x')));
    NSError error;
    const UniqueDescriptor before = openFileContents(file, &error);
    EXPECT_TRUE(error.isNull());
    change(tree);
    const UniqueDescriptor after = openFileContents(file, &error);
    EXPECT_TRUE(error);
    EXPECT_FALSE(after.isValid());
    EXPECT_EQ(error.filePath(), tree.pathText("file"));
    EXPECT_TRUE(error.localizedDescription().contains(tree.pathText("file")));
    EXPECT_FALSE(error.localizedRecoverySuggestion().isEmpty());
    return error;
}

/// What the comparison of an open file says after `change` has happened to it.
NSError errorWhileOpenAfter(const std::function<void(const TemporaryTree &)> &change)
{
    const TemporaryTree tree;
    const FileContents file = fileContentsOf(tree.makeFile("file", QByteArray(5000, 'x')));
    NSError error;
    const UniqueDescriptor descriptor = openFileContents(file, &error);
    EXPECT_TRUE(verifyFileContentsUnchanged(descriptor.get(), file).isNull());
    change(tree);
    return verifyFileContentsUnchanged(descriptor.get(), file);
}

void resize(const TemporaryTree &tree, off_t size)
{
    EXPECT_EQ(::truncate(tree.path("file").constData(), size), 0);
}

} // namespace

TEST(FileContentsReader, read_givesTheBytes_fromTheOffset)
{
    const TemporaryTree tree;
    const FileContents file = fileContentsOf(tree.makeFile("file", "0123456789"));
    NSError error;
    const UniqueDescriptor descriptor = openFileContents(file, &error);
    ASSERT_TRUE(descriptor.isValid());
    QByteArray bytes(4, Qt::Uninitialized);
    EXPECT_TRUE(readFileContents(descriptor.get(), file, 3, bytes.data(), 4).isNull());
    EXPECT_EQ(bytes, "3456");
}

TEST(FileContentsReader, open_endsItsWaitForABusyFile_whenCancelled)
{
    const TemporaryTree tree;
    const FileContents file = fileContentsOf(tree.makeFile("file", "x"));
    std::signal(SIGIO, SIG_IGN); // how the system asks the lease's holder to let go
    const UniqueDescriptor holder(::open(tree.path("file").constData(), O_RDWR | O_CLOEXEC));
    if (::fcntl(holder.get(), F_SETLEASE, F_WRLCK) != 0)
        GTEST_SKIP() << "the filesystem of the temporary folder knows no leases";
    std::stop_source cancellation;
    const auto start = std::chrono::steady_clock::now();
    std::jthread canceller([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        cancellation.request_stop();
    });
    NSError error;
    EXPECT_FALSE(openFileContents(file, &error, cancellation.get_token()).isValid());
    EXPECT_TRUE(error);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20)) << "the lease lasts 45";
    (void)::fcntl(holder.get(), F_SETLEASE, F_UNLCK);
}

TEST(FileContentsReader, open_namesTheFile_whenItHasVanished)
{
    const NSError error = errorAfter([](const auto &tree) { tree.remove("file"); });
    EXPECT_EQ(error.code(), fnfErr);
    EXPECT_TRUE(error.localizedDescription().contains(QStringLiteral("vanished")));
}

TEST(FileContentsReader, open_saysHow_whenTheSizeHasChanged)
{
    const NSError shrunk = errorAfter([](const auto &tree) { resize(tree, 4999); });
    EXPECT_EQ(shrunk.code(), eofErr);
    EXPECT_TRUE(shrunk.localizedDescription().contains(QStringLiteral("has shrunk")));
    EXPECT_TRUE(shrunk.localizedDescription().contains(QStringLiteral("5000 bytes and now has 4999")));
    const NSError grown = errorAfter([](const auto &tree) { resize(tree, 5001); });
    EXPECT_EQ(grown.code(), fBsyErr);
    EXPECT_TRUE(grown.localizedDescription().contains(QStringLiteral("has grown")));
}

TEST(FileContentsReader, open_fails_whenTheFileWasReplaced)
{
    const NSError error = errorAfter([](const auto &tree) {
        tree.makeFile("other", QByteArray(5000, 'x'));
        EXPECT_EQ(::rename(tree.path("other").constData(), tree.path("file").constData()), 0);
    });
    EXPECT_FALSE(error.localizedDescription().isEmpty());
}

TEST(FileContentsReader, open_doesNotHang_whenTheFileBecameAFifo)
{
    const NSError error = errorAfter([](const auto &tree) {
        tree.remove("file");
        tree.makeFifo("file");
    });
    EXPECT_FALSE(error.localizedDescription().isEmpty());
}

TEST(FileContentsReader, open_saysSo_whenTheFileMayNotBeRead)
{
    const TemporaryTree tree;
    tree.setMode("", 0755);
    const QByteArray path = tree.makeFile("file", "x");
    tree.setMode("file", 0);
    const FileContents file = fileContentsOf(path);
    const WithoutRootRights noRights;
    NSError error;
    EXPECT_FALSE(openFileContents(file, &error).isValid());
    EXPECT_EQ(error.code(), afpAccessDenied);
    EXPECT_EQ(error.filePath(), tree.pathText("file"));
}

TEST(FileContentsReader, open_givesThePathAsBytes_forANameThatIsNoUtf8)
{
    const TemporaryTree tree;
    const FileContents file = fileContentsOf(tree.makeFile("n\xff", "x"));
    tree.remove("n\xff");
    NSError error;
    EXPECT_FALSE(openFileContents(file, &error).isValid());
    EXPECT_EQ(error.filePath(), tree.pathText("n\xff"));
    EXPECT_TRUE(error.localizedDescription().contains(QStringLiteral("n\uFFFD”")));
}

TEST(FileContentsReader, verify_noticesAChange_whileTheFileIsOpen)
{
    EXPECT_EQ(errorWhileOpenAfter([](const auto &tree) { resize(tree, 10); }).code(), eofErr);
    EXPECT_EQ(errorWhileOpenAfter([](const auto &tree) { resize(tree, 6000); }).code(), fBsyErr);
    const NSError touched = errorWhileOpenAfter([](const auto &tree) { tree.setModificationTime("file", 1000000); });
    EXPECT_EQ(touched.code(), fBsyErr);
    EXPECT_TRUE(touched.localizedDescription().contains(QStringLiteral("was changed")));
}

TEST(FileContentsReader, verify_noticesAChangeOfTheSameSize_thoughItsTimeWasPutBack)
{
    const TemporaryTree tree;
    tree.makeFile("file", QByteArray(5000, 'x'));
    tree.setModificationTime("file", 1000000);
    const FileContents file = fileContentsOf(tree.path("file"));
    ::usleep(20000); // the clock of the file system's times has a step of up to 10 ms
    tree.makeFile("file", QByteArray(5000, 'y'));
    tree.setModificationTime("file", 1000000);
    NSError error;
    EXPECT_FALSE(openFileContents(file, &error).isValid());
    EXPECT_EQ(error.code(), fBsyErr);
}

TEST(FileContentsReader, read_saysThatTheFileHasShrunk_whenItEndsEarly)
{
    const TemporaryTree tree;
    const FileContents file = fileContentsOf(tree.makeFile("file", QByteArray(5000, 'x')));
    NSError error;
    const UniqueDescriptor descriptor = openFileContents(file, &error);
    resize(tree, 100);
    QByteArray bytes(5000, Qt::Uninitialized);
    EXPECT_EQ(readFileContents(descriptor.get(), file, 0, bytes.data(), 5000).code(), eofErr);
}

} // namespace Tessaron::Testing
