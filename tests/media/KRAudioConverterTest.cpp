#include "platform/foundation/NSDistributedNotificationCenter.h"
#include "tests/media/AudioConverterFixture.h"
#include "tests/quicktime/Sounds.h"

#include <QElapsedTimer>
#include <QFile>

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

const QString one = QStringLiteral("one.flac"), other = QStringLiteral("other.flac");
const QString outOne = QStringLiteral("out/one.wav"), outOther = QStringLiteral("out/other.wav");

} // namespace

TEST_F(AudioConverter, lists_thatAreMissingOrDiffer_doNothing)
{
    makeQrlMov2Wav("touch \"$2\"");
    converter->convertAudioFiles(std::nullopt, QStringList(), 0);
    converter->convertAudioFiles(QStringList(), std::nullopt, 0);
    convert({one, other}, {outOne}, 0);
    EXPECT_FALSE(runEventLoopUntil([&] { return !events.empty(); }, std::chrono::milliseconds(200)));
    EXPECT_FALSE(tree.exists(outOne.toUtf8()));
}

TEST_F(AudioConverter, noFiles_endAtOnceOnALaterTurn)
{
    converter->convertAudioFiles(QStringList(), QStringList(), 0);
    EXPECT_TRUE(events.empty());
    ASSERT_TRUE(waitForEvent());
    EXPECT_EQ(events, std::vector<std::string>{"end"});
}

TEST_F(AudioConverter, pcmTool_getsItsArgumentsInOrder)
{
    makeQrlMov2Wav("printf '%s\\n' \"$0\" \"$@\" >\"$2\"");
    for (const std::int32_t format : {KRAudioConverter::waveFormat, KRAudioConverter::aiffFormat}) {
        events.clear();
        convert({one}, {outOne}, format);
        ASSERT_TRUE(waitForEvent());
        const QList<QByteArray> lines = tree.contents(outOne.toUtf8()).split('\n');
        ASSERT_EQ(lines.size(), 7);
        EXPECT_EQ(lines[0], tree.path("bundle/Resources/QrlMov2Wav.app/Contents/MacOS/QrlMov2Wav"));
        EXPECT_EQ(lines[1], tree.path("one.flac"));
        EXPECT_EQ(lines[2], tree.path("out/one.wav"));
        EXPECT_EQ(lines[3], format == KRAudioConverter::waveFormat ? "wave" : "aiff");
        EXPECT_EQ(lines[4], "44100");
        // Seconds since the begin of 2001, as the number itself is written.
        EXPECT_GT(lines[5].toDouble(), 8e8);
        EXPECT_LT(lines[5].toDouble(), 4e9);
    }
}

TEST_F(AudioConverter, mp3Tools_getTheirArgumentsInOrder)
{
    makeTool("bundle/Resources/DummyRedbook", "printf '%s ' \"$@\"");
    makeTool("bundle/Resources/lame", "for last; do :; done; { cat; echo; printf '%s ' \"$@\"; } >\"$last\"");
    const QByteArray common = "-s 44.1 --bitwidth 16 --signed --little-endian -r -h --ignore-tag-errors "
                              "--strictly-enforce-ISO -b 96 -t --preset ";
    const std::pair<std::int32_t, QByteArray> presets[] = {{2, "128"}, {3, "160"}, {4, "cbr 128"}, {5, "cbr 160"}};
    for (const auto &[format, preset] : presets) {
        events.clear();
        convert({one}, {outOne}, format);
        ASSERT_TRUE(waitForEvent());
        const QList<QByteArray> lines = tree.contents(outOne.toUtf8()).split('\n');
        ASSERT_EQ(lines.size(), 2) << format;
        EXPECT_TRUE(lines[0].startsWith(tree.path("one.flac") + " - ")) << lines[0].constData();
        EXPECT_EQ(lines[0].trimmed().split(' ').size(), 3);
        EXPECT_EQ(lines[1], common + preset + " - " + tree.path("out/one.wav") + ' ');
    }
}

TEST_F(AudioConverter, files_areConvertedOneAfterTheOther)
{
    makeQrlMov2Wav("ls \"$(dirname \"$2\")\" >>" + tree.path("log") + "; touch \"$2\"; sleep 0.1; echo x >\"$2\"");
    convert({one, other}, {outOne, outOther}, 0);
    EXPECT_TRUE(converter->task());
    ASSERT_TRUE(waitForEvent());
    EXPECT_EQ(tree.contents("log"), "one.wav\n") << "the folder was empty first, and one file was there then";
    EXPECT_EQ(tree.contents("out/one.wav"), "x\n");
    EXPECT_EQ(tree.contents("out/other.wav"), "x\n");
    EXPECT_FALSE(converter->task());
    EXPECT_EQ(events, std::vector<std::string>{"end"});
}

