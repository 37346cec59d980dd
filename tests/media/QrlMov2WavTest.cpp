#include "platform/foundation/DescriptorIO.h"
#include "platform/foundation/NSBundle.h"
#include "platform/quicktime/mov2wav/PCMFile.h"
#include "tests/quicktime/Sounds.h"
#include "tests/support/EventLoop.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/RunProgram.h"
#include "tests/support/TemporaryTree.h"

#include <gtest/gtest.h>

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

class QrlMov2Wav : public testing::Test
{
protected:
    QrlMov2Wav() { leaveSessionBus(); }

    int run(const QList<QByteArray> &arguments, const QList<QByteArray> &before = {})
    {
        QList<QByteArray> words = before;
        words << program() << arguments;
        const ProgramRun done = runProgram(words.takeFirst(), words);
        errors = done.errors;
        EXPECT_EQ(done.output, QByteArray());
        return done.status;
    }
    static QByteArray program()
    {
        return NSBundle::mainBundle()->pathForResource(QStringLiteral("QrlMov2Wav"), QStringLiteral("app")).toUtf8()
            + "/Contents/MacOS/QrlMov2Wav";
    }

    const TemporaryTree tree;
    QByteArray errors;
};

} // namespace

TEST_F(QrlMov2Wav, result_hasTheSamplesOfTheSource)
{
    const Samples sound = noise(100003);
    tree.makeFile("a.wav", waveFile(sound));
    ffmpeg("-i " + tree.path("a.wav") + ' ' + tree.path("a.flac"));
    EXPECT_EQ(run({tree.path("a.flac"), tree.path("b.wav"), "wave", "44100"}), 0) << errors.constData();
    EXPECT_EQ(run({tree.path("a.flac"), tree.path("b.aiff"), "aiff", "44100", "name"}), 0) << errors.constData();
    EXPECT_EQ(errors, QByteArray());
    EXPECT_EQ(tree.contents("b.wav").size(), 44 + 4 * 100003) << "the plain header where the length is known";
    EXPECT_EQ(decodedByFFmpeg(tree.path("b.wav")), sound);
    EXPECT_EQ(decodedByFFmpeg(tree.path("b.aiff")), sound);
    EXPECT_EQ(outputOfProgram("soxi", {"-s", tree.path("b.wav")}).trimmed(), "100003");
    EXPECT_EQ(outputOfProgram("soxi", {"-s", tree.path("b.aiff")}).trimmed(), "100003");
    EXPECT_EQ(outputOfProgram("soxi", {"-r", tree.path("b.aiff")}).trimmed(), "44100");
}

TEST_F(QrlMov2Wav, result_isRight_whereTheLengthIsNotKnownBefore)
{
    tree.makeFile("a.wav", waveFile(noise(100003)));
    ffmpeg("-i " + tree.path("a.wav") + " -c:a pcm_s16le " + tree.path("a.mkv"));
    EXPECT_EQ(run({tree.path("a.mkv"), tree.path("b.wav"), "wave", "44100"}), 0) << errors.constData();
    EXPECT_EQ(tree.contents("b.wav").size(), 80 + 4 * 100003);
    EXPECT_EQ(outputOfProgram("soxi", {"-s", tree.path("b.wav")}).trimmed(), "100003");
    EXPECT_EQ(decodedByFFmpeg(tree.path("b.wav")), noise(100003));
}

TEST_F(QrlMov2Wav, result_hasTheRateThatWasAskedFor)
{
    tree.makeFile("a.wav", waveFile(tone(96000, 2, 48000), 2, 48000));
    for (const char *const rate : {"8000", "22050", "44100", "48000", "96000", "384000"}) {
        for (const QByteArray kind : {"wave", "aiff"}) {
            const QByteArray path = tree.path(QByteArray("b.") + (kind == "wave" ? "wav" : "aiff"));
            EXPECT_EQ(run({tree.path("a.wav"), path, kind, rate}), 0) << errors.constData();
            EXPECT_EQ(outputOfProgram("soxi", {"-r", path}).trimmed(), rate);
            EXPECT_EQ(outputOfProgram("soxi", {"-s", path}).trimmed().toInt(), 2 * QByteArray(rate).toInt());
            EXPECT_EQ(outputOfProgram("soxi", {"-c", path}).trimmed(), "2");
        }
    }
    EXPECT_EQ(run({tree.path("a.wav"), tree.path("same.wav"), "wave", "48000"}), 0);
    EXPECT_EQ(tree.contents("same.wav"), tree.contents("a.wav")) << "what has this form already is left as it is";
}

