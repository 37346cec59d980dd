#include "tests/quicktime/Sounds.h"
#include "tests/support/PrivateBus.h"
#include "tests/tools/ImageFixture.h"

#include <QJsonArray>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

// `tessaron convert` as a process, with its real tools.

namespace Tessaron::Testing
{

namespace
{

using Names = std::set<std::string>;

class Convert : public ImageTest
{
protected:
    Convert()
    {
        leaveSessionBus();
        m_tree.makeFile("music/one.wav", waveFile(tone(20000)));
        m_tree.makeFile("music/album/two.wav", waveFile(tone(30000)));
        m_tree.makeFile("music/album/cover.jpg", "picture");
    }
    [[nodiscard]] QList<QByteArray> words(const QList<QByteArray> &arguments) const
    {
        return QList<QByteArray>{"convert", "-d", m_tree.path("out")} + arguments;
    }
    [[nodiscard]] ChildResult convert(const QList<QByteArray> &arguments) const
    {
        return runTessaron(words(arguments));
    }
    [[nodiscard]] QByteArray samplesIn(const QByteArray &relative) const
    {
        return outputOf("soxi", {"-s", m_tree.path(relative)}).trimmed();
    }
    /// The bytes of the file that is being made, wherever it is; -1 before it is there.
    [[nodiscard]] std::int64_t bytesOfPart(const char *name) const
    {
        namespace fs = std::filesystem;
        std::error_code ignored; // folders come and go while this looks
        for (fs::recursive_directory_iterator entry(m_tree.path("out").toStdString(), ignored), end; entry != end;
             entry.increment(ignored)) {
            if (entry->path().filename() != name)
                continue;
            const auto size = entry->file_size(ignored);
            return ignored ? -1 : std::int64_t(size);
        }
        return -1;
    }
};

TEST_F(Convert, folders_areWalkedAndTheirStructureIsKept)
{
    const ChildResult result = convert({"--to", "aiff", "--json", m_tree.path("music")});
    EXPECT_EQ(result.exitStatus, 0) << result.errors.constData();
    EXPECT_EQ(samplesIn("out/music/one.aiff"), "20000");
    EXPECT_EQ(samplesIn("out/music/album/two.aiff"), "30000");
    const QJsonObject report = jsonOf(result.output);
    EXPECT_EQ(report[u"version"], 1);
    EXPECT_EQ(report[u"command"], QStringLiteral("convert"));
    EXPECT_EQ(report[u"result"], QStringLiteral("done"));
    EXPECT_EQ(report[u"directory"], m_tree.pathText("out"));
    EXPECT_EQ(report[u"leftOut"], 1);
    EXPECT_EQ(report[u"failures"], 0);
    EXPECT_TRUE(report[u"error"].isNull());
    const QJsonArray files = report[u"files"].toArray();
    ASSERT_EQ(files.size(), 2);
    EXPECT_EQ(files[0][u"source"], m_tree.pathText("music/one.wav"));
    EXPECT_EQ(files[0][u"destination"], m_tree.pathText("out/music/one.aiff"));
    EXPECT_EQ(files[0][u"damaged"], false);
    EXPECT_TRUE(result.errors.contains("converted 2 files")) << result.errors.constData();
    EXPECT_TRUE(result.errors.contains("left out 1 file"));
}

TEST_F(Convert, relativePaths_andNamesThatLookOdd_work)
{
    m_tree.makeFile("music/~home.wav", waveFile(tone(1000)));
    m_tree.makeFile("music/-x.wav", waveFile(tone(1000)));
    m_tree.makeFile("music/|.wav", waveFile(tone(1000)));
    m_tree.makeFile("music/caf\xE9.wav", waveFile(tone(1000)));
    ChildSettings settings =
        tessaron({"convert", "--to", "wav", "-d", "~", "--", "~home.wav", "-x.wav", "|.wav", "caf\xE9.wav"});
    settings.folder = m_tree.path("music");
    const ChildResult result = runChild(settings);
    EXPECT_EQ(result.exitStatus, 0) << result.errors.constData();
    for (const char *const name : {"~home.wav", "-x.wav", "|.wav", "caf\xE9.wav"})
        EXPECT_EQ(samplesIn(QByteArray("music/~/") + name), "1000") << name;
}

TEST_F(Convert, flat_putsAllIntoOneFolder_andTakenNamesGetNumbers)
{
    m_tree.makeFile("music/album/one.wav", waveFile(tone(40000)));
    m_tree.makeFile("out/two.wav", "precious");
    const ChildResult result = convert({"--to", "wav", "--flat", "-j", "2", "-v", m_tree.path("music")});
    EXPECT_EQ(result.exitStatus, 0) << result.errors.constData();
    EXPECT_EQ(outNames(), Names({"one.wav", "one-1.wav", "two.wav", "two-1.wav"}));
    EXPECT_EQ(m_tree.contents("out/two.wav"), "precious");
    EXPECT_EQ(samplesIn("out/one.wav"), "20000");
    EXPECT_EQ(samplesIn("out/one-1.wav"), "40000");
    EXPECT_TRUE(result.errors.contains("two-1.wav")) << "each result is named with -v";
}

TEST_F(Convert, mp3_hasTheBitRateThatWasAskedFor)
{
    for (const char *const rate : {"128", "160"}) {
        m_tree.makeFile("a.wav", waveFile(noise(200000)));
        const ChildResult result = convert({"--to", "mp3", "--cbr", rate, m_tree.path("a.wav")});
        EXPECT_EQ(result.exitStatus, 0) << result.errors.constData();
        const QByteArray seen = outputOf("ffprobe",
                                         {"-v", "error", "-show_entries", "stream=bit_rate,sample_rate,channels", "-of",
                                          "csv=p=0", m_tree.path("out/a.mp3")});
        EXPECT_EQ(seen.trimmed(), QByteArray("44100,2,") + rate + "000");
        m_tree.remove("out/a.mp3");
    }
    // On average: more than a tenth of a second away from 160 would be 128.
    EXPECT_EQ(convert({"--to", "mp3", m_tree.path("a.wav")}).exitStatus, 0);
    const double bits = double(m_tree.contents("out/a.mp3").size()) * 8 / (200000 / 44100.0);
    EXPECT_NEAR(bits, 160000, 12000);
    m_tree.remove("out/a.mp3");
    EXPECT_EQ(convert({"--vbr=128", "--to", "mp3", m_tree.path("a.wav")}).exitStatus, 0);
    EXPECT_NEAR(double(m_tree.contents("out/a.mp3").size()) * 8 / (200000 / 44100.0), 128000, 12000);
}

TEST_F(Convert, aFileThatCannotBeConverted_isNamedAtTheEnd_andTheOthersFollow)
{
    m_tree.makeFile("music/bad.wav", "no sound");
    for (const char *const format : {"wav", "mp3"}) {
        const ChildResult result =
            convert({"--to", format, "--json", m_tree.path("missing.wav"), m_tree.path("music")});
        EXPECT_EQ(result.exitStatus, 1);
        EXPECT_TRUE(result.errors.contains("bad.wav\xE2\x80\x9D cannot be converted: ")) << result.errors.constData();
        EXPECT_TRUE(result.errors.contains("there is no file or folder")) << result.errors.constData();
        EXPECT_TRUE(result.errors.contains("2 files could not be converted")) << result.errors.constData();
        EXPECT_FALSE(result.errors.contains("DummyRedbook:")) << result.errors.constData();
        EXPECT_FALSE(m_tree.exists(QByteArray("out/music/bad.") + format)) << "nothing is left of it";
        EXPECT_TRUE(m_tree.exists(QByteArray("out/music/one.") + format));
        EXPECT_TRUE(m_tree.exists(QByteArray("out/music/album/two.") + format));
        const QJsonObject report = jsonOf(result.output);
        EXPECT_EQ(report[u"failures"], 2);
        EXPECT_EQ(report[u"result"], QStringLiteral("failed"));
        EXPECT_EQ(report[u"files"].toArray().size(), 4);
        EXPECT_EQ(report[u"files"][0][u"error"][u"kind"], QStringLiteral("source"));
    }
}

TEST_F(Convert, damage_isNamedAndMakesTheStatus3)
{
    ffmpeg("-i " + m_tree.path("music/one.wav") + ' ' + m_tree.path("a.flac"));
    QByteArray flac = m_tree.contents("a.flac");
    flac[flac.size() / 2] = char(flac[flac.size() / 2] ^ 1);
    m_tree.makeFile("bent.flac", flac);
    for (const char *const format : {"wav", "mp3"}) {
        const ChildResult result = convert({"--to", format, "--json", m_tree.path("bent.flac")});
        EXPECT_EQ(result.exitStatus, 3);
        EXPECT_TRUE(result.errors.contains("bent.flac, at 0.")) << result.errors.constData();
        EXPECT_TRUE(result.errors.contains("is broken in places")) << result.errors.constData();
        EXPECT_EQ(jsonOf(result.output)[u"files"][0][u"damaged"], true);
    }
    EXPECT_EQ(samplesIn("out/bent.wav"), "20000");
}

TEST_F(Convert, aFullDisk_isNoticed)
{
    m_tree.makeFile("a.wav", waveFile(noise(400000)));
    for (const char *const format : {"wav", "mp3"}) {
        ChildSettings settings = tessaron(words({"--to", format, m_tree.path("a.wav")}));
        settings.fileSizeLimit = 50000;
        const ChildResult result = runChild(settings);
        EXPECT_EQ(result.exitStatus, 1) << result.errors.constData();
        EXPECT_TRUE(result.errors.contains("a.wav")) << result.errors.constData();
        EXPECT_EQ(outNames(), Names());
    }
}

TEST_F(Convert, errors_nameOnePath_thatOfTheSource)
{
    m_tree.makeFile("closed/a.wav", waveFile(tone(1000)));
    m_tree.setMode("closed/a.wav", 0);
    m_tree.setMode("", 0755);
    m_tree.setMode("out", 0777);
    m_tree.makeFile("big.wav", waveFile(noise(400000)));
    m_tree.makeFile("bad.wav", "no sound");
    for (const char *const format : {"wav", "mp3"}) {
        ChildSettings settings = tessaron(words({"--to", format, m_tree.path("closed")}));
        settings.withoutRootRights = true;
        ChildResult result = runChild(settings);
        EXPECT_EQ(result.exitStatus, 1);
        EXPECT_EQ(result.errors.count("a.wav"), 1) << result.errors.constData();
        EXPECT_TRUE(result.errors.contains("a.wav\xE2\x80\x9D cannot be converted: Permission denied"))
            << result.errors.constData();
        result = convert({"--to", format, m_tree.path("bad.wav")});
        EXPECT_EQ(result.errors.count("bad.wav"), 1) << result.errors.constData();
        settings = tessaron(words({"--to", format, m_tree.path("big.wav")}));
        settings.fileSizeLimit = 50000;
        result = runChild(settings);
        EXPECT_EQ(result.exitStatus, 1);
        EXPECT_EQ(result.errors.count("big."), 1) << result.errors.constData();
        EXPECT_FALSE(result.errors.contains(".tessaron-convert-")) << result.errors.constData();
    }
    const ChildResult full = [&] {
        ChildSettings settings = tessaron(words({"--to", "wav", m_tree.path("big.wav")}));
        settings.fileSizeLimit = 50000;
        return runChild(settings);
    }();
    EXPECT_TRUE(full.errors.contains("cannot be converted: the result cannot be written: File too large"))
        << full.errors.constData();
}

TEST_F(Convert, foldersOfResultsThatAllFailed_areRemoved_whereTheyWereMade)
{
    m_tree.makeFile("bad/deep/er/bad.wav", "no sound");
    m_tree.makeFile("bad/good/one.wav", waveFile(tone(1000)));
    m_tree.makeFolder("out/bad/deep");
    EXPECT_EQ(convert({"--to", "wav", m_tree.path("bad")}).exitStatus, 1);
    EXPECT_TRUE(m_tree.exists("out/bad/deep")) << "was there before";
    EXPECT_FALSE(m_tree.exists("out/bad/deep/er"));
    EXPECT_TRUE(m_tree.exists("out/bad/good/one.wav"));
    EXPECT_EQ(runTessaron({"convert", "--to", "wav", "-d", m_tree.path("new/er"), m_tree.path("bad/deep")}).exitStatus,
              1);
    EXPECT_FALSE(m_tree.exists("new")) << "with those on the way to it";
}

TEST_F(Convert, whatIsNoFile_isRefusedOrToldAsLeftOut)
{
    m_tree.makeFifo("pipe.wav");
    m_tree.makeFifo("music/pipe.wav");
    m_tree.makeSymbolicLink("music/link.wav", "one.wav");
    const ChildResult given = convert({"--to", "wav", m_tree.path("pipe.wav")});
    EXPECT_EQ(given.exitStatus, 1);
    EXPECT_TRUE(given.errors.contains("is neither a folder nor a regular file")) << given.errors.constData();
    EXPECT_TRUE(given.errors.contains("Copy what it delivers into a file first.")) << given.errors.constData();
    const ChildResult found = convert({"--to", "wav", "--json", m_tree.path("music")});
    EXPECT_EQ(found.exitStatus, 0) << found.errors.constData();
    EXPECT_EQ(jsonOf(found.output)[u"leftOut"], 1);
    EXPECT_EQ(jsonOf(found.output)[u"leftOutSpecial"], 2);
    EXPECT_TRUE(found.errors.contains("left out 2 links and special files")) << found.errors.constData();
}

TEST_F(Convert, aFolderWhoseEntriesCannotBeLookedAt_isTold)
{
    m_tree.setMode("music/album", 0444);
    m_tree.setMode("", 0755);
    m_tree.setMode("out", 0777);
    ChildSettings settings = tessaron(words({"--to", "wav", m_tree.path("music")}));
    settings.withoutRootRights = true;
    const ChildResult result = runChild(settings);
    m_tree.setMode("music/album", 0755);
    EXPECT_EQ(result.exitStatus, 3) << result.errors.constData();
    EXPECT_TRUE(result.errors.contains("album\xE2\x80\x9D cannot be listed: Permission denied"))
        << result.errors.constData();
}

TEST_F(Convert, lackOfDescriptors_isToldOnce)
{
    if (!runsWithoutDescriptors)
        GTEST_SKIP() << "the sanitizer looks at objects through a pipe, for which there are no descriptors here";
    const QList<QByteArray> arguments =
        words({"--to", "wav", "-j", "1", "--json", m_tree.path("music/one.wav"), m_tree.path("music/album/two.wav")});
    runTessaronWithEverMoreDescriptors(arguments, [this](const ChildResult &result, quint64 limit) {
        EXPECT_EQ(result.exitStatus, 1) << limit << result.errors.constData();
        EXPECT_EQ(outNames(), Names()) << limit;
        EXPECT_TRUE(jsonOf(result.output)[u"result"].isString()) << limit << result.errors.constData();
        EXPECT_EQ(result.errors.count("oo many"), 1) << limit << result.errors.constData();
        EXPECT_EQ(result.errors.count("(ulimit -n)"), 1) << limit << result.errors.constData();
    });
}

TEST_F(Convert, usage_isChecked)
{
    const QByteArray file = m_tree.path("music/one.wav");
    EXPECT_EQ(runTessaron({"convert", "--to", "wav", file}).exitStatus, 2) << "no -d";
    for (const QList<QByteArray> &arguments : {QList<QByteArray>{file},
                                               {"--to", "wav"},
                                               {"--to", "ogg", file},
                                               {"--to", "wav", "--vbr", "128", file},
                                               {"--to", "wav", "--tags", file},
                                               {"--to", "mp3", "--cbr", "192", file},
                                               {"--to", "mp3", "--cbr", "128", "--vbr", "128", file},
                                               {"--to", "wav", "-j", "0", file},
                                               {"--to", "wav", "-j", "257", file},
                                               {"--to", "wav", "-j", "x", file}})
        EXPECT_EQ(convert(arguments).exitStatus, 2) << arguments.join(' ').constData();
    EXPECT_EQ(convert({"--to", "wav", m_tree.path("missing")}).exitStatus, 1);
    EXPECT_EQ(outNames(), Names());
}

TEST_F(Convert, anInterrupt_leavesNoPartialFile)
{
    m_tree.makeFile("long.wav", waveFile(noise(20000000)));
    for (const char *const format : {"wav", "mp3"}) {
        const QByteArray name = QByteArray("long.") + format;
        ChildProcess child(tessaron(words({"--to", format, m_tree.path("music/one.wav"), m_tree.path("long.wav")})));
        ASSERT_TRUE(
            child.waitUntil([&] { return bytesOfPart(name) > 0 && m_tree.exists(QByteArray("out/one.") + format); }));
        child.sendSignal(SIGINT);
        EXPECT_EQ(child.finish().exitStatus, 130);
        EXPECT_EQ(outNames(), Names({std::string("one.") + format})) << "what was whole stays";
        m_tree.remove(QByteArray("out/one.") + format);
    }
}

TEST_F(Convert, aSecondInterrupt_leavesNoPartialFileEither)
{
    m_tree.makeFile("long.wav", waveFile(noise(20000000)));
    ChildProcess child(tessaron(words({"--to", "mp3", m_tree.path("long.wav"), m_tree.path("long.wav")})));
    ASSERT_TRUE(child.waitUntil([&] { return bytesOfPart("long.mp3") > 0; }));
    child.sendSignal(SIGSTOP); // so that both signals wait for it together
    child.sendSignal(SIGINT);
    child.sendSignal(SIGTERM);
    child.sendSignal(SIGCONT);
    EXPECT_EQ(child.finish().exitStatus, 130);
    EXPECT_EQ(outNames(), Names());
}

TEST_F(Convert, aStop_stopsTheToolsToo_andTheyGoOnWithIt)
{
    m_tree.makeFile("long.wav", waveFile(noise(8000000)));
    ChildSettings settings = tessaron(words({"--to", "mp3", m_tree.path("long.wav")}));
    settings.inGroupOfItsOwn = true;
    ChildProcess child(settings);
    for (int count = 0; count < 2; ++count) {
        const std::int64_t begun = bytesOfPart("long.mp3");
        ASSERT_TRUE(child.waitUntil([&] { return bytesOfPart("long.mp3") > std::max<std::int64_t>(begun, 0); }));
        child.sendSignal(SIGTSTP);
        int status = 0;
        ASSERT_EQ(::waitpid(child.id(), &status, WUNTRACED), child.id());
        ASSERT_TRUE(WIFSTOPPED(status));
        EXPECT_EQ(WSTOPSIG(status), SIGTSTP);
        const std::int64_t before = bytesOfPart("long.mp3");
        ::usleep(300000);
        EXPECT_EQ(bytesOfPart("long.mp3"), before) << "the encoder stands still";
        child.sendSignal(SIGCONT);
    }
    EXPECT_EQ(child.finish().exitStatus, 0);
    EXPECT_EQ(outNames(), Names({"long.mp3"}));
}

/// Ctrl-Z, fg and Ctrl-C as they are typed: a terminal, with a shell on it that controls jobs.
class ConvertOnTerminal : public Convert
{
protected:
    ConvertOnTerminal()
    {
        m_shell = ::forkpty(&m_terminal, nullptr, nullptr, nullptr);
        if (m_shell == 0) {
            ::setenv("PS1", "ready> ", 1);
            ::setenv("LC_ALL", "C", 1);
            ::setenv("TERM", "dumb", 1);
            ::execlp("bash", "bash", "--norc", "--noprofile", "-i", nullptr);
            ::_exit(127);
        }
        EXPECT_GT(m_shell, 0);
        ::fcntl(m_terminal, F_SETFL, O_NONBLOCK);
    }
    ~ConvertOnTerminal() override
    {
        ::close(m_terminal); // Which hangs up: the shell ends, with its jobs.
        ::waitpid(m_shell, nullptr, 0);
    }
    ConvertOnTerminal(const ConvertOnTerminal &) = delete;
    ConvertOnTerminal &operator=(const ConvertOnTerminal &) = delete;

