#include "platform/foundation/RegularExpression.h"

#include "platform/foundation/FileSystemRepresentation.h"

#include <QString>

#include <ctime>
#include <gtest/gtest.h>

using namespace Tessaron;

namespace
{

bool matches(const char *pattern, const char *text)
{
    return regularExpressionMatches(QString::fromUtf8(pattern), QString::fromUtf8(text));
}

} // namespace

TEST(RegularExpression, matching_takesTheWholeText)
{
    EXPECT_TRUE(matches("a|ab", "ab"));
    EXPECT_FALSE(matches("a", "ab"));
    EXPECT_FALSE(matches("b", "ab"));
    EXPECT_FALSE(matches("a", "a\n"));
    EXPECT_TRUE(matches("", ""));
    EXPECT_FALSE(matches("", "a"));
    EXPECT_TRUE(matches("a*", ""));
}

TEST(RegularExpression, pattern_cannotLeaveTheWholeText)
{
    EXPECT_FALSE(matches("a)|(?:b", "axyz"));
    EXPECT_FALSE(matches("a)|(?:b", "a"));
    EXPECT_FALSE(matches("(", "("));
    EXPECT_FALSE(matches("a\\", "a\\"));
}

TEST(RegularExpression, pattern_isReadAsIcuReadsIt)
{
    EXPECT_TRUE(matches("\\u00e4", "ä"));
    EXPECT_TRUE(matches("\\x{1F600}", "😀"));
    EXPECT_TRUE(matches("\\N{LATIN SMALL LETTER A WITH DIAERESIS}", "ä"));
    EXPECT_TRUE(matches("[[a-z]&&[^aeiou]]+", "xyz"));
    EXPECT_FALSE(matches("[[a-z]&&[^aeiou]]+", "xaz"));
    EXPECT_TRUE(matches("[[a-c][x-z]]+", "axbz"));
    EXPECT_FALSE(matches("[[a-c][x-z]]+", "m"));
    EXPECT_TRUE(matches("[\\p{Letter}--[a-f]]+", "xyzé"));
    EXPECT_FALSE(matches("[\\p{Letter}--[a-f]]+", "b"));
    EXPECT_TRUE(matches("(?x) a  b  # two letters", "ab"));
    EXPECT_TRUE(matches("(?i)STRASSE", "straße"));
    EXPECT_TRUE(matches("\\w+", "größe"));
    EXPECT_TRUE(matches("(a)(?:b)\\1", "aba"));
    EXPECT_TRUE(matches("VTS_\\d\\d_\\d\\.VOB", "VTS_01_1.VOB"));
}

TEST(RegularExpression, dot_matchesNoLineEnd)
{
    for (const char *const lineEnd : {"\n", "\r", "\f", "\xC2\x85", "\xE2\x80\xA8"})
        EXPECT_FALSE(matches("a.b", (std::string("a") + lineEnd + "b").c_str()));
    EXPECT_TRUE(matches("(?s)a.b", "a\nb"));
}

TEST(RegularExpression, name_canBeMatched_whenItIsNotUtf8)
{
    const QString name = stringWithFileSystemRepresentation("caf\xE9.txt");
    EXPECT_TRUE(regularExpressionMatches(QStringLiteral("caf.\\.txt"), name));
    EXPECT_TRUE(regularExpressionMatches(QStringLiteral(".*\\.txt"), name));
    EXPECT_FALSE(regularExpressionMatches(QStringLiteral("caf\\.txt"), name));
}

TEST(RegularExpression, longTexts_areMatched)
{
    for (const int length : {16'383, 16'384, 100'000, 500'000}) {
        EXPECT_TRUE(regularExpressionMatches(u"(a|b)*", QString(length, u'a'))) << length;
        EXPECT_FALSE(regularExpressionMatches(u"(a|b)*", QString(length, u'a') + u'c')) << length;
    }
}

TEST(RegularExpression, hostilePattern_ends_andMatchesNothing)
{
    const std::clock_t start = std::clock(); // of this process alone: other load must not count
    EXPECT_FALSE(regularExpressionMatches(u"(x+x+)+y", QString(200, u'x')));
    EXPECT_FALSE(regularExpressionMatches(u"(a|b)*", QString(10'000'000, u'a'))) << "needs 800 MB";
    EXPECT_LT(double(std::clock() - start) / CLOCKS_PER_SEC, 20.0);
}
