#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/NSScanner.h"
#include <TessaronClasses/CueSheets.h>

#include <QStringList>

#include <gtest/gtest.h>

using namespace Tessaron;

namespace
{

struct TimeCode {
    bool isRead = false;
    int minutes = -1;
    int seconds = -1;
    int frames = -1;

    friend bool operator==(const TimeCode &, const TimeCode &) = default;
};

TimeCode timeCodeOf(const QString &text)
{
    NSScanner scanner(text);
    TimeCode result;
    result.isRead = scanMinutes(scanner, &result.minutes, &result.seconds, &result.frames);
    return result;
}

/// What the scanner reads one after another until it answers false.
QStringList quotedStringsOf(const QString &text)
{
    NSScanner scanner(text);
    QStringList result;
    for (QString piece; scanQuotedString(scanner, &piece);)
        result << piece;
    return result;
}

} // namespace

TEST(CueSheets, standardCueSheetForFile_isThreeLines)
{
    const QString sheet = standardCueSheetForFile(QStringLiteral("/a/b/disc.bin"));
    EXPECT_EQ(sheet,
              QStringLiteral("FILE \"disc.bin\" BINARY\r\n"
                             "  TRACK 01 MODE1/2048\r\n"
                             "    INDEX 01 00:00:00\r\n"));
    EXPECT_EQ(sheet.size(), 62 + 8);
}

TEST(CueSheets, standardCueSheetForFile_namesTheFileWithoutItsFolder)
{
    EXPECT_TRUE(
        standardCueSheetForFile(QStringLiteral("my disc.bin")).startsWith(QStringLiteral("FILE \"my disc.bin\" ")));
    EXPECT_TRUE(
        standardCueSheetForFile(QStringLiteral("/a/disc.bin//")).startsWith(QStringLiteral("FILE \"disc.bin\" ")));
    EXPECT_TRUE(standardCueSheetForFile(QStringLiteral("/")).startsWith(QStringLiteral("FILE \"/\" ")));
    EXPECT_TRUE(standardCueSheetForFile(QStringLiteral("")).startsWith(QStringLiteral("FILE \"\" ")));
    EXPECT_TRUE(standardCueSheetForFile(QString()).isNull());
}

TEST(CueSheets, standardCueSheetForFile_keepsNamesThatAreNotUtf8)
{
    const QString sheet = standardCueSheetForFile(stringWithFileSystemRepresentation("/a/d\xEFsc.bin"));
    EXPECT_TRUE(fileSystemRepresentation(sheet).startsWith("FILE \"d\xEFsc.bin\" BINARY"));
}

TEST(CueSheets, scanQuotedString_readsWhatStandsBetweenQuotes)
{
    EXPECT_EQ(quotedStringsOf(QStringLiteral("FILE \"a b.wav\" WAVE")), (QStringList{QStringLiteral("a b.wav")}));
    EXPECT_EQ(quotedStringsOf(QStringLiteral("\"one\" x \"two\"")),
              (QStringList{QStringLiteral("one"), QStringLiteral("two")}));
    EXPECT_EQ(quotedStringsOf(QStringLiteral("\"\"doubled\"\"")), (QStringList{QStringLiteral("doubled")}));
    EXPECT_EQ(quotedStringsOf(QStringLiteral("\"never closed")), (QStringList{QStringLiteral("never closed")}));
}

TEST(CueSheets, scanQuotedString_readsNothing_whereNoTextFollowsTheQuotes)
{
    EXPECT_TRUE(quotedStringsOf(QStringLiteral("\"\"")).isEmpty());
    EXPECT_TRUE(quotedStringsOf(QStringLiteral("word \"")).isEmpty());
    NSScanner scanner(QStringLiteral("\"one\" bare"));
    QString result;
    ASSERT_TRUE(scanQuotedString(scanner, &result));
    EXPECT_FALSE(scanQuotedString(scanner, &result)) << "the quote before it keeps the rest from being a bare word";
    EXPECT_EQ(result, QStringLiteral("one"));
}

TEST(CueSheets, scanQuotedString_readsABareWord_whereTheTextHasNoQuote)
{
    EXPECT_EQ(quotedStringsOf(QStringLiteral("  PERFORMER\tNobody\r\n")),
              (QStringList{QStringLiteral("PERFORMER"), QStringLiteral("Nobody")}));
    EXPECT_TRUE(quotedStringsOf(QString()).isEmpty());
}

TEST(CueSheets, scanString_readsUpToWhiteSpace)
{
    NSScanner scanner(QStringLiteral(" one two\nthree"));
    QString word;
    EXPECT_TRUE(scanString(scanner, &word));
    EXPECT_EQ(word, QStringLiteral("one"));
    EXPECT_TRUE(scanString(scanner, nullptr));
    EXPECT_TRUE(scanString(scanner, &word));
    EXPECT_EQ(word, QStringLiteral("three"));
    EXPECT_FALSE(scanString(scanner, &word));
    EXPECT_EQ(word, QStringLiteral("three"));
}

TEST(CueSheets, scanMinutes_readsATimeCode)
{
    EXPECT_EQ(timeCodeOf(QStringLiteral("01:02:03")), (TimeCode{true, 1, 2, 3}));
    EXPECT_EQ(timeCodeOf(QStringLiteral(" \t00::02::03")), (TimeCode{true, 0, 2, 3}));
    EXPECT_EQ(timeCodeOf(QStringLiteral("123:99:99 rest")), (TimeCode{true, 123, 99, 99}));
    EXPECT_EQ(timeCodeOf(QStringLiteral("0:0:-5")), (TimeCode{true, 0, 0, -5}));
}

TEST(CueSheets, scanMinutes_keepsWhatItReadBeforeAMissingPiece)
{
    EXPECT_EQ(timeCodeOf(QStringLiteral("12:34")), (TimeCode{false, 12, 34, -1}));
    EXPECT_EQ(timeCodeOf(QStringLiteral("12:34:x")), (TimeCode{false, 12, 34, -1}));
    EXPECT_EQ(timeCodeOf(QStringLiteral("12 34")), (TimeCode{false, 12, -1, -1}));
    EXPECT_EQ(timeCodeOf(QStringLiteral("x")), (TimeCode{false, -1, -1, -1}));
    EXPECT_EQ(timeCodeOf(QStringLiteral("\n01:02:03")), (TimeCode{false, -1, -1, -1})) << "a line end is not skipped";
    EXPECT_EQ(timeCodeOf(QStringLiteral("01:\n02:03")), (TimeCode{false, 1, -1, -1}));
}

TEST(CueSheets, scanMinutes_leavesTheScannerAsItWas)
{
    NSScanner scanner(QStringLiteral("INDEX 01 00:02:00\nINDEX 02 00:03:00"));
    EXPECT_TRUE(scanString(scanner, nullptr));
    EXPECT_TRUE(scanner.scanInt(nullptr));
    EXPECT_TRUE(scanMinutes(scanner, nullptr, nullptr, nullptr));
    QString word;
    EXPECT_TRUE(scanString(scanner, &word)); // the line end is skipped again
    EXPECT_EQ(word, QStringLiteral("INDEX"));
}
