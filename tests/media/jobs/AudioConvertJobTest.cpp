#include "platform/foundation/NSBundle.h"
#include "tests/quicktime/Sounds.h"
#include "tests/support/EventLoop.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/AudioConvertJob.h>
#include <TessaronClasses/DiscJobErrors.h>
#include <TessaronClasses/KRAudioConverter.h>

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <memory>
#include <utility>
#include <vector>

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

class AudioConvertJobTest : public testing::Test
{
protected:
    AudioConvertJobTest()
    {
        leaveSessionBus();
        tree.makeFile("music/one.wav", waveFile(tone(20000)));
        tree.makeFile("music/album/two.wav", waveFile(tone(30000)));
        tree.makeFile("music/album/cover.jpg", "picture");
    }
    AudioConvertResult convert(const AudioConvertOrder &order)
    {
        AudioConvertJob job(order);
        bool hasEnded = false;
        QObject::connect(&job, &AudioConvertJob::finished, &job, [&] { hasEnded = true; });
        job.start();
        EXPECT_TRUE(runEventLoopUntil([&] { return hasEnded; }));
        return job.result();
    }

    /// The names of what is in a folder, hidden ones too.
    [[nodiscard]] QStringList namesIn(const QByteArray &relative) const
    {
        return QDir(tree.pathText(relative)).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }

    const TemporaryTree tree;
};

/// With tools that are scripts, in a bundle of the test's own.
class AudioConvertJobTools : public AudioConvertJobTest
{
protected:
    AudioConvertJobTools() { NSBundle::setMainBundlePath(tree.pathText("bundle")); }

    void makeTool(const QByteArray &relative, const QByteArray &script) const
    {
        tree.makeFile("bundle/Resources/" + relative, "#!/bin/sh\n" + script);
        tree.setMode("bundle/Resources/" + relative, 0755);
    }
    /// What is said of one file that these tools convert; the other one is converted after it.
    QString failureOfFirst(std::int32_t format)
    {
        const AudioConvertResult result = convert(
            {{tree.path("music/one.wav"), tree.path("music/album/two.wav")}, tree.path("out"), format, false, 1});
        EXPECT_FALSE(result.error);
        EXPECT_EQ(result.files.size(), 2u) << "the other file follows";
        EXPECT_EQ(namesIn("out"), QStringList()) << "nothing is left";
        return result.files.empty() ? QString() : result.files[0].error.localizedDescription();
    }
};

} // namespace

TEST_F(AudioConvertJobTest, folders_keepTheirStructure)
{
    const AudioConvertResult result = convert({{tree.path("music")}, tree.path("out"), 0, false, 2});
    EXPECT_TRUE(result.isComplete());
    EXPECT_EQ(result.leftOut, 1u);
    EXPECT_EQ(decodedByFFmpeg(tree.path("out/music/one.wav")), tone(20000));
    EXPECT_EQ(decodedByFFmpeg(tree.path("out/music/album/two.wav")), tone(30000));
}

TEST_F(AudioConvertJobTest, flat_givesTakenNamesANumber_inTheOrderOfTheSources)
{
    tree.makeFile("music/album/one.mp3", waveFile(tone(100))); // whatever its name says
    tree.makeFile("music/album/one.wav", waveFile(tone(200)));
    tree.makeFile("out/two.aiff", "precious");
    const AudioConvertResult result = convert({{tree.path("music")}, tree.path("out"), 1, true, 4});
    EXPECT_TRUE(result.isComplete());
    EXPECT_EQ(decodedByFFmpeg(tree.path("out/one.aiff")), tone(20000)) << "files come before folders";
    EXPECT_EQ(decodedByFFmpeg(tree.path("out/one-1.aiff")), tone(100));
    EXPECT_EQ(decodedByFFmpeg(tree.path("out/one-2.aiff")), tone(200));
    EXPECT_TRUE(tree.exists("out/two-1.aiff"));
    EXPECT_EQ(tree.contents("out/two.aiff"), "precious");
    EXPECT_EQ(namesIn("out").size(), 5);
}

TEST_F(AudioConvertJobTest, aFileThatFails_isTold_andTheOthersFollow)
{
    tree.makeFile("music/bad.wav", "no sound");
    for (const std::int32_t format : {0, 4}) {
        const AudioConvertResult result = convert({{tree.path("music")}, tree.path("out"), format, false, 1});
        EXPECT_FALSE(result.error);
        EXPECT_EQ(result.files.size(), 3u);
        EXPECT_EQ(result.failures(), 1u);
        EXPECT_FALSE(tree.exists(format == 0 ? "out/music/bad.wav" : "out/music/bad.mp3"));
    }
}

