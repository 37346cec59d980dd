#include "platform/dvdplayback/player/SoundDecoder.h"

#include "tests/dvdplayback/DiscFixture.h"
#include "tests/support/RunProgram.h"

#include <cmath>
#include <cstring>

namespace Tessaron::Testing
{

namespace
{

/// Program streams of a DVD with sound alone, made and decoded by another program.
class SoundDecoderTest : public DiscTest
{
protected:
    /// The source is a filter of ffmpeg's.
    [[nodiscard]] QByteArray stream(const QByteArray &source, const QList<QByteArray> &encoding) const
    {
        QByteArray path = m_tree.path("sound.vob");
        QList<QByteArray> arguments = {"-nostdin", "-v", "error", "-y", "-f", "lavfi", "-i", source, "-t", "1.5"};
        arguments += encoding;
        arguments += {"-f", "dvd", path};
        const ProgramRun run = runProgram("ffmpeg", arguments);
        EXPECT_EQ(run.status, 0) << run.errors.constData();
        return path;
    }
    [[nodiscard]] static std::vector<float> byAnotherProgram(const QByteArray &path, const QByteArray &channels,
                                                             const QByteArray &rate)
    {
        const QByteArray layout = channels == "1" ? "mono" : channels == "2" ? "stereo" : "5.1";
        const ProgramRun run =
            runProgram("ffmpeg",
                       {"-nostdin", "-v", "error", "-i", path, "-af", "aresample=rematrix_maxval=1:ochl=" + layout,
                        "-ar", rate, "-f", "f32le", "-"});
        EXPECT_EQ(run.status, 0) << run.errors.constData();
        std::vector<float> samples(std::size_t(run.output.size()) / sizeof(float));
        std::memcpy(samples.data(), run.output.constData(), samples.size() * sizeof(float));
        return samples;
    }
    struct Decoded {
        std::vector<float> samples;
        std::optional<std::int64_t> begin;
        std::int64_t furthest = 0; ///< how far a time was off from what came before, ticks
    };
    [[nodiscard]] Decoded decoded(const QByteArray &path, ElementaryKind kind, const SoundForm &form) const
    {
        Decoded result;
        const std::unique_ptr<SoundDecoder> decoder = SoundDecoder::create(kind, form);
        EXPECT_NE(decoder, nullptr);
        const auto visitor = [&](const DecodedSound &piece) {
            if (piece.time && !result.begin)
                result.begin = piece.time;
            const std::int64_t expected =
                result.begin.value_or(0) + std::int64_t(result.samples.size() / form.channels) * 90'000 / form.rate;
            if (piece.time)
                result.furthest = std::max(result.furthest, std::abs(*piece.time - expected));
            result.samples.insert(result.samples.end(), piece.samples.begin(), piece.samples.end());
        };
        const QByteArray contents = m_tree.contents("sound.vob");
        EXPECT_EQ(contents.size() % qsizetype(discSectorSize), 0) << path.constData();
        for (qsizetype at = 0; at + qsizetype(discSectorSize) <= contents.size(); at += qsizetype(discSectorSize))
            splitSector({reinterpret_cast<const std::uint8_t *>(contents.constData()) + at, discSectorSize},
                        [&](const ElementaryPiece &piece) {
                            if (piece.kind == kind)
                                decoder->add(piece.bytes, piece.presentation, visitor);
                        });
        decoder->drain(visitor);
        return result;
    }
    /// Decodes with both programs and compares, sample by sample.
    void compare(ElementaryKind kind, const QByteArray &source, const QList<QByteArray> &encoding,
                 const SoundForm &form = {}, float tolerance = 0)
    {
        const QByteArray path = stream(source, encoding);
        const std::vector<float> expected =
            byAnotherProgram(path, QByteArray::number(form.channels), QByteArray::number(form.rate));
        const Decoded ours = decoded(path, kind, form);
        ASSERT_GT(expected.size(), std::size_t(form.rate)) << "a second of it";
        ASSERT_NEAR(double(ours.samples.size()), double(expected.size()), 64.0 * form.channels);
        float furthest = 0;
        for (std::size_t index = 0; index < std::min(expected.size(), ours.samples.size()); ++index)
            furthest = std::max(furthest, std::abs(expected[index] - ours.samples[index]));
        EXPECT_LE(furthest, tolerance);
        EXPECT_TRUE(ours.begin);
        // The program that makes the streams times packets of LPCM by the frames that begin in them: a packet off.
        constexpr std::int64_t packetOfLPCM = 90'000 * 502 / 48'000;
        EXPECT_LE(ours.furthest, kind == ElementaryKind::LPCM ? packetOfLPCM : 90'000 / 500);
    }

    const QByteArray m_stereo = "aevalsrc='0.4*sin(2*PI*t*(300+200*t))|0.3*sin(2*PI*t*(500+100*t))':s=48000:c=stereo";
    const QByteArray m_surround = "aevalsrc='0.9*sin(2*PI*t*300)|0.9*sin(2*PI*t*300)|0.9*sin(2*PI*t*300)|"
                                  "0.9*sin(2*PI*t*60)|0.9*sin(2*PI*t*300)|0.9*sin(2*PI*t*300)':s=48000:c=5.1";
};

TEST_F(SoundDecoderTest, ac3_isDecodedAsByAnotherProgram)
{
    compare(ElementaryKind::AC3, m_stereo, {"-c:a", "ac3", "-b:a", "192k"});
}

TEST_F(SoundDecoderTest, mpeg_isDecodedAsByAnotherProgram)
{
    compare(ElementaryKind::MPEGAudio, m_stereo, {"-c:a", "mp2", "-b:a", "192k"});
}

TEST_F(SoundDecoderTest, dts_isDecodedAsByAnotherProgram)
{
    compare(ElementaryKind::DTS, m_surround, {"-c:a", "dca", "-strict", "-2", "-b:a", "768k"});
}

TEST_F(SoundDecoderTest, lpcm_isDecodedAsByAnotherProgram)
{
    compare(ElementaryKind::LPCM, m_stereo, {"-c:a", "pcm_dvd", "-sample_fmt", "s16"});
    compare(ElementaryKind::LPCM, m_stereo, {"-c:a", "pcm_dvd", "-sample_fmt", "s32"});
    compare(ElementaryKind::LPCM, m_stereo, {"-c:a", "pcm_dvd", "-sample_fmt", "s16", "-ar", "96000"}, {96'000, 2});
}

TEST_F(SoundDecoderTest, surround_isMixedDown_andNeverClipped)
{
    compare(ElementaryKind::AC3, m_surround, {"-c:a", "ac3", "-b:a", "448k"});
    const Decoded ours = decoded(m_tree.path("sound.vob"), ElementaryKind::AC3, {});
    const float loudest = std::abs(*std::max_element(ours.samples.begin(), ours.samples.end(),
                                                     [](float a, float b) { return std::abs(a) < std::abs(b); }));
    EXPECT_LE(loudest, 1.0F);
    EXPECT_GT(loudest, 0.8F) << "the three that are mixed are alike, and add up";
    compare(ElementaryKind::AC3, m_surround, {"-c:a", "ac3", "-b:a", "448k"}, {48'000, 1});
    compare(ElementaryKind::AC3, m_surround, {"-c:a", "ac3", "-b:a", "448k"}, {48'000, 6});
}

TEST_F(SoundDecoderTest, otherRates_areConverted)
{
    compare(ElementaryKind::AC3, m_stereo, {"-c:a", "ac3", "-b:a", "192k"}, {44'100, 2}, 0.001F);
    compare(ElementaryKind::LPCM, m_stereo, {"-c:a", "pcm_dvd", "-sample_fmt", "s16", "-ar", "96000"}, {48'000, 2},
            0.001F);
}

/// Four samples of 20 bits: their upper 16 bits first, then the lower four, two in a byte.
TEST_F(SoundDecoderTest, lpcmOf20Bits_isUnpacked)
{
    const std::array<std::int32_t, 4> wanted = {0x12345, -0x54321, 0x7ffff, -0x80000};
    std::vector<std::uint8_t> packet = {0x00, 0x41, 0x80}; // 20 bits, 48 kHz, two channels
    for (int group = 0; group < 20; ++group) {
        for (const std::int32_t sample : wanted) {
            packet.push_back(std::uint8_t(std::uint32_t(sample) >> 12));
            packet.push_back(std::uint8_t(std::uint32_t(sample) >> 4));
        }
        for (std::size_t index = 0; index < wanted.size(); index += 2)
            packet.push_back(
                std::uint8_t((std::uint32_t(wanted[index]) & 15) << 4 | (std::uint32_t(wanted[index + 1]) & 15)));
    }
    const std::unique_ptr<SoundDecoder> decoder = SoundDecoder::create(ElementaryKind::LPCM, {});
    ASSERT_NE(decoder, nullptr);
    std::vector<float> samples;
    decoder->add(packet, 0, [&](const DecodedSound &piece) {
        samples.insert(samples.end(), piece.samples.begin(), piece.samples.end());
    });
    ASSERT_EQ(samples.size(), 80U);
    for (std::size_t index = 0; index < samples.size(); ++index)
        EXPECT_NEAR(samples[index], double(wanted[index % wanted.size()]) / 0x80000, 1e-7) << index;
}

TEST_F(SoundDecoderTest, whatIsNoSound_hasNoDecoder)
{
    EXPECT_EQ(SoundDecoder::create(ElementaryKind::Video, {}), nullptr);
    EXPECT_EQ(SoundDecoder::create(ElementaryKind::Subpicture, {}), nullptr);
}

} // namespace

} // namespace Tessaron::Testing
