#include "app/ApplicationService.h"
#include "app/DesktopNotifier.h"
#include "app/DesktopPanel.h"

#include "tests/app/NotificationService.h"
#include "tests/support/EventLoop.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/RunProgram.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/DiscJobErrors.h>

#include <QDBusMessage>
#include <QFile>
#include <QTest>
#include <QWidget>

#include <gtest/gtest.h>
#include <optional>

using namespace Tessaron;
using namespace Tessaron::Desktop;
using namespace Tessaron::Testing;

namespace
{

class SessionBusTest : public testing::Test
{
protected:
    ~SessionBusTest() override
    {
        QDBusConnection::disconnectFromBus(QStringLiteral("program"));
        QDBusConnection::disconnectFromBus(QStringLiteral("desktop"));
    }
    [[nodiscard]] QDBusConnection connection(const QString &name) const
    {
        return QDBusConnection::connectToBus(QString::fromUtf8(bus.address()), name);
    }

    const TemporaryTree tree;
    const PrivateBus bus; // named in the environment of programs that are started
};

} // namespace

TEST_F(SessionBusTest, secondStart_givesItsFilesToTheFirst)
{
    ApplicationService service;
    ASSERT_TRUE(service.take(connection(QStringLiteral("program"))));
    std::optional<QList<QByteArray>> given;
    int activations = 0;
    QObject::connect(&service, &ApplicationService::filesGiven, &service,
                     [&](const QList<QByteArray> &paths) { given = paths; });
    QObject::connect(&service, &ApplicationService::activated, &service, [&] { ++activations; });
    const QByteArray first = tree.makeFile("100% \xC3\xA4.iso", "x");
    const QByteArray second = tree.makeFile("no text \xFF#?", "x");
    RunningProgram files(TESSARON_DESKTOP_PROGRAM, {"-platform", "offscreen", first, second});
    ASSERT_TRUE(runEventLoopUntil([&] { return given.has_value(); }));
    EXPECT_EQ(files.finish().status, 0);
    EXPECT_EQ(*given, (QList<QByteArray>{first, second}));
    EXPECT_EQ(activations, 1);
    given.reset();
    RunningProgram none(TESSARON_DESKTOP_PROGRAM, {"-platform", "offscreen"});
    ASSERT_TRUE(runEventLoopUntil([&] { return activations == 2; }));
    EXPECT_EQ(none.finish().status, 0);
    EXPECT_FALSE(given);
}

TEST_F(SessionBusTest, nameOnTheBus_isOneProcessS_untilItGoes)
{
    const QDBusConnection own = connection(QStringLiteral("program"));
    const QDBusConnection other = connection(QStringLiteral("desktop"));
    EXPECT_FALSE(ApplicationService::handOver(other, {"/tmp/x"})) << "there is no one to take it";
    {
        ApplicationService service;
        ASSERT_TRUE(service.take(own));
        ApplicationService second;
        EXPECT_FALSE(second.take(other));
    }
    ApplicationService later;
    EXPECT_TRUE(later.take(other));
    ApplicationService without;
    EXPECT_FALSE(without.take(QDBusConnection(QStringLiteral("no bus"))));
    EXPECT_FALSE(ApplicationService::handOver(QDBusConnection(QStringLiteral("no bus")), {}));
}

TEST_F(SessionBusTest, whatIsNoFile_bringsTheWindowUpAlone)
{
    ApplicationService service;
    ASSERT_TRUE(service.take(connection(QStringLiteral("program"))));
    QByteArray token;
    bool isGiven = false;
    QObject::connect(&service, &ApplicationService::activated, &service,
                     [&](const QByteArray &given) { token = given; });
    QObject::connect(&service, &ApplicationService::filesGiven, &service, [&] { isGiven = true; });
    QDBusMessage call =
        QDBusMessage::createMethodCall(QStringLiteral("org.tessaron.Desktop"), QStringLiteral("/org/tessaron/Desktop"),
                                       QStringLiteral("org.freedesktop.Application"), QStringLiteral("Open"));
    call << QStringList{QStringLiteral("burn:///"), QStringLiteral("file://elsewhere.invalid/x")}
         << QVariantMap{{QStringLiteral("activation-token"), QStringLiteral("leave")}};
    connection(QStringLiteral("desktop")).send(call);
    ASSERT_TRUE(runEventLoopUntil([&] { return !token.isEmpty(); }));
    EXPECT_EQ(token, "leave");
    EXPECT_FALSE(isGiven);
}

