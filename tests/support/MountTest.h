#pragma once

#include "tests/support/TemporaryTree.h"

#include <functional>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Tessaron::Testing
{

/// Tests that mount file systems or change the root, apart from all other processes and as far as the user may.
class MountTest : public ::testing::Test
{
protected:
    /// What the steps answer when the system refuses them what they need: the test is skipped.
    static constexpr int mayNotMount = 77;

    /// Runs the steps in a child process, whose mounts end with it; they answer 0, or the number of what failed.
    static void runApart(const std::function<int()> &steps)
    {
        const pid_t child = ::fork();
        if (child == 0) {
            const bool isApart =
                ::unshare(CLONE_NEWNS) == 0 && ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
            ::_exit(isApart ? steps() : mayNotMount);
        }
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFEXITED(status));
        if (WEXITSTATUS(status) == mayNotMount)
            GTEST_SKIP() << "this user, or this system, may not mount what the test needs";
        EXPECT_EQ(WEXITSTATUS(status), 0);
    }

    const TemporaryTree tree;
};

} // namespace Tessaron::Testing
