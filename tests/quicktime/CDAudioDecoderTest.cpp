#include "platform/quicktime/decoding/CDAudioDecoder.h"

#include "tests/quicktime/Sounds.h"
#include "tests/support/TemporaryTree.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <gtest/gtest.h>

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

constexpr std::size_t someSamples = 50003; // of no block's size

/// A sound as the decoder gives it.
struct Decoded {
    Samples samples;
    CDAudioLength announced;
    AudioDamageReport damage;
    double progress = 0;
};

Decoded decoded(const QByteArray &path, std::size_t samplesAtATime = 10007)
{
    Decoded result;
    const auto decoder = CDAudioDecoder::openFile(path);
    EXPECT_TRUE(decoder) << qPrintable(decoder.error().localizedDescription());
    if (!decoder)
        return result;
    result.announced = (*decoder)->length();
    std::vector<char> buffer(samplesAtATime * CDAudioDecoder::bytesPerSample);
    for (;;) {
        const Result<std::size_t> got = (*decoder)->read(buffer.data(), samplesAtATime);
        EXPECT_TRUE(got) << qPrintable(got.error().localizedDescription());
        if (!got || *got == 0)
            break;
        const Samples part = samplesOf(QByteArray(buffer.data(), qsizetype(*got * CDAudioDecoder::bytesPerSample)));
        result.samples.insert(result.samples.end(), part.begin(), part.end());
    }
    result.damage = (*decoder)->damage();
    result.progress = (*decoder)->progress();
    return result;
}

/// Where a copy of the right channel lies best over the source: 0 when it is in its place to the sample.
int bestShift(const Samples &source, const Samples &copy)
{
    double least = 0;
    int best = 9999;
    for (int shift = -40; shift <= 40; ++shift) {
        double sum = 0;
        for (std::size_t index = 5000; index < 15000; ++index) {
            const double difference = source.at(2 * index) - copy.at(2 * std::size_t(std::ptrdiff_t(index) + shift));
            sum += difference * difference;
        }
        if (best == 9999 || sum < least) {
            least = sum;
            best = shift;
        }
    }
    return best;
}

/// A fixture in a format: how ffmpeg makes it of the WAVE file.
struct Format {
    const char *name;
    const char *options;
};

std::ostream &operator<<(std::ostream &stream, const Format &format)
{
    return stream << format.name;
}

class CDAudio : public testing::Test
{
protected:
    QByteArray makeWave(const Samples &samples, int channels = 2, int rate = 44100) const
    {
        return tree.makeFile("source.wav", waveFile(samples, channels, rate));
    }
    QByteArray convert(const QByteArray &source, const Format &format) const
    {
        QByteArray target = tree.path(format.name);
        ffmpeg("-i " + source + ' ' + format.options + ' ' + target);
        return target;
    }

    const TemporaryTree tree;
};

class LosslessAudio : public CDAudio, public testing::WithParamInterface<Format>
{
};

class GaplessAudio : public CDAudio, public testing::WithParamInterface<Format>
{
};

class AnyAudio : public CDAudio, public testing::WithParamInterface<Format>
{
};

} // namespace

