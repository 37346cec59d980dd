#include "tests/imaging/jobs/JobRun.h"
#include "tests/quicktime/Sounds.h"
#include "tests/support/EventLoop.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/DiscJobErrors.h>
#include <TessaronClasses/ListenJob.h>

#include <QFileInfo>

#include <array>
#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <optional>

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

constexpr std::size_t samplesPerFrame = 588;

using Sample = std::array<float, 2>;

/// What a device is given goes into a file.
class ListenJobTest : public testing::Test
{
protected:
    ListenJobTest()
    {
        qputenv("SDL_AUDIODRIVER", "disk");
        qputenv("SDL_DISKAUDIOFILE", tree.path("heard"));
        sound = noise(150 * samplesPerFrame);
        file = tree.makeFile("sound.wav", waveFile(sound));
    }

    [[nodiscard]] ListenResult listen(const ListenOrder &order)
    {
        ListenJob job(order);
        return JobRun<ListenJob, ListenResult>(job).result;
    }

    /// Without silence, which a device plays whenever it is not given anything.
    [[nodiscard]] std::vector<Sample> heard() const
    {
        const QByteArray bytes = tree.contents("heard");
        std::vector<Sample> samples(std::size_t(bytes.size()) / sizeof(Sample));
        std::memcpy(samples.data(), bytes.constData(), samples.size() * sizeof(Sample));
        std::erase(samples, Sample{});
        return samples;
    }
    /// Frames of the file as the device is given them.
    [[nodiscard]] std::vector<Sample> framesOfFile(std::size_t first, std::size_t count) const
    {
        constexpr float fullScale = 32768;
        std::vector<Sample> samples;
        for (std::size_t at = first * samplesPerFrame; at < (first + count) * samplesPerFrame; ++at)
            samples.push_back({float(sound[at * 2]) / fullScale, float(sound[at * 2 + 1]) / fullScale});
        std::erase(samples, Sample{});
        return samples;
    }
    static void expectSame(const std::vector<Sample> &heard, const std::vector<Sample> &expected)
    {
        ASSERT_EQ(heard.size(), expected.size());
        for (std::size_t at = 0; at < heard.size(); ++at) {
            ASSERT_NEAR(heard[at][0], expected[at][0], 1e-4) << at;
            ASSERT_NEAR(heard[at][1], expected[at][1], 1e-4) << at;
        }
    }
    [[nodiscard]] static bool waitFor(const std::function<bool()> &isSo) { return runEventLoopUntil(isSo); }

    const TemporaryTree tree;
    Samples sound;
    QByteArray file;
};

} // namespace

TEST_F(ListenJobTest, partsOfFiles_areHeardOneBehindTheOther)
{
    const ListenResult result = listen({{{file, 10, 20}, {file, 100, 0}}, 0});
    ASSERT_FALSE(result.error) << result.error.localizedDescription().toStdString();
    std::vector<Sample> expected = framesOfFile(10, 20);
    const std::vector<Sample> second = framesOfFile(100, 50);
    expected.insert(expected.end(), second.begin(), second.end());
    expectSame(heard(), expected);
}

TEST_F(ListenJobTest, listening_beginsWhereItIsAskedTo)
{
    const ListenResult result = listen({{{file, 0, 20}, {file, 50, 40}}, 30});
    ASSERT_FALSE(result.error) << result.error.localizedDescription().toStdString();
    expectSame(heard(), framesOfFile(60, 30));
}

TEST_F(ListenJobTest, position_moves_andEndsWithTheSound)
{
    ListenJob job({{{file, 0, 0}}, 20});
    EXPECT_EQ(job.position(), 20u);
    std::vector<std::uint64_t> positions;
    QObject::connect(&job, &DiscJob::progressed, &job, [&] { positions.push_back(job.position()); });
    const JobRun<ListenJob, ListenResult> run(job);
    ASSERT_FALSE(run.result.error);
    ASSERT_FALSE(positions.empty());
    EXPECT_TRUE(std::is_sorted(positions.begin(), positions.end()));
    EXPECT_GE(job.position(), 100u);
    EXPECT_LE(job.position(), 150u);
}

