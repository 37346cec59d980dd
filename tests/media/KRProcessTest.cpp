#include <TessaronClasses/KRProcess.h>

#include <algorithm>
#include <csignal>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace Tessaron;

namespace
{

/// A child of its own name, with nice value 7, that waits to be killed.
pid_t namedChild()
{
    const pid_t child = ::fork();
    if (child == 0) {
        ::setpriority(PRIO_PROCESS, 0, 7);
        ::prctl(PR_SET_NAME, "a) (b é");
        for (;;)
            ::pause();
    }
    return child;
}

std::shared_ptr<KRProcess> waitForName(const QString &name)
{
    for (int round = 0; round < 500; ++round) {
        if (auto process = KRProcess::processWithName(name))
            return process;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return nullptr;
}

} // namespace

TEST(KRProcess, list_hasThisProcessOnceAndRisesWithTheKernel)
{
    const auto list = KRProcess::processList();
    ASSERT_TRUE(list);
    EXPECT_TRUE(std::is_sorted(list->begin(), list->end(),
                               [](const auto &one, const auto &other) { return one->PID() < other->PID(); }));
    const auto isThis = [](const auto &one) { return one->PID() == ::getpid(); };
    ASSERT_EQ(std::count_if(list->begin(), list->end(), isThis), 1);
    const auto own = *std::find_if(list->begin(), list->end(), isThis);
    EXPECT_EQ(own->parentPID(), ::getppid());
    EXPECT_EQ(own->niceValue(), ::getpriority(PRIO_PROCESS, 0));
    EXPECT_EQ(own->name(), QStringLiteral("media_tests"));
}

TEST(KRProcess, processWithName_findsTheFirstOfExactlyThatName)
{
    const pid_t child = namedChild();
    const auto found = waitForName(QStringLiteral("a) (b é"));
    ASSERT_TRUE(found);
    EXPECT_EQ(found->PID(), child);
    EXPECT_EQ(found->parentPID(), ::getpid());
    EXPECT_EQ(found->niceValue(), 7);
    EXPECT_FALSE(KRProcess::processWithName(QStringLiteral("a) (b")));
    EXPECT_FALSE(KRProcess::processWithName(QString()));
    EXPECT_FALSE(KRProcess::processWithName(QStringLiteral("A) (B é")));

    EXPECT_EQ(found->waitUntilExit(), 0) << "it runs";
    ::kill(child, SIGKILL);
    siginfo_t information = {};
    ::waitid(P_PID, id_t(child), &information, WEXITED | WNOWAIT);
    EXPECT_EQ(found->waitUntilExit(), child);
    EXPECT_EQ(found->waitUntilExit(), -1) << "its status was taken";
}

TEST(KRProcess, record_isCopied)
{
    EXPECT_FALSE(KRProcess::initWithKinfo_proc(nullptr));
    kinfo_proc record{12, -20, "name", 34};
    const auto process = KRProcess::initWithKinfo_proc(&record);
    record = {};
    ASSERT_TRUE(process);
    EXPECT_EQ(process->PID(), 12);
    EXPECT_EQ(process->niceValue(), -20);
    EXPECT_EQ(process->name(), QStringLiteral("name"));
    EXPECT_EQ(process->parentPID(), 34);
}

TEST(KRProcess, waitUntilExit_leavesOtherChildrenAlone_forANumberThatIsNoProcess)
{
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(5);
    siginfo_t information = {};
    ASSERT_EQ(::waitid(P_PID, id_t(child), &information, WEXITED | WNOWAIT), 0);
    for (const std::int32_t number : {0, -1, -::getpgrp()}) {
        const kinfo_proc record{number, 0, "name", 1};
        EXPECT_EQ(KRProcess::initWithKinfo_proc(&record)->waitUntilExit(), -1) << number;
    }
    const kinfo_proc record{child, 0, "name", 1};
    EXPECT_EQ(KRProcess::initWithKinfo_proc(&record)->waitUntilExit(), child) << "its status was not taken";
}
