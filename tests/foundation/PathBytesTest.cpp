#include "platform/foundation/PathBytes.h"

#include <gtest/gtest.h>

namespace Tessaron
{

TEST(PathBytes, lastPathComponent_isWhatFollowsTheLastSlash)
{
    EXPECT_EQ(lastPathComponent("/a/b.c"), "b.c");
    EXPECT_EQ(lastPathComponent("name"), "name");
    EXPECT_EQ(lastPathComponent("/a/"), "");
    EXPECT_EQ(lastPathComponent("/"), "");
    EXPECT_EQ(lastPathComponent(""), "");
}

TEST(PathBytes, parentPath_endsAtTheRoot)
{
    EXPECT_EQ(parentPath("/a/b"), "/a");
    EXPECT_EQ(parentPath("/a"), "/");
    EXPECT_EQ(parentPath("/"), "/");
}

TEST(PathBytes, childPath_putsOneSlashBetween)
{
    EXPECT_EQ(childPath("/a", "b"), "/a/b");
    EXPECT_EQ(childPath("/", "b"), "/b");
    EXPECT_EQ(childPath("/a/", "\xFF"), "/a/\xFF");
}

} // namespace Tessaron
