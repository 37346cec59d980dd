#include "tests/support/PrivateBus.h"

#include "platform/foundation/UniqueDescriptor.h"

#include <QFile>

#include <array>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

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

/// Starts the daemon with a pipe as its standard output; -1 when it cannot be started. Not by means of Qt, whose way of
/// forking makes ThreadSanitizer blind for what orders the thread that does it.
pid_t startDaemon(const QByteArray &configurationPath, int output)
{
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    std::string program = "dbus-daemon", noFork = "--nofork", printAddress = "--print-address";
    std::string config = "--config-file=" + configurationPath.toStdString();
    const std::array<char *, 5> words = {program.data(), noFork.data(), printAddress.data(), config.data(), nullptr};
    pid_t daemon = -1;
    const int failure = ::posix_spawnp(&daemon, program.c_str(), &actions, nullptr, words.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    return failure == 0 ? daemon : -1;
}

} // namespace

PrivateBus::PrivateBus()
{
    QFile file(m_folder.filePath(QStringLiteral("bus.conf")));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QString::fromLatin1(configuration).arg(QString::fromUtf8(address())).toUtf8());
    file.close();
    std::array<int, 2> ends = {-1, -1};
    EXPECT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    const UniqueDescriptor reading(ends[0]);
    UniqueDescriptor writing(ends[1]);
    m_daemon = startDaemon(QFile::encodeName(file.fileName()), writing.get());
    EXPECT_GT(m_daemon, 0) << "dbus-daemon is a package of the tests";
    writing.reset();
    // The address is printed once the bus takes connections.
    struct pollfd answer = {reading.get(), POLLIN, 0};
    EXPECT_EQ(::poll(&answer, 1, 30000), 1);
    EXPECT_NE(answer.revents & POLLIN, 0) << "the daemon ended";
    qputenv("DBUS_SESSION_BUS_ADDRESS", address());
}

PrivateBus::~PrivateBus()
{
    leaveSessionBus();
    if (m_daemon <= 0)
        return;
    ::kill(m_daemon, SIGKILL);
    ::waitpid(m_daemon, nullptr, 0);
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
