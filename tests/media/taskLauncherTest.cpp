#include "platform/foundation/NSBundle.h"
#include "tests/media/LauncherFixture.h"
#include "tests/support/MeasurableMemory.h"
#include "tests/support/RunProgram.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QThread>

#include <csignal>
#include <fcntl.h>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

class TaskLauncher : public LauncherTest
{
};

/// Bytes that this process has in memory at most so far.
long peakMemory()
{
    rusage usage = {};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss * 1024;
}

} // namespace

TEST_F(TaskLauncher, launching_passesArgumentsAsTheyAre)
{
    QVariantList arguments = words({"/usr/bin/printf", "%s;", "a b", "$HOME", "*", "'", ""});
    arguments << QByteArray("\xff") << 128 << 44.5 << true;
    launcher->dontConvertDataToString(true);
    run(arguments);
    EXPECT_EQ(data, QByteArray("a b;$HOME;*;';;\xff;128;44.5;1;"));
    EXPECT_EQ(launcher->terminationStatus(), 0);
}

TEST_F(TaskLauncher, launching_connectsTheStages)
{
    run(words({"/bin/echo", "b\na\nb", "|", "/usr/bin/sort", "|", "/usr/bin/uniq", "-c", "|", "/bin/sed", "s/ *//"}));
    EXPECT_EQ(text, QStringLiteral("1 a\n2 b\n"));
    EXPECT_EQ(events, std::vector<std::string>{"end"});
    ASSERT_EQ(launcher->taskEnds().size(), 4u);
    for (const taskLauncher::TaskEnd &end : launcher->taskEnds())
        EXPECT_TRUE(end.hasEnded && !end.isBySignal && end.status == 0);
}

TEST_F(TaskLauncher, launching_leavesOutAnEmptyLastStage)
{
    run(words({"/bin/echo", "a", "|"}));
    EXPECT_EQ(text, QStringLiteral("a\n"));
    EXPECT_EQ(launcher->taskEnds().size(), 1u);
}

TEST_F(TaskLauncher, launching_expandsTheTilde)
{
    const QByteArray home = qgetenv("HOME");
    qputenv("HOME", tree.path());
    tree.makeFile("tool", "#!/bin/sh\necho \"$0 $*\"\n");
    tree.setMode("tool", 0755);
    run(words({"~/tool", "~", "~/a", "a~"}));
    qputenv("HOME", home);
    EXPECT_EQ(text.toUtf8(), tree.path("tool") + ' ' + tree.path() + ' ' + tree.path() + "/a a~\n");
}

TEST_F(TaskLauncher, launching_findsResourcesOfTheFramework)
{
    tree.makeFile("Resources/tool.sh", "#!/bin/sh\necho found\n");
    tree.setMode("Resources/tool.sh", 0755);
    NSBundle::registerBundle(frameworkBundleIdentifier, NSBundle::bundleWithPath(tree.pathText()));
    run(words({"tool.sh"}));
    EXPECT_EQ(text, QStringLiteral("found\n"));
}

TEST_F(TaskLauncher, launching_startsADeadEndedPipelineAgain)
{
    run(words({"/bin/echo", "one"}));
    events.clear();
    run(words({"/bin/sh", "-c", "exit 3"}));
    EXPECT_EQ(text, QStringLiteral("one\n"));
    EXPECT_EQ(launcher->terminationStatus(), 3);
    events.clear();
    ASSERT_EQ(launcher->launchTasksWithArguments(words({"/bin/sleep", "100"})), 0);
    launcher->terminate();
    EXPECT_EQ(launcher->terminationStatus(), taskLauncher::terminatedStatus);
    EXPECT_EQ(events, std::vector<std::string>{"end"});
}