TEST_F(AudioConvertJobTest, cancelling_leavesNothingThatIsNotWhole)
{
    tree.makeFile("out/empty"); // a folder with empty files alone counts as empty to some
    tree.makeFile("long.wav", waveFile(noise(8000000)));
    for (const std::int32_t format : {0, 4}) {
        AudioConvertJob job({{tree.path("music/one.wav"), tree.path("long.wav"), tree.path("long.wav")},
                             tree.path("out"),
                             format,
                             false,
                             2});
        bool hasEnded = false;
        QObject::connect(&job, &AudioConvertJob::finished, &job, [&] { hasEnded = true; });
        job.start();
        const QString first = format == 0 ? QStringLiteral("one.wav") : QStringLiteral("one.mp3");
        ASSERT_TRUE(runEventLoopUntil([&] { return !job.running().empty() && namesIn("out").contains(first); }));
        job.cancel();
        ASSERT_TRUE(runEventLoopUntil([&] { return hasEnded; }));
        EXPECT_TRUE(isDiscJobError(job.result().error, DiscJobErrorCode::Cancelled));
        QStringList whole;
        for (const ConvertedFile &file : job.result().files) {
            if (!file.destination.isEmpty())
                whole << QString::fromUtf8(file.destination.mid(file.destination.lastIndexOf('/') + 1));
        }
        // One of the long ones can be done, too, where the short one had to wait for its turn.
        EXPECT_TRUE(whole.contains(first));
        EXPECT_LT(whole.size(), 3);
        whole.sort();
        EXPECT_EQ(namesIn("out"), QStringList(QStringLiteral("empty")) + whole);
        for (const QString &name : std::as_const(whole))
            tree.remove("out/" + name.toUtf8());
    }
}

TEST_F(AudioConvertJobTest, cancelling_endsTheJob_atAnyMoment)
{
    for (int turns = 0; turns < 60; ++turns) {
        AudioConvertJob job({{tree.path("music")}, tree.path("out"), 0, false, 2});
        bool hasEnded = false;
        QObject::connect(&job, &AudioConvertJob::finished, &job, [&] { hasEnded = true; });
        job.start();
        int turn = 0;
        const bool endedBefore = !runEventLoopUntil([&] { return hasEnded || ++turn > turns; }) || hasEnded;
        job.cancel();
        ASSERT_TRUE(runEventLoopUntil([&] { return hasEnded; })) << turns;
        EXPECT_TRUE(endedBefore || isDiscJobError(job.result().error, DiscJobErrorCode::Cancelled)
                    || !job.result().error);
        for (const char *const folder : {"out", "out/music", "out/music/album"})
            EXPECT_TRUE(namesIn(folder).filter(QStringLiteral(".tessaron-convert-")).isEmpty()) << turns;
    }
}

TEST_F(AudioConvertJobTest, destroying_leavesNothingThatIsNotWhole)
{
    tree.makeFile("long.wav", waveFile(noise(8000000)));
    auto job =
        std::make_unique<AudioConvertJob>(AudioConvertOrder{{tree.path("long.wav")}, tree.path("out"), 0, false, 1});
    job->start();
    ASSERT_TRUE(runEventLoopUntil([&] { return !job->running().empty(); }));
    job.reset();
    EXPECT_EQ(namesIn("out"), QStringList());
}

TEST_F(AudioConvertJobTest, aMissingSource_isTold_andTheOthersFollow)
{
    tree.makeFifo("fifo");
    const AudioConvertResult result =
        convert({{tree.path("missing"), tree.path("fifo"), tree.path("music/one.wav")}, tree.path("out"), 0, false, 1});
    EXPECT_FALSE(result.error);
    EXPECT_EQ(result.failures(), 2u);
    ASSERT_EQ(result.files.size(), 3u);
    EXPECT_TRUE(isDiscJobError(result.files[0].error, DiscJobErrorCode::Source));
    EXPECT_TRUE(isDiscJobError(result.files[1].error, DiscJobErrorCode::Source));
    EXPECT_EQ(result.files[2].destination, tree.path("out/one.wav"));
    EXPECT_FALSE(result.isComplete());
}

