#include "platform/foundation/DelayedPerform.h"

#include "tests/support/EventLoop.h"

#include <QElapsedTimer>

#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

using namespace Tessaron;
using namespace std::chrono_literals;

TEST(DelayedPerform, performAfterDelay_runsInTheOrderOfTheDeadlines)
{
    std::vector<std::string> order;
    EXPECT_TRUE(performAfterDelay(&order, 40ms, [&] { order.push_back("second"); }));
    EXPECT_TRUE(performAfterDelay(&order, 10ms, [&] { order.push_back("first"); }));
    EXPECT_TRUE(performAfterDelay(&order, 60ms, [&] { order.push_back("third"); }));
    ASSERT_TRUE(Testing::runEventLoopUntil([&] { return order.size() == 3; }));
    EXPECT_EQ(order, (std::vector<std::string>{"first", "second", "third"}));
}

TEST(DelayedPerform, performAfterDelay_neverRunsBeforeTheDelayHasPassed)
{
    QElapsedTimer timer;
    timer.start();
    bool hasRun = false;
    EXPECT_TRUE(performAfterDelay(&hasRun, 50ms, [&] { hasRun = true; }));
    ASSERT_TRUE(Testing::runEventLoopUntil([&] { return hasRun; }));
    EXPECT_GE(timer.elapsed(), 50);
}

TEST(DelayedPerform, cancelPreviousPerformRequests_forgetsThatTargetOnly)
{
    std::vector<std::string> ran;
    int one = 0, other = 0;
    performAfterDelay(&one, 1ms, [&] { ran.push_back("cancelled"); });
    performAfterDelay(&other, 2ms, [&] { ran.push_back("kept"); });
    performAfterDelay(&one, 3ms, [&] { ran.push_back("cancelled, too"); });
    cancelPreviousPerformRequests(&one);
    performAfterDelay(&one, 10ms, [&] { ran.push_back("made later"); });
    ASSERT_TRUE(Testing::runEventLoopUntil([&] { return ran.size() == 2; }));
    EXPECT_EQ(ran, (std::vector<std::string>{"kept", "made later"}));
}

TEST(DelayedPerform, cancelPreviousPerformRequests_reachesRequestsOfAnotherThread)
{
    bool hasRun = false, sentinel = false;
    performAfterDelay(&hasRun, 5ms, [&] { hasRun = true; });
    std::thread([&] { cancelPreviousPerformRequests(&hasRun); }).join();
    performAfterDelay(&sentinel, 20ms, [&] { sentinel = true; });
    ASSERT_TRUE(Testing::runEventLoopUntil([&] { return sentinel; }));
    EXPECT_FALSE(hasRun);
}

TEST(DelayedPerform, performAfterDelay_refusesOnAThreadWithoutEventLoop)
{
    bool accepted = true;
    std::thread([&] { accepted = performAfterDelay(&accepted, 0ms, [] {}); }).join();
    EXPECT_FALSE(accepted);
}

TEST(DelayedPerform, cancelPreviousPerformRequests_mayBeCalledFromTheCapturesDestructor)
{
    struct CancelsAtItsEnd {
        ~CancelsAtItsEnd() { cancelPreviousPerformRequests(this); }
    };
    int target = 0;
    performAfterDelay(&target, 1h, [captured = std::make_shared<CancelsAtItsEnd>()] {});
    cancelPreviousPerformRequests(&target);
    bool sentinel = false;
    performAfterDelay(&sentinel, 0ms, [&] { sentinel = true; });
    EXPECT_TRUE(Testing::runEventLoopUntil([&] { return sentinel; }));
}
