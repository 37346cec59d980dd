#pragma once

#include "platform/foundation/NSAssertionHandler.h"
#include "platform/foundation/OSStatus.h"
#include "tests/dvd/LoggedLines.h"
#include "tests/dvdplayback/SessionFixture.h"

#include <QStringList>
#include <QTimer>

#include <TessaronClassesUI/DVDController.h>
#include <cstdint>
#include <functional>
#include <memory>
#include <sys/types.h>

class QAction;

namespace Tessaron::Testing
{

/// Keeps what is reported, and returns.
class ReportKeeper : public NSAssertionHandler
{
public:
    void handleFailureInMethod(const QString &method, const void *object, const QString &file, int lineNumber,
                               const QString &description) override;

    QStringList descriptions;
    QString lastMethod;
    QString lastFile;
    const void *lastObject = nullptr;
    int lastLine = 0;
};

/// Clicks the only button of each alert that is shown while it lives, and keeps its texts.
class AlertCloser
{
public:
    AlertCloser();

    QStringList texts; ///< the message and the information of each alert in turn
    int criticalAlerts = 0;

private:
    void look();

    QTimer m_timer;
};

/// A process of its own that holds the session's lock of the test while it lives.
class OtherSession
{
public:
    explicit OtherSession(const QByteArray &lockFile);
    ~OtherSession();
    OtherSession(const OtherSession &) = delete;
    OtherSession &operator=(const OtherSession &) = delete;

private:
    pid_t m_process = -1;
};

/// Keeps the process from the bus of the system, unless the test has named one of its own; true.
bool leaveSystemBus();

[[nodiscard]] QString text(const char *ascii);

/// A controller with the windows of the interface file, and its log.
class ControllerTest : public SessionFixture
{
protected:
    ControllerTest();
    ~ControllerTest() override;

    [[nodiscard]] static QString path(const QByteArray &standard = "ntsc")
    {
        return QString::fromUtf8(disc(standard)) + QStringLiteral("/VIDEO_TS");
    }
    /// Runs the event loop until the condition holds.
    [[nodiscard]] static bool waitUntil(const std::function<bool()> &condition);
    [[nodiscard]] bool waitForState(std::int32_t state) const;
    /// Opens the disc as a folder and plays; true when its first menu stands still.
    [[nodiscard]] bool openAndShowMenu(const QByteArray &standard = "ntsc") const;
    /// The same, and plays a title from a chapter on.
    [[nodiscard]] bool openAndPlay(std::uint16_t title, std::uint16_t chapter) const;
    [[nodiscard]] static bool isMuted();
    /// What the windows' menus have for the action.
    [[nodiscard]] QAction *menuItem(const QString &action) const;
    /// The log, without what Qt says of the platform without a screen.
    [[nodiscard]] QStringList lines() const;
    /// The session's steps, and what else ends an operation.
    [[nodiscard]] QStringList steps() const;
    /// Failures are kept from now on instead of thrown.
    void keepReports() { NSAssertionHandler::setCurrentHandler(reports); }
    [[nodiscard]] QString title() const;
    [[nodiscard]] QString scene() const;

    const bool m_isAlone; ///< before the controller, which looks for the system's bus
    LoggedLines log;
    const std::shared_ptr<ReportKeeper> reports = std::make_shared<ReportKeeper>();
    std::shared_ptr<DVDController> controller;
};

} // namespace Tessaron::Testing