TEST_F(AudioConvertJobTest, ordersWithoutSense_areRefused)
{
    for (const std::int32_t format : {-1, 6})
        EXPECT_TRUE(isDiscJobError(convert({{tree.path("music")}, tree.path("out"), format, false, 1}).error,
                                   DiscJobErrorCode::InvalidOrder));
    EXPECT_TRUE(isDiscJobError(convert({{tree.path("music")}, tree.path("out"), 0, false, 1, true}).error,
                               DiscJobErrorCode::InvalidOrder));
    EXPECT_TRUE(isDiscJobError(convert({{tree.path("music")}, tree.path("music/one.wav/out"), 0, false, 1}).error,
                               DiscJobErrorCode::Destination));
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", tree.path());
    const NSError error = convert({{tree.path("music")}, tree.path("out"), 4, false, 1}).error;
    qputenv("PATH", path);
    EXPECT_TRUE(isDiscJobError(error, DiscJobErrorCode::InvalidOrder));
    EXPECT_TRUE(error.localizedDescription().contains(QStringLiteral("lame")));
    EXPECT_FALSE(tree.exists("out"));
}

TEST_F(AudioConvertJobTest, aDestinationInASource_isLeftOut)
{
    const AudioConvertOrder order{{tree.path("music")}, tree.path("music/out"), 0, false, 1};
    EXPECT_FALSE(convert(order).isDestinationLeftOut);
    const AudioConvertResult again = convert(order);
    EXPECT_TRUE(again.isDestinationLeftOut);
    EXPECT_EQ(again.files.size(), 2u);
}

TEST_F(AudioConvertJobTest, nothingToConvert_isNoFailure)
{
    tree.makeFile("texts/a.txt", "a");
    const AudioConvertResult result = convert({{tree.path("texts")}, tree.path("out"), 0, false, 1});
    EXPECT_TRUE(result.isComplete());
    EXPECT_EQ(result.leftOut, 1u);
    EXPECT_TRUE(result.files.empty());
}

TEST_F(AudioConvertJobTest, damage_isToldWithItsPlaces)
{
    ffmpeg("-i " + tree.path("music/one.wav") + ' ' + tree.path("a.flac"));
    QByteArray flac = tree.contents("a.flac");
    flac[flac.size() / 2] = char(flac[flac.size() / 2] ^ 1);
    tree.makeFile("bent.flac", flac);
    for (const std::int32_t format : {0, 5}) {
        const AudioConvertResult result = convert({{tree.path("bent.flac")}, tree.path("out"), format, false, 1});
        ASSERT_EQ(result.files.size(), 1u);
        EXPECT_FALSE(result.files[0].error);
        EXPECT_TRUE(result.files[0].isDamaged);
        ASSERT_FALSE(result.files[0].damage.isEmpty());
        EXPECT_TRUE(result.files[0].damage[0].startsWith(QStringLiteral("at 0.")))
            << result.files[0].damage[0].toStdString();
        EXPECT_FALSE(result.isComplete());
    }
}

TEST_F(AudioConvertJobTest, tags_areCarriedIntoMP3_whereTheyAreWanted)
{
    ffmpeg("-i " + tree.path("music/one.wav") + " -metadata title=First -metadata artist=Dvo\xC5\x99\xC3\xA1k "
           + "-metadata album=Album -metadata track=3/12 " + tree.path("tagged.flac"));
    const auto tagsOf = [this](const char *name) {
        return outputOfProgram(
            "ffprobe", {"-v", "error", "-show_entries", "format_tags", "-of", "default=nk=0:nw=1", tree.path(name)});
    };
    EXPECT_TRUE(convert({{tree.path("tagged.flac")}, tree.path("out"), 4, false, 1, true}).isComplete());
    const QByteArray tags = tagsOf("out/tagged.mp3");
    for (const QByteArray line : {"title=First", "artist=Dvo\xC5\x99\xC3\xA1k", "album=Album", "track=3/12"})
        EXPECT_TRUE(tags.contains("TAG:" + line + '\n')) << tags.constData();
    EXPECT_EQ(tags.count("TAG:"), 4) << tags.constData();
    EXPECT_TRUE(convert({{tree.path("tagged.flac")}, tree.path("plain"), 4, false, 1}).isComplete());
    EXPECT_EQ(tagsOf("plain/tagged.mp3"), QByteArray());
    EXPECT_EQ(decodedByFFmpeg(tree.path("out/tagged.mp3")), decodedByFFmpeg(tree.path("plain/tagged.mp3")));
    EXPECT_TRUE(convert({{tree.path("music/one.wav")}, tree.path("out"), 4, false, 1, true}).isComplete())
        << "a file without tags";
}

