#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/FileReadAdditions.h>

#include <gtest/gtest.h>

using namespace Tessaron;
using Testing::TemporaryTree;

namespace
{

class FileReadAdditions : public testing::Test
{
protected:
    [[nodiscard]] std::shared_ptr<NSFileHandle> handleOf(const QByteArray &bytes) const
    {
        tree.makeFile("file", bytes);
        return NSFileHandle::fileHandleForReadingAtPath(tree.pathText("file"));
    }

    const TemporaryTree tree;
};

/// What the reader makes of the bytes, with what it answers.
template <typename Value>
std::pair<OSStatus, Value> valueOf(NSFileHandle &handle, OSStatus (*reader)(NSFileHandle &, Value *), Value before)
{
    const OSStatus status = reader(handle, &before);
    return {status, before};
}

template <typename Value>
void expectReads(NSFileHandle &handle, OSStatus (*reader)(NSFileHandle &, Value *), Value expected)
{
    handle.seekToFileOffset(0);
    EXPECT_EQ(valueOf(handle, reader, Value(1)), std::make_pair(OSStatus(noErr), expected));
    EXPECT_EQ(handle.offsetInFile(), sizeof(Value));
    // One byte too few.
    handle.seekToFileOffset(4 - sizeof(Value) + 1);
    EXPECT_EQ(valueOf(handle, reader, Value(77)), std::make_pair(OSStatus(eofErr), Value(77)));
    EXPECT_EQ(handle.offsetInFile(), 4u) << "behind what there was";
}

/// The bytes that the packed ones make, or no value when they end too early.
std::optional<QByteArray> unpacked(NSFileHandle &handle, std::uint64_t totalLength)
{
    QByteArray output(qsizetype(totalLength) + 128, '?');
    if (unpackBits(handle, output.data(), totalLength) != noErr)
        return std::nullopt;
    return output.first(qsizetype(totalLength));
}

std::uint64_t offsetOf(NSFileHandle &handle, const QByteArray &pattern, std::uint64_t maxOffset = 1'000'000)
{
    return offsetOfBytesWithBuffer(handle, pattern.constData(), std::uint32_t(pattern.size()), maxOffset);
}

} // namespace