TEST_F(ListenJobTest, pause_losesAndRepeatsNothing)
{
    ListenJob job({{{file, 0, 0}}, 0});
    std::optional<ListenResult> result;
    QObject::connect(&job, &ListenJob::finished, &job, [&](const ListenResult &ended) { result = ended; });
    job.start();
    ASSERT_TRUE(waitFor([&] { return job.position() > 10; }));
    job.setPaused(true);
    EXPECT_TRUE(job.isPaused());
    // What the device was given before comes to its file late.
    std::size_t before = 0;
    ASSERT_TRUE(waitFor([&] { return std::exchange(before, heard().size()) == heard().size() && before > 0; }));
    EXPECT_FALSE(result);
    job.setPaused(false);
    ASSERT_TRUE(waitFor([&] { return result.has_value(); }));
    EXPECT_FALSE(result->error);
    expectSame(heard(), framesOfFile(0, 150));
}

TEST_F(ListenJobTest, nothingIsHeard_ofWhatBeginsInAPause)
{
    ListenJob job({{{file, 0, 0}}, 0});
    std::optional<ListenResult> result;
    QObject::connect(&job, &ListenJob::finished, &job, [&](const ListenResult &ended) { result = ended; });
    job.setPaused(true);
    job.start();
    constexpr qsizetype halfASecond = 22'050 * qsizetype(sizeof(Sample)); // of silence
    ASSERT_TRUE(waitFor([&] { return QFileInfo(QString::fromUtf8(tree.path("heard"))).size() > halfASecond; }));
    EXPECT_TRUE(heard().empty());
    EXPECT_EQ(job.position(), 0u);
    job.setPaused(false);
    ASSERT_TRUE(waitFor([&] { return result.has_value(); }));
    expectSame(heard(), framesOfFile(0, 150));
}

TEST_F(ListenJobTest, seek_goesForward_andBack)
{
    ListenJob job({{{file, 0, 0}}, 0});
    std::optional<ListenResult> result;
    QObject::connect(&job, &ListenJob::finished, &job, [&](const ListenResult &ended) { result = ended; });
    job.setPaused(true);
    job.start();
    job.seek(120);
    EXPECT_EQ(job.position(), 120u);
    job.seek(40);
    job.setPaused(false);
    ASSERT_TRUE(waitFor([&] { return job.position() > 60; }));
    job.seek(140);
    ASSERT_TRUE(waitFor([&] { return result.has_value(); }));
    EXPECT_FALSE(result->error);
    const std::vector<Sample> all = heard();
    const std::vector<Sample> end = framesOfFile(140, 10);
    ASSERT_GE(all.size(), end.size());
    expectSame({all.end() - std::ptrdiff_t(end.size()), all.end()}, end);
    const std::vector<Sample> begin = framesOfFile(40, 5);
    expectSame({all.begin(), all.begin() + std::ptrdiff_t(begin.size())}, begin);
    EXPECT_LT(all.size(), framesOfFile(40, 110).size());
}

TEST_F(ListenJobTest, listening_fails_withAReason_whereThereIsNoDevice)
{
    qputenv("SDL_AUDIODRIVER", "none");
    const ListenResult result = listen({{{file, 0, 0}}, 0});
    EXPECT_TRUE(isDiscJobError(result.error, DiscJobErrorCode::Destination));
    EXPECT_TRUE(result.isDeviceMissing);
    EXPECT_TRUE(result.error.localizedDescription().startsWith(QStringLiteral("nothing can be heard: ")));
    EXPECT_GT(result.error.localizedDescription().size(), 25);
}

TEST_F(ListenJobTest, listening_fails_whereAFileIsNoSound)
{
    const QByteArray text = tree.makeFile("letter.txt", "Dear reader,\n");
    const ListenResult result = listen({{{text, 0, 0}}, 0});
    EXPECT_TRUE(isDiscJobError(result.error, DiscJobErrorCode::Source));
    EXPECT_FALSE(result.isDeviceMissing);
    EXPECT_TRUE(result.error.localizedDescription().contains(QStringLiteral("letter.txt")));
}

TEST_F(ListenJobTest, cancel_endsIt_alsoInAPause)
{
    ListenJob job({{{file, 0, 0}}, 0});
    std::optional<ListenResult> result;
    QObject::connect(&job, &ListenJob::finished, &job, [&](const ListenResult &ended) { result = ended; });
    job.setPaused(true);
    job.start();
    drainEventLoop();
    job.cancel();
    ASSERT_TRUE(waitFor([&] { return result.has_value(); }));
    EXPECT_TRUE(isDiscJobError(result->error, DiscJobErrorCode::Cancelled));
    EXPECT_FALSE(result->isDeviceMissing);
}
