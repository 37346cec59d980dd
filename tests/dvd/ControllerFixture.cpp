#include "tests/dvd/ControllerFixture.h"

#include "platform/dvdplayback/DVDPlayback.h"
#include "platform/dvdplayback/DVDSession.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QTest>

#include <TessaronClassesUI/VideoWindow.h>
#include <array>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace Tessaron::Testing
{

namespace
{

constexpr int patience = 20'000;

} // namespace

QString text(const char *ascii)
{
    return QString::fromLatin1(ascii);
}

void ReportKeeper::handleFailureInMethod(const QString &method, const void *object, const QString &file, int lineNumber,
                                         const QString &description)
{
    descriptions << description;
    lastMethod = method;
    lastFile = file;
    lastObject = object;
    lastLine = lineNumber;
}

AlertCloser::AlertCloser()
{
    QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { look(); });
    m_timer.start(10);
}

void AlertCloser::look()
{
    auto *const alert = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
    if (!alert)
        return;
    texts << alert->text() << alert->informativeText();
    criticalAlerts += int(alert->icon() == QMessageBox::Critical);
    EXPECT_EQ(alert->buttons().size(), 1);
    alert->buttons().constFirst()->click();
}

OtherSession::OtherSession(const QByteArray &lockFile)
{
    std::array<int, 2> ends = {-1, -1};
    EXPECT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    const UniqueDescriptor reading(ends[0]);
    UniqueDescriptor writing(ends[1]);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, writing.get(), STDOUT_FILENO);
    std::string program = "sh", option = "-c", file = lockFile.toStdString();
    std::string script = "exec 9>\"$0\"; flock 9 && echo held; exec sleep 600 >&-";
    const std::array<char *, 5> words = {program.data(), option.data(), script.data(), file.data(), nullptr};
    EXPECT_EQ(::posix_spawnp(&m_process, "sh", &actions, nullptr, words.data(), environ), 0);
    posix_spawn_file_actions_destroy(&actions);
    writing.reset();
    struct pollfd answer = {reading.get(), POLLIN, 0};
    EXPECT_EQ(::poll(&answer, 1, 30000), 1);
    EXPECT_NE(answer.revents & POLLIN, 0);
}

OtherSession::~OtherSession()
{
    if (m_process <= 0)
        return;
    ::kill(m_process, SIGKILL);
    ::waitpid(m_process, nullptr, 0);
}

bool leaveSystemBus()
{
    if (qEnvironmentVariableIsEmpty("DBUS_SYSTEM_BUS_ADDRESS"))
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus");
    return true;
}

ControllerTest::ControllerTest()
    : m_isAlone(leaveSystemBus())
    , controller(DVDController::sharedInstance())
{
}

ControllerTest::~ControllerTest()
{
    NSAssertionHandler::setCurrentHandler(reports);
    controller->applicationWillTerminate();
    controller = nullptr;
    DVDSession::instance().setDriveRegion(std::nullopt);
    DVDDispose();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    NSAssertionHandler::setCurrentHandler(nullptr);
}

bool ControllerTest::waitUntil(const std::function<bool()> &condition)
{
    return QTest::qWaitFor(condition, patience);
}

bool ControllerTest::waitForState(std::int32_t state) const
{
    return waitUntil([&] { return controller->dvdState() == state; });
}

bool ControllerTest::openAndShowMenu(const QByteArray &standard) const
{
    if (!controller->openMedia(path(standard), false))
        return false;
    controller->onPlay();
    return waitForState(kDVDStatePlayingStill);
}

bool ControllerTest::openAndPlay(std::uint16_t title, std::uint16_t chapterOfTitle) const
{
    if (!controller->openMedia(path(), false))
        return false;
    EXPECT_EQ(DVDSetChapter(title, chapterOfTitle), noErr);
    return waitForState(kDVDStatePlaying)
        && waitUntil([&] { return chapter() == std::pair<int, int>(title, chapterOfTitle); });
}

bool ControllerTest::isMuted()
{
    bool isMuted = false;
    EXPECT_EQ(DVDIsMuted(&isMuted), noErr);
    return isMuted;
}

QAction *ControllerTest::menuItem(const QString &action) const
{
    for (QAction *const item : controller->outlets().mVideoWindow->actions()) {
        if (item->property("action").toString() == action)
            return item;
    }
    ADD_FAILURE() << action.toStdString();
    return nullptr;
}

QStringList ControllerTest::lines() const
{
    QStringList lines = log.lines();
    lines.removeIf([](const QString &line) { return line.startsWith(QStringLiteral("This plugin does not support")); });
    return lines;
}

QStringList ControllerTest::steps() const
{
    QStringList steps;
    for (const QString &line : log.lines()) {
        if (line.startsWith(QStringLiteral("Step ")) || line == QStringLiteral("NOT VALID")
            || line.startsWith(QStringLiteral("DVDInitialize returned"))
            || line.startsWith(QStringLiteral("fatal error")))
            steps << line;
    }
    return steps;
}

QString ControllerTest::title() const
{
    return controller->outlets().mTitleText->text();
}

QString ControllerTest::scene() const
{
    return controller->outlets().mSceneText->text();
}

} // namespace Tessaron::Testing
