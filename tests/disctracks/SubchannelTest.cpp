#include "platform/disctracks/Subchannel.h"

#include <gtest/gtest.h>
#include <random>

using namespace Tessaron;

namespace
{

/// The remainder, bit by bit: what the receiver computes over everything, checksum included, must be the same constant.
std::uint16_t bitwiseRemainder(const std::uint8_t *bytes, std::size_t length)
{
    std::uint32_t remainder = 0;
    for (std::size_t bit = 0; bit < 8 * length; ++bit) {
        const bool carry = (remainder >> 15 & 1) ^ (bytes[bit / 8] >> (7 - bit % 8) & 1);
        remainder = (remainder << 1 ^ (carry ? 0x1021 : 0)) & 0xFFFF;
    }
    return std::uint16_t(remainder);
}

QByteArray hexOf(const SubchannelQ &channel)
{
    return QByteArray(reinterpret_cast<const char *>(channel.data()), qsizetype(channel.size())).toHex(' ');
}

} // namespace

TEST(Subchannel, checksum_isTheInvertedRemainder)
{
    std::mt19937 random(1);
    for (int round = 0; round < 50; ++round) {
        SubchannelQ bytes;
        for (std::uint8_t &byte : bytes)
            byte = std::uint8_t(random());
        EXPECT_EQ(subchannelChecksum(bytes.data(), 10), std::uint16_t(~bitwiseRemainder(bytes.data(), 10)));
    }
}

TEST(Subchannel, subchannelQ_isWhatDiscsHave)
{
    EXPECT_EQ(hexOf(subchannelQ({0, 1, 1, 0, BlockAddress(0)})), "01 01 01 00 00 00 00 00 02 00 5a 28");
    const SubchannelPosition position{SubchannelControl::data | SubchannelControl::copyPermitted, 12, 3,
                                      (4 * 60 + 5) * 75 + 6, BlockAddress::atMSF({71, 8, 9})};
    EXPECT_EQ(hexOf(subchannelQ(position)).first(29), "61 12 03 04 05 06 00 71 08 09");
    EXPECT_EQ(positionOfSubchannelQ(subchannelQ(position)), position);
}

TEST(Subchannel, positionOfSubchannelQ_hasNoValue_whenAnyBitIsWrong)
{
    const SubchannelQ sound = subchannelQ({0, 0xAA, 1, 5, BlockAddress(1000)});
    EXPECT_EQ(positionOfSubchannelQ(sound)->track, 0xAA);
    for (std::size_t bit = 0; bit < 96; ++bit) {
        SubchannelQ damaged = sound;
        damaged[bit / 8] ^= std::uint8_t(1u << bit % 8);
        EXPECT_FALSE(isSound(damaged));
        EXPECT_FALSE(positionOfSubchannelQ(damaged)) << bit;
    }
}

TEST(Subchannel, catalogNumberAndIsrc_comeBack)
{
    const auto catalog = subchannelQOfCatalogNumber(0, "4006381333931", 42);
    ASSERT_TRUE(catalog);
    EXPECT_EQ(hexOf(*catalog).first(29), "02 40 06 38 13 33 93 10 00 42");
    EXPECT_EQ(catalogNumberOfSubchannelQ(*catalog), "4006381333931");
    EXPECT_EQ(isrcOfSubchannelQ(*catalog), QByteArray());

    // D = 20, E = 21 in six bits: 010100 010101; then A12 = 010001 000001 000010, 00, and digits.
    const auto isrc = subchannelQOfIsrc(0, "DEA123456789", 0);
    ASSERT_TRUE(isrc);
    EXPECT_EQ(hexOf(*isrc).first(29), "03 51 54 41 08 34 56 78 90 00");
    EXPECT_EQ(isrcOfSubchannelQ(*isrc), "DEA123456789");
    EXPECT_FALSE(positionOfSubchannelQ(*isrc));
    EXPECT_FALSE(subchannelQOfIsrc(0, "dea123456789", 0));
    EXPECT_FALSE(subchannelQOfIsrc(0, "DE-A12-34-56789", 0));
    EXPECT_FALSE(subchannelQOfCatalogNumber(0, "400638133393", 0));
    EXPECT_FALSE(subchannelQOfCatalogNumber(0, "400638133393X", 0));
}

TEST(Subchannel, interleaving_putsChannelPIntoTheHighestBit)
{
    std::array<std::uint8_t, subchannelSize> channels{};
    channels[0] = 0x80; // first bit of P
    channels[12] = 0x01; // eighth bit of Q
    channels[95] = 0x01; // last bit of W
    std::array<std::uint8_t, subchannelSize> raw;
    interleaveSubchannels(channels.data(), raw.data());
    for (std::size_t index = 0; index < raw.size(); ++index)
        EXPECT_EQ(raw[index], index == 0 ? 0x80 : index == 7 ? 0x40 : index == 95 ? 0x01 : 0) << index;
    std::array<std::uint8_t, subchannelSize> back;
    deinterleaveSubchannels(raw.data(), back.data());
    EXPECT_EQ(back, channels);
}

TEST(Subchannel, interleaving_leadsBack_forAnyBytes)
{
    std::mt19937 random(2);
    std::array<std::uint8_t, subchannelSize> channels;
    for (std::uint8_t &byte : channels)
        byte = std::uint8_t(random());
    std::array<std::uint8_t, subchannelSize> raw;
    std::array<std::uint8_t, subchannelSize> back;
    interleaveSubchannels(channels.data(), raw.data());
    deinterleaveSubchannels(raw.data(), back.data());
    EXPECT_EQ(back, channels);
}