TEST_F(SessionBusTest, endOfWork_isTold_whereTheWindowIsNotActive)
{
    NotificationService desktop;
    QDBusConnection service = connection(QStringLiteral("desktop"));
    ASSERT_TRUE(service.registerObject(QStringLiteral("/org/freedesktop/Notifications"), &desktop,
                                       QDBusConnection::ExportScriptableContents));
    ASSERT_TRUE(service.registerService(QStringLiteral("org.freedesktop.Notifications")));
    QWidget window;
    DesktopNotifier notifier(window, connection(QStringLiteral("program")));
    int chosen = 0;
    QObject::connect(&notifier, &DesktopNotifier::chosen, &window, [&] { ++chosen; });
    JobOutcome outcome;
    outcome.summary = QStringLiteral("<b>.iso was saved.");
    notifier.tellOf(outcome);
    ASSERT_TRUE(runEventLoopUntil([&] { return desktop.shown.size() == 1; }));
    EXPECT_EQ(desktop.shown[0].text, QStringLiteral("&lt;b&gt;.iso was saved."));
    EXPECT_EQ(desktop.shown[0].hints[QStringLiteral("desktop-entry")].toString(),
              QStringLiteral("org.tessaron.Desktop"));
    EXPECT_EQ(desktop.shown[0].replaced, 0u);
    // Its number is known once a click is heard.
    ASSERT_TRUE(runEventLoopUntil([&] {
        Q_EMIT desktop.ActionInvoked(7, QStringLiteral("default"));
        return chosen > 0;
    }));
    outcome.error = discJobError(DiscJobErrorCode::Write, QStringLiteral("the disk is full"));
    notifier.tellOf(outcome);
    ASSERT_TRUE(runEventLoopUntil([&] { return desktop.shown.size() == 2; }));
    EXPECT_EQ(desktop.shown[1].replaced, 7u);
    EXPECT_NE(desktop.shown[1].title, desktop.shown[0].title);
    // Not for what the user has ended, and not in an active window.
    outcome.error = discJobCancellation();
    notifier.tellOf(outcome);
    window.show();
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    outcome.error = {};
    notifier.tellOf(outcome);
    window.hide();
    outcome.summary = QStringLiteral("last");
    ASSERT_TRUE(runEventLoopUntil([&] { return !window.isActiveWindow(); }));
    notifier.tellOf(outcome);
    ASSERT_TRUE(runEventLoopUntil([&] { return desktop.shown.size() == 3; }));
    EXPECT_EQ(desktop.shown[2].text, QStringLiteral("last"));
}

TEST_F(SessionBusTest, endOfWork_withoutADesktop_isTakenInSilence)
{
    QWidget window;
    DesktopNotifier notifier(window, connection(QStringLiteral("program")));
    notifier.tellOf(JobOutcome());
    DesktopNotifier(window, QDBusConnection(QStringLiteral("no bus"))).tellOf(JobOutcome());
    drainEventLoop();
}

TEST_F(SessionBusTest, serviceFile_namesTheProgramWithItsFolder)
{
    QFile installed(QStringLiteral(TESSARON_SERVICE_FILE));
    ASSERT_TRUE(installed.open(QIODevice::ReadOnly));
    const QByteArray text = installed.readAll();
    EXPECT_TRUE(text.startsWith("[D-BUS Service]\nName=org.tessaron.Desktop\nExec=/")) << text.constData();
    EXPECT_TRUE(text.endsWith("/tessaron-desktop\n")) << text.constData();
}
