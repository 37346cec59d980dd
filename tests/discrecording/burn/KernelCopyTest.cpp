#include "platform/discrecording/burn/KernelCopy.h"

#include "platform/foundation/UniqueDescriptor.h"
#include "tests/support/TemporaryTree.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <vector>

namespace Tessaron::Testing
{

namespace
{

using Outcome = FileCopyResult::Outcome;

QByteArray pattern(qsizetype length)
{
    QByteArray bytes(length, Qt::Uninitialized);
    for (qsizetype at = 0; at < length; ++at)
        bytes[at] = char((at * 2654435761u) >> 16);
    return bytes;
}

bool goOn(std::uint64_t)
{
    return true;
}

FileCopyResult copy(const FileRange &range, const UniqueDescriptor &to, const CopyProgress &progress)
{
    return copyToDescriptor(range, to.get(), QStringLiteral("the name"), progress);
}

UniqueDescriptor openForReading(const QByteArray &path)
{
    return UniqueDescriptor(::open(path.constData(), O_RDONLY | O_CLOEXEC));
}

UniqueDescriptor openForWriting(const QByteArray &path)
{
    return UniqueDescriptor(::open(path.constData(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644));
}

qint64 allocatedBytes(const QByteArray &path)
{
    struct stat status = {};
    EXPECT_EQ(::stat(path.constData(), &status), 0);
    return qint64(status.st_blocks) * 512;
}

/// A file of 8 MiB with data in [1 MiB, 1 MiB + 10000) and nothing else.
QByteArray makeFileWithHoles(const TemporaryTree &tree, const QByteArray &data)
{
    QByteArray path = tree.makeSparseFile("holes", 8 << 20);
    const UniqueDescriptor file(::open(path.constData(), O_WRONLY | O_CLOEXEC));
    EXPECT_EQ(::pwrite(file.get(), data.constData(), size_t(data.size()), 1 << 20), data.size());
    return path;
}

QByteArray expectedWithHoles(const QByteArray &data)
{
    QByteArray expected(8 << 20, '\0');
    return expected.replace(1 << 20, data.size(), data);
}

} // namespace

TEST(KernelCopy, copiesTheRangeToThePosition_andMovesIt)
{
    const TemporaryTree tree;
    const QByteArray bytes = pattern(5000000);
    const UniqueDescriptor from = openForReading(tree.makeFile("from", bytes));
    const UniqueDescriptor to = openForWriting(tree.makeFile("to", "head"));
    ASSERT_EQ(::lseek(to.get(), 4, SEEK_SET), 4);
    std::uint64_t told = 0;
    const FileCopyResult result = copy({from.get(), 1001, 4500000}, to, [&](std::uint64_t more) {
        told += more;
        return true;
    });
    EXPECT_EQ(result.outcome, Outcome::Copied);
    EXPECT_EQ(told, 4500000u);
    EXPECT_EQ(::lseek(to.get(), 0, SEEK_CUR), 4 + 4500000);
    EXPECT_EQ(tree.contents("to"), "head" + bytes.mid(1001, 4500000));
}

TEST(KernelCopy, copiesByReadingAndWriting_whenTheFileSystemsDiffer)
{
    const TemporaryTree tree;
    const TemporaryTree memory(QStringLiteral("/dev/shm"));
    const QByteArray bytes = pattern(3000001);
    const UniqueDescriptor from = openForReading(memory.makeFile("from", bytes));
    const UniqueDescriptor to = openForWriting(tree.makeFile("to"));
    EXPECT_EQ(copy({from.get(), 0, 3000001}, to, goOn).outcome, Outcome::Copied);
    EXPECT_EQ(tree.contents("to"), bytes);
}

TEST(KernelCopy, makesHolesOfHoles_whenTheOutputGrows)
{
    const TemporaryTree tree;
    const QByteArray data = pattern(10000);
    const UniqueDescriptor from = openForReading(makeFileWithHoles(tree, data));
    const UniqueDescriptor to = openForWriting(tree.makeFile("to"));
    EXPECT_EQ(copy({from.get(), 0, 8 << 20}, to, goOn).outcome, Outcome::Copied);
    EXPECT_EQ(tree.contents("to"), expectedWithHoles(data));
    EXPECT_LT(allocatedBytes(tree.path("to")), 1 << 20);
}

TEST(KernelCopy, writesZerosForHoles_overOldContents)
{
    const TemporaryTree tree;
    const QByteArray data = pattern(10000);
    const UniqueDescriptor from = openForReading(makeFileWithHoles(tree, data));
    const UniqueDescriptor to = openForWriting(tree.makeFile("to", QByteArray(9 << 20, 'x')));
    EXPECT_EQ(copy({from.get(), 0, 8 << 20}, to, goOn).outcome, Outcome::Copied);
    EXPECT_EQ(tree.contents("to"), expectedWithHoles(data) + QByteArray(1 << 20, 'x'));
}

TEST(KernelCopy, copiesPartOfAHole_whenTheRangeBeginsAndEndsInOne)
{
    const TemporaryTree tree;
    const QByteArray data = pattern(10000);
    const UniqueDescriptor from = openForReading(makeFileWithHoles(tree, data));
    const UniqueDescriptor to = openForWriting(tree.makeFile("to"));
    EXPECT_EQ(copy({from.get(), 500000, 1000000}, to, goOn).outcome, Outcome::Copied);
    EXPECT_EQ(tree.contents("to"), expectedWithHoles(data).mid(500000, 1000000));
}

TEST(KernelCopy, stops_whenProgressSaysSo)
{
    const TemporaryTree tree;
    const UniqueDescriptor from = openForReading(tree.makeFile("from", pattern(40 << 20)));
    const UniqueDescriptor to = openForWriting(tree.makeFile("to"));
    std::vector<std::uint64_t> told;
    const FileCopyResult result = copy({from.get(), 0, 40 << 20}, to, [&](std::uint64_t more) {
        told.push_back(more);
        return told.size() < 2;
    });
    EXPECT_EQ(result.outcome, Outcome::Cancelled);
    ASSERT_EQ(told.size(), 2u);
    EXPECT_LE(*std::ranges::max_element(told), 16u << 20);
}

TEST(KernelCopy, saysSo_whenTheFileEndsEarly)
{
    const TemporaryTree tree;
    const UniqueDescriptor from = openForReading(tree.makeFile("from", pattern(5000)));
    const UniqueDescriptor to = openForWriting(tree.makeFile("to"));
    EXPECT_EQ(copy({from.get(), 0, 6000}, to, goOn).outcome, Outcome::EndedEarly);
}

TEST(KernelCopy, reportsTheWriteError_whenTheDeviceIsFull)
{
    const TemporaryTree tree;
    const UniqueDescriptor from = openForReading(tree.makeFile("from", pattern(5000)));
    const UniqueDescriptor to = openForWriting("/dev/full");
    const FileCopyResult result = copy({from.get(), 0, 5000}, to, goOn);
    EXPECT_EQ(result.outcome, Outcome::WriteFailed);
    EXPECT_EQ(result.writeError.code(), dskFulErr);
    EXPECT_EQ(result.writeError.localizedDescription(), QStringLiteral("The disk holding “the name” is full."));
}

TEST(KernelCopy, reportsTheReadError_whenTheSourceCannotBeRead)
{
    const TemporaryTree tree;
    const UniqueDescriptor from(::open(tree.path().constData(), O_RDONLY | O_CLOEXEC)); // a folder
    const UniqueDescriptor to = openForWriting(tree.makeFile("to"));
    const FileCopyResult result = copy({from.get(), 0, 5000}, to, goOn);
    EXPECT_EQ(result.outcome, Outcome::ReadFailed);
    EXPECT_EQ(result.readErrno, EISDIR);
}

} // namespace Tessaron::Testing
