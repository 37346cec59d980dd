#include <TessaronClasses/DataAdditions.h>

#include <gtest/gtest.h>

using namespace Tessaron;

TEST(DataAdditions, rangeOfData_isTheFirstMatch)
{
    EXPECT_EQ(rangeOfData("abcde", "cd"), (NSRange{2, 2}));
    EXPECT_EQ(rangeOfData("aabab", "a"), (NSRange{0, 1}));
    EXPECT_EQ(rangeOfData("aaab.", "aab"), (NSRange{1, 3}));
}

TEST(DataAdditions, rangeOfData_isNotFound_whenTheMatchEndsTheData)
{
    EXPECT_EQ(rangeOfData("abcde", "de"), (NSRange{NSNotFound, 0}));
    EXPECT_EQ(rangeOfData("abc", "abc"), (NSRange{NSNotFound, 0}));
    EXPECT_EQ(NSNotFound, 0x7FFFFFFFu);
}

TEST(DataAdditions, rangeOfData_isNotFound_withoutAPatternOrForOneTooLong)
{
    EXPECT_EQ(rangeOfData("abc", QByteArray()), NSRange());
    EXPECT_EQ(rangeOfData("abc", ""), NSRange());
    EXPECT_EQ(rangeOfData("abc", "abcd"), NSRange());
    EXPECT_EQ(rangeOfData(QByteArray(), "a"), NSRange());
}
