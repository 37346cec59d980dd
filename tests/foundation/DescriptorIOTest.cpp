#include "platform/foundation/DescriptorIO.h"

#include "platform/foundation/DirectoryStream.h"
#include "platform/foundation/UniqueDescriptor.h"
#include "tests/support/TemporaryTree.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <set>
#include <thread>

namespace Tessaron::Testing
{

namespace
{

UniqueDescriptor open(const QByteArray &path, int flags)
{
    return UniqueDescriptor(::open(path.constData(), flags | O_CLOEXEC));
}

} // namespace

TEST(DescriptorIO, writeFully_writesAtThePosition)
{
    const TemporaryTree tree;
    const UniqueDescriptor file = open(tree.makeFile("file", "12345"), O_WRONLY);
    EXPECT_EQ(writeFully(file.get(), "ab", 2), 0);
    EXPECT_EQ(writeZeros(file.get(), 1), 0);
    EXPECT_EQ(writeFully(file.get(), nullptr, 0), 0);
    EXPECT_EQ(tree.contents("file"),
              QByteArray("ab\0"
                         "45",
                         5));
}

TEST(DescriptorIO, writeFully_givesTheSystemsReason)
{
    EXPECT_EQ(writeFully(open("/dev/full", O_WRONLY).get(), "ab", 2), ENOSPC);
    EXPECT_EQ(writeZeros(open("/dev/full", O_WRONLY).get(), 200000), ENOSPC);
    EXPECT_EQ(writeFully(-1, "ab", 2), EBADF);
}

TEST(DescriptorIO, writeFully_waits_whereThePipeIsFullAndDoesNotBlock)
{
    std::array<int, 2> ends = {-1, -1};
    ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    const UniqueDescriptor from(ends[0]);
    UniqueDescriptor to(ends[1]);
    ASSERT_EQ(::fcntl(to.get(), F_SETFL, O_NONBLOCK), 0);
    const QByteArray sent(1 << 20, 'x'); // 16 times what a pipe holds
    QByteArray received;
    std::thread reader([&] {
        std::array<char, 5000> part;
        for (ssize_t got = 0; (got = ::read(from.get(), part.data(), part.size())) > 0;)
            received.append(part.data(), got);
    });
    EXPECT_EQ(writeFully(to.get(), sent.constData(), std::size_t(sent.size())), 0);
    to.reset();
    reader.join();
    EXPECT_EQ(received, sent);
}

TEST(DescriptorIO, readFully_saysHowMuchThereWas_whereTheFileEnds)
{
    const TemporaryTree tree;
    const UniqueDescriptor file = open(tree.makeFile("file", "12345"), O_RDONLY);
    std::array<char, 8> bytes{};
    std::size_t got = 99;
    EXPECT_EQ(readFully(file.get(), 1, bytes.data(), 3, &got), 0);
    EXPECT_EQ(QByteArray(bytes.data(), qsizetype(got)), "234");
    EXPECT_EQ(readFully(file.get(), 3, bytes.data(), 8, &got), 0);
    EXPECT_EQ(QByteArray(bytes.data(), qsizetype(got)), "45");
    EXPECT_EQ(readFully(file.get(), 9, bytes.data(), 8, &got), 0);
    EXPECT_EQ(got, 0u);
    EXPECT_EQ(::lseek(file.get(), 0, SEEK_CUR), 0);
}

TEST(DescriptorIO, readFully_givesTheSystemsReason)
{
    const TemporaryTree tree;
    std::array<char, 8> bytes{};
    std::size_t got = 99;
    EXPECT_EQ(readFully(open(tree.path(), O_RDONLY).get(), 0, bytes.data(), 8, &got), EISDIR);
    EXPECT_EQ(got, 0u);
}

TEST(DirectoryStream, stream_ownsTheFolder_andClosesIt)
{
    const TemporaryTree tree;
    tree.makeFile("one");
    UniqueDescriptor folder = open(tree.path(), O_RDONLY | O_DIRECTORY);
    const int number = folder.get();
    {
        const DirectoryStream stream = directoryStream(std::move(folder));
        ASSERT_TRUE(stream);
        std::set<QByteArray> names;
        while (const dirent *const entry = ::readdir(stream.get()))
            names.insert(entry->d_name);
        EXPECT_EQ(names, (std::set<QByteArray>{".", "..", "one"}));
    }
    EXPECT_EQ(::fcntl(number, F_GETFD), -1);
}

TEST(DirectoryStream, stream_isNull_whenThereIsNoFolder_andNothingStaysOpen)
{
    const TemporaryTree tree;
    UniqueDescriptor file = open(tree.makeFile("file"), O_RDONLY);
    const int number = file.get();
    EXPECT_FALSE(directoryStream(std::move(file)));
    EXPECT_EQ(errno, ENOTDIR);
    EXPECT_EQ(::fcntl(number, F_GETFD), -1);
    EXPECT_FALSE(directoryStream(UniqueDescriptor()));
}

} // namespace Tessaron::Testing
