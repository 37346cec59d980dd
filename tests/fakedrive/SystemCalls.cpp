// A drive that is not there, for programs that have this object preloaded: what they open as "/dev/sr0" takes the
// commands of MMC-5 that libburn sends (SG_IO) and answers like a drive with the disc of TESSARON_FAKE_DRIVE, a folder.
// It is our own reading of the standard: it shows that the calls, their order and the handling of faults are right by
// that, and nothing of what drives do otherwise.

#include "tests/fakedrive/FakeDriveTransport.h"
#include "tests/fakedrive/RealFunction.h"

#include <cstdarg>
#include <cstring>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>

using namespace Tessaron::Testing;

// The names of the C library, which a preloaded object takes.
extern "C" {

int open(const char *path, int flags, ...)
{
    if (isFake(path))
        return openDrive();
    va_list arguments;
    va_start(arguments, flags);
    const int mode = va_arg(arguments, int);
    va_end(arguments);
    return realFunction<int (*)(const char *, int, ...)>("open")(path, flags, mode);
}

int open64(const char *path, int flags, ...)
{
    if (isFake(path))
        return openDrive();
    va_list arguments;
    va_start(arguments, flags);
    const int mode = va_arg(arguments, int);
    va_end(arguments);
    return realFunction<int (*)(const char *, int, ...)>("open64")(path, flags, mode);
}

int __open_2(const char *path, int flags)
{
    return isFake(path) ? openDrive() : realFunction<int (*)(const char *, int)>("__open_2")(path, flags);
}

int __open64_2(const char *path, int flags)
{
    return isFake(path) ? openDrive() : realFunction<int (*)(const char *, int)>("__open64_2")(path, flags);
}

int close(int descriptor)
{
    letDriveGo(descriptor);
    return realFunction<int (*)(int)>("close")(descriptor);
}

int ioctl(int descriptor, unsigned long request, ...) noexcept
{
    va_list arguments;
    va_start(arguments, request);
    void *const argument = va_arg(arguments, void *);
    va_end(arguments);
    if (const std::optional<int> answer = controlDrive(descriptor, request, argument))
        return *answer;
    return realFunction<int (*)(int, unsigned long, void *)>("ioctl")(descriptor, request, argument);
}

int stat(const char *path, struct stat *status) noexcept
{
    return isFake(path) ? describe(path, status)
                        : realFunction<int (*)(const char *, struct stat *)>("stat")(path, status);
}

int lstat(const char *path, struct stat *status) noexcept
{
    return isFake(path) ? describe(path, status)
                        : realFunction<int (*)(const char *, struct stat *)>("lstat")(path, status);
}

int stat64(const char *path, struct stat64 *status) noexcept
{
    return isFake(path) ? describe(path, reinterpret_cast<struct stat *>(status))
                        : realFunction<int (*)(const char *, struct stat64 *)>("stat64")(path, status);
}

int lstat64(const char *path, struct stat64 *status) noexcept
{
    return isFake(path) ? describe(path, reinterpret_cast<struct stat *>(status))
                        : realFunction<int (*)(const char *, struct stat64 *)>("lstat64")(path, status);
}

int __xstat(int version, const char *path, struct stat *status)
{
    return isFake(path) ? describe(path, status)
                        : realFunction<int (*)(int, const char *, struct stat *)>("__xstat")(version, path, status);
}

int __xstat64(int version, const char *path, struct stat64 *status)
{
    return isFake(path) ? describe(path, reinterpret_cast<struct stat *>(status))
                        : realFunction<int (*)(int, const char *, struct stat64 *)>("__xstat64")(version, path, status);
}

int __lxstat(int version, const char *path, struct stat *status)
{
    return isFake(path) ? describe(path, status)
                        : realFunction<int (*)(int, const char *, struct stat *)>("__lxstat")(version, path, status);
}

char *realpath(const char *path, char *resolved) noexcept
{
    if (isFake(path))
        return resolved != nullptr ? static_cast<char *>(std::memcpy(resolved, path, std::strlen(path) + 1))
                                   : ::strdup(path);
    return realFunction<char *(*)(const char *, char *)>("realpath")(path, resolved);
}
}
