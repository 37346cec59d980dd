#include "platform/coreservices/AppleDouble.h"

#include <gtest/gtest.h>
#include <random>

using namespace Tessaron;

namespace
{

AppleDouble sample()
{
    AppleDouble contents;
    for (std::size_t index = 0; index < contents.finderInfo.size(); ++index)
        contents.finderInfo[index] = std::uint8_t(index);
    contents.resourceFork = "fork";
    return contents;
}

/// The same in bytes, written down from RFC 1740.
QByteArray sampleBytes()
{
    return QByteArray::fromHex("00051607 00020000 00000000000000000000000000000000 0002")
        + QByteArray::fromHex("00000009 00000032 00000020") // Finder information
        + QByteArray::fromHex("00000002 00000052 00000004") // resource fork
        + QByteArray::fromHex("000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f") + "fork";
}

} // namespace

TEST(AppleDouble, bytesOfAppleDouble_givesTheDocumentedBytes)
{
    EXPECT_EQ(bytesOfAppleDouble(sample()).toHex(), sampleBytes().toHex());
}

TEST(AppleDouble, appleDoubleFromBytes_readsTheDocumentedBytes)
{
    EXPECT_EQ(appleDoubleFromBytes(sampleBytes()), sample());
}

TEST(AppleDouble, appleDoubleFromBytes_takesWhatIsThere_whenEntriesAreMissingOrUnknown)
{
    QByteArray bytes = sampleBytes();
    bytes[26 + 3] = 77; // the Finder information becomes something unknown
    AppleDouble expected;
    expected.resourceFork = "fork";
    EXPECT_EQ(appleDoubleFromBytes(bytes), expected);
}

TEST(AppleDouble, appleDoubleFromBytes_hasNoValue_forOtherBytes)
{
    EXPECT_EQ(appleDoubleFromBytes({}), std::nullopt);
    EXPECT_EQ(appleDoubleFromBytes(QByteArray(100, '\0')), std::nullopt);
    const QByteArray bytes = sampleBytes();
    for (qsizetype length = 0; length < bytes.size(); ++length)
        EXPECT_EQ(appleDoubleFromBytes(bytes.first(length)), std::nullopt) << length;
}

TEST(AppleDouble, appleDoubleFromBytes_staysWithinTheBytes_forMutatedFiles)
{
    for (std::uint32_t seed = 1; seed <= 20000; ++seed) {
        std::mt19937 random(seed);
        QByteArray bytes = sampleBytes();
        for (unsigned int count = 1 + random() % 3; count > 0; --count)
            bytes[qsizetype(random() % std::uint32_t(bytes.size()))] = char(random());
        const auto contents = appleDoubleFromBytes(bytes);
        ASSERT_LE(contents.value_or(AppleDouble()).resourceFork.size(), bytes.size()) << "seed " << seed;
    }
}
