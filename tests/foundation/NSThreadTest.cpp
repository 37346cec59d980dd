#include "platform/foundation/NSThread.h"

#include <gtest/gtest.h>
#include <latch>
#include <vector>

using namespace Tessaron;

TEST(NSThread, waitUntilFinished_returnsAfterTheEntryHasReturned)
{
    int steps = 0;
    NSThread thread([&] { ++steps; });
    EXPECT_FALSE(thread.isFinished());
    thread.start();
    thread.waitUntilFinished();
    EXPECT_EQ(steps, 1);
    EXPECT_TRUE(thread.isFinished());
    EXPECT_FALSE(thread.isExecuting());
}

TEST(NSThread, start_runsTheEntryAgainWithAClearedCancelFlag)
{
    std::vector<bool> seen;
    NSThread thread([&] { seen.push_back(thread.isCancelled()); });
    thread.start();
    thread.waitUntilFinished();
    thread.cancel();
    thread.start();
    thread.waitUntilFinished();
    EXPECT_EQ(seen, (std::vector<bool>{false, false}));
}

TEST(NSThread, destructor_cancelsAndJoins)
{
    bool sawCancel = false;
    {
        std::latch running(1);
        NSThread thread([&] {
            running.count_down();
            while (!thread.isCancelled())
                std::this_thread::yield();
            sawCancel = true;
        });
        thread.start();
        running.wait();
        EXPECT_TRUE(thread.isExecuting());
    }
    EXPECT_TRUE(sawCancel);
}
