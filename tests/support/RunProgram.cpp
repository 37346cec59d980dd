#include "tests/support/RunProgram.h"

#include "platform/foundation/UniqueDescriptor.h"

#include <cerrno>
#include <fcntl.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
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

ProgramRun runProgram(const QByteArray &program, const QList<QByteArray> &arguments)
{
    const UniqueDescriptor output(::memfd_create("output", MFD_CLOEXEC)), errors(::memfd_create("errors", MFD_CLOEXEC));
    QList<QByteArray> words = arguments;
    words.prepend(program);
    std::vector<char *> pointers;
    pointers.reserve(std::size_t(words.size()) + 1);
    for (QByteArray &word : words)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, output.get(), STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errors.get(), STDERR_FILENO);
    pid_t child = -1;
    const int failure = ::posix_spawnp(&child, program.constData(), &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (failure != 0)
        return {};
    const int status = statusOfChild(child);
    return {status, contentsOf(output.get()), contentsOf(errors.get())};
}

} // namespace Tessaron::Testing