TEST_F(TaskLauncher, tasks_shareAProcessGroupOfTheirOwn)
{
    // The group is field 5 behind the name, the session field 6.
    run(words({"/bin/cat", "/proc/self/stat", "|", "/bin/cat", "-", "/proc/self/stat"}));
    const QStringList lines = text.split(u'\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 2);
    const QStringList first = lines[0].split(u' '), second = lines[1].split(u' ');
    EXPECT_EQ(first[4], first[0]);
    EXPECT_EQ(second[4], first[0]);
    EXPECT_NE(second[0], first[0]);
    EXPECT_NE(first[4].toInt(), ::getpgrp());
    EXPECT_EQ(first[5].toInt(), ::getsid(0));
}

TEST_F(TaskLauncher, tasks_getNoDescriptorsAndNoBlockedOrIgnoredPipeSignal)
{
    const int leaking = ::open("/dev/null", O_RDONLY); // no O_CLOEXEC, as others may open
    ASSERT_GE(leaking, 0);
    const auto before = std::signal(SIGPIPE, SIG_IGN);
    sigset_t blocked, mask;
    ::sigemptyset(&blocked);
    ::sigaddset(&blocked, SIGTERM);
    ::pthread_sigmask(SIG_BLOCK, &blocked, &mask);
    run(words({"/bin/ls", "/proc/self/fd", "|", "/bin/cat", "-", "/proc/self/status"}));
    ::pthread_sigmask(SIG_SETMASK, &mask, nullptr);
    std::signal(SIGPIPE, before);
    ::close(leaking);
    EXPECT_TRUE(text.startsWith(QStringLiteral("0\n1\n2\n3\nName:"))) << "3 is the listed folder itself";
    const auto bitsOf = [&](const char *field) {
        const qsizetype begin = text.indexOf(QString::fromLatin1(field));
        EXPECT_GE(begin, 0);
        return text.mid(begin + 8, 16).toULongLong(nullptr, 16);
    };
    EXPECT_EQ(bitsOf("SigBlk:"), 0u);
    EXPECT_EQ(bitsOf("SigIgn:") & (1u << (SIGPIPE - 1)), 0u);
}

TEST_F(TaskLauncher, output_isThatOfBothStreamsOfTheLastTask)
{
    run(shell("echo out; echo err >&2"));
    EXPECT_TRUE(text.contains(QStringLiteral("out\n")) && text.contains(QStringLiteral("err\n")));
    EXPECT_EQ(text.size(), 8);
    EXPECT_TRUE(data.isEmpty());
}

TEST_F(TaskLauncher, output_behindTheEndOfOneStreamIsNotLost)
{
    for (const char *script :
         {"exec >&-; sleep 0.2; echo late >&2", "exec 2>&-; sleep 0.2; echo late",
          "(sleep 0.2; echo late) & exec 2>&-; exit 0", "(sleep 0.2; echo late >&2) & exec >&-; exit 0"}) {
        text.clear();
        events.clear();
        run(shell(script));
        EXPECT_EQ(text, QStringLiteral("late\n")) << script;
        EXPECT_EQ(launcher->terminationStatus(), 0) << script;
    }
}

TEST_F(TaskLauncher, errorsOfEarlierTasks_areHeard_whereTheDelegateWantsThem)
{
    QByteArray heard;
    taskLauncherDelegate delegate = recordingDelegate();
    delegate.taskLauncherDidReceiveErrorsOfEarlierTasks = [&](taskLauncher &, const QByteArray &piece) {
        heard += piece;
    };
    launcher->setDelegate(delegate);
    run(words({"/bin/sh", "-c", "echo one >&2; echo x", "|", "/bin/sh", "-c", "echo two >&2; cat", "|", "/bin/sh", "-c",
               "cat; echo three >&2"}));
    EXPECT_TRUE(heard == "one\ntwo\n" || heard == "two\none\n") << "they run side by side: " << heard.toStdString();
    EXPECT_EQ(text.size(), 8) << text.toStdString();
    EXPECT_TRUE(text.contains(QStringLiteral("three\n")) && text.contains(QStringLiteral("x\n")));
    EXPECT_EQ(events, std::vector<std::string>{"end"});
}

TEST_F(TaskLauncher, errorsOfAnEarlierTask_thatRunsOn_doNotHoldUpTheEnd)
{
    QByteArray heard;
    taskLauncherDelegate delegate = recordingDelegate();
    delegate.taskLauncherDidReceiveErrorsOfEarlierTasks = [&](taskLauncher &, const QByteArray &piece) {
        heard += piece;
    };
    launcher->setDelegate(delegate);
    run(words({"/bin/sh", "-c", "echo why >&2; echo x; exec sleep 1000", "|", "/bin/sh", "-c", "read line"}));
    EXPECT_EQ(heard, QByteArray("why\n"));
    EXPECT_FALSE(launcher->taskEnds().at(0).hasEnded);
}

TEST_F(TaskLauncher, end_isNotReported_whileTheLastTaskRunsWithoutStreams)
{
    QElapsedTimer timer;
    timer.start();
    run(shell("exec >&- 2>&-; sleep 0.5; exit 7"));
    EXPECT_GE(timer.elapsed(), 450);
    EXPECT_EQ(launcher->terminationStatus(), 7);
}

TEST_F(TaskLauncher, output_isDeliveredWhole_whenTheTaskEndsAtOnce)
{
    launcher->dontConvertDataToString(true);
    run(shell("head -c 300000 /dev/zero; head -c 300000 /dev/zero >&2"));
    EXPECT_EQ(data.size(), 600000);
}

TEST_F(TaskLauncher, characters_arriveWhole_whenTheyAreSplit)
{
    run(shell("printf 'a\\303'; sleep 0.2; printf '\\251\\360\\237'; sleep 0.2; printf '\\231\\202b\\342\\202'"));
    EXPECT_EQ(text, QString::fromUtf8("aé🙂b") + QChar(0xFFFD));
}

TEST_F(TaskLauncher, output_isNotLost_whenTextIsNotWantedAnyMore)
{
    taskLauncherDelegate delegate = recordingDelegate();
    delegate.taskLauncherDidReceiveNewString = [this](taskLauncher &self, const QString &string) {
        text += string;
        self.dontConvertDataToString(true);
    };
    launcher->setDelegate(delegate);
    run(shell("printf 'a\\303'; sleep 0.2; printf '\\251b'"));
    EXPECT_EQ(text, QStringLiteral("a"));
    EXPECT_EQ(data,
              QByteArray("\xC3\xA9"
                         "b"));
}

TEST_F(TaskLauncher, aTaskThatFloodsItsErrorStream_takesNoMemory)
{
    qint64 bytes = 0;
    taskLauncherDelegate delegate = recordingDelegate();
    delegate.taskLauncherDidReceiveNewData = [&bytes](taskLauncher &, const QByteArray &piece) {
        bytes += piece.size();
    };
    launcher->setDelegate(delegate);
    launcher->dontConvertDataToString(true);
    const long before = peakMemory();
    run(shell("head -c 1G /dev/zero >&2; echo done"));
    EXPECT_EQ(bytes, (qint64(1) << 30) + 5);
    if (memoryIsMeasurable) {
        EXPECT_LT(peakMemory() - before, 8 << 20);
    }
}

TEST_F(TaskLauncher, anEarlierTaskThatFloodsItsErrorStream_takesNoMemory_andHoldsNothingUp)
{
    qint64 bytes = 0;
    taskLauncherDelegate delegate = recordingDelegate();
    delegate.taskLauncherDidReceiveErrorsOfEarlierTasks = [&bytes](taskLauncher &, const QByteArray &piece) {
        bytes += piece.size();
    };
    launcher->setDelegate(delegate);
    const long before = peakMemory();
    run(words({"/bin/sh", "-c", "head -c 1G /dev/zero >&2; echo done", "|", "/bin/cat"}));
    EXPECT_EQ(text, QStringLiteral("done\n"));
    EXPECT_EQ(bytes, qint64(1) << 30);
    if (memoryIsMeasurable) {
        EXPECT_LT(peakMemory() - before, 8 << 20);
    }
}

TEST_F(TaskLauncher, aTaskThatFloods_doesNotKeepOtherEventsAway)
{
    ASSERT_EQ(launcher->launchTasksWithArguments(words({"/usr/bin/yes"})), 0);
    QElapsedTimer timer;
    timer.start();
    int turns = 0;
    EXPECT_TRUE(runEventLoopUntil([&] { return ++turns > 100; }));
    EXPECT_LT(timer.elapsed(), 5000);
    launcher->terminate();
}

TEST_F(TaskLauncher, terminating_killsTasksThatIgnoreSignals_andWhatTheyStarted)
{
    const QByteArray script = "trap '' TERM INT HUP; sleep 1000 & echo $! >" + tree.path("grandchild") + "; echo $$ >"
        + tree.path("child") + "; while :; do sleep 1000; done";
    ASSERT_EQ(launcher->launchTasksWithArguments(shell(script)), 0);
    const int child = numberIn("child"), grandchild = numberIn("grandchild");
    QElapsedTimer timer;
    timer.start();
    launcher->terminate();
    EXPECT_LT(timer.elapsed(), 200) << "nothing is waited for";
    EXPECT_EQ(events, std::vector<std::string>{"end"}) << "told before terminate() returns";
    EXPECT_FALSE(launcher->isRunning());
    EXPECT_EQ(launcher->terminationStatus(), taskLauncher::terminatedStatus);
    EXPECT_EQ(taskLauncher::terminatedStatus, -7654312);
    EXPECT_TRUE(runEventLoopUntil([&] { return stateOf(child) == 0 && stateOf(grandchild) == 0; }));
    launcher->terminate();
    EXPECT_EQ(events.size(), 1u);
}

TEST_F(TaskLauncher, terminating_keepsTheStatus_afterANormalEnd)
{
    run(shell("exit 5"));
    launcher->terminate();
    EXPECT_EQ(launcher->terminationStatus(), 5);
    EXPECT_EQ(events.size(), 1u);
}

TEST_F(TaskLauncher, terminating_reportsTheEndOnce_whenNothingWasLaunched)
{
    launcher->terminate();
    launcher->terminate();
    EXPECT_EQ(events, std::vector<std::string>{"end"});
    EXPECT_EQ(launcher->terminationStatus(), taskLauncher::terminatedStatus);
}

TEST_F(TaskLauncher, normalEnd_killsEarlierTasks)
{
    const QByteArray script = "echo $$ >" + tree.path("first") + "; exec sleep 1000";
    run(words({"/bin/sh", "-c", script, "|", "/bin/true"}));
    EXPECT_EQ(launcher->terminationStatus(), 0);
    const int first = numberIn("first");
    EXPECT_TRUE(runEventLoopUntil([&] { return stateOf(first) == 0; }));
    ASSERT_EQ(launcher->taskEnds().size(), 2u);
    EXPECT_FALSE(launcher->taskEnds()[0].hasEnded);
    EXPECT_TRUE(launcher->taskEnds()[1].hasEnded);
}

TEST_F(TaskLauncher, aTaskEndedByASignal_hasItsNumberAsStatus)
{
    run(shell("kill -SEGV $$"));
    EXPECT_EQ(launcher->terminationStatus(), SIGSEGV);
    EXPECT_TRUE(launcher->taskEnds()[0].isBySignal);
}

TEST_F(TaskLauncher, suspending_stopsAllTasksAndTellsOnce_resumingLetsThemGoOn)
{
    const QByteArray first = "echo $$ >" + tree.path("first") + "; exec sleep 1000";
    const QByteArray second = "echo $$ >" + tree.path("second") + "; exec sleep 0.3";
    ASSERT_EQ(launcher->launchTasksWithArguments(words({"/bin/sh", "-c", first, "|", "/bin/sh", "-c", second})), 0);
    const int one = numberIn("first"), other = numberIn("second");
    launcher->resume();
    EXPECT_TRUE(events.empty()) << "nothing is suspended";
    launcher->suspend();
    launcher->suspend();
    EXPECT_EQ(events, std::vector<std::string>{"suspend"});
    EXPECT_TRUE(launcher->isSuspended() && launcher->isRunning());
    EXPECT_TRUE(runEventLoopUntil([&] { return stateOf(one) == 'T' && stateOf(other) == 'T'; }));
    EXPECT_FALSE(runEventLoopUntil([&] { return events.size() > 1; }, std::chrono::milliseconds(500)));
    launcher->resume();
    launcher->resume();
    EXPECT_FALSE(launcher->isSuspended());
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(events, (std::vector<std::string>{"suspend", "resume", "end"}));
    EXPECT_EQ(launcher->terminationStatus(), 0);
    launcher->suspend();
    EXPECT_EQ(events.size(), 3u) << "nothing runs any more";
}

/// The signals that a launcher sends, in their order: this program once more, watched by strace.
TEST_F(TaskLauncher, suspending_beginsWithTheLastTask_resumingWithTheFirst)
{
    if (qEnvironmentVariableIsSet("TESSARON_SENDS_SIGNALS")) {
        const auto sleeper = [](const QByteArray &file) {
            return words({"/bin/sh", "-c", ("echo $$ >" + file + "; exec sleep 1000").constData()});
        };
        const QByteArray folder = qgetenv("TESSARON_SENDS_SIGNALS");
        QVariantList arguments = sleeper(folder + "/1");
        for (const char *name : {"/2", "/3"})
            arguments << QStringLiteral("|") << sleeper(folder + name);
        ASSERT_EQ(launcher->launchTasksWithArguments(arguments), 0);
        for (const char *name : {"/1", "/2", "/3"})
            ASSERT_TRUE(runEventLoopUntil([&] {
                QFile file(QString::fromUtf8(folder + name));
                return file.open(QIODevice::ReadOnly) && file.readAll().endsWith('\n');
            }));
        launcher->suspend();
        launcher->resume();
        return;
    }
    // LeakSanitizer cannot look for leaks in a program that is watched.
    const ProgramRun strace =
        runProgram("env",
                   {"TESSARON_SENDS_SIGNALS=" + tree.path(), "LSAN_OPTIONS=detect_leaks=0", "strace", "-qq",
                    "--decode-fds=pidfd", "-e", "trace=pidfd_send_signal", "-e", "signal=none", "-o", tree.path("log"),
                    QCoreApplication::applicationFilePath().toUtf8(),
                    "--gtest_filter=TaskLauncher.suspending_beginsWithTheLastTask_resumingWithTheFirst"});
    ASSERT_EQ(strace.status, 0) << strace.output.constData() << strace.errors.constData();
    std::string order;
    for (const QByteArray &line : tree.contents("log").split('\n')) {
        for (const char *name : {"1", "2", "3"}) {
            if (line.contains("<pid:" + tree.contents(name).trimmed() + '>'))
                order += std::string(name) + (line.contains("SIGSTOP") ? 's' : line.contains("SIGCONT") ? 'c' : 'k');
        }
    }
    EXPECT_EQ(order.substr(0, 12), "3s2s1s1c2c3c") << tree.contents("log").constData();
}

TEST_F(TaskLauncher, terminating_resumesFirst)
{
    ASSERT_EQ(launcher->launchTasksWithArguments(words({"/bin/sleep", "1000"})), 0);
    launcher->suspend();
    launcher->terminate();
    EXPECT_EQ(events, (std::vector<std::string>{"suspend", "resume", "end"}));
    EXPECT_EQ(launcher->terminationStatus(), taskLauncher::terminatedStatus);
    EXPECT_TRUE(runEventLoopUntil([] { return children().empty(); }));
}

TEST_F(TaskLauncher, delegate_mayTerminate_whenItHearsOfTheResuming)
{
    taskLauncherDelegate delegate = recordingDelegate();
    delegate.taskLauncherTaskDidResume = [this](taskLauncher &self) {
        events.emplace_back("resume");
        self.terminate();
    };
    launcher->setDelegate(delegate);
    ASSERT_EQ(launcher->launchTasksWithArguments(words({"/bin/sleep", "1000"})), 0);
    launcher->suspend();
    launcher->terminate();
    EXPECT_EQ(events, (std::vector<std::string>{"suspend", "resume", "end"}));
    ASSERT_EQ(launcher->taskEnds().size(), 1u);
    EXPECT_FALSE(launcher->taskEnds()[0].hasEnded);
}

TEST_F(TaskLauncher, delegate_mayLetGoOfTheLauncher_inEachCallback)
{
    for (const char *where : {"text", "errors", "end", "suspend"}) {
        std::shared_ptr<taskLauncher> own = taskLauncher::init();
        bool isGone = false;
        const auto letGo = [&] {
            own.reset();
            isGone = true;
        };
        taskLauncherDelegate delegate;
        const std::string place = where;
        delegate.taskLauncherDidReceiveNewString = [&](taskLauncher &, const QString &) {
            if (place == "text")
                letGo();
        };
        delegate.taskLauncherDidReceiveErrorsOfEarlierTasks = [&](taskLauncher &, const QByteArray &) {
            if (place == "errors")
                letGo();
        };
        delegate.taskLauncherTaskDidEnd = [&](taskLauncher &) { letGo(); };
        delegate.taskLauncherTaskDidSuspend = [&](taskLauncher &) { letGo(); };
        own->setDelegate(delegate);
        ASSERT_EQ(own->launchTasksWithArguments(
                      words({"/bin/sh", "-c", "echo e >&2", "|", "/bin/sh", "-c", "sleep 0.1; echo a; sleep 0.1"})),
                  0);
        if (place == "suspend")
            own->suspend();
        EXPECT_TRUE(runEventLoopUntil([&] { return isGone; })) << where;
        EXPECT_TRUE(runEventLoopUntil([] { return children().empty(); })) << where;
    }
}

TEST_F(TaskLauncher, delegate_mayLaunchAgain_whenItHearsOfTheEnd)
{
    taskLauncherDelegate delegate = recordingDelegate();
    delegate.taskLauncherTaskDidEnd = [this](taskLauncher &self) {
        events.emplace_back("end");
        if (events.size() < 3) {
            EXPECT_EQ(self.launchTasksWithArguments(words({"/bin/echo", "again"})), 0);
            EXPECT_TRUE(self.isRunning());
        }
    };
    launcher->setDelegate(delegate);
    ASSERT_EQ(launcher->launchTasksWithArguments(words({"/bin/sleep", "1000"})), 0);
    launcher->terminate();
    EXPECT_TRUE(launcher->isRunning()) << "the second launch, which the end of the first one has made";
    ASSERT_TRUE(runEventLoopUntil([this] { return events.size() == 3; }));
    EXPECT_EQ(text, QStringLiteral("again\nagain\n"));
    EXPECT_EQ(launcher->terminationStatus(), 0);
    EXPECT_FALSE(launcher->isRunning());
}

TEST_F(TaskLauncher, delegate_mayHaveNoFunctions)
{
    launcher->setDelegate({});
    ASSERT_EQ(launcher->launchTasksWithArguments(shell("echo out; echo err >&2; exit 4")), 0);
    launcher->suspend();
    launcher->resume();
    ASSERT_TRUE(runEventLoopUntil([this] { return !launcher->isRunning(); }));
    EXPECT_EQ(launcher->terminationStatus(), 4);
}

TEST_F(TaskLauncher, delegate_isSilent_onceItsContextIsGone)
{
    auto context = std::make_shared<int>();
    taskLauncherDelegate delegate = recordingDelegate();
    delegate.context = std::shared_ptr<const void>(context);
    launcher->setDelegate(delegate);
    context.reset();
    ASSERT_EQ(launcher->launchTasksWithArguments(shell("echo a")), 0);
    EXPECT_TRUE(runEventLoopUntil([&] { return !launcher->isRunning(); }));
    EXPECT_TRUE(text.isEmpty() && events.empty());
}

TEST_F(TaskLauncher, callbacks_arriveOnTheThreadThatLaunched)
{
    const Qt::HANDLE mainThread = QThread::currentThreadId();
    Qt::HANDLE heardOn = nullptr;
    QString heard;
    bool hasEnded = false;
    std::jthread thread([&] {
        QEventLoop loop;
        const std::shared_ptr<taskLauncher> own = taskLauncher::init();
        taskLauncherDelegate delegate;
        delegate.taskLauncherDidReceiveNewString = [&](taskLauncher &, const QString &string) { heard += string; };
        delegate.taskLauncherTaskDidEnd = [&](taskLauncher &) {
            heardOn = QThread::currentThreadId();
            hasEnded = true;
            loop.quit();
        };
        own->setDelegate(delegate);
        if (own->launchTasksWithArguments(words({"/bin/echo", "a"})) == 0)
            loop.exec();
    });
    thread.join();
    EXPECT_TRUE(hasEnded);
    EXPECT_EQ(heard, QStringLiteral("a\n"));
    EXPECT_NE(heardOn, mainThread);
}

TEST_F(TaskLauncher, destroying_killsTheTasksInSilence)
{
    ASSERT_EQ(launcher->launchTasksWithArguments(words({"/bin/sleep", "1000", "|", "/bin/sleep", "1000"})), 0);
    EXPECT_FALSE(children().empty());
    launcher.reset();
    EXPECT_TRUE(runEventLoopUntil([] { return children().empty(); }));
    EXPECT_TRUE(events.empty());
}

TEST_F(TaskLauncher, manyLaunches_leaveNeitherDescriptorsNorChildren)
{
    const int launches =
        qEnvironmentVariableIsSet("TESSARON_LAUNCHES") ? qEnvironmentVariableIntValue("TESSARON_LAUNCHES") : 500;
    run(words({"/bin/true"}));
    drainEventLoop();
    const std::size_t before = openDescriptors();
    for (int count = 0; count < launches; ++count) {
        events.clear();
        run(words({"/bin/true", "|", "/bin/true"}));
        if (HasFatalFailure())
            return;
    }
    drainEventLoop();
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_TRUE(runEventLoopUntil([] { return children().empty(); }));
}
