#include "platform/foundation/Result.h"

#include <gtest/gtest.h>
#include <memory>

using namespace Tessaron;

namespace
{

Result<int> halfOf(int number)
{
    if (number % 2 != 0)
        return NSError(NSOSStatusErrorDomain, paramErr);
    return number / 2;
}

Result<std::unique_ptr<int>> owned(bool succeeds)
{
    if (!succeeds)
        return NSError(NSOSStatusErrorDomain, memFullErr);
    return std::make_unique<int>(7);
}

} // namespace

TEST(Result, value_isThereWithoutAnError)
{
    const Result<int> result = halfOf(8);
    ASSERT_TRUE(result);
    EXPECT_TRUE(result.hasValue());
    EXPECT_EQ(*result, 4);
    EXPECT_TRUE(result.error().isNull());
}

TEST(Result, error_saysWhyThereIsNoValue)
{
    const Result<int> result = halfOf(7);
    EXPECT_FALSE(result);
    EXPECT_EQ(result.error(), NSError(NSOSStatusErrorDomain, paramErr));
}

TEST(Result, value_canBeMovedOut_whenItCannotBeCopied)
{
    Result<std::unique_ptr<int>> result = owned(true);
    ASSERT_TRUE(result);
    const std::unique_ptr<int> taken = *std::move(result);
    ASSERT_TRUE(taken);
    EXPECT_EQ(*taken, 7);
    EXPECT_EQ(owned(false).error().code(), memFullErr);
}

TEST(Result, arrow_reachesTheValue)
{
    Result<QString> result = QStringLiteral("abc");
    result->append(u'd');
    EXPECT_EQ(*result, QStringLiteral("abcd"));
    EXPECT_EQ(std::as_const(result)->size(), 4);
}

TEST(Result, valueOr_givesTheOther_afterAFailure)
{
    EXPECT_EQ(halfOf(8).valueOr(1), 4);
    EXPECT_EQ(halfOf(7).valueOr(1), 1);
}

TEST(Result, boolValue_isNotTakenForSuccess)
{
    const Result<bool> result = false;
    ASSERT_TRUE(result);
    EXPECT_FALSE(*result);
}