TEST_P(LosslessAudio, decoding_equalsTheSourceToTheBit)
{
    const Samples source = noise(someSamples);
    const Decoded result = decoded(convert(makeWave(source), GetParam()));
    EXPECT_EQ(result.samples, source);
    EXPECT_TRUE(result.damage.isEmpty());
    EXPECT_EQ(result.progress, 1);
    if (result.announced.isExact) {
        EXPECT_EQ(result.announced.samples, someSamples);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Formats, LosslessAudio,
    testing::Values(Format{"a.wav", "-c copy"}, Format{"a.flac", ""}, Format{"alac.m4a", "-c:a alac"},
                    Format{"a.aiff", ""}, Format{"a.caf", ""}, Format{"a.wv", "-c:a wavpack"}, Format{"a.tta", ""},
                    Format{"flac.ogg", "-c:a flac"}, Format{"flac.mka", "-c:a flac"}, Format{"a.mka", "-c:a pcm_s16be"},
                    Format{"a.avi", "-c:a pcm_s16le"}, Format{"a.mov", "-c:a pcm_s16be"}, Format{"a.au", ""},
                    Format{"wide.wav", "-c:a pcm_s16le -rf64 always"}, Format{"flac.mp4", "-c:a flac -strict -2"}));

TEST_F(CDAudio, decoding_equalsTheSourceToTheBit_forWhatItsOwnEncoderMade)
{
    const Samples source = noise(someSamples);
    const QByteArray wave = makeWave(source);
    const QByteArray wave64 = tree.path("a.w64"), flac = tree.path("a.flac"), wavpack = tree.path("a.wv");
    outputOfProgram("sox", {wave, wave64});
    outputOfProgram("flac", {"--silent", "--best", wave, "-o", flac});
    outputOfProgram("wavpack", {"-q", wave, "-o", wavpack});
    for (const QByteArray &path : {wave64, flac, wavpack}) {
        const Decoded result = decoded(path);
        EXPECT_EQ(result.samples, source) << path.constData();
        EXPECT_TRUE(result.announced.isExact) << path.constData();
        EXPECT_EQ(result.announced.samples, someSamples) << path.constData();
    }
}

TEST_F(CDAudio, decoding_equalsTheSource_whereItWasWrittenIntoAPipe)
{
    // The header of such a file holds no length, or the greatest there is.
    const Samples source = noise(someSamples);
    const QByteArray wave = makeWave(source);
    for (const char *form : {"-c:a pcm_s16le -f wav", "-c:a flac -f flac", "-c:a pcm_s16be -f au"}) {
        const QByteArray path = tree.makeFile("piped", ffmpeg("-i " + wave + ' ' + form + " -"));
        const Decoded result = decoded(path);
        EXPECT_EQ(result.samples, source) << form;
        EXPECT_TRUE(result.damage.isEmpty()) << form << ": " << qPrintable(result.damage.places.at(0).what);
    }
    // Cut where a length is announced is another matter.
    QByteArray cut = tree.contents("source.wav");
    cut.chop(4000);
    EXPECT_FALSE(decoded(tree.makeFile("cut.wav", cut)).damage.isEmpty());
}

TEST_P(GaplessAudio, decoding_keepsEachSampleInItsPlace)
{
    const Samples source = noise(someSamples);
    const Decoded result = decoded(convert(makeWave(source), GetParam()));
    EXPECT_EQ(result.samples.size() / 2, someSamples);
    EXPECT_TRUE(result.announced.isExact);
    EXPECT_EQ(result.announced.samples, someSamples);
    EXPECT_EQ(bestShift(source, result.samples), 0);
    EXPECT_TRUE(result.damage.isEmpty()) << qPrintable(result.damage.places.at(0).what);
}

INSTANTIATE_TEST_SUITE_P(Formats, GaplessAudio,
                         testing::Values(Format{"lame.mp3", "-c:a libmp3lame -b:a 192k"},
                                         Format{"vbr.mp3", "-c:a libmp3lame -q:a 2"},
                                         Format{"aac.m4a", "-c:a aac -b:a 192k"},
                                         Format{"fast.mp4", "-c:a aac -b:a 192k -movflags +faststart"},
                                         Format{"aac.mov", "-c:a aac -b:a 192k"},
                                         Format{"mp3.mp4", "-c:a libmp3lame -b:a 192k"},
                                         Format{"vorbis.ogg", "-c:a libvorbis -q:a 6"}));

TEST_F(CDAudio, decoding_isExact_forSoundsOfAnyLength)
{
    // Shorter than a packet, a page, and what encoders put in front.
    for (const std::size_t count : {100, 576, 1000, 1152, 3000, 5000, 20000, 60000}) {
        const QByteArray wave = makeWave(noise(count));
        const QByteArray mp3 = tree.path("lame.mp3"), vorbis = tree.path("own.ogg"), opus = tree.path("own.opus");
        outputOfProgram("lame", {"--quiet", wave, mp3});
        outputOfProgram("oggenc", {"-Q", wave, "-o", vorbis});
        outputOfProgram("opusenc", {"--quiet", wave, opus});
        for (const QByteArray &path :
             {mp3, vorbis, opus, convert(wave, {"a.m4a", ""}), convert(wave, {"a.ogg", ""}),
              convert(wave, {"a.opus", ""}), convert(wave, {"a.mp3", ""}), convert(wave, {"a.flac", ""})}) {
            const Decoded result = decoded(path);
            EXPECT_EQ(result.samples.size() / 2, count) << path.constData();
            EXPECT_EQ(result.announced.samples, count) << path.constData();
            EXPECT_TRUE(result.announced.isExact) << path.constData();
            EXPECT_TRUE(result.damage.isEmpty()) << path.constData();
        }
    }
}

TEST_F(CDAudio, decoding_goesThroughAllStreamsThatAreChainedInOgg)
{
    // Radio stations and joiners of files put one stream behind the other.
    const QByteArray wave = makeWave(tone(30000));
    for (const auto &[program, output] : {std::pair{"opusenc", "opus"}, std::pair{"oggenc", "ogg"}}) {
        QByteArray chain;
        for (int count = 0; count < 3; ++count) {
            const QByteArray path = tree.path(QByteArray("one.") + output);
            if (output == QByteArray("ogg"))
                outputOfProgram(program, {"-Q", "--serial", QByteArray::number(count + 1), wave, "-o", path});
            else
                outputOfProgram(program, {"--quiet", "--serial", QByteArray::number(count + 1), wave, path});
            chain += tree.contents(QByteArray("one.") + output);
        }
        const QByteArray path = tree.makeFile(QByteArray("chain.") + output, chain);
        const Decoded result = decoded(path);
        // At the end of a Vorbis stream on a single page, the libraries err by 128 samples.
        EXPECT_NEAR(double(result.samples.size()) / 2, 90000, 2 * 128) << output;
        EXPECT_TRUE(result.damage.isEmpty()) << output << ": " << qPrintable(result.damage.places.at(0).what);
        EXPECT_FALSE(result.announced.isExact && result.announced.samples != result.samples.size() / 2) << output;
    }
}

TEST_F(CDAudio, decoding_dropsThePreSkipOfOpusToTheSample)
{
    // 48,000 samples a second become as many of CD's.
    const Samples source = tone(48000, 2, 48000);
    const Decoded result = decoded(convert(makeWave(source, 2, 48000), {"a.opus", "-c:a libopus -b:a 192k"}));
    EXPECT_TRUE(result.announced.isExact);
    EXPECT_EQ(result.announced.samples, 44100u);
    EXPECT_EQ(result.samples.size() / 2, 44100u);
    EXPECT_EQ(bestShift(tone(44100), result.samples), 0);
}

TEST_P(AnyAudio, decoding_agreesWithFFmpegWithinDither)
{
    const QByteArray path = convert(makeWave(tone(48000, 2, 48000), 2, 48000), GetParam());
    // Left alone, ffmpeg turns mono down by 3 dB.
    const bool isMono = QByteArray(GetParam().options).contains("-ac 1");
    Samples expected = decodedByFFmpeg(path, isMono ? "pan=stereo|c0=c0|c1=c0," : "");
    const Decoded result = decoded(path);
    // Where ffmpeg keeps the encoder's padding, its filter goes on when ours swings out.
    ASSERT_GT(result.samples.size(), 80000u);
    expected.resize(std::min(expected.size(), result.samples.size()) - 400);
    EXPECT_LE(greatestDifference(result.samples, expected), 3);
    EXPECT_NEAR(double(result.samples.size()) / 2, double(expected.size()) / 2,
                1100); // One packet, where tails are cut.
    EXPECT_TRUE(result.damage.isEmpty()) << qPrintable(result.damage.places.at(0).what);
    if (result.announced.isExact) {
        EXPECT_EQ(result.samples.size() / 2, result.announced.samples);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Formats, AnyAudio,
    testing::Values(
        Format{"a.mp3", ""}, Format{"untagged.mp3", "-write_xing 0 -id3v2_version 0"}, Format{"a.m4a", ""},
        Format{"a.aac", ""}, Format{"aac.mka", "-c:a aac"}, Format{"a.ogg", ""}, Format{"a.opus", ""},
        Format{"a.webm", "-c:a libopus"}, Format{"a.ac3", ""}, Format{"a.mp2", ""}, Format{"a.wma", ""},
        Format{"a.mpg", ""}, Format{"a.ts", "-c:a aac"}, Format{"a.flv", "-c:a aac"},
        Format{"24.wav", "-c:a pcm_s24le"}, Format{"float.wav", "-c:a pcm_f32le"}, Format{"8.wav", "-c:a pcm_u8"},
        Format{"double.wav", "-c:a pcm_f64le"}, Format{"32.wav", "-c:a pcm_s32le"}, Format{"alaw.wav", "-c:a pcm_alaw"},
        Format{"adpcm.wav", "-c:a adpcm_ms"}, Format{"24.flac", "-sample_fmt s32"}, Format{"8k.wav", "-ar 8000"},
        Format{"96k.flac", "-ar 96000 -sample_fmt s32"}, Format{"192k.wv", "-ar 192000"},
        Format{"384k.wav", "-ar 384000 -c:a pcm_f32le"}, Format{"5.1.flac", "-af aformat=channel_layouts=5.1"},
        Format{"7.1.wav", "-af aformat=channel_layouts=7.1"}, Format{"4.0.wav", "-af aformat=channel_layouts=4.0"},
        Format{"5.1.ac3", "-af aformat=channel_layouts=5.1"}, Format{"gsm.wav", "-c:a gsm_ms -ac 1 -ar 8000"}));

TEST_F(CDAudio, decoding_isTheSame_whateverIsReadAtATime)
{
    const QByteArray path = convert(makeWave(tone(48000, 2, 48000), 2, 48000), {"a.flac", "-ar 48000"});
    const Samples whole = decoded(path, 1000000).samples;
    EXPECT_EQ(whole.size(), 88200u);
    EXPECT_EQ(decoded(path, 588).samples, whole);
    EXPECT_EQ(decoded(path, 1).samples, whole);
}

TEST_F(CDAudio, decoding_putsMonoIntoBothChannelsAtFullLevel)
{
    const Samples mono = noise(someSamples, 1);
    const Decoded result = decoded(makeWave(mono, 1));
    ASSERT_EQ(result.samples.size(), 2 * mono.size());
    for (std::size_t index = 0; index < mono.size(); ++index) {
        ASSERT_EQ(result.samples[2 * index], mono[index]);
        ASSERT_EQ(result.samples[2 * index + 1], mono[index]);
    }
}

TEST_F(CDAudio, decoding_ofSixLoudChannels_doesNotClip)
{
    // Full level everywhere at once, in phase: without turning down, it would be 2.4 times too much.
    Samples loud;
    for (const std::int16_t sample : tone(44100, 1, 44100, 0.999))
        loud.insert(loud.end(), 6, sample);
    tree.makeFile("loud.wav", waveFile(loud, 6));
    const Decoded result = decoded(tree.path("loud.wav"));
    const Samples single = tone(44100, 1, 44100, 0.999);
    ASSERT_EQ(result.samples.size(), 2 * single.size());
    for (std::size_t index = 0; index < single.size(); ++index)
        ASSERT_LE(std::abs(result.samples[2 * index] - single[index]), 3) << index;
}

TEST_F(CDAudio, decoding_keepsASineASine_asGoodAsFFmpegsSoxr)
{
    for (const int rate : {48000, 96000, 44100}) {
        const QByteArray path = tree.makeFile("sine.wav", waveFileOfSine(std::size_t(rate) * 2, rate, 0.89));
        const Samples ours = decoded(path).samples;
        const Samples theirs = samplesOf(ffmpeg(
            "-i " + path + " -af aresample=44100:resampler=soxr:precision=28:dither_method=triangular -f s16le -"));
        EXPECT_LE(noiseBesideSine(ours), noiseBesideSine(theirs) + 0.1) << rate;
        EXPECT_LT(noiseBesideSine(ours), -92) << rate;
        // No single tone beside the sine: images and harmonics lie 115 dB below it at least.
        const std::vector<double> powers = powerSpectrum(ours, 8192, 32768);
        const auto peak = std::max_element(powers.begin(), powers.end());
        EXPECT_NEAR(double(peak - powers.begin()) * 44100 / 32768, 997, 2);
        for (auto power = powers.begin() + 8; power != powers.end(); ++power) {
            if (std::abs(power - peak) > 8) {
                ASSERT_LT(10 * std::log10(*power / *peak), -115) << rate << " Hz, line " << power - powers.begin();
            }
        }
    }
}

TEST_F(CDAudio, decoding_ofAQuietSine_hasNoSpurs)
{
    // At -80 dB, undithered rounding would leave harmonics only 26 dB below the sine.
    const QByteArray path = tree.makeFile("sine.wav", waveFileOfSine(std::size_t(44100) * 2, 44100, 0.0001));
    const std::vector<double> powers = powerSpectrum(decoded(path).samples, 0, 65536);
    const auto peak = std::max_element(powers.begin(), powers.end());
    for (int harmonic = 2; harmonic <= 9; ++harmonic) {
        const std::size_t line = std::size_t(std::lround(997.0 * harmonic * 65536 / 44100));
        const double power =
            *std::max_element(powers.begin() + std::ptrdiff_t(line) - 3, powers.begin() + std::ptrdiff_t(line) + 4);
        EXPECT_LT(10 * std::log10(power / *peak), -38) << harmonic;
    }
}

TEST_F(CDAudio, length_isFoundByCounting_whereTheContainerDoesNotSayIt)
{
    const QByteArray path = convert(makeWave(noise(someSamples)), {"a.mka", "-c:a libopus"});
    const auto decoder = CDAudioDecoder::openFile(path);
    ASSERT_TRUE(decoder);
    EXPECT_FALSE((*decoder)->length().isExact);
    const Result<std::uint64_t> counted = CDAudioDecoder::countSamples(path);
    ASSERT_TRUE(counted);
    EXPECT_EQ(*counted, decoded(path).samples.size() / 2);
}

TEST_F(CDAudio, length_ofVariableBitRateWithoutATag_isExact)
{
    // Silence and then noise: estimates by the first seconds' rate come out at many times the length.
    Samples source(std::size_t(44100) * 2 * 4, 0);
    const Samples loud = noise(44100);
    source.insert(source.end(), loud.begin(), loud.end());
    const QByteArray path = convert(makeWave(source), {"a.mp3", "-q:a 0 -write_xing 0 -id3v2_version 0"});
    const Decoded result = decoded(path);
    EXPECT_TRUE(result.announced.isExact);
    EXPECT_EQ(result.announced.samples, result.samples.size() / 2);
    EXPECT_NEAR(double(result.announced.samples), 5 * 44100, 2400);
}

namespace
{

/// Adds the item "iTunSMPB" to an MP4 file whose "moov" atom comes last.
QByteArray withGaplessItem(const QByteArray &file, const QByteArray &text)
{
    const auto number = [](qsizetype value) {
        return QByteArray::fromHex(QByteArray::number(qulonglong(value), 16).rightJustified(8, '0'));
    };
    const auto atom = [&](const QByteArray &type, const QByteArray &content) {
        return number(content.size() + 8) + type + content;
    };
    const QByteArray item = atom("----",
                                 atom("mean", number(0) + "com.apple.iTunes") + atom("name", number(0) + "iTunSMPB")
                                     + atom("data", number(1) + number(0) + text));
    QByteArray changed = file + item;
    for (const char *type : {"moov", "udta", "meta", "ilst"}) {
        const qsizetype at = changed.lastIndexOf(type, file.size() - 1) - 4;
        EXPECT_GT(at, 0) << type;
        const qsizetype size = changed.mid(at, 4).toHex().toLongLong(nullptr, 16);
        EXPECT_EQ(at + size, file.size()) << type;
        changed.replace(at, 4, number(size + item.size()));
    }
    return changed;
}

} // namespace

TEST_F(CDAudio, decoding_followsTheGaplessItemOfMP4)
{
    const Samples source = noise(someSamples);
    const QByteArray path = convert(makeWave(source), {"a.m4a", "-c:a aac -b:a 192k -use_editlist 0"});
    const QByteArray plain = tree.contents("a.m4a");
    EXPECT_EQ(decoded(path).samples.size() / 2, someSamples + 1024) << "nothing says that the encoder put 1024 before";
    // A reserved number, the delay, the padding, the length.
    tree.makeFile("item.m4a", withGaplessItem(plain, " 00000000 00000400 00000000 000000000000C353 00000000"));
    const Decoded result = decoded(tree.path("item.m4a"));
    EXPECT_EQ(result.samples.size() / 2, someSamples);
    EXPECT_EQ(result.announced.samples, someSamples);
    EXPECT_EQ(bestShift(source, result.samples), 0);
    // One that makes no sense is left alone.
    tree.makeFile("wrong.m4a", withGaplessItem(plain, " 00000000 FFFFFFFF 00000000 FFFFFFFFFFFFFFFF 00000000"));
    EXPECT_EQ(decoded(tree.path("wrong.m4a")).samples.size() / 2, someSamples + 1024);
}

TEST_F(CDAudio, errors_sayWhatAndWhatToDo)
{
    struct Row {
        QByteArray path;
        OSErr status;
    };
    const QByteArray noSound = tree.path("silent.mp4");
    ffmpeg("-f lavfi -i color=size=64x64:duration=1 -c:v mpeg4 " + noSound);
    for (const Row &row :
         {Row{tree.path("missing"), fnfErr}, Row{tree.path(), ioErr}, Row{tree.makeFile("empty.wav"), OSErr(-2048)},
          Row{tree.makeFile("a.mp3", "text\n"), OSErr(-2048)}, Row{noSound, OSErr(-2048)},
          Row{tree.makeFifo("pipe.wav"), paramErr}, Row{"/dev/zero", paramErr}}) {
        const auto decoder = CDAudioDecoder::openFile(row.path);
        ASSERT_FALSE(decoder) << row.path.constData();
        const NSError error = decoder.error();
        if (row.status != ioErr) {
            EXPECT_EQ(error.code(), row.status) << row.path.constData();
        }
        EXPECT_EQ(error.domain(), NSOSStatusErrorDomain);
        EXPECT_EQ(error.filePath(), QString::fromUtf8(row.path));
        EXPECT_FALSE(error.localizedFailureReason().isEmpty());
        EXPECT_FALSE(error.localizedRecoverySuggestion().isEmpty());
    }
}

TEST_F(CDAudio, cancelling_endsOpeningAndReading)
{
    const QByteArray path = convert(makeWave(noise(300000)), {"a.mp3", ""});
    std::stop_source stop;
    const auto decoder = CDAudioDecoder::openFile(path, stop.get_token());
    ASSERT_TRUE(decoder);
    std::array<char, std::size_t(588) * 4> frame;
    ASSERT_TRUE((*decoder)->read(frame.data(), 588));
    stop.request_stop();
    Result<std::size_t> got = std::size_t(1);
    for (int count = 0; got && *got > 0 && count < 100; ++count)
        got = (*decoder)->read(frame.data(), 588);
    ASSERT_FALSE(got);
    EXPECT_EQ(got.error().code(), userCanceledErr);
    const auto again = CDAudioDecoder::openFile(path, stop.get_token());
    ASSERT_FALSE(again);
    EXPECT_EQ(again.error().code(), userCanceledErr);
}
