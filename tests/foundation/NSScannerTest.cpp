#include "platform/foundation/NSScanner.h"

#include <gtest/gtest.h>

using namespace Tessaron;

namespace
{

bool isColon(QChar character)
{
    return character == u':';
}

} // namespace

TEST(NSScanner, scanUpToCharactersFromSet_readsToTheSetOrTheEnd)
{
    NSScanner scanner(QStringLiteral("  one:two"));
    QString text;
    EXPECT_TRUE(scanner.scanUpToCharactersFromSet(isColon, &text));
    EXPECT_EQ(text, QStringLiteral("one"));
    EXPECT_TRUE(scanner.scanCharactersFromSet(isColon, &text));
    EXPECT_EQ(text, QStringLiteral(":"));
    EXPECT_TRUE(scanner.scanUpToCharactersFromSet(isColon, nullptr));
    EXPECT_TRUE(scanner.isAtEnd());
}

TEST(NSScanner, failedScan_leavesLocationAndResultAlone)
{
    NSScanner scanner(QStringLiteral("  word"));
    QString text = QStringLiteral("before");
    EXPECT_FALSE(scanner.scanCharactersFromSet(isColon, &text));
    int number = 7;
    EXPECT_FALSE(scanner.scanInt(&number));
    EXPECT_EQ(text, QStringLiteral("before"));
    EXPECT_EQ(number, 7);
    EXPECT_EQ(scanner.scanLocation(), 0);
}

TEST(NSScanner, scanInt_readsSignsAndClampsToTheRangeOfInt)
{
    NSScanner scanner(QStringLiteral("-12 +7 99999999999 -99999999999 -"));
    int number = 0;
    EXPECT_TRUE(scanner.scanInt(&number));
    EXPECT_EQ(number, -12);
    EXPECT_TRUE(scanner.scanInt(&number));
    EXPECT_EQ(number, 7);
    EXPECT_TRUE(scanner.scanInt(&number));
    EXPECT_EQ(number, 2147483647);
    EXPECT_TRUE(scanner.scanInt(&number));
    EXPECT_EQ(number, -2147483647 - 1);
    EXPECT_FALSE(scanner.scanInt(&number));
}

TEST(NSScanner, charactersToBeSkipped_mayBeNone)
{
    NSScanner scanner(QStringLiteral(" 5"));
    scanner.setCharactersToBeSkipped({});
    EXPECT_FALSE(scanner.scanInt(nullptr));
    EXPECT_FALSE(scanner.isAtEnd());
}

TEST(NSScanner, scanLiteral_isExact)
{
    NSScanner scanner(QStringLiteral("FILE name"));
    EXPECT_FALSE(scanner.scanLiteral(QStringLiteral("file")));
    EXPECT_TRUE(scanner.scanLiteral(QStringLiteral("FILE")));
    EXPECT_EQ(scanner.scanLocation(), 4);
}