TEST_F(AudioConvertJobTest, covers_areCarriedIntoMP3_byteForByte)
{
    ffmpeg("-f lavfi -i testsrc=size=600x600 -frames:v 1 " + tree.path("cover.jpg"));
    const QByteArray wave = tree.path("music/one.wav");
    for (const QByteArray options : {"a.flac", "-c:a alac a.m4a", "a.mp3"}) {
        const QByteArray name = options.mid(options.lastIndexOf(' ') + 1);
        ffmpeg("-i " + wave + " -i " + tree.path("cover.jpg")
               + " -map 0:a -map 1:v -c:v copy -disposition:v attached_pic " + "-metadata title=First "
               + options.chopped(name.size()) + tree.path(name));
        const AudioConvertResult result = convert({{tree.path(name)}, tree.path("out"), 4, false, 1, true});
        ASSERT_TRUE(result.isComplete()) << name.constData();
        const QByteArray path = result.files.at(0).destination;
        EXPECT_EQ(ffmpeg("-i " + path + " -map 0:v:0 -c copy -f image2pipe -"), tree.contents("cover.jpg"))
            << name.constData();
        EXPECT_EQ(
            outputOfProgram("ffprobe", {"-v", "error", "-show_entries", "format_tags=title", "-of", "csv=p=0", path}),
            "First\n");
    }
}

TEST_F(AudioConvertJobTest, progress_growsToTheEnd)
{
    const PrivateBus bus;
    tree.makeFile("music/long.wav", waveFile(noise(2000000)));
    AudioConvertJob job({{tree.path("music")}, tree.path("out"), 4, false, 2});
    bool hasEnded = false;
    std::vector<std::uint64_t> done;
    double greatest = 0;
    QObject::connect(&job, &AudioConvertJob::finished, &job, [&] { hasEnded = true; });
    QObject::connect(&job, &DiscJob::progressed, &job, [&](const DiscJobProgress &progress) {
        done.push_back(progress.bytesDone);
        for (const RunningConversion &one : job.running()) {
            EXPECT_TRUE(one.source.startsWith(tree.path("music/")));
            greatest = std::max(greatest, one.fraction);
        }
    });
    job.start();
    ASSERT_TRUE(runEventLoopUntil([&] { return hasEnded; }));
    EXPECT_TRUE(std::is_sorted(done.begin(), done.end()));
    EXPECT_EQ(done.back(), job.progress().bytesTotal);
    EXPECT_GT(greatest, 0.0) << "the tools tell how far they are";
    EXPECT_EQ(job.progress().percent(), 100);
}

TEST_F(AudioConvertJobTools, aDecoderThatFails_isNoticedAtEachPoint)
{
    const QByteArray tool = "QrlMov2Wav.app/Contents/MacOS/QrlMov2Wav";
    const std::pair<QByteArray, const char *> cases[] = {
        {"echo 'QrlMov2Wav: no sound in it' >&2; exit 1", "no sound in it"},
        {"echo part >\"$2\"; exit 1", "the program that reads it has failed"},
        {"echo part >\"$2\"; kill -SEGV $$", "signal 11"},
        {"kill -KILL $$", "signal 9"},
        {"exit 0", "there is no result"},
        {": >\"$2\"", "the result is empty"},
        {"printf 'RIFF\\144\\0\\0\\0WAVEfmt                       ' >\"$2\"", "its header says 108"},
        {"echo text text text text text text >\"$2\"", "no header"},
        {"exit 127", "the program that reads it has failed"},
    };
    for (const auto &[script, says] : cases) {
        makeTool(tool, script);
        const QString failure = failureOfFirst(KRAudioConverter::waveFormat);
        EXPECT_TRUE(failure.contains(QString::fromUtf8(says))) << script.constData() << ": " << failure.toStdString();
        EXPECT_TRUE(failure.contains(QStringLiteral("one.wav")));
    }
    tree.remove("bundle/Resources/" + tool);
    EXPECT_TRUE(failureOfFirst(KRAudioConverter::waveFormat).contains(QStringLiteral("cannot be found")));
    tree.makeFile("bundle/Resources/" + tool, "no program");
    EXPECT_FALSE(failureOfFirst(KRAudioConverter::waveFormat).isEmpty());
}

