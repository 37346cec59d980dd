#include "tests/imaging/jobs/JobRun.h"
#include "tests/quicktime/Sounds.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/AudioImageJob.h>
#include <TessaronClasses/DiscJobErrors.h>

#include <chrono>
#include <gtest/gtest.h>
#include <thread>

using namespace Tessaron;
using namespace Tessaron::Testing;

TEST(AudioImageJob, textsOfTheOrder_goBeforeTags_andOnlyWhereThereAreSome)
{
    const TemporaryTree tree;
    AudioImageOrder order;
    order.sources = QList<QByteArray>(3, tree.makeFile("a.wav", waveFile(noise(200'000))));
    order.output = tree.path("a.bin");
    order.hasCDText = true;
    order.discTitle = {QStringLiteral("Summer"), QStringLiteral("The Gulls")};
    order.titles = {{QStringLiteral("First"), {}}, {QStringLiteral("Second"), QStringLiteral("Guest")}};
    AudioImageJob job(order);
    const JobRun<AudioImageJob, AudioImageResult> run(job);
    ASSERT_FALSE(run.result.error) << run.result.error.localizedDescription().toStdString();
    ASSERT_EQ(run.result.tracks.size(), 3u);
    EXPECT_EQ(run.result.tracks[0].title, QStringLiteral("First"));
    EXPECT_EQ(run.result.tracks[1].performer, QStringLiteral("Guest"));
    EXPECT_EQ(run.result.tracks[2].title, QString());
    const QByteArray sheet = tree.contents("a.cue");
    EXPECT_TRUE(sheet.contains("TITLE \"Summer\"")) << sheet.constData();
    EXPECT_TRUE(sheet.contains("PERFORMER \"The Gulls\"")) << sheet.constData();
    EXPECT_TRUE(sheet.contains("TITLE \"Second\"")) << sheet.constData();

    order.titles << AudioTitle() << AudioTitle();
    AudioImageJob tooMany(order);
    const JobRun<AudioImageJob, AudioImageResult> refused(tooMany);
    EXPECT_TRUE(isDiscJobError(refused.result.error, DiscJobErrorCode::InvalidOrder));
}

TEST(AudioImageJob, cancelComesTooLate_whenTheImageHasItsName)
{
    using namespace std::chrono_literals;
    const TemporaryTree tree;
    AudioImageOrder order;
    // A program of its own is started for each: long enough for the job to tell that it is at it.
    order.sources = QList<QByteArray>(12, tree.makeFile("a.wav", waveFile(noise(1'000'000))));
    order.output = tree.path("a.bin");
    AudioImageJob job(order);
    bool isCancelled = false;
    QObject::connect(&job, &DiscJob::phaseChanged, &job, [&](DiscJobPhase phase) {
        const bool isOnItsWay = phase == DiscJobPhase::Planning || phase == DiscJobPhase::Writing;
        if (!isOnItsWay || isCancelled)
            return;
        // The worker goes on meanwhile, but nothing that it tells is heard.
        for (auto waited = 0ms; !tree.exists("a.bin") && waited < 30s; waited += 5ms)
            std::this_thread::sleep_for(5ms);
        job.cancel();
        isCancelled = true;
    });
    const JobRun<AudioImageJob, AudioImageResult> run(job);
    ASSERT_TRUE(isCancelled);
    EXPECT_FALSE(run.result.error) << run.result.error.localizedDescription().toStdString();
    EXPECT_TRUE(tree.exists("a.bin") && tree.exists("a.cue"));
}
