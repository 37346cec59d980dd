#include "platform/disctracks/SectorCoding.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <vector>

using namespace Tessaron;

namespace
{

using Sector = std::array<std::uint8_t, 2352>;

// What follows is written bit by bit from ECMA-130, apart from the product's tables.

/// The remainder of the message polynomial divided by (x^16+x^15+x^2+1)(x^16+x^2+x+1), least significant bits first.
std::uint32_t bitwiseChecksum(const std::uint8_t *bytes, std::size_t length)
{
    constexpr std::uint32_t polynomial = 0x8001801B;
    std::uint32_t remainder = 0;
    for (std::size_t bit = 0; bit < 8 * length; ++bit) {
        const bool isSet = bytes[bit / 8] >> bit % 8 & 1;
        const bool carry = remainder >> 31 ^ std::uint32_t(isSet);
        remainder = remainder << 1 ^ (carry ? polynomial : 0);
    }
    std::uint32_t reversed = 0;
    for (int bit = 0; bit < 32; ++bit)
        reversed |= (remainder >> bit & 1) << (31 - bit);
    return reversed;
}

std::uint8_t fieldProduct(std::uint8_t left, std::uint8_t right)
{
    std::uint32_t product = 0;
    for (int bit = 0; bit < 8; ++bit)
        product ^= right >> bit & 1 ? std::uint32_t(left) << bit : 0;
    for (int bit = 15; bit >= 8; --bit)
        product ^= product >> bit & 1 ? 0x11Du << (bit - 8) : 0;
    return std::uint8_t(product);
}

/// Whether a codeword, its parity last, satisfies both rows of the parity check matrix.
bool isCodeword(const std::vector<std::uint8_t> &word)
{
    std::uint8_t sum = 0;
    std::uint8_t weighted = 0;
    std::uint8_t power = 1;
    for (std::size_t index = word.size(); index-- > 0;) {
        sum ^= word[index];
        weighted ^= fieldProduct(word[index], power);
        power = fieldProduct(power, 2);
    }
    return sum == 0 && weighted == 0;
}

/// Counts the columns and diagonals that are not codewords.
int wrongCodewords(Sector sector, bool isForm1)
{
    if (isForm1)
        std::fill_n(sector.begin() + 12, 4, std::uint8_t(0));
    const auto word = [&](std::size_t index, std::size_t plane) { return sector[12 + 2 * index + plane]; };
    int wrong = 0;
    for (std::size_t plane = 0; plane < 2; ++plane) {
        for (std::size_t column = 0; column < 43; ++column) {
            std::vector<std::uint8_t> bytes;
            for (std::size_t row = 0; row < 26; ++row)
                bytes.push_back(word(43 * row + column, plane));
            wrong += !isCodeword(bytes);
        }
        for (std::size_t diagonal = 0; diagonal < 26; ++diagonal) {
            std::vector<std::uint8_t> bytes;
            for (std::size_t step = 0; step < 43; ++step)
                bytes.push_back(word((44 * step + 43 * diagonal) % 1118, plane));
            bytes.push_back(word(1118 + diagonal, plane));
            bytes.push_back(word(1144 + diagonal, plane));
            wrong += !isCodeword(bytes);
        }
    }
    return wrong;
}

std::uint32_t littleEndian(const Sector &sector, std::size_t at)
{
    return sector[at] | sector[at + 1] << 8 | sector[at + 2] << 16 | std::uint32_t(sector[at + 3]) << 24;
}

Sector randomSector(unsigned int seed)
{
    std::mt19937 random(seed);
    Sector sector;
    for (std::uint8_t &byte : sector)
        byte = std::uint8_t(random());
    return sector;
}

} // namespace

TEST(SectorCoding, sectorChecksum_isTheRemainder)
{
    const Sector bytes = randomSector(1);
    for (const std::size_t length : {0u, 1u, 7u, 8u, 9u, 2064u, 2352u})
        EXPECT_EQ(sectorChecksum(0, bytes.data(), length), bitwiseChecksum(bytes.data(), length)) << length;
    const std::uint32_t first = sectorChecksum(0, bytes.data(), 1001);
    EXPECT_EQ(sectorChecksum(first, bytes.data() + 1001, 999), bitwiseChecksum(bytes.data(), 2000));
}