TEST_F(AudioConverter, aMissingFolder_failsWithItsPath)
{
    makeQrlMov2Wav("touch \"$2\"");
    for (const char *folder : {"missing", "file"}) {
        tree.makeFile("file");
        events.clear();
        convert({one}, {QString::fromUtf8(folder) + QStringLiteral("/one.wav")}, 0);
        EXPECT_TRUE(events.empty()) << "on a later turn";
        ASSERT_TRUE(waitForEvent());
        EXPECT_EQ(events, std::vector<std::string>{"fail"});
        EXPECT_EQ(error.domain(), NSPOSIXErrorDomain);
        EXPECT_EQ(error.code(), 100020);
        EXPECT_EQ(error.userInfo(), (QVariantMap{{NSFilePathErrorKey, tree.pathText(folder)}}));
    }
}

TEST_F(AudioConverter, aMissingFolder_ofALaterFileLeavesWhatIsWholeAlone_andTheQueueStands)
{
    makeQrlMov2Wav("echo x >\"$2\"");
    convert({one, other, one}, {outOne, QStringLiteral("missing/other.wav"), QStringLiteral("out/third.wav")}, 0);
    ASSERT_TRUE(waitForEvent());
    EXPECT_EQ(events, std::vector<std::string>{"fail"});
    EXPECT_TRUE(tree.exists("out/one.wav"));
    EXPECT_FALSE(runEventLoopUntil([&] { return events.size() > 1; }, std::chrono::milliseconds(200)));
    EXPECT_FALSE(tree.exists("out/third.wav")) << "nothing follows a failure";
}

TEST_F(AudioConverter, toolsThatCannotBeStarted_failWithTheFrameworksText)
{
    tree.makeFile("bundle/Resources/QrlMov2Wav.app/Contents/MacOS/QrlMov2Wav", "no program");
    convert({one}, {outOne}, 0);
    ASSERT_TRUE(waitForEvent());
    EXPECT_EQ(events, std::vector<std::string>{"fail"});
    EXPECT_EQ(error.domain(), NSOSStatusErrorDomain);
    EXPECT_EQ(error.code(), 0);
    EXPECT_EQ(error.filePath(), tree.pathText("out/one.wav"));
    EXPECT_EQ(error.userInfo().size(), 3) << "path, description and suggestion";
    EXPECT_FALSE(error.localizedDescription().isEmpty());
    EXPECT_NE(error.localizedDescription(), QStringLiteral("audio export failed"));
    EXPECT_TRUE(error.localizedRecoverySuggestion().contains(QStringLiteral("“one.wav”")))
        << error.localizedRecoverySuggestion().toStdString();
}

TEST_F(AudioConverter, aFailureToStart_deletesTheDestinationAndItsEmptyFolder)
{
    tree.makeFile("out/one.wav", "old");
    tree.makeFile("bundle/Resources/QrlMov2Wav.app/Contents/MacOS/QrlMov2Wav", "no program");
    convert({one}, {outOne}, 0);
    ASSERT_TRUE(waitForEvent());
    EXPECT_FALSE(tree.exists("out"));
}

TEST_F(AudioConverter, aToolThatFails_isFollowedByTheNextFile_andCanBeAskedFor)
{
    makeQrlMov2Wav("echo why >&2; case $1 in *one*) exit 3;; esac; echo x >\"$2\"");
    std::vector<int> statuses;
    QString message;
    delegate.KRAudioConverterDidEnd = [&](KRAudioConverter &self) {
        statuses.push_back(self.lastTaskEnds().at(0).status);
        message = self.lastTaskMessage();
        events.emplace_back("end");
    };
    converter->setDelegate(delegate);
    convert({other, one}, {outOther, outOne}, 0);
    ASSERT_TRUE(waitForEvent());
    convert({one, other}, {outOne, outOther}, 0);
    ASSERT_TRUE(waitForEvent(2));
    EXPECT_EQ(statuses, (std::vector<int>{3, 0}));
    EXPECT_EQ(message, QStringLiteral("why"));
    EXPECT_EQ(events, (std::vector<std::string>{"end", "end"}));
}

