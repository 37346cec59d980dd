#include "app/PrivateFolder.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <platform/foundation/FileSystemRepresentation.h>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <utility>

namespace Tessaron::Desktop
{

namespace
{

constexpr int triesAtMost = 10;

/// What is held belongs to a process that lives.
UniqueDescriptor lockOf(const std::string &folder)
{
    UniqueDescriptor lock(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (lock && ::flock(lock.get(), LOCK_EX | LOCK_NB) != 0)
        lock.reset();
    return lock;
}

void removeAbandoned(const std::string &base)
{
    std::error_code error;
    for (std::filesystem::directory_iterator entry(base, error), end; !error && entry != end; entry.increment(error)) {
        std::error_code ignored; // what stays is tried again the next time
        if (lockOf(entry->path().string()))
            std::filesystem::remove_all(entry->path(), ignored);
    }
}

} // namespace

PrivateFolder::PrivateFolder(QByteArray path, UniqueDescriptor lock)
    : m_path(std::move(path))
    , m_lock(std::move(lock))
{
}

PrivateFolder::PrivateFolder(PrivateFolder &&other) noexcept
    : m_path(std::exchange(other.m_path, QByteArray()))
    , m_lock(std::move(other.m_lock))
{
}

PrivateFolder &PrivateFolder::operator=(PrivateFolder &&other) noexcept
{
    std::swap(m_path, other.m_path);
    std::swap(m_lock, other.m_lock);
    return *this;
}

PrivateFolder::~PrivateFolder()
{
    std::error_code ignored; // the next process removes what stays
    if (!m_path.isEmpty())
        std::filesystem::remove_all(m_path.toStdString(), ignored);
}

Result<PrivateFolder> PrivateFolder::makeBelow(const QByteArray &base)
{
    std::error_code error;
    std::filesystem::create_directories(base.toStdString(), error);
    if (error)
        return NSError::errorWithErrno(error.value(), stringWithFileSystemRepresentation(base));
    removeAbandoned(base.toStdString());
    for (int tries = 0; tries < triesAtMost; ++tries) {
        QByteArray path = base + "/XXXXXX";
        if (!::mkdtemp(path.data()))
            return NSError::errorWithErrno(errno, stringWithFileSystemRepresentation(base));
        // Another process may take it for an abandoned one before it is locked.
        UniqueDescriptor lock = lockOf(path.toStdString());
        struct stat found = {};
        if (lock && ::fstat(lock.get(), &found) == 0 && found.st_nlink > 0)
            return PrivateFolder(std::move(path), std::move(lock));
    }
    return NSError::errorWithErrno(EBUSY, stringWithFileSystemRepresentation(base));
}

} // namespace Tessaron::Desktop