TEST(SectorCoding, completeMode1Sector_makesCodewords)
{
    for (unsigned int seed = 0; seed < 20; ++seed) {
        const Sector before = randomSector(seed);
        Sector sector = before;
        completeMode1Sector(sector.data(), BlockAddress(std::int64_t{seed} * 4567));
        EXPECT_EQ(littleEndian(sector, 2064), bitwiseChecksum(sector.data(), 2064));
        EXPECT_EQ(wrongCodewords(sector, false), 0);
        EXPECT_TRUE(std::equal(before.begin() + 16, before.begin() + 2064, sector.begin() + 16));
        EXPECT_FALSE(checkSector(sector.data(), TrackKind::Mode1, BlockAddress(std::int64_t{seed} * 4567)));
    }
}

TEST(SectorCoding, completeMode1Sector_writesTheAddressInDecimalDigits)
{
    Sector sector = randomSector(3);
    completeMode1Sector(sector.data(), BlockAddress((12 * 60 + 34) * 75 + 56 - 150));
    const std::array<std::uint8_t, 16> header = {0,   255, 255, 255, 255,  255,  255,  255,
                                                 255, 255, 255, 0,   0x12, 0x34, 0x56, 1};
    EXPECT_TRUE(std::equal(header.begin(), header.end(), sector.begin()));
    EXPECT_EQ(std::count(sector.begin() + 2068, sector.begin() + 2076, 0), 8);
}

TEST(SectorCoding, completeForm1Sector_leavesTheHeaderOutOfTheParity)
{
    Sector sector = randomSector(4);
    completeForm1Sector(sector.data(), BlockAddress(1000), {1, 2, SectorSubheader::data, 3});
    EXPECT_EQ(sector[15], 2);
    EXPECT_TRUE(std::equal(sector.begin() + 16, sector.begin() + 20, sector.begin() + 20));
    EXPECT_EQ(littleEndian(sector, 2072), bitwiseChecksum(sector.data() + 16, 2056));
    EXPECT_EQ(wrongCodewords(sector, true), 0);
    EXPECT_NE(wrongCodewords(sector, false), 0);
    EXPECT_FALSE(checkSector(sector.data(), TrackKind::Mode2Form1, BlockAddress(1000)));
    EXPECT_FALSE(checkSector(sector.data(), TrackKind::Mode2Mixed, {}));
    EXPECT_EQ(checkSector(sector.data(), TrackKind::Mode2Form2, {}), SectorFaults(SectorFault::Mode));
}

TEST(SectorCoding, completeForm2Sector_setsItsBitAndChecksum)
{
    Sector sector = randomSector(5);
    completeForm2Sector(sector.data(), BlockAddress(0), {});
    EXPECT_EQ(sector[18] & 0x20, 0x20);
    EXPECT_EQ(littleEndian(sector, 2348), bitwiseChecksum(sector.data() + 16, 2332));
    EXPECT_FALSE(checkSector(sector.data(), TrackKind::Mode2Form2, BlockAddress(0)));
    std::fill_n(sector.begin() + 2348, 4, std::uint8_t(0)); // it may be left out
    EXPECT_FALSE(checkSector(sector.data(), TrackKind::Mode2Mixed, {}));
}

TEST(SectorCoding, checkSector_namesTheFault_forEachByteOfMode1)
{
    Sector sound = randomSector(6);
    completeMode1Sector(sound.data(), BlockAddress(75));
    for (std::size_t at = 0; at < sound.size(); ++at) {
        Sector damaged = sound;
        damaged[at] ^= 0x10;
        const SectorFaults faults = checkSector(damaged.data(), TrackKind::Mode1, BlockAddress(75));
        SectorFaults expected;
        if (at < 12)
            expected = SectorFault::Sync | SectorFault::Checksum;
        else if (at < 15)
            expected = SectorFault::Address | SectorFault::Checksum | SectorFault::ParityP | SectorFault::ParityQ;
        else if (at == 15)
            expected = SectorFault::Mode;
        else if (at < 2068)
            expected = SectorFault::Checksum | SectorFault::ParityP | SectorFault::ParityQ;
        else if (at < 2076)
            expected = SectorFault::Zeros | SectorFault::ParityP | SectorFault::ParityQ;
        else
            expected = at < 2248 ? SectorFault::ParityP : SectorFault::ParityQ;
        ASSERT_EQ(faults, expected) << "byte " << at;
    }
}