TEST_F(AudioConvertJobTools, eachEndOfThePipeline_isNoticedAtEachPoint)
{
    const QByteArray encoder = "for last; do :; done; ";
    const std::array<QByteArray, 3> cases[] = {
        {"echo 'DummyRedbook: no sound in it' >&2; exit 1", encoder + "cat >\"$last\"", "no sound in it"},
        {"echo x; kill -SEGV $$", encoder + "cat >\"$last\"", "the program that reads it was ended by signal 11"},
        {"echo x", "echo 'Error writing mp3 output' >&2; exit 1", "Error writing mp3 output"},
        {"echo x; exec sleep 1000", encoder + "read line; kill -SEGV $$", "the encoder was ended by signal 11"},
        {"exec yes", encoder + "read line; echo full >&2; exit 1", "full"},
        {"exec yes", encoder + "read line; echo x >\"$last\"", "the encoder has ended before the sound"},
        {"echo x; exit 4", encoder + "cat >\"$last\"", "the encoder has ended before the sound"},
        {"echo x", encoder + "cat", "there is no result"},
        {"echo some text", encoder + "cat >\"$last\"", "damaged at byte 0"},
        {"echo x", encoder + "cat >/dev/null; printf '\\377\\373\\220\\0xx' >\"$last\"", "ends inside of a frame"},
    };
    for (const auto &[decoding, encoding, says] : cases) {
        makeTool("DummyRedbook", decoding);
        makeTool("lame", encoding);
        const QString failure = failureOfFirst(KRAudioConverter::mp3FormatConstant128);
        EXPECT_TRUE(failure.contains(QString::fromUtf8(says)))
            << decoding.constData() << " | " << encoding.constData() << ": " << failure.toStdString();
    }
}

/// Somebody stops a tool: it is waited for, and a cancel still ends it.
TEST_F(AudioConvertJobTools, aToolThatIsStopped_canBeCancelled)
{
    makeTool("QrlMov2Wav.app/Contents/MacOS/QrlMov2Wav", "echo part >\"$2\"; kill -STOP $$; echo more >>\"$2\"");
    AudioConvertJob job({{tree.path("music")}, tree.path("out"), 0, true, 2});
    bool hasEnded = false;
    QObject::connect(&job, &AudioConvertJob::finished, &job, [&] { hasEnded = true; });
    job.start();
    ASSERT_TRUE(runEventLoopUntil([&] { return namesIn("out").size() == 2; }));
    EXPECT_FALSE(runEventLoopUntil([&] { return hasEnded; }, std::chrono::milliseconds(300)));
    job.cancel();
    ASSERT_TRUE(runEventLoopUntil([&] { return hasEnded; }));
    EXPECT_EQ(namesIn("out"), QStringList());
}

TEST_F(AudioConvertJobTest, suspending_stopsTheTools_untilTheyAreResumed)
{
    tree.makeFile("long.wav", waveFile(noise(4000000)));
    AudioConvertJob job({{tree.path("long.wav")}, tree.path("out"), 4, false, 1});
    bool hasEnded = false;
    QObject::connect(&job, &AudioConvertJob::finished, &job, [&] { hasEnded = true; });
    job.start();
    const auto size = [&] {
        qint64 bytes = 0;
        for (const QString &name : namesIn("out"))
            bytes += QFileInfo(tree.pathText("out/" + name.toUtf8() + "/long.mp3")).size();
        return bytes;
    };
    ASSERT_TRUE(runEventLoopUntil([&] { return size() > 0; }));
    job.suspend();
    ASSERT_FALSE(hasEnded);
    ASSERT_TRUE(runEventLoopUntil([] { return true; }));
    const qint64 before = size();
    EXPECT_FALSE(runEventLoopUntil([&] { return size() != before; }, std::chrono::milliseconds(300)));
    job.resume();
    ASSERT_TRUE(runEventLoopUntil([&] { return hasEnded; }));
    EXPECT_TRUE(job.result().isComplete());
    EXPECT_GT(QFileInfo(tree.pathText("out/long.mp3")).size(), before);
}

TEST_F(AudioConvertJobTest, suspending_beforeTheFirstFile_keepsItFromBeginning)
{
    AudioConvertJob job({{tree.path("music")}, tree.path("out"), 0, false, 2});
    bool hasEnded = false;
    QObject::connect(&job, &AudioConvertJob::finished, &job, [&] { hasEnded = true; });
    job.start();
    job.suspend();
    EXPECT_FALSE(runEventLoopUntil([&] { return hasEnded || !job.running().empty(); }, std::chrono::milliseconds(300)));
    job.resume();
    ASSERT_TRUE(runEventLoopUntil([&] { return hasEnded; }));
    EXPECT_TRUE(job.result().isComplete());
}
