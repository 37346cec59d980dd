#include "platform/dvdplayback/DVDPlayback.h"
#include "platform/dvdplayback/player/DiscDescriber.h"
#include "platform/dvdplayback/player/DiscPlayer.h"
#include "tests/dvdplayback/DiscFixture.h"
#include "tests/support/RunProgram.h"

#include <cstdio>
#include <fcntl.h>
#include <random>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Tessaron::Testing
{

namespace
{

using std::chrono::milliseconds;
using std::chrono::seconds;

/// Plays damaged discs as the helper does, with requests of all kinds, in a time of the test's own and a process of its
/// own each.
class DamagedPlaying : public DiscTest
{
protected:
    /// How many runs a test makes; TESSARON_RUNS asks for another number.
    [[nodiscard]] static int runs(int usual)
    {
        const int asked = qEnvironmentVariableIntValue("TESSARON_RUNS");
        return asked > 0 ? asked : usual;
    }

    enum Ending : int {
        Played, ///< to the end of its time, or of the disc
        Refused, ///< not opened, with an error in words
        Failed, ///< ended, with an error in words
        Wordless, ///< with an error without words
    };

    static int play(const QByteArray &path, std::uint32_t seed, seconds time)
    {
        const Result<DiscPlace> place = findDisc(path);
        const Result<std::unique_ptr<DiscFiles>> files =
            place ? DiscFiles::open(*place) : Result<std::unique_ptr<DiscFiles>>(place.error());
        if (!files)
            return files.error().localizedFailureReason().isEmpty() ? Wordless : Refused;
        const Result<DVDDescription> description = describeDisc(files->get());
        if (!description)
            return description.error().localizedFailureReason().isEmpty() ? Wordless : Refused;
        const std::unique_ptr<SharedFrames> frames = *SharedFrames::create();
        const std::unique_ptr<SharedSound> device = *SharedSound::create();
        const std::unique_ptr<SharedSound> sound =
            *SharedSound::attach(UniqueDescriptor(::fcntl(device->descriptor(), F_DUPFD_CLOEXEC, 3)));
        device->tellOpen({48'000, 2}, 960);
        auto now = std::chrono::steady_clock::time_point(std::chrono::hours(5));
        int ending = Played;
        DiscPlayer::Hearers hearers;
        hearers.state = [](const PlayerState &) {};
        hearers.titleTime = [](std::uint32_t, std::uint32_t) {};
        hearers.frame = [](std::uint32_t) {};
        hearers.failure = [&](const QString &why) { ending = why.isEmpty() ? Wordless : Failed; };
        hearers.now = [&] { return now; };
        DiscPlayer player(files->get(), *description, frames.get(), sound.get(), std::move(hearers));
        std::mt19937 random(seed);
        static_cast<void>(random() % 2 == 0 ? player.play() : player.playChapter(1 + int(random() % 2), 1));
        std::array<float, 960> samples{};
        for (const auto end = now + time; now < end; now += milliseconds(10)) {
            for (int turn = 0; turn < 200 && player.advance() == milliseconds(0);)
                ++turn;
            device->take(samples, now);
            if (random() % 32 == 0)
                request(&player, &random);
        }
        return ending;
    }

    static void request(DiscPlayer *player, std::mt19937 *random)
    {
        const auto below = [random](std::uint32_t limit) { return int((*random)() % limit); };
        std::int32_t button = 0;
        OSStatus status = noErr;
        switch (below(14)) {
        case 0:
            status = player->playChapter(below(4), below(6));
            break;
        case 1:
            status = player->stepChapter(below(2) == 0 ? -1 : 1);
            break;
        case 2:
            status = player->setAngle(below(5));
            break;
        case 3:
            status = player->goToMenu(std::uint32_t(below(7)));
            break;
        case 4:
            status = player->returnToTitle();
            break;
        case 5:
            status = player->navigate(std::uint32_t(below(7)));
            break;
        case 6:
            status = player->pointAt(below(720), below(480), true, &button);
            break;
        case 7:
            status = player->scan(1 << below(6), below(2) == 0);
            break;
        case 8:
            status = player->goToTime(std::uint32_t(below(9000)));
            break;
        case 9:
            status = player->stepPicture();
            break;
        case 10:
            status = player->setSoundStream(below(4));
            break;
        case 11:
            status = player->setSubtitleStream(below(3));
            break;
        case 12:
            status = player->playSlowly(2);
            break;
        default:
            status = player->play();
        }
        static_cast<void>(status); // any will do
    }

    /// False for a run that goes on and on; what the libraries' assertions and crashes end is told by the signal, as it
    /// would end the helper.
    [[nodiscard]] bool endsInTime(const QByteArray &path, std::uint32_t seed, seconds time = seconds(3))
    {
        const pid_t child = ::fork();
        if (child == 0) {
            const struct rlimit computing = {20, 20}, none = {0, 0};
            ::setrlimit(RLIMIT_CPU, &computing);
            ::setrlimit(RLIMIT_CORE, &none);
            ::close(STDERR_FILENO);
            ::_exit(play(path, seed, time));
        }
        int status = 0;
        EXPECT_EQ(::waitpid(child, &status, 0), child);
        if (WIFEXITED(status)) {
            EXPECT_LT(WEXITSTATUS(status), int(Wordless)) << "an error without words";
            ++m_endings[std::min(WEXITSTATUS(status), int(Wordless))];
            return true;
        }
        ++m_signals[WTERMSIG(status)];
        return WTERMSIG(status) != SIGXCPU && WTERMSIG(status) != SIGKILL;
    }

    ~DamagedPlaying() override
    {
        std::printf("played %d, refused %d, failed %d", m_endings[Played], m_endings[Refused], m_endings[Failed]);
        for (const auto &[signal, count] : m_signals)
            std::printf(", signal %d: %d", signal, count);
        std::printf("\n");
    }

    std::array<int, 4> m_endings{};
    std::map<int, int> m_signals;
};

/// Flips bits of a file: those of the disc's tables, or those of navigation packs.
TEST_F(DamagedPlaying, player_ends_whateverBitOfATableIsFlipped)
{
    const QByteArray copy = copyOfDisc();
    std::mt19937 random(20261122);
    const std::array<QByteArray, 3> tables = {"VIDEO_TS", "VTS_01_0", "VTS_02_0"};
    for (int run = 0; run < runs(24); ++run) {
        const QByteArray &table = tables[std::size_t(run) % tables.size()];
        const QByteArray sound = m_tree.contents("disc/VIDEO_TS/" + table + ".IFO");
        QByteArray damaged = sound;
        for (std::uint32_t flips = 1 + random() % 4; flips > 0; --flips) {
            const auto bit = qsizetype(random() % std::uint64_t(8 * sound.size()));
            damaged[bit / 8] = char(damaged[bit / 8] ^ (1 << bit % 8));
        }
        if (random() % 8 == 0)
            damaged.truncate(qsizetype(random() % std::uint32_t(sound.size())));
        for (const char *ending : {".IFO", ".BUP"})
            m_tree.makeFile("disc/VIDEO_TS/" + table + ending, damaged);
        EXPECT_TRUE(endsInTime(copy, random())) << run;
        for (const char *ending : {".IFO", ".BUP"})
            m_tree.makeFile("disc/VIDEO_TS/" + table + ending, sound);
    }
}

TEST_F(DamagedPlaying, player_ends_whateverBitOfANavigationPackIsFlipped)
{
    const QByteArray copy = copyOfDisc();
    std::mt19937 random(11);
    const std::array<QByteArray, 4> contents = {"VIDEO_TS.VOB", "VTS_01_0.VOB", "VTS_01_1.VOB", "VTS_02_1.VOB"};
    for (int run = 0; run < runs(24); ++run) {
        const QByteArray &file = contents[std::size_t(run) % contents.size()];
        const QByteArray sound = m_tree.contents("disc/VIDEO_TS/" + file);
        QByteArray damaged = sound;
        constexpr qsizetype sector = qsizetype(discSectorSize);
        const QByteArray systemHeader = QByteArray::fromHex("000001bb");
        for (qsizetype at = 0; at + sector <= damaged.size(); at += sector) {
            // A navigation pack is the one with a system header.
            if (QByteArrayView(damaged).sliced(at + 14, 4) != systemHeader || random() % 2 != 0)
                continue;
            for (int flip = 0; flip < 3; ++flip) {
                const qsizetype bit = qsizetype(random() % std::uint32_t(8 * sector));
                damaged[at + bit / 8] = char(damaged[at + bit / 8] ^ (1 << bit % 8));
            }
        }
        if (random() % 8 == 0)
            damaged.truncate(qsizetype(random() % std::uint32_t(sound.size())));
        m_tree.makeFile("disc/VIDEO_TS/" + file, damaged);
        EXPECT_TRUE(endsInTime(copy, random())) << run;
        m_tree.makeFile("disc/VIDEO_TS/" + file, sound);
    }
}

/// What the next test runs under another program.
TEST_F(DamagedPlaying, DISABLED_playsTheFirstTitle)
{
    const int ending = play(disc(), 4, seconds(12));
    EXPECT_TRUE(ending == Played || ending == Failed) << ending;
    std::printf("ended by itself\n");
}

TEST_F(DamagedPlaying, player_ends_whenTheDriveCannotRead)
{
    const QByteArray program = QByteArray("/proc/self/exe");
    std::array<char, 4096> path{};
    ASSERT_GT(::readlink(program.constData(), path.data(), path.size() - 1), 0);
    const QByteArray contents = disc() + "/VIDEO_TS/VTS_01_1.VOB";
    for (const QByteArray range : {"40..60", "30+"}) {
        // The sanitizer cannot look for leaks in a program that is watched.
        const ProgramRun run = runProgram("strace",
                                          {"-f", "-qq", "-E", "LSAN_OPTIONS=detect_leaks=0", "-o", "/dev/null", "-P",
                                           contents, "-e", "trace=read", "-e", "inject=read:error=EIO:when=" + range,
                                           path.data(), "--gtest_also_run_disabled_tests",
                                           "--gtest_filter=DamagedPlaying.DISABLED_playsTheFirstTitle"});
        EXPECT_EQ(run.status, 0) << run.output.constData() << run.errors.constData();
        EXPECT_TRUE(run.output.contains("ended by itself"));
    }
}

} // namespace

} // namespace Tessaron::Testing
