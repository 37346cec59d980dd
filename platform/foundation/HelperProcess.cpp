#include "platform/foundation/HelperProcess.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace Tessaron
{

namespace
{

constexpr auto timeBetweenLooks = std::chrono::milliseconds(5);
constexpr int statusOfUnknownEnd = 255;

/// Programs that ran on when their objects went.
struct Abandoned {
    std::mutex mutex; ///< guards the member below
    std::vector<pid_t> processes;
};

Abandoned &abandoned()
{
    static Abandoned instance;
    return instance;
}

void takeEndedOffTheTable()
{
    Abandoned &left = abandoned();
    const std::lock_guard lock(left.mutex);
    std::erase_if(left.processes, [](pid_t id) { return ::waitpid(id, nullptr, WNOHANG) != 0; });
}

/// The attributes and actions of a start, freed at its end.
struct SpawnSettings {
    explicit SpawnSettings(const HelperSettings &helper)
    {
        posix_spawn_file_actions_init(&actions);
        posix_spawnattr_init(&attributes);
        give(STDIN_FILENO, helper.standardInput);
        give(STDOUT_FILENO, helper.standardOutput);
        give(STDERR_FILENO, -1);
        // What this thread blocks and ignores is not the program's business.
        sigset_t none, usual;
        sigemptyset(&none);
        sigemptyset(&usual);
        for (const int signal : {SIGPIPE, SIGINT, SIGTERM, SIGHUP, SIGCHLD})
            sigaddset(&usual, signal);
        posix_spawnattr_setsigmask(&attributes, &none);
        posix_spawnattr_setsigdefault(&attributes, &usual);
        const int group = helper.hasOwnGroup ? POSIX_SPAWN_SETPGROUP : 0; // 0, the number set by default: a new one
        posix_spawnattr_setflags(&attributes, short(POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | group));
    }
    ~SpawnSettings()
    {
        posix_spawn_file_actions_destroy(&actions);
        posix_spawnattr_destroy(&attributes);
    }
    SpawnSettings(const SpawnSettings &) = delete;
    SpawnSettings &operator=(const SpawnSettings &) = delete;

    void give(int descriptor, int own)
    {
        if (own < 0)
            posix_spawn_file_actions_addopen(&actions, descriptor, "/dev/null", O_RDWR, 0);
        else
            posix_spawn_file_actions_adddup2(&actions, own, descriptor);
    }

    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
};

} // namespace

HelperProcess::HelperProcess(pid_t id)
    : m_id(id)
{
}

std::unique_ptr<HelperProcess> HelperProcess::start(const QByteArray &program, const QList<QByteArray> &arguments,
                                                    int *errnoValue, const HelperSettings &settings)
{
    takeEndedOffTheTable();
    QList<QByteArray> words = arguments;
    words.prepend(program);
    std::vector<char *> pointers;
    for (QByteArray &word : words)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);
    const SpawnSettings spawning(settings);
    pid_t id = -1;
    *errnoValue =
        ::posix_spawn(&id, program.constData(), &spawning.actions, &spawning.attributes, pointers.data(), environ);
    if (*errnoValue != 0)
        return nullptr;
    return std::unique_ptr<HelperProcess>(new HelperProcess(id));
}

HelperProcess::~HelperProcess()
{
    if (isRunning()) {
        Abandoned &left = abandoned();
        const std::lock_guard lock(left.mutex);
        left.processes.push_back(m_id);
    }
    takeEndedOffTheTable();
}

bool HelperProcess::isRunning()
{
    return !exitStatus();
}

std::optional<int> HelperProcess::exitStatus()
{
    const std::lock_guard lock(m_mutex);
    if (m_status)
        return m_status;
    int status = 0;
    const pid_t got = ::waitpid(m_id, &status, WNOHANG);
    if (got == m_id)
        m_status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    else if (got < 0 && errno == ECHILD) // The program around this library takes all its children off itself.
        m_status = statusOfUnknownEnd;
    return m_status;
}

bool HelperProcess::waitForEnd(std::chrono::milliseconds atMost)
{
    const auto end = std::chrono::steady_clock::now() + atMost;
    while (isRunning()) {
        if (std::chrono::steady_clock::now() >= end)
            return false;
        std::this_thread::sleep_for(timeBetweenLooks);
    }
    return true;
}

void HelperProcess::kill()
{
    const std::lock_guard lock(m_mutex);
    if (!m_status)
        ::kill(m_id, SIGKILL);
}

} // namespace Tessaron
