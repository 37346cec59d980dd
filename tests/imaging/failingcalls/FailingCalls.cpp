#include "tests/imaging/failingcalls/FailingCalls.h"

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

// The functions below take the place of the C library's in this program: what it links statically calls them.

namespace
{

std::atomic<int> callsLeft = 0; ///< until the one that fails; 0 when none does
std::atomic<int> failure = 0;
std::atomic<const char *> failedCall = nullptr;
std::atomic<bool> foldersCount = false;
std::string watchedFolder;

bool fails(const char *call)
{
    if (callsLeft.load() <= 0 || callsLeft.fetch_sub(1) != 1)
        return false;
    failedCall = call;
    errno = failure;
    return true;
}

/// Event loops, pipes and files that are only read go on working.
bool counts(int descriptor)
{
    struct stat status;
    if (callsLeft.load() <= 0 || ::syscall(SYS_newfstatat, descriptor, "", &status, AT_EMPTY_PATH) != 0)
        return false;
    if (S_ISDIR(status.st_mode))
        return foldersCount;
    return S_ISREG(status.st_mode) && (::syscall(SYS_fcntl, descriptor, F_GETFL) & O_ACCMODE) != O_RDONLY;
}

bool failsFor(int descriptor, const char *call)
{
    return counts(descriptor) && fails(call);
}

bool opensForWriting(const char *path, int flags)
{
    const bool isMeant = (flags & O_PATH) != 0 ? foldersCount.load() : (flags & O_ACCMODE) != O_RDONLY;
    return callsLeft.load() > 0 && isMeant && std::string(path).starts_with(watchedFolder);
}

} // namespace

extern "C" {

ssize_t write(int descriptor, const void *bytes, size_t length)
{
    return failsFor(descriptor, "write") ? -1 : ::syscall(SYS_write, descriptor, bytes, length);
}

ssize_t copy_file_range(int from, off_t *fromOffset, int to, off_t *toOffset, size_t length, unsigned int flags)
{
    if (failsFor(to, "copy_file_range"))
        return -1;
    return ::syscall(SYS_copy_file_range, from, fromOffset, to, toOffset, length, flags);
}

int ftruncate(int descriptor, off_t length) noexcept
{
    return failsFor(descriptor, "ftruncate") ? -1 : int(::syscall(SYS_ftruncate, descriptor, length));
}

off_t lseek(int descriptor, off_t offset, int whence) noexcept
{
    return failsFor(descriptor, "lseek") ? -1 : ::syscall(SYS_lseek, descriptor, offset, whence);
}

int fsync(int descriptor)
{
    return failsFor(descriptor, "fsync") ? -1 : int(::syscall(SYS_fsync, descriptor));
}

int close(int descriptor)
{
    const bool isFailing = failsFor(descriptor, "close");
    const int result = int(::syscall(SYS_close, descriptor));
    if (isFailing)
        errno = failure;
    return isFailing ? -1 : result;
}

int open(const char *path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return opensForWriting(path, flags) && fails("open") ? -1 : int(::syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}

int openat(int folder, const char *path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return failsFor(folder, "openat") ? -1 : int(::syscall(SYS_openat, folder, path, flags, mode));
}

} // extern "C"

namespace Tessaron::Testing
{

FailingCall::FailingCall(const QByteArray &folder, int number, int errnoValue, Folders folders)
{
    watchedFolder = folder.toStdString();
    failedCall = nullptr;
    failure = errnoValue;
    foldersCount = folders == Folders::Count;
    callsLeft = number;
}

FailingCall::~FailingCall()
{
    callsLeft = 0;
}

QByteArray FailingCall::failed() const
{
    return failedCall.load();
}

} // namespace Tessaron::Testing
