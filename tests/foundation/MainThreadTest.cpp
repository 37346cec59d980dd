#include "platform/foundation/MainThread.h"

#include "tests/support/EventLoop.h"

#include <algorithm>
#include <atomic>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

using namespace Tessaron;

TEST(MainThread, performOnMainThread_deliversInOrderAndOnTheMainThread)
{
    std::vector<int> order;
    bool wasMain = true;
    std::thread([&] {
        EXPECT_FALSE(isMainThread());
        for (int number = 0; number < 100; ++number) {
            performOnMainThread([&, number] {
                wasMain = wasMain && isMainThread();
                order.push_back(number);
            });
        }
    }).join();
    EXPECT_TRUE(order.empty());
    ASSERT_TRUE(Testing::runEventLoopUntil([&] { return order.size() == 100; }));
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
    EXPECT_TRUE(wasMain);
}

TEST(MainThread, performOnMainThreadAndWait_returnsAfterTheFunctionHasRun)
{
    std::atomic<int> steps = 0;
    int stepsSeenByWorker = 0;
    std::atomic<bool> isDone = false;
    std::thread worker([&] {
        performOnMainThreadAndWait([&] { ++steps; });
        stepsSeenByWorker = steps;
        isDone = true;
    });
    EXPECT_TRUE(Testing::runEventLoopUntil([&] { return isDone.load(); }));
    worker.join();
    EXPECT_EQ(stepsSeenByWorker, 1);
}

TEST(MainThread, performOnMainThreadAndWait_runsAtOnceOnTheMainThread)
{
    bool hasRun = false;
    performOnMainThreadAndWait([&] { hasRun = true; });
    EXPECT_TRUE(hasRun);
}

TEST(CallbackContext, isAlive_followsTheNamedObject)
{
    EXPECT_TRUE(CallbackContext().isAlive());
    auto object = std::make_shared<int>(1);
    const CallbackContext context(object);
    EXPECT_TRUE(context.isAlive());
    object.reset();
    EXPECT_FALSE(context.isAlive());
}