TEST_F(AudioConverter, anUnknownFormat_leavesTheBatchStalled)
{
    makeQrlMov2Wav("touch \"$2\"");
    for (const std::int32_t format : {-1, 6, 100}) {
        convert({one}, {outOne}, format);
        EXPECT_FALSE(runEventLoopUntil([&] { return !events.empty(); }, std::chrono::milliseconds(100)));
        EXPECT_FALSE(converter->task());
        EXPECT_FALSE(tree.exists("out/one.wav"));
    }
}

TEST_F(AudioConverter, progress_isThatOfAllFiles)
{
    const PrivateBus bus;
    makeQrlMov2Wav("printf %s \"$5\" >\"$2\".name; while [ ! -e \"$2\".go ]; do sleep 0.02; done");
    NSDistributedNotificationCenter &center = NSDistributedNotificationCenter::defaultCenter();
    const auto post = [&](const QByteArray &file, const QVariantMap &information) {
        EXPECT_TRUE(
            runEventLoopUntil([&] { return tree.exists(file + ".name") && !tree.contents(file + ".name").isEmpty(); }));
        EXPECT_FALSE(center.postNotificationName(QString::fromUtf8(tree.contents(file + ".name")), {}, information));
    };
    const QString key = QStringLiteral("progress");
    convert({one, other}, {outOne, outOther}, 0);
    post("out/one.wav", {{QStringLiteral("other"), 0.1}});
    post("out/one.wav", {{key, 0.5}});
    post("out/one.wav", {{key, 1.0}});
    ASSERT_TRUE(runEventLoopUntil([&] { return progress.size() == 2; }));
    EXPECT_EQ(progress, (std::vector<float>{0.25, 0.5}));
    tree.makeFile("out/one.wav.go");
    post("out/other.wav", {{key, 0.5}});
    ASSERT_TRUE(runEventLoopUntil([&] { return progress.size() == 3; }));
    EXPECT_EQ(progress.back(), 0.75f);
    post("out/one.wav", {{key, 0.9}}); // the first name is not followed any more
    tree.makeFile("out/other.wav.go");
    ASSERT_TRUE(waitForEvent());
    EXPECT_EQ(progress.size(), 3u);

    for (const char *const name : {"out/one.wav.name", "out/one.wav.go"})
        tree.remove(name);
    convert({one}, {outOne}, 0);
    post("out/one.wav", {{key, 0.5}});
    ASSERT_TRUE(runEventLoopUntil([&] { return progress.size() == 4; }));
    EXPECT_EQ(progress.back(), 0.5f) << "each batch begins at nothing";
    tree.makeFile("out/one.wav.go");
    ASSERT_TRUE(waitForEvent(2));
}

TEST_F(AudioConverter, aborting_duringTheSecondFile_deletesThatFileOnly)
{
    makeQrlMov2Wav("echo part >\"$2\"; case $1 in *other*) sleep 100;; esac");
    convert({one, other, one}, {outOne, outOther, QStringLiteral("out/third.wav")}, 0);
    ASSERT_TRUE(runEventLoopUntil([&] { return tree.exists("out/other.wav"); }));
    const std::shared_ptr<taskLauncher> task = converter->task();
    converter->abort();
    EXPECT_FALSE(tree.exists("out/other.wav"));
    EXPECT_TRUE(tree.exists("out/one.wav"));
    EXPECT_FALSE(task->isRunning());
    EXPECT_TRUE(events.empty()) << "on a later turn";
    ASSERT_TRUE(waitForEvent());
    EXPECT_FALSE(runEventLoopUntil([&] { return events.size() > 1; }, std::chrono::milliseconds(200)));
    EXPECT_EQ(events, std::vector<std::string>{"abort"});
    EXPECT_FALSE(tree.exists("out/third.wav"));
}

TEST_F(AudioConverter, aborting_betweenTwoFiles_isToldOnce_andLeavesTheFirst)
{
    makeQrlMov2Wav("echo x >\"$2\"");
    convert({one, other}, {outOne, outOther}, 0);
    atEndOfTool([this] { converter->abort(); });
    ASSERT_TRUE(waitForEvent());
    EXPECT_FALSE(runEventLoopUntil([&] { return events.size() > 1; }, std::chrono::milliseconds(200)));
    EXPECT_EQ(events, std::vector<std::string>{"abort"});
    EXPECT_TRUE(tree.exists("out/one.wav"));
    EXPECT_FALSE(tree.exists("out/other.wav"));
}

