#include "tests/support/RunProgram.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace Tessaron::Testing
{

namespace
{

QByteArray contentsOf(int file)
{
    struct stat status = {};
    if (::fstat(file, &status) != 0)
        return {};
    QByteArray bytes(qsizetype(status.st_size), Qt::Uninitialized);
    qsizetype got = 0;
    while (got < bytes.size()) {
        const ssize_t count = ::pread(file, bytes.data() + got, std::size_t(bytes.size() - got), off_t(got));
        if (count <= 0)
            break;
        got += count;
    }
    bytes.truncate(got);
    return bytes;
}

int statusOfChild(pid_t child)
{
    int status = 0;
    while (::waitpid(child, &status, 0) < 0) {
        if (errno != EINTR)
            return -1;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

} // namespace

RunningProgram::RunningProgram(const QByteArray &program, const QList<QByteArray> &arguments, ProgramEnds ends,
                               const QByteArray &workingFolder)
    : m_output(::memfd_create("output", MFD_CLOEXEC))
    , m_errors(::memfd_create("errors", MFD_CLOEXEC))
{
    QList<QByteArray> words = arguments;
    words.prepend(program);
    std::vector<char *> pointers;
    pointers.reserve(std::size_t(words.size()) + 1);
    for (QByteArray &word : words)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    if (!workingFolder.isEmpty())
        posix_spawn_file_actions_addchdir_np(&actions, workingFolder.constData());
    if (ends.input < 0)
        posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    else
        posix_spawn_file_actions_adddup2(&actions, ends.input, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, ends.output < 0 ? m_output.get() : ends.output, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, m_errors.get(), STDERR_FILENO);
    if (::posix_spawnp(&m_child, program.constData(), &actions, nullptr, pointers.data(), environ) != 0)
        m_child = -1;
    posix_spawn_file_actions_destroy(&actions);
}

RunningProgram::~RunningProgram()
{
    if (!isStarted())
        return;
    ::kill(m_child, SIGKILL);
    (void)statusOfChild(m_child);
}

bool RunningProgram::isRunning() const
{
    siginfo_t end = {};
    return isStarted()
        && (::waitid(P_PID, id_t(m_child), &end, WEXITED | WNOHANG | WNOWAIT) != 0 || end.si_pid != m_child);
}

bool RunningProgram::waitUntilEnded(std::chrono::milliseconds atMost) const
{
    const auto deadline = std::chrono::steady_clock::now() + atMost;
    while (isRunning()) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

ProgramRun RunningProgram::finish()
{
    if (!isStarted())
        return {};
    const int status = statusOfChild(m_child);
    m_child = -1;
    return {status, contentsOf(m_output.get()), contentsOf(m_errors.get())};
}

ProgramRun runProgram(const QByteArray &program, const QList<QByteArray> &arguments, const QByteArray &workingFolder)
{
    return RunningProgram(program, arguments, {}, workingFolder).finish();
}

} // namespace Tessaron::Testing
