#include "imaging/burning/SoundComparison.h"

#include "platform/foundation/OSStatus.h"

#include <QByteArray>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <set>

namespace Tessaron
{

namespace
{

constexpr int sectorSize = 2352;
constexpr int sampleSize = 4;

QByteArray noise(int sectors, unsigned int seed = 1)
{
    std::mt19937 random(seed);
    QByteArray bytes(qsizetype(sectors) * sectorSize, '\0');
    std::generate(bytes.begin(), bytes.end(), [&random] { return char(random() & 0xFF); });
    return bytes;
}

QByteArray silence(int sectors)
{
    return QByteArray(qsizetype(sectors) * sectorSize, '\0');
}

/// A tone that is the same after every 100 samples.
QByteArray tone(int sectors)
{
    QByteArray bytes = silence(sectors);
    for (qsizetype sample = 0; sample < bytes.size() / sampleSize; ++sample)
        bytes[sample * sampleSize] = char(sample % 100 + 1);
    return bytes;
}

/// A disc of sound in a drive that reads it displaced.
class Disc
{
public:
    Disc(QByteArray sound, int displacement)
        : m_sound(std::move(sound))
        , m_displacement(displacement)
    {
    }

    [[nodiscard]] std::int64_t sectors() const { return m_sound.size() / sectorSize; }
    QByteArray &sound() { return m_sound; }
    std::set<std::int64_t> unreadable;

    [[nodiscard]] NSError read(std::int64_t first, std::uint32_t count, char *out) const
    {
        EXPECT_GE(first, 0);
        EXPECT_LE(first + count, sectors());
        for (std::int64_t sector = first; sector < first + std::int64_t(count); ++sector) {
            if (unreadable.contains(sector))
                return NSError(NSOSStatusErrorDomain, ioErr);
        }
        for (std::int64_t byte = 0; byte < std::int64_t(count) * sectorSize; ++byte) {
            const std::int64_t from = first * sectorSize + byte - std::int64_t(m_displacement) * sampleSize;
            out[byte] = from >= 0 && from < m_sound.size() ? m_sound.at(qsizetype(from)) : '\0';
        }
        return {};
    }

private:
    QByteArray m_sound;
    const int m_displacement;
};

/// Compares all of `sent` as one track from sector 0 on, in pieces.
SoundFindings compared(const Disc &disc, const QByteArray &sent, std::optional<int> *displacement = nullptr)
{
    SoundComparison comparison(
        [&disc](std::int64_t first, std::uint32_t count, char *out) { return disc.read(first, count, out); },
        disc.sectors(), {});
    comparison.beginTrack(0);
    constexpr std::int64_t piece = 50;
    for (std::int64_t at = 0; at < sent.size() / sectorSize; at += piece)
        comparison.compare(sent.constData() + at * sectorSize,
                           std::uint32_t(std::min<std::int64_t>(piece, sent.size() / sectorSize - at)));
    if (displacement != nullptr)
        *displacement = comparison.displacement();
    return comparison.findings();
}

class Displaced : public testing::TestWithParam<int>
{
};

TEST_P(Displaced, sound_isFound_whereTheDriveHasIt)
{
    const QByteArray sound = noise(200);
    std::optional<int> displacement;
    const SoundFindings findings = compared(Disc(sound, GetParam()), sound, &displacement);
    EXPECT_EQ(displacement, GetParam());
    EXPECT_EQ(findings.different.count, 0u);
    EXPECT_EQ(findings.unreadable.count, 0u);
    EXPECT_GE(findings.compared, 196u);
}

INSTANTIATE_TEST_SUITE_P(Displaced, Displaced, testing::Values(0, 1, -1, 30, -582, 588, 1776, -2351, 2352));

TEST(SoundComparison, oneWrongByte_isFound_inItsSector)
{
    const QByteArray sent = noise(200);
    Disc disc(sent, 6);
    disc.sound()[qsizetype(120) * sectorSize + 1000] ^= 1;
    const SoundFindings findings = compared(disc, sent);
    EXPECT_EQ(findings.different.count, 1u);
    EXPECT_EQ(findings.different.first, 120u);
}

TEST(SoundComparison, otherSound_isDifferentThroughout)
{
    const SoundFindings findings = compared(Disc(noise(200, 2), 0), noise(200));
    EXPECT_EQ(findings.different.count, 200u);
    EXPECT_EQ(findings.different.first, 0u);
}

TEST(SoundComparison, displacementBeyondTheWindow_isADifference)
{
    const QByteArray sound = noise(200);
    EXPECT_GT(compared(Disc(sound, 2353), sound).different.count, 190u);
}

TEST(SoundComparison, silenceBeforeTheSound_doesNotDecide)
{
    const QByteArray sound = silence(100) + noise(100) + silence(20);
    std::optional<int> displacement;
    EXPECT_EQ(compared(Disc(sound, 667), sound, &displacement).different.count, 0u);
    EXPECT_EQ(displacement, 667);
}

TEST(SoundComparison, repeatingSound_leavesOpen_whatALaterPieceDecides)
{
    const QByteArray sound = tone(100) + noise(100);
    std::optional<int> displacement;
    EXPECT_EQ(compared(Disc(sound, 667), sound, &displacement).different.count, 0u);
    EXPECT_EQ(displacement, 667);
}

TEST(SoundComparison, damageInTheFirstPiece_doesNotHideTheDisplacement)
{
    const QByteArray sent = noise(200);
    Disc disc(sent, -30);
    for (int sector = 0; sector < 20; ++sector)
        disc.sound()[qsizetype(sector) * sectorSize + 600] ^= 1;
    const SoundFindings findings = compared(disc, sent);
    // What the displacement moves in front of sector 0 is not compared.
    EXPECT_EQ(findings.different.count, 19u);
    EXPECT_EQ(findings.different.first, 1u);
}

TEST(SoundComparison, unreadableSectors_areNamed_andTheRestIsCompared)
{
    const QByteArray sent = noise(200);
    Disc disc(sent, 12);
    disc.unreadable = {70, 71, 150};
    const SoundFindings findings = compared(disc, sent);
    EXPECT_EQ(findings.unreadable.count, 3u);
    EXPECT_EQ(findings.unreadable.first, 70u);
    EXPECT_EQ(findings.different.count, 0u);
    EXPECT_GE(findings.compared, 190u);
}

TEST(SoundComparison, secondTrack_isCountedFromItsOwnBegin)
{
    const QByteArray sent = noise(200);
    Disc disc(sent, 0);
    disc.sound()[qsizetype(130) * sectorSize] ^= 1;
    SoundComparison comparison(
        [&disc](std::int64_t first, std::uint32_t count, char *out) { return disc.read(first, count, out); },
        disc.sectors(), {});
    comparison.beginTrack(0);
    comparison.compare(sent.constData(), 100);
    EXPECT_EQ(comparison.findings().different.count, 0u);
    comparison.beginTrack(100);
    comparison.compare(sent.constData() + qsizetype(100) * sectorSize, 100);
    EXPECT_EQ(comparison.findings().different.count, 1u);
    EXPECT_EQ(comparison.findings().different.first, 30u);
}

} // namespace

} // namespace Tessaron
