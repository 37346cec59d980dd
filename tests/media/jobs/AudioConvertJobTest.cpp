#include "tests/quicktime/Sounds.h"
#include "tests/support/EventLoop.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/AudioConvertJob.h>
#include <TessaronClasses/DiscJobErrors.h>

#include <gtest/gtest.h>

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

    const TemporaryTree tree;
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

TEST_F(AudioConvertJobTest, flat_givesTakenNamesANumber)
{
    tree.makeFile("music/album/one.wav", waveFile(tone(100)));
    tree.makeFile("out/two.aiff", "precious");
    const AudioConvertResult result = convert({{tree.path("music")}, tree.path("out"), 1, true, 3});
    EXPECT_TRUE(result.isComplete());
    for (const char *name : {"out/one.aiff", "out/one-1.aiff", "out/two-1.aiff"})
        EXPECT_TRUE(tree.exists(name)) << name;
    EXPECT_EQ(tree.contents("out/two.aiff"), "precious");
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
    tree.makeFile("long.wav", waveFile(noise(8000000)));
    AudioConvertJob job({{tree.path("long.wav")}, tree.path("out"), 4, false, 1});
    bool hasEnded = false;
    QObject::connect(&job, &AudioConvertJob::finished, &job, [&] { hasEnded = true; });
    job.start();
    ASSERT_TRUE(runEventLoopUntil([&] { return tree.exists("out/long.mp3"); }));
    job.cancel();
    ASSERT_TRUE(runEventLoopUntil([&] { return hasEnded; }));
    EXPECT_TRUE(isDiscJobError(job.result().error, DiscJobErrorCode::Cancelled));
    EXPECT_FALSE(tree.exists("out/long.mp3"));
}

TEST_F(AudioConvertJobTest, aMissingSource_endsTheJob)
{
    EXPECT_TRUE(isDiscJobError(convert({{tree.path("missing")}, tree.path("out"), 0, false, 1}).error,
                               DiscJobErrorCode::Source));
}

TEST_F(AudioConvertJobTest, suspending_stopsTheTools_untilTheyAreResumed)
{
    tree.makeFile("long.wav", waveFile(noise(4000000)));
    AudioConvertJob job({{tree.path("long.wav")}, tree.path("out"), 4, false, 1});
    bool hasEnded = false;
    QObject::connect(&job, &AudioConvertJob::finished, &job, [&] { hasEnded = true; });
    job.start();
    const auto size = [&] { return tree.exists("out/long.mp3") ? tree.contents("out/long.mp3").size() : 0; };
    ASSERT_TRUE(runEventLoopUntil([&] { return size() > 0; }));
    job.suspend();
    ASSERT_FALSE(hasEnded);
    const qsizetype before = size();
    EXPECT_FALSE(runEventLoopUntil([&] { return size() != before; }, std::chrono::milliseconds(300)));
    job.resume();
    ASSERT_TRUE(runEventLoopUntil([&] { return hasEnded; }));
    EXPECT_TRUE(job.result().isComplete());
    EXPECT_GT(size(), before);
}
