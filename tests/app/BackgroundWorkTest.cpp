#include "app/BackgroundWork.h"

#include "tests/support/EventLoop.h"

#include <gtest/gtest.h>
#include <memory>
#include <semaphore>

using namespace Tessaron;
using namespace Tessaron::Desktop;
using namespace Tessaron::Testing;

TEST(BackgroundWork, start_doesNotWait_forWorkThatHangs)
{
    // Shared, since what hangs may be there longer than the test.
    const auto gate = std::make_shared<std::binary_semaphore>(0);
    const auto hasEnded = std::make_shared<std::binary_semaphore>(0);
    bool isFirstTold = false;
    bool isSecondTold = false;
    BackgroundWork work;
    work.start(
        [gate, hasEnded](const std::stop_token &) {
            gate->acquire();
            hasEnded->release();
        },
        [&isFirstTold] { isFirstTold = true; });
    EXPECT_TRUE(work.isRunning());
    work.start([](const std::stop_token &) {}, [&isSecondTold] { isSecondTold = true; });
    EXPECT_TRUE(runEventLoopUntil([&isSecondTold] { return isSecondTold; }));
    EXPECT_FALSE(work.isRunning());
    gate->release();
    hasEnded->acquire();
    drainEventLoop();
    EXPECT_FALSE(isFirstTold) << "it was given up";
}

TEST(BackgroundWork, cancel_silencesWhatRuns_andAsksItToStop)
{
    const auto hasStopped = std::make_shared<std::binary_semaphore>(0);
    bool isTold = false;
    BackgroundWork work;
    work.start(
        [hasStopped](const std::stop_token &stop) {
            std::binary_semaphore wanted(0);
            const std::stop_callback onStop(stop, [&wanted] { wanted.release(); });
            wanted.acquire();
            hasStopped->release();
        },
        [&isTold] { isTold = true; });
    work.cancel();
    EXPECT_FALSE(work.isRunning());
    hasStopped->acquire();
    drainEventLoop();
    EXPECT_FALSE(isTold);
}
