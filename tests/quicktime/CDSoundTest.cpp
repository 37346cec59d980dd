#include "platform/quicktime/CDSound.h"

#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/NSBundle.h"
#include "platform/quicktime/MediaErrors.h"
#include "platform/quicktime/QTMovie.h"
#include "platform/quicktime/SoundHelpers.h"
#include "tests/quicktime/Sounds.h"
#include "tests/support/TemporaryTree.h"

#include <QElapsedTimer>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstring>
#include <gtest/gtest.h>
#include <thread>

using namespace Tessaron;
using namespace Tessaron::Testing;

// Decoding in a program of its own: that nothing changes on the way, and what becomes of this process when the program
// crashes, hangs or is killed.

namespace
{

class Sound : public testing::Test
{
protected:
    /// All of a sound.
    [[nodiscard]] Samples read(CDSound &sound) const
    {
        QByteArray bytes;
        for (;;) {
            const Result<std::span<const char>> piece = sound.next(100'000);
            EXPECT_TRUE(piece) << piece.error().localizedDescription().toStdString();
            if (!piece || piece->empty())
                return samplesOf(bytes);
            bytes.append(piece->data(), qsizetype(piece->size()));
        }
    }
    [[nodiscard]] std::unique_ptr<CDSound> open(const QByteArray &name, const CDSoundOptions &options = {}) const
    {
        Result<std::unique_ptr<CDSound>> sound = CDSound::openFile(tree.path(name), {}, options);
        EXPECT_TRUE(sound) << sound.error().localizedDescription().toStdString();
        return sound ? *std::move(sound) : nullptr;
    }
    const TemporaryTree tree;
};

} // namespace

TEST_F(Sound, comesThroughSampleForSample_whateverTheSizeOfThePieces)
{
    const Samples source = noise(200'003);
    tree.makeFile("a.wav", waveFile(source));
    const auto sound = open("a.wav");
    EXPECT_EQ(sound->length().samples, 200'003u);
    EXPECT_TRUE(sound->length().isExact);
    EXPECT_EQ(read(*sound), source);
    EXPECT_TRUE(sound->damage().isEmpty());
    EXPECT_EQ(*sound->read(nullptr, 0), 0u);
    const auto again = open("a.wav");
    std::vector<char> buffer(std::size_t(4) * 250'000);
    EXPECT_EQ(*again->read(buffer.data(), 7), 7u);
    EXPECT_EQ(*again->read(buffer.data() + 28, 250'000), 199'996u);
    EXPECT_EQ(std::memcmp(buffer.data(), source.data(), source.size() * 2), 0);
}

TEST_F(Sound, asFloats_isNotRounded_andTakesAGain)
{
    const Samples source = noise(50'000);
    tree.makeFile("a.wav", waveFile(source));
    CDSoundOptions options;
    options.form = CDSampleForm::Float32;
    options.gain = 2;
    const auto sound = open("a.wav", options);
    std::vector<float> samples(source.size());
    EXPECT_EQ(*sound->read(reinterpret_cast<char *>(samples.data()), 50'000), 50'000u);
    for (std::size_t index = 0; index < source.size(); ++index)
        ASSERT_FLOAT_EQ(samples[index], float(source[index]) / 16384) << index;
}

TEST_F(Sound, withAGain_isDitheredToTheNearestNumbers)
{
    const Samples source = tone(50'000);
    tree.makeFile("a.wav", waveFile(source));
    CDSoundOptions options;
    options.gain = 0.3;
    const Samples softer = read(*open("a.wav", options));
    ASSERT_EQ(softer.size(), source.size());
    double sum = 0;
    for (std::size_t index = 0; index < source.size(); ++index) {
        ASSERT_LE(std::abs(softer[index] - source[index] * 0.3), 2) << index;
        sum += softer[index] - source[index] * 0.3;
    }
    EXPECT_LT(std::abs(sum / double(source.size())), 0.02) << "no offset";
}

TEST_F(Sound, tags_comeThrough)
{
    tree.makeFile("a.wav", waveFile(noise(50'000)));
    ffmpeg("-i " + tree.path("a.wav") + " -metadata title=M\xc3\xb6we -metadata isrc=DEABC1234567 "
           + tree.path("a.flac"));
    const auto sound = open("a.flac");
    EXPECT_EQ(sound->tags().value(QStringLiteral("title")), QString::fromUtf8("M\xc3\xb6we"));
    EXPECT_EQ(sound->tags().value(QStringLiteral("isrc")), QStringLiteral("DEABC1234567"));
}

TEST_F(Sound, failure_isThatOfTheDecoder)
{
    tree.makeFile("a.wav", "no sound");
    const Result<std::unique_ptr<CDSound>> sound = CDSound::openFile(tree.path("a.wav"));
    ASSERT_FALSE(sound);
    EXPECT_EQ(sound.error().code(), noMovieFound) << sound.error().localizedDescription().toStdString();
    EXPECT_EQ(sound.error().filePath(), tree.pathText("a.wav"));
    EXPECT_FALSE(sound.error().localizedRecoverySuggestion().isEmpty());
    EXPECT_FALSE(CDSound::openFile(tree.path("missing.wav")));
}

TEST_F(Sound, damage_isToldWithItsPlace)
{
    tree.makeFile("a.wav", waveFile(noise(300'000)));
    ffmpeg("-i " + tree.path("a.wav") + ' ' + tree.path("a.flac"));
    QByteArray flac = tree.contents("a.flac");
    flac[flac.size() / 2] = char(flac[flac.size() / 2] ^ 1);
    tree.makeFile("bent.flac", flac);
    const auto sound = open("bent.flac");
    EXPECT_TRUE(sound->damage().isEmpty());
    EXPECT_EQ(read(*sound).size(), 600'000u);
    ASSERT_FALSE(sound->damage().isEmpty());
    EXPECT_GT(sound->damage().places[0].seconds, 1);
}

TEST_F(Sound, helpers_areUsedForOneFileAfterTheOther_andEndWithTheirOwner)
{
    const Samples source = noise(300'000);
    tree.makeFile("a.wav", waveFile(source));
    {
        SoundHelpers helpers;
        CDSoundOptions options;
        options.helpers = &helpers;
        for (int turn = 0; turn < 3; ++turn) {
            const auto sound = open("a.wav", options);
            EXPECT_TRUE(sound->next(1000)); // what was decoded ahead must not come up in the next turn
        }
        EXPECT_EQ(childrenOfThisThread().size(), 1);
        EXPECT_FALSE(CDSound::openFile(tree.path("missing"), {}, options)) << "a failure does not spoil it";
        EXPECT_EQ(read(*open("a.wav", options)), source);
        EXPECT_EQ(childrenOfThisThread().size(), 1);
    }
    EXPECT_EQ(childrenOfThisThread().size(), 0);
}

TEST_F(Sound, counting_takesHelpers_too)
{
    tree.makeFile("a.wav", waveFile(noise(1000)));
    SoundHelpers helpers;
    EXPECT_EQ(*CDSound::countSamples(tree.path("a.wav"), {}, &helpers), 1000u);
    EXPECT_EQ(*CDSound::countSamples(tree.path("a.wav"), {}, &helpers), 1000u);
    EXPECT_EQ(childrenOfThisThread().size(), 1);
    EXPECT_EQ(*CDSound::countSamples(tree.path("a.wav")), 1000u);
    EXPECT_EQ(childrenOfThisThread().size(), 1) << "one of its own does not stay";
}

TEST_F(Sound, crashOfTheDecoder_isAnErrorThatNamesTheFile)
{
    tree.makeFile("a.wav", waveFile(noise(3'000'000)));
    // Sanitizers answer SIGSEGV themselves.
    for (const int signal : {SIGILL, SIGABRT, SIGKILL}) {
        SoundHelpers helpers;
        CDSoundOptions options;
        options.helpers = &helpers;
        const auto sound = open("a.wav", options);
        ASSERT_EQ(childrenOfThisThread().size(), 1);
        ::kill(childrenOfThisThread().front(), signal);
        Result<std::span<const char>> piece = sound->next(100'000);
        while (piece && !piece->empty())
            piece = sound->next(100'000);
        ASSERT_FALSE(piece) << signal;
        EXPECT_EQ(piece.error().code(), decoderHasEnded);
        EXPECT_EQ(piece.error().filePath(), tree.pathText("a.wav"));
        const QString reason = piece.error().localizedFailureReason();
        EXPECT_TRUE(reason.contains(signal == SIGKILL ? QStringLiteral("was killed") : QStringLiteral("has crashed")))
            << reason.toStdString();
        EXPECT_TRUE(open("a.wav", options)) << "the next file gets a program that runs";
    }
}

TEST_F(Sound, stop_endsAWaitForAProgramThatHangs)
{
    tree.makeFile("a.wav", waveFile(noise(3'000'000)));
    std::stop_source stop;
    const Result<std::unique_ptr<CDSound>> sound = CDSound::openFile(tree.path("a.wav"), stop.get_token());
    ASSERT_TRUE(sound);
    ::kill(childrenOfThisThread().front(), SIGSTOP);
    QElapsedTimer timer;
    timer.start();
    std::jthread canceller([&stop] {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        stop.request_stop();
    });
    Result<std::span<const char>> piece = (*sound)->next(100'000);
    while (piece && !piece->empty())
        piece = (*sound)->next(100'000);
    ASSERT_FALSE(piece);
    EXPECT_EQ(piece.error().code(), userCanceledErr);
    EXPECT_LT(timer.elapsed(), 5000);
}

TEST_F(Sound, helper_endsWithItsStarter)
{
    const QByteArray program = "import os, socket, subprocess, sys\n"
                               "ours, theirs = socket.socketpair(socket.AF_UNIX, socket.SOCK_SEQPACKET)\n"
                               "memory = os.memfd_create('m')\n"
                               "os.ftruncate(memory, int(sys.argv[2]))\n"
                               "child = subprocess.Popen([sys.argv[1], '--serve', '1'], stdin=theirs, stdout=memory)\n"
                               "theirs.close()\n"
                               "assert child.poll() is None\n"
                               "ours.close()\n"
                               "print(child.wait(60))\n";
    const QByteArray helper =
        fileSystemRepresentation(NSBundle::frameworkBundle()->pathForResource(QStringLiteral("DummyRedbook")));
    EXPECT_EQ(
        outputOfProgram("python3", {"-c", program, helper, QByteArray::number(qulonglong(SoundProtocol::memorySize))}),
        "0\n");
}
