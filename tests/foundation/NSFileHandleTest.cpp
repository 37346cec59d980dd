#include "platform/foundation/NSFileHandle.h"

#include "tests/support/TemporaryTree.h"

#include <gtest/gtest.h>

using namespace Tessaron;
using Testing::TemporaryTree;

TEST(NSFileHandle, fileHandleForWritingAtPath_isNullForAMissingFile)
{
    const TemporaryTree tree;
    EXPECT_FALSE(NSFileHandle::fileHandleForWritingAtPath(tree.pathText("missing")));
    EXPECT_FALSE(tree.exists("missing"));
}

TEST(NSFileHandle, writeData_continuesWhereTheLastCallEnded)
{
    const TemporaryTree tree;
    tree.makeFile("file");
    const auto handle = NSFileHandle::fileHandleForWritingAtPath(tree.pathText("file"));
    ASSERT_TRUE(handle);
    EXPECT_FALSE(handle->writeData("abc", 3));
    EXPECT_FALSE(handle->writeData("def", 3));
    EXPECT_FALSE(handle->closeFile());
    EXPECT_EQ(tree.contents("file"), "abcdef");
}

TEST(NSFileHandle, fileHandleForWritingAtPath_keepsWhatTheFileHolds)
{
    const TemporaryTree tree;
    tree.makeFile("file", "12345");
    const auto handle = NSFileHandle::fileHandleForWritingAtPath(tree.pathText("file"));
    EXPECT_FALSE(handle->writeData("ab", 2));
    EXPECT_FALSE(handle->closeFile());
    EXPECT_EQ(tree.contents("file"), "ab345");
}

TEST(NSFileHandle, writeData_reportsAFullDisk)
{
    const auto handle = NSFileHandle::fileHandleForWritingAtPath(QStringLiteral("/dev/full"));
    ASSERT_TRUE(handle);
    const NSError error = handle->writeData("abc", 3);
    EXPECT_EQ(error.code(), dskFulErr);
    EXPECT_EQ(error.filePath(), QStringLiteral("/dev/full"));
}

TEST(NSFileHandle, writeData_failsOnAClosedHandle)
{
    const TemporaryTree tree;
    tree.makeFile("file");
    const auto handle = NSFileHandle::fileHandleForWritingAtPath(tree.pathText("file"));
    EXPECT_FALSE(handle->closeFile());
    EXPECT_TRUE(handle->writeData("abc", 3));
    EXPECT_FALSE(handle->closeFile());
}

TEST(NSFileHandle, reading_goesOnWhereTheLastOneEnded_andIsShortAtTheEnd)
{
    const TemporaryTree tree;
    const QByteArray bytes = QByteArray("0123456789").repeated(10'000);
    tree.makeFile("file", bytes);
    const auto handle = NSFileHandle::fileHandleForReadingAtPath(tree.pathText("file"));
    ASSERT_TRUE(handle);
    EXPECT_EQ(handle->readDataOfLength(3), "012");
    EXPECT_EQ(handle->offsetInFile(), 3u);
    EXPECT_EQ(handle->readDataOfLength(70'000), bytes.sliced(3, 70'000));
    EXPECT_EQ(handle->readDataOfLength(4), bytes.sliced(70'003, 4));
    EXPECT_EQ(handle->readDataOfLength(1'000'000'000'000), bytes.sliced(70'007))
        << "no room is made for what is not there";
    EXPECT_EQ(handle->offsetInFile(), 100'000u);
    EXPECT_EQ(handle->readDataOfLength(1), QByteArray());
}

TEST(NSFileHandle, seekToFileOffset_goesThere_alsoBackAndBehindTheEnd)
{
    const TemporaryTree tree;
    tree.makeFile("file", "0123456789");
    const auto handle = NSFileHandle::fileHandleForReadingAtPath(tree.pathText("file"));
    handle->seekToFileOffset(8);
    EXPECT_EQ(handle->readDataOfLength(1), "8");
    handle->seekToFileOffset(2);
    EXPECT_EQ(handle->readDataOfLength(2), "23");
    for (const std::uint64_t behind : {std::uint64_t(10), std::uint64_t(1) << 40, ~std::uint64_t(0)}) {
        handle->seekToFileOffset(behind);
        EXPECT_EQ(handle->readDataOfLength(1), QByteArray());
        EXPECT_EQ(handle->offsetInFile(), behind);
    }
}

TEST(NSFileHandle, readOnce_beginsAtTheOffset_whateverWasReadAhead)
{
    const TemporaryTree tree;
    tree.makeFile("file", "0123456789");
    const auto handle = NSFileHandle::fileHandleForReadingAtPath(tree.pathText("file"));
    EXPECT_EQ(handle->readDataOfLength(2), "01");
    char bytes[4] = {};
    EXPECT_EQ(handle->readOnce(bytes, 3), 3);
    EXPECT_STREQ(bytes, "234");
    EXPECT_EQ(handle->readDataOfLength(2), "56");
    handle->seekToFileOffset(10);
    EXPECT_EQ(handle->readOnce(bytes, 3), 0);
}

TEST(NSFileHandle, reading_takesNoMoreFromAPipeThanIsAskedFor)
{
    const TemporaryTree tree;
    const QByteArray fifo = tree.makeFifo("fifo");
    const auto reader = NSFileHandle::fileHandleForReadingAtPath(tree.pathText("fifo"));
    ASSERT_TRUE(reader);
    const auto writer = NSFileHandle::fileHandleForWritingAtPath(tree.pathText("fifo"));
    ASSERT_TRUE(writer);
    EXPECT_FALSE(writer->writeData("abcdef", 6));
    EXPECT_EQ(reader->readDataOfLength(2), "ab");
    reader->seekToFileOffset(0);
    char bytes[8] = {};
    EXPECT_EQ(reader->readOnce(bytes, 8), 4);
    EXPECT_STREQ(bytes, "cdef");
    EXPECT_EQ(reader->offsetInFile(), 6u);
}

TEST(NSFileHandle, fileHandleForReadingAtPath_isNull_whenThereIsNoFile)
{
    const TemporaryTree tree;
    EXPECT_FALSE(NSFileHandle::fileHandleForReadingAtPath(tree.pathText("missing")));
    EXPECT_FALSE(NSFileHandle::fileHandleForReadingAtPath(QString()));
}
