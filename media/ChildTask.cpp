#include "media/ChildTask.h"

#include "platform/foundation/FileSystemRepresentation.h"

#include <QAbstractEventDispatcher>
#include <QSocketNotifier>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <memory>
#include <spawn.h>
#include <sys/eventfd.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace Tessaron
{

namespace
{

/// Ignoring these is a choice of this process, not of the programs that it starts: one that writes into a pipe relies
/// on the signal that comes when its reader is gone.
constexpr int signalsWithDefaultAction[] = {SIGPIPE, SIGXFSZ, SIGCHLD};

// The header <sys/pidfd.h> of glibc 2.36 cannot be used from C++: it declares these two with C++ linkage.
int openProcess(pid_t identifier)
{
    return int(::syscall(SYS_pidfd_open, identifier, 0));
}

void sendSignalTo(int process, int number)
{
    ::syscall(SYS_pidfd_send_signal, process, number, nullptr, 0);
}

/// The attributes and file actions of posix_spawn(3), owned. The errno value of the first failure is kept.
class SpawnSettings
{
public:
    SpawnSettings()
    {
        ::posix_spawnattr_init(&m_attributes);
        ::posix_spawn_file_actions_init(&m_actions);
    }
    ~SpawnSettings()
    {
        ::posix_spawnattr_destroy(&m_attributes);
        ::posix_spawn_file_actions_destroy(&m_actions);
    }
    SpawnSettings(const SpawnSettings &) = delete;
    SpawnSettings &operator=(const SpawnSettings &) = delete;

    void setSignalsAndGroup(pid_t group)
    {
        sigset_t signals;
        ::sigemptyset(&signals);
        keep(::posix_spawnattr_setsigmask(&m_attributes, &signals));
        for (const int number : signalsWithDefaultAction)
            ::sigaddset(&signals, number);
        keep(::posix_spawnattr_setsigdefault(&m_attributes, &signals));
        keep(::posix_spawnattr_setpgroup(&m_attributes, group));
        keep(::posix_spawnattr_setflags(&m_attributes,
                                        POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP));
    }
    void setDescriptor(int number, int source)
    {
        if (source >= 0)
            keep(::posix_spawn_file_actions_adddup2(&m_actions, source, number));
        else if (number == STDIN_FILENO && ::isatty(number) != 0)
            // A process group of its own that reads from the terminal would be stopped.
            keep(::posix_spawn_file_actions_addopen(&m_actions, number, "/dev/null", O_RDONLY, 0));
    }
    void closeAllOthers() { keep(::posix_spawn_file_actions_addclosefrom_np(&m_actions, STDERR_FILENO + 1)); }

    /// The errno value, 0 when it was started.
    [[nodiscard]] int spawn(const QList<QByteArray> &arguments, pid_t *identifier) const
    {
        if (m_failure != 0)
            return m_failure;
        std::vector<char *> words;
        for (const QByteArray &argument : arguments)
            words.push_back(const_cast<char *>(argument.constData())); // as the interface has it; it is not written to
        words.push_back(nullptr);
        return ::posix_spawn(identifier, words.front(), &m_actions, &m_attributes, words.data(), environ);
    }

private:
    void keep(int failure) { m_failure = m_failure != 0 ? m_failure : failure; }

    posix_spawnattr_t m_attributes;
    posix_spawn_file_actions_t m_actions;
    int m_failure = 0;
};

} // namespace

ChildTask::ChildTask(pid_t identifier, UniqueDescriptor descriptor)
    : m_identifier(identifier)
    , m_descriptor(std::move(descriptor))
{
}

ChildTask::~ChildTask()
{
    siginfo_t information = {};
    if (m_descriptor)
        ::waitid(P_PIDFD, id_t(m_descriptor.get()), &information, WEXITED | WNOHANG);
}

Result<ChildTask> ChildTask::launch(const Order &order)
{
    SpawnSettings settings;
    settings.setSignalsAndGroup(order.processGroup);
    settings.setDescriptor(STDIN_FILENO, order.standardInput);
    settings.setDescriptor(STDOUT_FILENO, order.standardOutput);
    settings.setDescriptor(STDERR_FILENO, order.standardError);
    settings.closeAllOthers();
    pid_t identifier = -1;
    const QString path = stringWithFileSystemRepresentation(order.arguments.first());
    int failure = settings.spawn(order.arguments, &identifier);
    if (failure == EPERM && order.processGroup != 0) {
        settings.setSignalsAndGroup(0);
        failure = settings.spawn(order.arguments, &identifier);
    }
    if (failure != 0)
        return NSError::errorWithErrno(failure, path);
    UniqueDescriptor descriptor(openProcess(identifier));
    if (!descriptor && errno == ESRCH) {
        // This process ignores SIGCHLD, so that the child, which has ended, is not kept until its status is taken.
        ChildTask ended(identifier, UniqueDescriptor(::eventfd(1, EFD_CLOEXEC)));
        ended.m_end = End();
        return ended;
    }
    if (!descriptor) {
        failure = errno;
        // A child whose status was not asked for keeps its number: this can reach it alone.
        siginfo_t information = {};
        if (::waitid(P_PID, id_t(identifier), &information, WEXITED | WNOHANG | WNOWAIT) == 0) {
            ::kill(identifier, SIGKILL);
            ::waitid(P_PID, id_t(identifier), &information, WEXITED);
        }
        return NSError::errorWithErrno(failure, path);
    }
    return ChildTask(identifier, std::move(descriptor));
}

/// Where this process ignores SIGCHLD, the number of a child that has ended may be another process's by now.
bool ChildTask::isOurs() const
{
    siginfo_t information = {};
    return ::waitid(P_PIDFD, id_t(m_descriptor.get()), &information, WEXITED | WNOHANG | WNOWAIT) == 0;
}

std::optional<ChildTask::End> ChildTask::end()
{
    if (m_end)
        return m_end;
    siginfo_t information = {};
    if (::waitid(P_PIDFD, id_t(m_descriptor.get()), &information, WEXITED | WNOHANG | WNOWAIT) != 0)
        m_end = End();
    else if (information.si_pid != 0)
        m_end = End{information.si_status, information.si_code != CLD_EXITED};
    return m_end;
}

void ChildTask::sendSignal(int number)
{
    if (!end())
        sendSignalTo(m_descriptor.get(), number);
}

void ChildTask::sendSignalToGroup(int number)
{
    // Its status was not taken yet, so the number is still that of its group.
    if (isOurs())
        ::kill(-m_identifier, number);
}

void ChildTask::abandon(ChildTask task)
{
    auto *const loop = QAbstractEventDispatcher::instance();
    if (task.end() || !loop)
        return; // The end of the object takes the status.
    auto notifier = std::make_unique<QSocketNotifier>(task.descriptor(), QSocketNotifier::Read);
    const auto kept = std::make_shared<ChildTask>(std::move(task));
    QObject::connect(notifier.get(), &QSocketNotifier::activated, notifier.get(), [ended = notifier.get(), kept] {
        ended->setEnabled(false);
        ended->deleteLater();
    });
    notifier.release()->setParent(loop);
}

} // namespace Tessaron
