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
