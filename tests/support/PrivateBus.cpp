#include "tests/support/PrivateBus.h"

#include <QFile>
#include <QProcess>

#include <gtest/gtest.h>

namespace Tessaron::Testing
{

namespace
{

constexpr const char *configuration =
    "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\" "
    "\"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">"
    "<busconfig><type>session</type><listen>%1</listen><auth>EXTERNAL</auth>"
    "<policy context=\"default\"><allow send_destination=\"*\" eavesdrop=\"true\"/>"
    "<allow eavesdrop=\"true\"/><allow own=\"*\"/></policy></busconfig>";

} // namespace

PrivateBus::PrivateBus()
    : m_daemon(std::make_unique<QProcess>())
{
    QFile file(m_folder.filePath(QStringLiteral("bus.conf")));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QString::fromLatin1(configuration).arg(QString::fromUtf8(address())).toUtf8());
    file.close();
    m_daemon->start(QStringLiteral("dbus-daemon"),
                    {QStringLiteral("--nofork"), QStringLiteral("--print-address"),
                     QStringLiteral("--config-file=") + file.fileName()});
    // The address is printed once the bus takes connections.
    EXPECT_TRUE(m_daemon->waitForReadyRead(30000)) << "dbus-daemon is a package of the tests";
    qputenv("DBUS_SESSION_BUS_ADDRESS", address());
}

PrivateBus::~PrivateBus()
{
    leaveSessionBus();
    m_daemon->kill();
    m_daemon->waitForFinished();
}

QByteArray PrivateBus::address() const
{
    return "unix:path=" + m_folder.filePath(QStringLiteral("bus")).toUtf8();
}

void leaveSessionBus()
{
    qunsetenv("DBUS_SESSION_BUS_ADDRESS");
    qunsetenv("XDG_RUNTIME_DIR");
}

} // namespace Tessaron::Testing
