#include "tests/tools/ChildProcess.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace Tessaron::Testing
{

namespace
{

QByteArray allOf(int file)
{
    struct stat status;
    if (::fstat(file, &status) != 0)
        return {};
    QByteArray result(qsizetype(status.st_size), '\0');
    const ssize_t got = ::pread(file, result.data(), size_t(result.size()), 0);
    result.truncate(got < 0 ? 0 : got);
    return result;
}

} // namespace

ChildProcess::ChildProcess(const ChildSettings &settings)
    : m_output(::memfd_create("output", MFD_CLOEXEC))
    , m_errors(::memfd_create("errors", MFD_CLOEXEC))
{
    // Appending: several writers (the program and its libraries) share the file's end, not a position.
    ::fcntl(m_output, F_SETFL, O_APPEND);
    ::fcntl(m_errors, F_SETFL, O_APPEND);
    m_id = ::fork();
    if (m_id == 0)
        becomeChild(settings);
    EXPECT_GT(m_id, 0) << std::strerror(errno);
}

void ChildProcess::becomeChild(const ChildSettings &settings) const
{
    if (settings.inGroupOfItsOwn)
        ::setpgid(0, 0);
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGHUP, SIG_DFL);
    std::signal(SIGPIPE, SIG_DFL);
    ::dup2(m_output, STDOUT_FILENO);
    ::dup2(m_errors, STDERR_FILENO);
    if (settings.standardOutput && settings.standardOutput->isEmpty())
        ::close(STDOUT_FILENO);
    else if (settings.standardOutput)
        ::dup2(::open(settings.standardOutput->constData(), O_WRONLY | O_CLOEXEC), STDOUT_FILENO);
    if (settings.outputToBrokenPipe) {
        int ends[2];
        if (::pipe(ends) != 0)
            ::_exit(127);
        ::dup2(ends[1], STDOUT_FILENO);
        ::close(ends[0]);
        ::close(ends[1]);
    }
    if (settings.descriptorLimit) {
        const rlimit limit = {*settings.descriptorLimit, *settings.descriptorLimit};
        if (::setrlimit(RLIMIT_NOFILE, &limit) != 0)
            ::_exit(126);
    }
    if (settings.fileSizeLimit) {
        const rlimit limit = {*settings.fileSizeLimit, *settings.fileSizeLimit};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    bool isReady = settings.folder.isEmpty() || ::chdir(settings.folder.constData()) == 0;
    if (settings.withoutRootRights && ::geteuid() == 0) {
        constexpr uid_t nobody = 65534;
        isReady = isReady && ::setgroups(0, nullptr) == 0 && ::setgid(nobody) == 0 && ::setuid(nobody) == 0;
    }
    for (const QByteArray &variable : settings.environment)
        ::putenv(const_cast<char *>(variable.constData()));
    std::vector<char *> words = {const_cast<char *>(settings.program.constData())};
    for (const QByteArray &argument : settings.arguments)
        words.push_back(const_cast<char *>(argument.constData()));
    words.push_back(nullptr);
    if (isReady)
        ::execvp(words.front(), words.data());
    ::_exit(127);
}

ChildProcess::~ChildProcess()
{
    if (m_id > 0) {
        ::kill(m_id, SIGKILL);
        ::waitpid(m_id, nullptr, 0);
    }
    ::close(m_output);
    ::close(m_errors);
}

void ChildProcess::sendSignal(int number) const
{
    EXPECT_EQ(::kill(m_id, number), 0) << std::strerror(errno);
}

QByteArray ChildProcess::errorsSoFar() const
{
    return allOf(m_errors);
}

bool ChildProcess::hasEnded() const
{
    siginfo_t information = {};
    return ::waitid(P_PID, id_t(m_id), &information, WEXITED | WNOHANG | WNOWAIT) == 0 && information.si_pid == m_id;
}

bool ChildProcess::waitUntil(const std::function<bool()> &condition, std::chrono::milliseconds atMost) const
{
    const auto deadline = std::chrono::steady_clock::now() + atMost;
    while (!condition()) {
        if (hasEnded() || std::chrono::steady_clock::now() > deadline)
            return condition();
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

ChildResult ChildProcess::finish()
{
    const bool ended = waitUntil([this] { return hasEnded(); }, std::chrono::minutes(2));
    EXPECT_TRUE(ended) << "the process does not end";
    if (!ended)
        ::kill(m_id, SIGKILL);
    int status = 0;
    ::waitpid(m_id, &status, 0);
    m_id = -1;
    ChildResult result;
    if (WIFEXITED(status))
        result.exitStatus = WEXITSTATUS(status);
    else
        result.signal = WTERMSIG(status);
    result.output = allOf(m_output);
    result.errors = allOf(m_errors);
    return result;
}

ChildResult runChild(const ChildSettings &settings)
{
    return ChildProcess(settings).finish();
}

QByteArray outputOf(const QByteArray &program, const QList<QByteArray> &arguments, const QByteArray &folder)
{
    ChildSettings settings;
    settings.program = program;
    settings.arguments = arguments;
    settings.folder = folder;
    const ChildResult result = runChild(settings);
    EXPECT_EQ(result.exitStatus, 0) << program.constData() << ": " << result.errors.constData();
    return result.output;
}

ChildSettings tessaron(const QList<QByteArray> &arguments)
{
    ChildSettings settings;
    settings.program = TESSARON_PROGRAM;
    settings.arguments = arguments;
    return settings;
}

ChildResult runTessaron(const QList<QByteArray> &arguments)
{
    return runChild(tessaron(arguments));
}

void runTessaronWithEverMoreDescriptors(const QList<QByteArray> &arguments,
                                        const std::function<void(const ChildResult &, quint64 limit)> &whenItFails)
{
    constexpr quint64 fewest = 4, enough = 64;
    constexpr int notLoaded = 127; // the dynamic linker had none
    for (quint64 limit = fewest; limit < enough; ++limit) {
        ChildSettings settings = tessaron(arguments);
        settings.descriptorLimit = limit;
        const ChildResult result = runChild(settings);
        if (result.exitStatus == 0)
            return;
        if (result.exitStatus != notLoaded)
            whenItFails(result, limit);
    }
    ADD_FAILURE() << arguments.join(' ').constData() << " never succeeds";
}

} // namespace Tessaron::Testing
