#include "platform/discrecording/burn/FileSink.h"

#include "platform/foundation/UniqueDescriptor.h"
#include "tests/support/TemporaryTree.h"

#include <fcntl.h>
#include <gtest/gtest.h>

namespace Tessaron::Testing
{

namespace
{

using Syncing = FileSink::Syncing;

const QString name = QStringLiteral("the name for people");

UniqueDescriptor open(const QByteArray &path, int flags = O_WRONLY)
{
    return UniqueDescriptor(::open(path.constData(), flags | O_CLOEXEC));
}

NSError writeText(FileSink &sink, const QByteArray &text)
{
    return sink.writeBlocks({text.constData(), 1, std::uint32_t(text.size()), BlockAddress(7)});
}

} // namespace

TEST(FileSink, blocks_goToThePosition_whateverTheirAddress)
{
    const TemporaryTree tree;
    const UniqueDescriptor file = open(tree.makeFile("image", "ab"));
    ASSERT_EQ(::lseek(file.get(), 2, SEEK_SET), 2);
    FileSink sink(file.get(), name, Syncing::AtTheEnd);
    EXPECT_TRUE(writeText(sink, "cd").isNull());
    EXPECT_TRUE(writeText(sink, "ef").isNull());
    EXPECT_TRUE(sink.endDisc().isNull());
    EXPECT_EQ(tree.contents("image"), "abcdef");
}

TEST(FileSink, endDisc_cutsALongerFile)
{
    const TemporaryTree tree;
    const UniqueDescriptor file = open(tree.makeFile("image", QByteArray(100, 'x')));
    FileSink sink(file.get(), name, Syncing::No);
    EXPECT_TRUE(writeText(sink, "short").isNull());
    EXPECT_EQ(tree.contents("image").size(), 100);
    EXPECT_TRUE(sink.endDisc().isNull());
    EXPECT_EQ(tree.contents("image"), "short");
}

TEST(FileSink, copyFile_fillsTheLastBlockUp_andTellsOfEveryByte)
{
    const TemporaryTree tree;
    const UniqueDescriptor from = open(tree.makeFile("from", "0123456789"), O_RDONLY);
    const UniqueDescriptor file = open(tree.makeFile("image"));
    FileSink sink(file.get(), name, Syncing::No);
    ASSERT_TRUE(sink.copiesFiles());
    std::uint64_t told = 0;
    const auto progress = [&](std::uint64_t bytes) {
        told += bytes;
        return true;
    };
    EXPECT_EQ(sink.copyFile({from.get(), 2, 5}, 8, progress).outcome, FileCopyResult::Outcome::Copied);
    EXPECT_EQ(tree.contents("image"), QByteArray("23456\0\0\0", 8));
    EXPECT_EQ(told, 8u);
    EXPECT_EQ(sink.copyFile({from.get(), 0, 8}, 8, progress).outcome, FileCopyResult::Outcome::Copied);
    EXPECT_EQ(told, 16u);
}

TEST(FileSink, sinkForAPipeOrADevice_copiesNoFiles_andEndsWithoutAFuss)
{
    for (const char *const path : {"/dev/null", "/dev/full"}) {
        const UniqueDescriptor device = open(path);
        FileSink sink(device.get(), name, Syncing::AtTheEnd);
        EXPECT_FALSE(sink.copiesFiles());
        EXPECT_TRUE(sink.endDisc().isNull()) << path;
    }
}

TEST(FileSink, error_carriesTheName_andSaysWhatToDo)
{
    const UniqueDescriptor device = open("/dev/full");
    FileSink sink(device.get(), QStringLiteral("/a/d\u00FCsc.iso"), Syncing::No);
    const NSError error = writeText(sink, "x");
    EXPECT_EQ(error.code(), dskFulErr);
    EXPECT_EQ(error.localizedDescription(), QStringLiteral("The disk holding “/a/d\u00FCsc.iso” is full."));
    EXPECT_EQ(error.localizedRecoverySuggestion(), QStringLiteral("Free some space there, or write to another disk."));
    EXPECT_EQ(error.filePath(), QStringLiteral("/a/d\u00FCsc.iso"));
}

TEST(FileSink, error_speaksOfTheOutput_whenItHasNoName)
{
    const UniqueDescriptor device = open("/dev/full");
    FileSink sink(device.get(), {}, Syncing::No);
    const NSError error = writeText(sink, "x");
    EXPECT_EQ(error.localizedDescription(), QStringLiteral("The disk holding the output is full."));
    EXPECT_TRUE(error.filePath().isEmpty());
}

} // namespace Tessaron::Testing
