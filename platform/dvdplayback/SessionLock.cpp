#include "platform/dvdplayback/SessionLock.h"

#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/PathBytes.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

namespace Tessaron
{

namespace
{

QByteArray pathOfLock()
{
    const QByteArray folder = qgetenv("XDG_RUNTIME_DIR");
    if (folder.startsWith('/'))
        return childPath(folder, "tessaron-dvd.lock");
    return "/tmp/tessaron-dvd-" + QByteArray::number(qulonglong(::getuid())) + ".lock";
}

} // namespace

Result<bool> SessionLock::take(SessionLock *lock)
{
    const QByteArray path = pathOfLock();
    UniqueDescriptor file(::open(path.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NOCTTY, 0600));
    struct stat status;
    if (!file || ::fstat(file.get(), &status) != 0)
        return NSError::errorWithErrno(errno, stringWithFileSystemRepresentation(path));
    // Another user could have made it first, to keep this one from ever playing.
    if (status.st_uid != ::geteuid() || !S_ISREG(status.st_mode))
        return NSError::errorWithErrno(EACCES, stringWithFileSystemRepresentation(path));
    if (::flock(file.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno == EWOULDBLOCK)
            return false;
        return NSError::errorWithErrno(errno, stringWithFileSystemRepresentation(path));
    }
    lock->m_file = std::move(file);
    return true;
}

} // namespace Tessaron