TEST_F(QrlMov2Wav, itsEnd_followsThatOfItsStarter)
{
    tree.makeFile("a.wav", waveFile(noise(4000000)));
    // A shell starts it, lets it begin, and is gone.
    const QByteArray script = program() + ' ' + tree.path("a.wav") + ' ' + tree.path("b.wav") + " wave 384000 2>"
        + tree.path("errors") + " & while [ ! -s " + tree.path("b.wav") + " ]; do :; done";
    EXPECT_EQ(runProgram("/bin/sh", {"-c", script}).status, 0);
    EXPECT_TRUE(runEventLoopUntil([this] { return tree.contents("errors").contains("has ended"); }));
    EXPECT_TRUE(runEventLoopUntil([this] { return !tree.exists("b.wav"); }));
}

TEST_F(QrlMov2Wav, refuses_wrongArguments)
{
    tree.makeFile("a.wav", waveFile(noise(1000)));
    for (const QList<QByteArray> &arguments : {QList<QByteArray>{},
                                               {tree.path("a.wav"), tree.path("b"), "wave"},
                                               {tree.path("a.wav"), tree.path("b"), "flac", "44100"},
                                               {tree.path("a.wav"), tree.path("b"), "wave", "7999"},
                                               {tree.path("a.wav"), tree.path("b"), "wave", "384001"},
                                               {tree.path("a.wav"), tree.path("b"), "wave", "44.1"},
                                               {tree.path("a.wav"), tree.path("b"), "wave", "-44100"},
                                               {tree.path("a.wav"), tree.path("b"), "wave", "44100", "name", "more"}}) {
        EXPECT_EQ(run(arguments), 2);
        EXPECT_FALSE(errors.isEmpty());
        EXPECT_FALSE(tree.exists("b"));
    }
}

TEST_F(QrlMov2Wav, leavesNothing_whenItFails)
{
    tree.makeFile("a.txt", "text");
    EXPECT_EQ(run({tree.path("a.txt"), tree.path("b.wav"), "wave", "44100"}), 1);
    EXPECT_TRUE(errors.startsWith("QrlMov2Wav: ")) << errors.constData();
    EXPECT_FALSE(tree.exists("b.wav"));
    EXPECT_EQ(run({tree.path("missing"), tree.path("b.wav"), "wave", "44100"}), 1);

    tree.makeFile("a.wav", waveFile(noise(200000)));
    const QByteArray path = tree.makeFile("b.wav", "old");
    EXPECT_EQ(run({tree.path("a.wav"), path, "wave", "44100"},
                  {"strace", "-f", "-qq", "-o", "/dev/null", "-P", path, "-e", "inject=write:error=ENOSPC:when=3"}),
              1);
    EXPECT_TRUE(errors.contains("b.wav")) << errors.constData();
    EXPECT_FALSE(tree.exists("b.wav"));
    EXPECT_EQ(run({tree.path("a.wav"), path, "wave", "44100"},
                  {"strace", "-f", "-qq", "-o", "/dev/null", "-P", path, "-e", "inject=close:error=EIO:when=1"}),
              1);
    EXPECT_FALSE(tree.exists("b.wav"));
}

TEST_F(QrlMov2Wav, doesNotWrite_overItsSource_orIntoWhatIsNoFile)
{
    const QByteArray wave = waveFile(noise(1000));
    tree.makeFile("a.wav", wave);
    tree.makeHardLink("same.wav", "a.wav");
    tree.makeFifo("fifo");
    for (const char *const name : {"a.wav", "same.wav", "fifo", "."})
        EXPECT_EQ(run({tree.path("a.wav"), tree.path(name), "wave", "44100"}), 1) << name;
    EXPECT_EQ(tree.contents("a.wav"), wave);
    EXPECT_TRUE(tree.exists("fifo"));
}

TEST_F(QrlMov2Wav, saysDamageWithItsExitStatus_andKeepsTheLength)
{
    tree.makeFile("a.wav", waveFile(noise(100000)));
    ffmpeg("-i " + tree.path("a.wav") + ' ' + tree.path("a.flac"));
    QByteArray flac = tree.contents("a.flac");
    flac[flac.size() / 2] = char(flac[flac.size() / 2] ^ 1);
    EXPECT_EQ(run({tree.makeFile("bent.flac", flac), tree.path("b.wav"), "wave", "44100"}), 3);
    EXPECT_EQ(tree.contents("b.wav").size(), 44 + 4 * 100000);
}

TEST_F(QrlMov2Wav, aiffFiles_refuseWhatTheyCannotHold)
{
    const Result<PCMFile> known =
        PCMFile::create(tree.path("a.aiff"), PCMFile::Kind::AIFF, {}, mostBytesInAiff + 1, tree.path("source"));
    ASSERT_FALSE(known);
    EXPECT_TRUE(known.error().localizedDescription().contains(QStringLiteral("AIFF file can hold (3 h 22 min)")));
    EXPECT_FALSE(tree.exists("a.aiff"));
}
