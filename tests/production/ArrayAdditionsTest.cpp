#include <TessaronClasses/ArrayAdditions.h>

#include <gtest/gtest.h>

using namespace Tessaron;

TEST(ArrayAdditions, flattenedArray_replacesListsByTheirElements_oneLevelDeep)
{
    const QVariantList inner{2, QVariantList{3}};
    EXPECT_EQ(flattenedArray({1, QVariant(inner), 4}), (QVariantList{1, 2, QVariantList{3}, 4}));
    EXPECT_EQ(flattenedArray({QVariant(QVariantList())}), QVariantList());
    EXPECT_EQ(flattenedArray({}), QVariantList());
}

TEST(ArrayAdditions, stringWithPrefix_isTheFirstTextThatBeginsSo)
{
    const QVariantList array{3, QByteArray("track bytes"), QStringLiteral("Track 1"), QStringLiteral("track 2"),
                             QStringLiteral("track 3")};
    EXPECT_EQ(stringWithPrefix(array, QStringLiteral("track")), QStringLiteral("track 2"));
    EXPECT_EQ(stringWithPrefix(array, QStringLiteral("Tr")), QStringLiteral("Track 1"));
    EXPECT_EQ(stringWithPrefix(array, QStringLiteral("track 3")), QStringLiteral("track 3"));
    EXPECT_TRUE(stringWithPrefix(array, QStringLiteral("track 3!")).isNull());
    EXPECT_TRUE(stringWithPrefix(array, QStringLiteral("TRACK")).isNull());
    EXPECT_TRUE(stringWithPrefix(array, QStringLiteral("x")).isNull());
    EXPECT_TRUE(stringWithPrefix({}, QStringLiteral("x")).isNull());
    EXPECT_TRUE(stringWithPrefix(array, QLatin1String("")).isNull());
}
