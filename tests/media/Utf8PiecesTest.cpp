#include "media/Utf8Pieces.h"

#include <gtest/gtest.h>

using namespace Tessaron;

TEST(Utf8Pieces, pieces_giveTheSameTextWhereverTheyAreCut)
{
    const QByteArray bytes("\xEF\xBB\xBF"
                           "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x99\x82\xEF\xBB\xBFz");
    const QString whole = QChar(0xFEFF) + QString::fromUtf8("aé€🙂") + QChar(0xFEFF) + u'z';
    for (qsizetype first = 0; first <= bytes.size(); ++first) {
        for (qsizetype second = first; second <= bytes.size(); ++second) {
            Utf8Pieces pieces;
            QString text = pieces.add(bytes.first(first));
            text += pieces.add(bytes.sliced(first, second - first));
            text += pieces.add(bytes.sliced(second));
            EXPECT_EQ(text + pieces.finish(), whole) << first << ' ' << second;
        }
    }
}

TEST(Utf8Pieces, pieces_keepNoMoreThanTheBeginOfACharacter)
{
    Utf8Pieces pieces;
    EXPECT_EQ(pieces.add("ab\xE2"), QStringLiteral("ab"));
    EXPECT_EQ(pieces.add("\x82"), QString());
    EXPECT_EQ(pieces.add("\xAC"), QStringLiteral("€"));
    EXPECT_EQ(pieces.finish(), QString());
}

TEST(Utf8Pieces, whatIsNotValid_becomesReplacementCharacters_andIsNotWaitedFor)
{
    Utf8Pieces pieces;
    EXPECT_EQ(pieces.add("\xFF\xC0\x80"
                         "a"),
              QString(3, QChar(0xFFFD)) + u'a');
    EXPECT_EQ(pieces.add("\x80\x80\x80\x80"), QString(4, QChar(0xFFFD)));
    EXPECT_EQ(pieces.add("\xF0\x9F"), QString());
    EXPECT_EQ(pieces.finish(), QString(QChar(0xFFFD)));
    EXPECT_EQ(pieces.finish(), QString());
}
