#include "platform/foundation/NSStringEncoding.h"

#include <gtest/gtest.h>

using namespace Tessaron;

TEST(NSStringEncoding, stringWithBytes_readsEachEncoding)
{
    EXPECT_EQ(stringWithBytes("plain", NSStringEncoding::ASCII), QStringLiteral("plain"));
    EXPECT_EQ(stringWithBytes("\xC3\xA4\xF0\x9D\x84\x9E", NSStringEncoding::UTF8), QStringLiteral("\u00E4\U0001D11E"));
    EXPECT_EQ(stringWithBytes("\xE4", NSStringEncoding::ISOLatin1), QStringLiteral("\u00E4"));
    EXPECT_EQ(stringWithBytes("\x80", NSStringEncoding::Windows1252), QStringLiteral("\u20AC"));
    EXPECT_EQ(stringWithBytes("\x8A", NSStringEncoding::MacOSRoman), QStringLiteral("\u00E4"));
    EXPECT_EQ(stringWithBytes("\x83\x41", NSStringEncoding::ShiftJIS), QStringLiteral("\u30A2"));
    EXPECT_EQ(stringWithBytes(QByteArray::fromHex("00e4d834dd1e"), NSStringEncoding::UTF16BigEndian),
              QStringLiteral("\u00E4\U0001D11E"));
    EXPECT_EQ(stringWithBytes(QByteArray::fromHex("e400"), NSStringEncoding::UTF16LittleEndian),
              QStringLiteral("\u00E4"));
}

TEST(NSStringEncoding, stringWithBytes_isNull_whenBytesAreNotValid)
{
    EXPECT_TRUE(stringWithBytes("\xE4", NSStringEncoding::ASCII).isNull());
    EXPECT_TRUE(stringWithBytes("a\xFF", NSStringEncoding::UTF8).isNull());
    EXPECT_TRUE(stringWithBytes("a", NSStringEncoding::UTF16BigEndian).isNull());
    EXPECT_TRUE(stringWithBytes(QByteArray::fromHex("d834"), NSStringEncoding::UTF16BigEndian).isNull());
}

TEST(NSStringEncoding, stringWithBytes_isEmptyButNotNull_withoutBytes)
{
    EXPECT_TRUE(stringWithBytes(QByteArrayView(), NSStringEncoding::UTF8).isEmpty());
    EXPECT_FALSE(stringWithBytes(QByteArrayView(), NSStringEncoding::UTF8).isNull());
}