TEST_F(FileReadAdditions, numbers_areReadInBothOrders)
{
    const auto handle = handleOf(QByteArray::fromHex("00000102"));
    expectReads<std::uint32_t>(*handle, readBigUnsignedInt, 258);
    expectReads<std::uint32_t>(*handle, readLittleUnsignedInt, 33'619'968);
    expectReads<std::int32_t>(*handle, readBigSignedInt, 258);
    expectReads<std::int32_t>(*handle, readLittleSignedInt, 33'619'968);
    const auto odd = handleOf(QByteArray::fromHex("fe80ff7f"));
    expectReads<std::uint16_t>(*odd, readBigUnsignedShort, 0xFE80);
    expectReads<std::uint16_t>(*odd, readLittleUnsignedShort, 0x80FE);
    expectReads<std::int16_t>(*odd, readBigSignedShort, -384);
    expectReads<std::int16_t>(*odd, readLittleSignedShort, -32'514);
    expectReads<std::int32_t>(*odd, readBigSignedInt, std::int32_t(0xFE80FF7Fu));
    expectReads<char>(*odd, readChar, char(0xFE));
    expectReads<std::uint32_t>(*odd, readBigUnsignedInt, 0xFE80FF7Fu);
    const auto negative = handleOf(QByteArray::fromHex("02fffffe"));
    expectReads<std::int32_t>(*negative, readLittleSignedInt, -16'777'470);
    expectReads<std::uint32_t>(*negative, readLittleUnsignedInt, 0xFEFFFF02u);
}

TEST_F(FileReadAdditions, readBytes_takesAllOrLeavesTheBufferAlone)
{
    const auto handle = handleOf("abcdef");
    char buffer[8] = "???????";
    EXPECT_EQ(readBytes(*handle, buffer, 4), noErr);
    EXPECT_STREQ(buffer, "abcd???");
    EXPECT_EQ(readBytes(*handle, buffer, 3), eofErr);
    EXPECT_STREQ(buffer, "abcd???");
    EXPECT_EQ(handle->offsetInFile(), 6u);
    EXPECT_EQ(readBytes(*handle, buffer, 0), noErr);
    EXPECT_EQ(readBytes(*handle, buffer, -1), eofErr);
}

TEST_F(FileReadAdditions, readString_isNullButNoError_whenTheBytesAreNotValid)
{
    const auto handle = handleOf("ab\xC3\xA4\xFF\xFF");
    QString text;
    EXPECT_EQ(readString(*handle, &text, NSStringEncoding::UTF8, 4), noErr);
    EXPECT_EQ(text, QStringLiteral("ab\u00E4"));
    EXPECT_EQ(readString(*handle, &text, NSStringEncoding::UTF8, 2), noErr);
    EXPECT_TRUE(text.isNull());
    text = QStringLiteral("before");
    EXPECT_EQ(readString(*handle, &text, NSStringEncoding::UTF8, 1), eofErr);
    EXPECT_EQ(readString(*handle, &text, NSStringEncoding::UTF8, -1), eofErr);
    EXPECT_EQ(text, QStringLiteral("before"));
}

TEST_F(FileReadAdditions, readPascalString_takesUpTo127Bytes)
{
    const QByteArray longest(127, 'x');
    const auto handle = handleOf(QByteArray("\x03") + "abc" + char(0) + char(127) + longest + "\x05" + "ab");
    QString text;
    EXPECT_EQ(readPascalString(*handle, &text, NSStringEncoding::MacOSRoman), noErr);
    EXPECT_EQ(text, QStringLiteral("abc"));
    EXPECT_EQ(readPascalString(*handle, &text, NSStringEncoding::MacOSRoman), noErr);
    EXPECT_EQ(text, QStringLiteral("abc")) << "a length of 0 leaves it as it is";
    EXPECT_EQ(readPascalString(*handle, &text, NSStringEncoding::MacOSRoman), noErr);
    EXPECT_EQ(text, QString::fromLatin1(longest));
    EXPECT_EQ(readPascalString(*handle, &text, NSStringEncoding::MacOSRoman), eofErr) << "only two of five bytes";
    EXPECT_EQ(readPascalString(*handle, &text, NSStringEncoding::MacOSRoman), eofErr) << "no length byte";
    EXPECT_EQ(text, QString::fromLatin1(longest));
}

TEST_F(FileReadAdditions, readPascalString_failsAtTheFilesEnd_forALengthOf128AndMore)
{
    const auto handle = handleOf("\x80" + QByteArray(300, 'x'));
    QString text = QStringLiteral("before");
    EXPECT_EQ(readPascalString(*handle, &text, NSStringEncoding::MacOSRoman), eofErr);
    EXPECT_EQ(text, QStringLiteral("before"));
    EXPECT_EQ(handle->offsetInFile(), 301u);
}

TEST_F(FileReadAdditions, skipBytes_goesOnBehind_alsoBehindTheEnd)
{
    const auto handle = handleOf("abcdef");
    char byte = 0;
    EXPECT_EQ(readChar(*handle, &byte), noErr);
    skipBytes(*handle, 3);
    EXPECT_EQ(readChar(*handle, &byte), noErr);
    EXPECT_EQ(byte, 'e');
    skipBytes(*handle, 1000);
    EXPECT_EQ(readChar(*handle, &byte), eofErr);
    EXPECT_EQ(handle->offsetInFile(), 1005u);
    skipBytes(*handle, std::uint64_t(1) << 40);
    EXPECT_EQ(handle->offsetInFile(), (std::uint64_t(1) << 40) + 1005);
}

TEST_F(FileReadAdditions, readBytesOfLength_givesWhatThereIs)
{
    const auto handle = handleOf("abcdef");
    char first = 0;
    EXPECT_EQ(readChar(*handle, &first), noErr);
    char buffer[16] = {};
    EXPECT_EQ(readBytesOfLength(*handle, buffer, 16), 5);
    EXPECT_STREQ(buffer, "bcdef");
    EXPECT_EQ(readBytesOfLength(*handle, buffer, 16), 0);
}

TEST_F(FileReadAdditions, unpackBits_makesRunsAndLiterals)
{
    EXPECT_EQ(unpacked(*handleOf(QByteArray::fromHex("feaa02010203")), 6), QByteArray::fromHex("aaaaaa010203"));
    EXPECT_EQ(unpacked(*handleOf(QByteArray::fromHex("8000")), 129), QByteArray(129, '\0')) << "-128 is a run of 129";
    EXPECT_EQ(unpacked(*handleOf(""), 0), QByteArray());
}

TEST_F(FileReadAdditions, unpackBits_writesTheLastRunWhole)
{
    QByteArray output(10, '?');
    EXPECT_EQ(unpackBits(*handleOf(QByteArray::fromHex("fc41")), output.data(), 2), noErr);
    EXPECT_EQ(output, "AAAAA?????");
}

TEST_F(FileReadAdditions, unpackBits_fails_whenTheDataEndsTooEarly)
{
    EXPECT_FALSE(unpacked(*handleOf(""), 1));
    EXPECT_FALSE(unpacked(*handleOf(QByteArray::fromHex("05010203")), 6)) << "inside a literal";
    EXPECT_FALSE(unpacked(*handleOf(QByteArray::fromHex("fe")), 3)) << "inside a run";
    EXPECT_FALSE(unpacked(*handleOf(QByteArray::fromHex("feaa")), 4)) << "behind a run";
}

TEST_F(FileReadAdditions, unpackBits_goesOnAcrossItsChunks)
{
    QByteArray packed;
    QByteArray expected;
    // Literals and runs of many lengths begin and end everywhere in the chunks of 3000 bytes.
    for (int round = 0; round < 200; ++round) {
        for (int count : {1, 7, 128, 60 + round % 5}) {
            QByteArray literal;
            for (int at = 0; at < count; ++at)
                literal.append(char(at * 31 + round));
            packed += char(count - 1) + literal;
            expected += literal;
        }
        packed += char(-(round % 127) - 1);
        packed += char(round);
        expected += QByteArray(round % 127 + 2, char(round));
    }
    ASSERT_GT(packed.size(), 30'000);
    // Room behind the last literal, which else could not fill a chunk again.
    packed += QByteArray(3000, '\0');
    EXPECT_EQ(unpacked(*handleOf(packed), std::uint64_t(expected.size())), expected);
}

TEST_F(FileReadAdditions, offsetOfBytes_countsFromTheOffsetAtTheCall)
{
    const auto handle = handleOf("abXYc");
    EXPECT_EQ(offsetOf(*handle, "XY"), 2u);
    handle->seekToFileOffset(1);
    EXPECT_EQ(offsetOf(*handle, "XY"), 1u);
    handle->seekToFileOffset(2);
    EXPECT_EQ(offsetOf(*handle, "XY"), 0u) << "right there looks like not found";
}

TEST_F(FileReadAdditions, offsetOfBytes_doesNotGoBackInAFailedMatch)
{
    EXPECT_EQ(offsetOf(*handleOf("aaab"), "aab"), 0u);
    EXPECT_EQ(offsetOf(*handleOf("xaab"), "aab"), 1u);
    EXPECT_EQ(offsetOf(*handleOf("abaab"), "ab"), 0u);
    EXPECT_EQ(offsetOf(*handleOf("acab"), "ab"), 2u);
    EXPECT_EQ(offsetOf(*handleOf("aXaY"), "aY"), 2u);
    EXPECT_EQ(offsetOf(*handleOf("XaaY"), "aY"), 0u) << "the byte that did not match is not a start";
}

TEST_F(FileReadAdditions, offsetOfBytes_endsAtTheLimit_butReadsAMatchToItsEnd)
{
    const QByteArray bytes = QByteArray(10, '.') + "needle";
    EXPECT_EQ(offsetOf(*handleOf(bytes), "needle", 11), 10u);
    EXPECT_EQ(offsetOf(*handleOf(bytes), "needle", 10), 0u);
    EXPECT_EQ(offsetOf(*handleOf(bytes), "missing"), 0u);
    EXPECT_EQ(offsetOf(*handleOf(bytes), QByteArray()), 0u);
    EXPECT_EQ(offsetOf(*handleOf(""), "needle"), 0u);
}

TEST_F(FileReadAdditions, offsetOfBytes_findsAPatternAcrossItsChunks)
{
    for (const int before : {1, 1997, 1999, 2000, 3998, 100'000})
        EXPECT_EQ(offsetOf(*handleOf(QByteArray(before, '.') + "needle."), "needle"), std::uint64_t(before));
}
