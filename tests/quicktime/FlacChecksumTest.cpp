#include "platform/quicktime/decoding/FlacChecksum.h"

#include <gtest/gtest.h>
#include <random>
#include <vector>

using namespace Tessaron;

namespace
{

using Bytes = std::vector<std::uint8_t>;

/// Bit by bit, as RFC 9639 9.3 says it.
std::uint16_t checksumOf(const Bytes &bytes)
{
    std::uint16_t sum = 0;
    for (const std::uint8_t byte : bytes) {
        sum ^= std::uint16_t(byte << 8);
        for (int bit = 0; bit < 8; ++bit)
            sum = std::uint16_t((sum & 0x8000) != 0 ? sum << 1 ^ 0x8005 : sum << 1);
    }
    return sum;
}

Bytes withChecksum(Bytes bytes)
{
    const std::uint16_t sum = checksumOf(bytes);
    bytes.push_back(std::uint8_t(sum >> 8));
    bytes.push_back(std::uint8_t(sum));
    return bytes;
}

Bytes anyBytes(std::size_t count)
{
    std::mt19937 numbers(static_cast<unsigned int>(count));
    Bytes bytes(count);
    for (std::uint8_t &byte : bytes)
        byte = std::uint8_t(numbers());
    return bytes;
}

bool isFoundOut()
{
    return isKnownAsWholeFlacFrame(withChecksum(anyBytes(100)));
}

} // namespace

TEST(FlacChecksum, frame_isWhole_onlyWithItsChecksum)
{
    if (!isFoundOut())
        GTEST_SKIP() << "this processor has no carry-less multiplication: the decoder looks itself";
    for (std::size_t count = 14; count < 100; ++count) {
        const Bytes frame = withChecksum(anyBytes(count));
        EXPECT_TRUE(isKnownAsWholeFlacFrame(frame)) << count;
        for (std::size_t bit = 0; bit < frame.size() * 8; ++bit) {
            Bytes bent = frame;
            bent[bit / 8] = std::uint8_t(bent[bit / 8] ^ 1 << bit % 8);
            ASSERT_FALSE(isKnownAsWholeFlacFrame(bent)) << count << ' ' << bit;
        }
    }
    EXPECT_TRUE(isKnownAsWholeFlacFrame(withChecksum(anyBytes(100'001))));
    Bytes two = withChecksum(anyBytes(77));
    const Bytes other = withChecksum(anyBytes(1234));
    two.insert(two.end(), other.begin(), other.end());
    EXPECT_TRUE(isKnownAsWholeFlacFrame(two));
    two.push_back('T'); // such as a tag behind the last frame
    EXPECT_FALSE(isKnownAsWholeFlacFrame(two));
}

TEST(FlacChecksum, whatIsTooShort_isNotFoundOut)
{
    EXPECT_FALSE(isKnownAsWholeFlacFrame({}));
    EXPECT_FALSE(isKnownAsWholeFlacFrame(Bytes(15)));
}
