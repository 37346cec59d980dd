#include "platform/foundation/PrintableText.h"

#include <gtest/gtest.h>

namespace Tessaron
{

namespace
{

TEST(PrintableText, printable_escapesWhatMovesTheCursorOrDeceives)
{
    EXPECT_EQ(printable(QByteArray("plain Größe 😀")), "plain Größe 😀");
    EXPECT_EQ(printable(QByteArray("a\nb\tc\x1b[2J\x7f")), "a\\nb\\tc\\x1b[2J\\x7f");
    EXPECT_EQ(printable(QByteArray("\xe4\xff.txt")), "\\xe4\\xff.txt");
    EXPECT_EQ(printable(QByteArray("evil\u202etxt.exe")), "evil\\u{202e}txt.exe");
    EXPECT_EQ(printable(QByteArray("\u0085")), "\\u{85}");
}

} // namespace

} // namespace Tessaron
