#include "platform/foundation/NSDistributedNotificationCenter.h"
#include "platform/foundation/NSNotificationCenter.h"
#include "tests/media/LauncherFixture.h"
#include "tests/support/RunProgram.h"

#include <QEventLoop>
#include <QThread>

#include <ctime>
#include <thread>

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

class TaskLauncherControl : public LauncherTest
{
protected:
    void launchSleeper() { ASSERT_EQ(launcher->launchTasksWithArguments(words({"/bin/sleep", "1000"})), 0); }
};

} // namespace

TEST_F(TaskLauncherControl, identifier_isTheTimeOfItsFirstUse)
{
    const std::time_t before = std::time(nullptr);
    const std::int32_t uid = launcher->uid();
    EXPECT_GE(uid, before);
    EXPECT_LE(uid, std::time(nullptr));
    while (std::time(nullptr) == uid)
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(launcher->uid(), uid);
    EXPECT_NE(taskLauncher::init()->uid(), uid);
}

TEST_F(TaskLauncherControl, notificationsOfTheProcess_controlTheLauncherThatTheyAreAbout)
{
    NSNotificationCenter &center = NSNotificationCenter::defaultCenter();
    launchSleeper();
    const QString uid = QString::number(launcher->uid());
    for (const QString &other : {QString(), QStringLiteral("1"), uid + u'0'}) {
        for (const QString &name : {zelPauseTasks, zelResumeTasks, zelKillTasks})
            center.postNotificationName(name, other);
    }
    drainEventLoop();
    EXPECT_TRUE(events.empty()) << "these are about others";
    center.postNotificationName(QStringLiteral("zelPauseTasks"), uid);
    center.postNotificationName(QStringLiteral("zelPauseTasks"), uid);
    EXPECT_EQ(events, std::vector<std::string>{"suspend"}) << "at once on the same thread";
    center.postNotificationName(QStringLiteral("zelResumeTasks"), uid);
    std::thread([&] { center.postNotificationName(QStringLiteral("zelKillTasks"), uid); }).join();
    EXPECT_EQ(events.size(), 2u) << "another thread's are heard by the event loop";
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(events, (std::vector<std::string>{"suspend", "resume", "end"}));
    EXPECT_EQ(launcher->terminationStatus(), taskLauncher::terminatedStatus);
}

TEST_F(TaskLauncherControl, notificationsOfOtherProcesses_controlTheLauncherThatTheyAreAbout)
{
    const PrivateBus bus;
    launchSleeper();
    const QString uid = QString::number(launcher->uid());
    const auto post = [](const QString &name, const QString &object) {
        const ProgramRun gdbus =
            runProgram("gdbus",
                       {"emit", "--session", "--object-path", "/org/tessaron/DistributedNotifications", "--signal",
                        "org.tessaron.DistributedNotifications.Posted", "'" + name.toUtf8() + "'",
                        "'" + object.toUtf8() + "'", "@a{sv} {}"});
        EXPECT_EQ(gdbus.status, 0) << gdbus.errors.constData();
    };
    post(QStringLiteral("zelKillTasks"), QStringLiteral("12"));
    post(QStringLiteral("zelKillTasks"), {});
    post(QStringLiteral("zelPauseTasks"), uid);
    ASSERT_TRUE(runEventLoopUntil([&] { return !events.empty(); }));
    EXPECT_TRUE(launcher->isSuspended());
    post(QStringLiteral("zelResumeTasks"), uid);
    ASSERT_TRUE(runEventLoopUntil([&] { return events.size() == 2; }));
    post(QStringLiteral("zelKillTasks"), uid);
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(events, (std::vector<std::string>{"suspend", "resume", "end"}));
}

TEST_F(TaskLauncherControl, notifications_areNotHeard_beforeTheIdentifierWasAskedFor)
{
    launchSleeper();
    NSNotificationCenter::defaultCenter().postNotificationName(zelKillTasks, QString::number(std::time(nullptr)));
    NSNotificationCenter::defaultCenter().postNotificationName(zelKillTasks, QStringLiteral("0"));
    drainEventLoop();
    EXPECT_TRUE(launcher->isRunning());
    EXPECT_TRUE(events.empty());
}

TEST_F(TaskLauncherControl, notifications_reachALauncherOfAnotherThreadThere)
{
    const PrivateBus bus;
    std::atomic<std::int32_t> uid = 0;
    Qt::HANDLE heardOn = nullptr, ownThread = nullptr;
    bool hasSuspended = false;
    std::atomic<bool> isOver = false;
    std::jthread thread([&] {
        ownThread = QThread::currentThreadId();
        QEventLoop loop;
        const std::shared_ptr<taskLauncher> own = taskLauncher::init();
        taskLauncherDelegate delegate;
        delegate.taskLauncherTaskDidSuspend = [&](taskLauncher &) { hasSuspended = true; };
        delegate.taskLauncherTaskDidEnd = [&](taskLauncher &) {
            heardOn = QThread::currentThreadId();
            loop.quit();
        };
        own->setDelegate(delegate);
        if (own->launchTasksWithArguments(words({"/bin/sleep", "1000"})) == 0) {
            uid = own->uid();
            loop.exec();
        }
        isOver = true;
    });
    ASSERT_TRUE(runEventLoopUntil([&] { return uid != 0; }));
    drainEventLoop(); // the bus is observed by this thread
    NSNotificationCenter::defaultCenter().postNotificationName(zelPauseTasks, QString::number(uid));
    EXPECT_FALSE(
        NSDistributedNotificationCenter::defaultCenter().postNotificationName(zelKillTasks, QString::number(uid)));
    EXPECT_TRUE(runEventLoopUntil([&] { return isOver.load(); }));
    thread.join();
    EXPECT_TRUE(hasSuspended);
    EXPECT_EQ(heardOn, ownThread);
    drainEventLoop();
}