TEST_F(AudioConverter, aNewBatch_betweenTwoFiles_startsEachOfItsFilesOnce)
{
    makeQrlMov2Wav("echo \"$1\" >>" + tree.path("log") + "; sleep 0.1; echo x >\"$2\"");
    convert({one, other}, {outOne, outOther}, 0);
    atEndOfTool([this] { convert({other, one}, {outOther, outOne}, 0); });
    ASSERT_TRUE(waitForEvent());
    EXPECT_FALSE(runEventLoopUntil([&] { return events.size() > 1; }, std::chrono::milliseconds(200)));
    EXPECT_EQ(tree.contents("log"),
              tree.path("one.flac") + '\n' + tree.path("other.flac") + '\n' + tree.path("one.flac") + '\n');
}

TEST_F(AudioConverter, aNewBatch_duringAFile_killsItsTool_andIsConvertedWhole)
{
    makeQrlMov2Wav("echo $$ >\"$2\"; case $1 in *one*) exec sleep 1000;; esac");
    convert({one}, {outOne}, 0);
    ASSERT_TRUE(
        runEventLoopUntil([&] { return tree.exists("out/one.wav") && !tree.contents("out/one.wav").isEmpty(); }));
    const QByteArray killed = tree.contents("out/one.wav").trimmed();
    convert({other}, {outOther}, 0);
    ASSERT_TRUE(waitForEvent());
    EXPECT_EQ(events, std::vector<std::string>{"end"});
    EXPECT_TRUE(tree.exists("out/other.wav"));
    EXPECT_TRUE(
        runEventLoopUntil([&] { return !QFile::exists(QStringLiteral("/proc/") + QString::fromUtf8(killed)); }));
}

TEST_F(AudioConverter, theNextFile_beginsAHundredthOfASecondLater)
{
    makeQrlMov2Wav("echo x >\"$2\"");
    convert({one, other}, {outOne, outOther}, 0);
    QElapsedTimer timer;
    atEndOfTool([&] {
        timer.start();
        EXPECT_FALSE(converter->task());
    });
    ASSERT_TRUE(runEventLoopUntil([&] { return timer.isValid() && converter->task(); }));
    EXPECT_GE(timer.nsecsElapsed(), 9'000'000) << "Qt's timers may be early by a twentieth";
    ASSERT_TRUE(waitForEvent());
}

TEST_F(AudioConverter, aborting_deletesTheFolderThatIsEmptyThen)
{
    makeQrlMov2Wav("echo part >\"$2\"; sleep 100");
    convert({one}, {outOne}, 0);
    ASSERT_TRUE(runEventLoopUntil([&] { return tree.exists("out/one.wav"); }));
    converter->abort();
    EXPECT_FALSE(tree.exists("out"));
}

TEST_F(AudioConverter, aborting_whatIsIdle_isToldToo)
{
    converter->abort();
    EXPECT_TRUE(events.empty()) << "on a later turn";
    ASSERT_TRUE(waitForEvent());
    EXPECT_EQ(events, std::vector<std::string>{"abort"});

    makeQrlMov2Wav("echo x >\"$2\"");
    convert({one}, {outOne}, 0);
    ASSERT_TRUE(waitForEvent(2));
    converter->abort();
    ASSERT_TRUE(waitForEvent(3));
    EXPECT_EQ(events, (std::vector<std::string>{"abort", "end", "abort"}));
    EXPECT_TRUE(tree.exists("out/one.wav")) << "what is whole stays";
}

TEST_F(AudioConverter, aborting_whatIsSuspended_endsIt)
{
    makeQrlMov2Wav("echo part >\"$2\"; exec sleep 1000");
    convert({one}, {outOne}, 0);
    ASSERT_TRUE(runEventLoopUntil([&] { return tree.exists("out/one.wav"); }));
    const std::shared_ptr<taskLauncher> task = converter->task();
    task->suspend();
    converter->abort();
    EXPECT_FALSE(task->isRunning() || task->isSuspended());
    EXPECT_FALSE(tree.exists("out/one.wav"));
    ASSERT_TRUE(waitForEvent());
    EXPECT_EQ(events, std::vector<std::string>{"abort"});
}

