#include "tests/media/LauncherFixture.h"

#include <QDir>

#include <csignal>
#include <sys/resource.h>
#include <thread>

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

class TaskLauncherFailure : public LauncherTest
{
protected:
    void expectNothingRuns()
    {
        EXPECT_TRUE(launcher->launchError());
        EXPECT_FALSE(launcher->launchError().localizedDescription().isEmpty());
        EXPECT_TRUE(runEventLoopUntil([] { return children().empty(); }));
        EXPECT_TRUE(events.empty());
    }
};

} // namespace

TEST_F(TaskLauncherFailure, launching_returns1_withoutArguments)
{
    EXPECT_EQ(launcher->launchTasksWithArguments({}), 1);
    expectNothingRuns();
}

TEST_F(TaskLauncherFailure, launching_returns2_forAnEmptyStage)
{
    for (const auto &arguments : {words({"|"}), words({"|", "/bin/ls"}), words({"/bin/ls", "|", "|", "/bin/ls"}),
                                  words({"/bin/ls", "|", "|"}), words({"ls", "|", "|"})}) {
        EXPECT_EQ(launcher->launchTasksWithArguments(arguments), 2);
        expectNothingRuns();
    }
}

TEST_F(TaskLauncherFailure, launching_returns3_forAToolThatIsNotThere)
{
    ASSERT_TRUE(QFile::exists(QStringLiteral("/usr/bin/sort")));
    for (const auto &arguments :
         {words({"sort"}), words({"/bin/echo", "a", "|", "sort"}), words({"/missing"}), words({"", "a"})}) {
        EXPECT_EQ(launcher->launchTasksWithArguments(arguments), 3);
        expectNothingRuns();
    }
}

TEST_F(TaskLauncherFailure, launching_withArguments_countsAsRunning_untilItIsTerminated)
{
    EXPECT_EQ(launcher->launchTasksWithArguments({}), 1);
    EXPECT_FALSE(launcher->isRunning());
    for (const auto &arguments : {words({"|"}), words({"/missing"}), words({"/"})}) {
        EXPECT_NE(launcher->launchTasksWithArguments(arguments), 0);
        EXPECT_TRUE(launcher->isRunning());
        launcher->suspend();
        EXPECT_TRUE(events.empty()) << "there is no task to suspend";
        launcher->terminate();
        EXPECT_FALSE(launcher->isRunning());
        EXPECT_EQ(launcher->terminationStatus(), taskLauncher::terminatedStatus);
        EXPECT_EQ(events, std::vector<std::string>{"end"}) << "a launch makes the end one that was not reported";
        events.clear();
    }
}

TEST_F(TaskLauncherFailure, launching_findsAFileInTheWorkingFolder)
{
    const QString before = QDir::currentPath();
    tree.makeFile("tool", "#!/bin/sh\necho here\n");
    tree.setMode("tool", 0755);
    QDir::setCurrent(tree.pathText());
    run(words({"tool"}));
    QDir::setCurrent(before);
    EXPECT_EQ(text, QStringLiteral("here\n"));
}

TEST_F(TaskLauncherFailure, launching_returns4AndKillsWhatWasStarted_whenAToolCannotBeExecuted)
{
    tree.makeFile("tool", "text");
    for (const QByteArray &tool : {tree.path("tool"), tree.path()}) {
        const int status =
            launcher->launchTasksWithArguments(words({"/bin/sleep", "1000", "|", tool.constData(), "|", "/bin/cat"}));
        EXPECT_EQ(status, 4);
        EXPECT_EQ(launcher->launchError().filePath().toUtf8(), tool);
        expectNothingRuns();
    }
    run(words({"/bin/echo", "a"}));
    EXPECT_FALSE(launcher->launchError());
    EXPECT_EQ(text, QStringLiteral("a\n"));
}

TEST_F(TaskLauncherFailure, launching_returns4_whileAPipelineRuns)
{
    ASSERT_EQ(launcher->launchTasksWithArguments(shell("sleep 0.3; echo first")), 0);
    EXPECT_EQ(launcher->launchTasksWithArguments(shell("echo second")), 4);
    EXPECT_TRUE(launcher->isRunning());
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(text, QStringLiteral("first\n"));
}

TEST_F(TaskLauncherFailure, launching_returns4_onAThreadWithoutEventLoop)
{
    int status = 0;
    std::thread([&] { status = taskLauncher::init()->launchTasksWithArguments(words({"/bin/true"})); }).join();
    EXPECT_EQ(status, 4);
}

TEST_F(TaskLauncherFailure, launching_returns4AndLeaksNothing_withTooFewDescriptors)
{
    drainEventLoop();
    const std::size_t before = openDescriptors();
    rlimit normal = {};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &normal), 0);
    int succeeded = 0;
    for (rlim_t limit = before; limit < before + 12; ++limit) {
        const rlimit few = {limit, normal.rlim_max};
        ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
        events.clear();
        const int status = launcher->launchTasksWithArguments(words({"/bin/true", "|", "/bin/true", "|", "/bin/true"}));
        ::setrlimit(RLIMIT_NOFILE, &normal);
        ASSERT_TRUE(status == 0 || status == 4) << status;
        if (status == 0) {
            ++succeeded;
            ASSERT_TRUE(waitForEnd());
        } else {
            events.clear();
            expectNothingRuns();
        }
        drainEventLoop();
        EXPECT_EQ(openDescriptors(), before) << limit;
    }
    EXPECT_GT(succeeded, 0);
    EXPECT_LT(succeeded, 12);
}

TEST_F(TaskLauncherFailure, end_isReportedWithoutAStatus_whereTheSystemTellsNone)
{
    const auto before = std::signal(SIGCHLD, SIG_IGN);
    for (int count = 0; count < 20; ++count) {
        events.clear();
        run(words({"/bin/true", "|", "/bin/sh", "-c", "cat; exit 5"}));
        EXPECT_EQ(launcher->terminationStatus(), -1);
    }
    std::signal(SIGCHLD, before);
}

TEST_F(TaskLauncherFailure, end_isReported_whenATaskIsKilledByOthers)
{
    const QByteArray script = "echo $$ >" + tree.path("number") + "; exec sleep 1000";
    ASSERT_EQ(launcher->launchTasksWithArguments(words({"/bin/echo", "a", "|", "/bin/sh", "-c", script.constData()})),
              0);
    ::kill(numberIn("number"), SIGKILL);
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(launcher->terminationStatus(), SIGKILL);
    EXPECT_TRUE(launcher->taskEnds().back().isBySignal);
}

TEST_F(TaskLauncherFailure, tasks_workWithoutStandardDescriptorsOfOurOwn)
{
    const int input = ::dup(0), output = ::dup(1);
    ::close(0);
    ::close(1);
    const int status = launcher->launchTasksWithArguments(words({"/bin/echo", "a", "|", "/bin/cat", "|", "/bin/cat"}));
    ::dup2(input, 0);
    ::dup2(output, 1);
    ::close(input);
    ::close(output);
    ASSERT_EQ(status, 0);
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(text, QStringLiteral("a\n"));
}
