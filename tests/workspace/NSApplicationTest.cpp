#include "platform/workspace/NSApplication.h"

#include "platform/foundation/MainThread.h"
#include "tests/support/EventLoop.h"

#include <QCoreApplication>
#include <QStringList>

#include <gtest/gtest.h>
#include <memory>
#include <thread>

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

class Application : public testing::Test
{
protected:
    [[nodiscard]] NSApplicationDelegate delegate(const QString &name)
    {
        NSApplicationDelegate delegate;
        delegate.applicationDidFinishLaunching = [this, name] { told << name + QStringLiteral(" launched"); };
        delegate.applicationShouldTerminate = [this, name] {
            told << name + QStringLiteral(" asked");
            return answer;
        };
        delegate.applicationWillTerminate = [this, name] { told << name + QStringLiteral(" ends"); };
        return delegate;
    }

    NSApplication &application = NSApplication::sharedApplication();
    NSApplicationTerminateReply answer = NSTerminateNow;
    QStringList told;
};

} // namespace

TEST_F(Application, delegate_isToldOfLaunchAndEnd)
{
    application.setDelegate(delegate(QStringLiteral("a")));
    EXPECT_EQ(told, QStringList());
    application.terminate(this);
    EXPECT_EQ(told, QStringList()) << "the event loop has not begun";
    EXPECT_EQ(QCoreApplication::exec(), 0);
    EXPECT_EQ(told, QStringList({QStringLiteral("a launched"), QStringLiteral("a asked"), QStringLiteral("a ends")}));
    application.setDelegate({});
}

TEST_F(Application, terminate_mayComeFromAnyThread)
{
    application.setDelegate(delegate(QStringLiteral("a")));
    std::jthread thread;
    performOnMainThread([&] { thread = std::jthread([&] { application.terminate(nullptr); }); });
    EXPECT_EQ(QCoreApplication::exec(), 0);
    EXPECT_EQ(told.last(), QStringLiteral("a ends"));
    application.setDelegate({});
}

TEST_F(Application, terminate_isTheDelegatesChoice)
{
    answer = NSTerminateCancel;
    application.setDelegate(delegate(QStringLiteral("a")));
    performOnMainThread([&] {
        application.terminate(nullptr);
        performOnMainThread([&] {
            EXPECT_EQ(told.last(), QStringLiteral("a asked"));
            answer = NSTerminateNow;
            application.terminate(nullptr);
        });
    });
    EXPECT_EQ(QCoreApplication::exec(), 0);
    EXPECT_EQ(told.count(QStringLiteral("a asked")), 2);
    application.setDelegate({});
}

TEST_F(Application, laterDelegate_isToldTheEndOnly)
{
    auto life = std::make_shared<int>();
    NSApplicationDelegate first = delegate(QStringLiteral("a"));
    first.context = CallbackContext(life);
    application.setDelegate(first);
    drainEventLoop();
    application.setDelegate(delegate(QStringLiteral("b")));
    performOnMainThread([&] { application.terminate(nullptr); });
    EXPECT_EQ(QCoreApplication::exec(), 0);
    application.setDelegate(first);
    life = nullptr;
    performOnMainThread([&] { application.terminate(nullptr); });
    EXPECT_EQ(QCoreApplication::exec(), 0);
    EXPECT_EQ(told, QStringList({QStringLiteral("a launched"), QStringLiteral("b asked"), QStringLiteral("b ends")}))
        << "one that has gone is not asked";
    application.setDelegate({});
}
