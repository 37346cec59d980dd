#include "platform/disctracks/TextEncodings.h"

#include <gtest/gtest.h>

using namespace Tessaron;

namespace
{

void expectText(QByteArrayView bytes, const QString &text, TextFileEncoding encoding)
{
    const DecodedText decoded = decodedText(bytes);
    EXPECT_EQ(decoded.text, text);
    EXPECT_EQ(decoded.encoding, encoding) << text.toStdString();
}

} // namespace

TEST(TextEncodings, decodedText_believesTheByteOrderMark)
{
    expectText("\xEF\xBB\xBF\xC3\xA9", QStringLiteral(u"\u00e9"), TextFileEncoding::Utf8);
    expectText(QByteArrayView("\xFF\xFE\xE9\0A\0", 6), QStringLiteral(u"\u00e9A"), TextFileEncoding::Utf16);
    expectText(QByteArrayView("\xFE\xFF\0\xE9\0A", 6), QStringLiteral(u"\u00e9A"), TextFileEncoding::Utf16);
}

TEST(TextEncodings, decodedText_recognisesUtf16WithoutAByteOrderMark)
{
    const QString sheet = QStringLiteral(u"FILE \"B\u00e4nd \u6771\u4eac.bin\" BINARY\r\n  TRACK 01 AUDIO\r\n");
    QByteArray little;
    QByteArray big;
    for (const QChar unit : sheet) {
        little.append(char(unit.cell())).append(char(unit.row()));
        big.append(char(unit.row())).append(char(unit.cell()));
    }
    expectText(little, sheet, TextFileEncoding::Utf16);
    expectText(big, sheet, TextFileEncoding::Utf16);
    // Zeros that no text has are no reason to see one.
    expectText(QByteArrayView("a\0\0b", 4), QString::fromUtf8(QByteArrayView("a\0\0b", 4)), TextFileEncoding::Utf8);
}

TEST(TextEncodings, decodedText_takesValidUtf8AsSuch)
{
    expectText("", QString(), TextFileEncoding::Utf8);
    expectText("plain", QStringLiteral("plain"), TextFileEncoding::Utf8);
    expectText("Caf\xC3\xA9", QStringLiteral(u"Caf\u00e9"), TextFileEncoding::Utf8);
}

TEST(TextEncodings, decodedText_tellsJapaneseFromWesternText)
{
    expectText("\x83\x5C\x83\x6A\x81\x5B", QStringLiteral(u"\u30bd\u30cb\u30fc"), TextFileEncoding::ShiftJis);
    expectText("TITLE \"\x93\x8C\x8B\x9E\"", QStringLiteral(u"TITLE \"\u6771\u4eac\""), TextFileEncoding::ShiftJis);
    const auto western = TextFileEncoding::Windows1252;
    expectText("TITLE \"Caf\xE9\"", QStringLiteral(u"TITLE \"Caf\u00e9\""), western);
    expectText("B\xE9ranger, M\xF6tley", QStringLiteral(u"B\u00e9ranger, M\u00f6tley"), western);
    expectText("Don\x92t \x93stop\x94", QStringLiteral(u"Don\u2019t \u201cstop\u201d"), western);
    expectText("\xC9"
               "dith",
               QStringLiteral(u"\u00c9dith"), western);
}

TEST(TextEncodings, shiftJis_leadsBack)
{
    const QString text = QStringLiteral(u"\u6771\u4eac \u30bd\u30cb\u30fc abc");
    ASSERT_TRUE(shiftJisOfText(text));
    EXPECT_EQ(textOfShiftJis(*shiftJisOfText(text)), text);
    EXPECT_FALSE(shiftJisOfText(QStringLiteral(u"\u00e9")));
    EXPECT_FALSE(textOfShiftJis("\x81"));
}