    void type(const QByteArray &keys) const
    {
        ASSERT_EQ(::write(m_terminal, keys.constData(), std::size_t(keys.size())), keys.size());
    }
    /// Waits for a condition while it reads what the terminal shows.
    [[nodiscard]] bool waitUntil(const std::function<bool()> &condition)
    {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(3);
        while (!condition() && std::chrono::steady_clock::now() < deadline) {
            pollfd terminal = {m_terminal, POLLIN, 0};
            ::poll(&terminal, 1, 10);
            std::array<char, 4096> piece;
            const ssize_t got = ::read(m_terminal, piece.data(), piece.size());
            if (got > 0)
                m_shown.append(piece.data(), got);
        }
        return condition();
    }
    [[nodiscard]] bool waitUntilShown(const QByteArray &text)
    {
        const bool isShown = waitUntil([&] { return m_shown.contains(text); });
        EXPECT_TRUE(isShown) << m_shown.constData();
        m_shown = m_shown.mid(m_shown.indexOf(text) + text.size());
        return isShown;
    }

    QByteArray m_shown; ///< behind what was waited for last

private:
    int m_terminal = -1;
    pid_t m_shell = -1;
};

TEST_F(ConvertOnTerminal, ctrlZ_stopsIt_fgLetsItGoOn_andCtrlCLeavesNothing)
{
    m_tree.makeFile("long.wav", waveFile(noise(3000000)));
    ASSERT_TRUE(waitUntilShown("ready> "));
    const QByteArray path = m_tree.path("long.wav");
    type(TESSARON_PROGRAM " " + words({"--to", "mp3", "-j", "1", path, path}).join(' ') + '\n');
    ASSERT_TRUE(waitUntil([&] { return bytesOfPart("long.mp3") > 0; })) << m_shown.constData();
    type("\x1a");
    ASSERT_TRUE(waitUntilShown("Stopped"));
    const std::int64_t before = bytesOfPart("long.mp3");
    ::usleep(300000);
    EXPECT_EQ(bytesOfPart("long.mp3"), before) << "the encoder stands still";
    type("fg\n");
    ASSERT_TRUE(waitUntil([&] { return m_tree.exists("out/long.mp3"); })) << m_shown.constData();
    ASSERT_TRUE(waitUntil([&] { return outNames().size() == 2; })) << "the second file is being made";
    type("\x03");
    ASSERT_TRUE(waitUntil([&] { return outNames() == Names({"long.mp3"}); })) << m_shown.constData();
}

TEST_F(Convert, aStopThatNoShellCouldEnd_isPassedOver)
{
    m_tree.makeFile("long.wav", waveFile(noise(4000000)));
    ChildSettings settings;
    // In a session of its own, a process group has no shell that could continue it.
    settings.program = "setsid";
    settings.arguments = QList<QByteArray>{"--wait", TESSARON_PROGRAM}
        + words({"--to", "mp3", "--progress", "json", m_tree.path("long.wav")});
    ChildProcess child(settings);
    ASSERT_TRUE(child.waitUntil([&] { return bytesOfPart("long.mp3") > 0; }));
    const QByteArray command =
        outputOf("pgrep", {"-f", "-n", "^" TESSARON_PROGRAM ".*" + m_tree.path("long.wav")}).trimmed();
    ASSERT_EQ(::kill(command.toInt(), SIGTSTP), 0);
    EXPECT_EQ(child.finish().exitStatus, 0);
    EXPECT_EQ(outNames(), Names({"long.mp3"}));
}

TEST_F(Convert, jsonProgress_tellsOfEachFile)
{
    const PrivateBus bus;
    m_tree.makeFile("music/long.wav", waveFile(noise(3000000)));
    const ChildResult result = convert({"--to", "mp3", "--progress", "json", "-q", m_tree.path("music")});
    EXPECT_EQ(result.exitStatus, 0) << result.errors.constData();
    const std::vector<QJsonObject> lines = jsonLinesOf(result.errors);
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.back()[u"phase"], QStringLiteral("done"));
    EXPECT_EQ(lines.back()[u"percent"], 100);
    double last = 0, greatestOfFile = 0;
    for (const QJsonObject &line : lines) {
        EXPECT_GE(line[u"percent"].toDouble(), last);
        last = line[u"percent"].toDouble();
        const QJsonArray running = line[u"running"].toArray();
        for (const auto &file : running) {
            EXPECT_TRUE(file[u"source"].toString().endsWith(QStringLiteral(".wav")));
            greatestOfFile = std::max(greatestOfFile, file[u"percent"].toDouble());
        }
    }
    EXPECT_GT(greatestOfFile, 0);
    EXPECT_LE(greatestOfFile, 100);
}

} // namespace

} // namespace Tessaron::Testing
