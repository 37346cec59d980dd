// Runs a command and says what it took. Small on purpose: a child's peak memory counts from its parent's size at the
// fork, so a script cannot measure small programs itself.

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

double seconds(const timeval &time)
{
    return double(time.tv_sec) + double(time.tv_usec) / 1e6;
}

[[noreturn]] void runCommand(char **command)
{
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nowhere, STDOUT_FILENO);
    execvp(command[0], command);
    std::fprintf(stderr, "measure: %s: %s\n", command[0], std::strerror(errno));
    _exit(127);
}

} // namespace

int main(int argc, char **argv)
{
    if (argc < 2) {
        std::fputs("usage: measure COMMAND [ARGUMENT ...]\n"
                   "Prints its exit status, wall, user and system seconds and its peak memory in KiB.\n",
                   stderr);
        return 2;
    }
    const auto begin = std::chrono::steady_clock::now();
    const pid_t child = fork();
    if (child < 0) {
        std::perror("measure: fork");
        return 1;
    }
    if (child == 0)
        runCommand(argv + 1);
    int status = 0;
    rusage usage = {};
    while (wait4(child, &status, 0, &usage) < 0 && errno == EINTR) { }
    const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - begin;
    const int exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    std::printf("%d %.4f %.4f %.4f %ld\n", exitStatus, wall.count(), seconds(usage.ru_utime), seconds(usage.ru_stime),
                usage.ru_maxrss);
    return 0;
}