TEST(SectorCoding, checkSector_takesAnyDecimalAddress_whenNoneIsExpected)
{
    Sector sector = randomSector(7);
    completeMode1Sector(sector.data(), BlockAddress(99));
    EXPECT_FALSE(checkSector(sector.data(), TrackKind::Mode1, {}));
    EXPECT_TRUE(checkSector(sector.data(), TrackKind::Mode1, BlockAddress(98)) & SectorFault::Address);
    sector[14] = 0x0A;
    EXPECT_TRUE(checkSector(sector.data(), TrackKind::Mode1, {}) & SectorFault::Address);
}

TEST(SectorCoding, checkSector_findsUnequalSubheaders)
{
    Sector sector = randomSector(8);
    completeForm1Sector(sector.data(), BlockAddress(0), {});
    sector[16] ^= 1;
    EXPECT_TRUE(checkSector(sector.data(), TrackKind::Mode2Form1, {}) & SectorFault::Subheader);
}

TEST(SectorCoding, kindOfSector_isWhatTheHeaderSays)
{
    Sector sector = randomSector(9);
    EXPECT_EQ(kindOfSector(sector.data()), TrackKind::Audio);
    completeMode1Sector(sector.data(), BlockAddress(0));
    EXPECT_EQ(kindOfSector(sector.data()), TrackKind::Mode1);
    completeForm1Sector(sector.data(), BlockAddress(0), {});
    EXPECT_EQ(kindOfSector(sector.data()), TrackKind::Mode2Form1);
    completeForm2Sector(sector.data(), BlockAddress(0), {});
    EXPECT_EQ(kindOfSector(sector.data()), TrackKind::Mode2Form2);
    sector[16] ^= 1;
    EXPECT_EQ(kindOfSector(sector.data()), TrackKind::Mode2Formless);
    sector[15] = 7;
    EXPECT_EQ(kindOfSector(sector.data()), TrackKind::Unstated);
}

TEST(SectorEncoder, encode_makesSoundSectorsThatHoldTheUserData)
{
    constexpr std::size_t count = 5;
    std::vector<char> data(count * 2048);
    std::mt19937 random(10);
    std::generate(data.begin(), data.end(), [&] { return char(random()); });
    for (const TrackKind kind : {TrackKind::Mode1, TrackKind::Mode2Form1, TrackKind::Mode2Mixed}) {
        for (const SectorForm form : {SectorForm::UserData, SectorForm::WithoutHeader, SectorForm::Raw}) {
            const auto encoder = SectorEncoder::encoderFor(kind, form);
            ASSERT_EQ(encoder.has_value(), kind != TrackKind::Mode1 || form != SectorForm::WithoutHeader);
            if (!encoder)
                continue;
            const std::size_t size = encoder->blockSize();
            ASSERT_EQ(size, std::size_t(form));
            std::vector<char> blocks(count * size);
            encoder->encode(data.data(), count, BlockAddress(4498), blocks.data());
            const SectorPart part = *userDataPart(kind, form);
            for (std::size_t block = 0; block < count; ++block) {
                const char *const made = blocks.data() + block * size;
                EXPECT_TRUE(std::equal(made + part.offset, made + part.offset + 2048, data.data() + block * 2048));
                const BlockAddress address(4498 + std::int64_t(block));
                if (form == SectorForm::Raw) {
                    EXPECT_FALSE(checkSector(reinterpret_cast<const std::uint8_t *>(made), kind, address));
                }
            }
        }
    }
}

TEST(SectorEncoder, encoderFor_hasNoValue_whenTheFormHoldsNoFilesystem)
{
    EXPECT_FALSE(SectorEncoder::encoderFor(TrackKind::Audio, SectorForm::Raw));
    EXPECT_FALSE(SectorEncoder::encoderFor(TrackKind::Mode2Form2, SectorForm::Form2UserData));
    EXPECT_FALSE(SectorEncoder::encoderFor(TrackKind::Mode2Formless, SectorForm::WithoutHeader));
    EXPECT_FALSE(SectorEncoder::encoderFor(TrackKind::Audio, SectorForm::RawWithSubchannel));
    EXPECT_FALSE(SectorEncoder::encoderFor(TrackKind::Unstated, SectorForm::Raw));
}
