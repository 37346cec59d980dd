#include "platform/dvdplayback/DVDDescription.h"
#include "platform/dvdplayback/PlayerProtocol.h"
#include "platform/dvdplayback/player/DiscDescriber.h"
#include "tests/dvdplayback/DiscFixture.h"

#include <QFile>

#include <random>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Tessaron::Testing
{

namespace
{

/// Describes damaged discs as the helper does, each in a process of its own.
class DamagedDiscs : public DiscTest
{
protected:
    /// True when the process has come to an end by itself, well or with an error in words, or over an assertion or a
    /// crash of the libraries, which end it as they would the helper; false when it hangs.
    [[nodiscard]] static bool endsInTime(const QByteArray &path)
    {
        const pid_t child = ::fork();
        if (child == 0) {
            const struct rlimit computing = {5, 5};
            const struct rlimit memory = {rlim_t(2) << 30, rlim_t(2) << 30};
            const struct rlimit none = {0, 0};
            ::setrlimit(RLIMIT_CPU, &computing);
            ::setrlimit(RLIMIT_CORE, &none);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
            ::setrlimit(RLIMIT_AS, &memory);
#else
            static_cast<void>(memory);
#endif
            ::close(STDERR_FILENO);
            ::_exit(describe(path));
        }
        int status = 0;
        EXPECT_EQ(::waitpid(child, &status, 0), child);
        if (WIFEXITED(status)) {
            EXPECT_LE(WEXITSTATUS(status), 1) << "what was described cannot be sent";
        }
        return !WIFSIGNALED(status) || WTERMSIG(status) != SIGXCPU;
    }

    static int describe(const QByteArray &path)
    {
        const Result<DiscPlace> place = findDisc(path);
        if (!place)
            return 1;
        const Result<std::unique_ptr<DiscFiles>> disc = DiscFiles::open(*place);
        if (!disc)
            return 1;
        const Result<DVDDescription> description = describeDisc(disc->get());
        if (!description)
            return description.error().localizedFailureReason().isEmpty() ? 3 : 1;
        return decodedDescription(encodedDescription(*description)) == *description ? 0 : 2;
    }

    [[nodiscard]] QByteArray contentsOf(const QByteArray &file) const
    {
        return m_tree.contents("disc/VIDEO_TS/" + file);
    }
    /// Writes the same bytes as a table and its copy.
    void writeTable(const QByteArray &table, const QByteArray &bytes) const
    {
        m_tree.makeFile("disc/VIDEO_TS/" + table + ".IFO", bytes);
        m_tree.makeFile("disc/VIDEO_TS/" + table + ".BUP", bytes);
    }
};

TEST_F(DamagedDiscs, description_ends_whateverBitIsFlipped)
{
    const QByteArray copy = copyOfDisc();
    std::mt19937 random(20261122); // the same flips in every run
    for (const QByteArray table : {"VIDEO_TS", "VTS_01_0", "VTS_02_0"}) {
        const QByteArray sound = contentsOf(table + ".IFO");
        for (int round = 0; round < 400; ++round) {
            QByteArray damaged = sound;
            const auto bit = qsizetype(random() % std::uint64_t(8 * sound.size()));
            damaged[bit / 8] = char(damaged[bit / 8] ^ (1 << bit % 8));
            writeTable(table, damaged);
            EXPECT_TRUE(endsInTime(copy)) << table.constData() << ' ' << bit;
        }
        writeTable(table, sound);
    }
}

TEST_F(DamagedDiscs, description_ends_whereverTablesAreCut)
{
    const QByteArray copy = copyOfDisc();
    for (const QByteArray table : {"VIDEO_TS", "VTS_02_0"}) {
        const QByteArray sound = contentsOf(table + ".IFO");
        for (qsizetype length = 0; length < sound.size(); length += 509) {
            writeTable(table, sound.first(length));
            EXPECT_TRUE(endsInTime(copy)) << table.constData() << ' ' << length;
        }
        writeTable(table, sound);
    }
}

TEST_F(DamagedDiscs, describeDVD_answers_whateverTheTablesDoToTheHelper)
{
    const QByteArray copy = copyOfDisc();
    const QByteArray sound = contentsOf("VTS_01_0.IFO");
    std::mt19937 random(7);
    for (int round = 0; round < 20; ++round) {
        QByteArray damaged = sound;
        for (int flip = 0; flip < 200; ++flip)
            damaged[qsizetype(random() % std::uint32_t(sound.size()))] = char(random());
        writeTable("VTS_01_0", damaged);
        const Result<DVDDescription> disc = describeDVD(copy, {});
        if (!disc) {
            EXPECT_FALSE(disc.error().localizedFailureReason().isEmpty());
        }
    }
}

} // namespace

} // namespace Tessaron::Testing