TEST_F(AudioConverter, aStalledBatch_canBeAborted)
{
    convert({one}, {outOne}, 6);
    converter->abort();
    ASSERT_TRUE(waitForEvent());
    EXPECT_EQ(events, std::vector<std::string>{"abort"});
}

TEST_F(AudioConverter, delegate_mayHaveNoFunctions)
{
    makeQrlMov2Wav("echo x >\"$2\"");
    converter->setDelegate({});
    convert({one, other}, {outOne, outOther}, 0);
    ASSERT_TRUE(runEventLoopUntil([&] { return tree.exists("out/other.wav") && !converter->task(); }));
    convert({one}, {QStringLiteral("missing/one.wav")}, 0);
    converter->abort();
    drainEventLoop();
    EXPECT_TRUE(events.empty());
}

TEST_F(AudioConverter, anEncoderThatIsNowhere_failsLikeToolsThatCannotBeStarted)
{
    makeTool("bundle/Resources/DummyRedbook", "exec yes");
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", tree.path());
    EXPECT_FALSE(KRAudioConverter::hasEncoder());
    convert({one}, {QStringLiteral("out/one.mp3")}, KRAudioConverter::mp3FormatVariable128);
    qputenv("PATH", path);
    EXPECT_TRUE(KRAudioConverter::hasEncoder());
    ASSERT_TRUE(waitForEvent());
    EXPECT_EQ(events, std::vector<std::string>{"fail"});
    EXPECT_EQ(error.filePath(), tree.pathText("out/one.mp3"));
}

TEST_F(AudioConverter, delegate_mayLetGoOfTheConverter)
{
    makeQrlMov2Wav("touch \"$2\"");
    delegate.KRAudioConverterDidEnd = [&](KRAudioConverter &) {
        converter.reset();
        events.emplace_back("end");
    };
    converter->setDelegate(delegate);
    convert({one}, {outOne}, 0);
    ASSERT_TRUE(waitForEvent());
    EXPECT_FALSE(converter);
}

TEST_F(AudioConverter, realTools_makeFilesThatOtherProgramsRead)
{
    useRealTools();
    const Samples sound = tone(100003);
    tree.makeFile("one.wav", waveFile(sound));
    ffmpeg("-i " + tree.path("one.wav") + ' ' + tree.path("one.flac"));
    const char *names[] = {"out/0.wav", "out/1.aiff", "out/2.mp3", "out/3.mp3", "out/4.mp3", "out/5.mp3"};
    for (std::int32_t format = 0; format < 6; ++format) {
        const QByteArray name = names[format];
        events.clear();
        convert({one}, {QString::fromUtf8(name)}, format);
        ASSERT_TRUE(waitForEvent()) << format;
        EXPECT_EQ(events, std::vector<std::string>{"end"}) << error.localizedDescription().toStdString();
        for (const taskLauncher::TaskEnd &end : converter->lastTaskEnds())
            EXPECT_TRUE(end.hasEnded && end.status == 0) << name.constData() << end.status;
        ASSERT_TRUE(tree.exists(name));
        const Samples got = decodedByFFmpeg(tree.path(name));
        if (format < 2) {
            EXPECT_EQ(got, sound) << name.constData();
            continue;
        }
        EXPECT_NEAR(double(got.size()), double(sound.size()), 6000) << name.constData();
        const QByteArray rate = outputOfProgram(
            "ffprobe", {"-v", "error", "-show_entries", "stream=bit_rate", "-of", "csv=p=0", tree.path(name)});
        if (format >= KRAudioConverter::mp3FormatConstant128) {
            EXPECT_EQ(rate.trimmed(), format == 4 ? "128000" : "160000");
        }
    }
}

TEST_F(AudioConverter, realTools_postTheirProgress)
{
    const PrivateBus bus;
    useRealTools();
    tree.makeFile("one.flac", waveFile(noise(400000)));
    for (const std::int32_t format : {KRAudioConverter::waveFormat, KRAudioConverter::mp3FormatConstant128}) {
        events.clear();
        progress.clear();
        convert({one, one}, {outOne, outOther}, format);
        ASSERT_TRUE(waitForEvent());
        ASSERT_FALSE(progress.empty());
        EXPECT_TRUE(std::is_sorted(progress.begin(), progress.end()));
        EXPECT_FLOAT_EQ(progress.back(), 1) << "the last notification comes before the end of its program";
    }
}
