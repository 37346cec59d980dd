#include "tests/imaging/jobs/JobRun.h"
#include "tests/quicktime/Sounds.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/AudioImageJob.h>

#include <chrono>
#include <gtest/gtest.h>
#include <thread>

using namespace Tessaron;
using namespace Tessaron::Testing;

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
