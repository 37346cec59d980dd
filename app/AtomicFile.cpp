#include "app/AtomicFile.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <platform/foundation/FileSystemRepresentation.h>
#include <platform/foundation/UniqueDescriptor.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaron::Desktop
{

namespace
{

/// Follows a link at the end of the path. A path that is not a link, or at which nothing exists yet, is returned as it
/// is.
QByteArray followed(const QByteArray &path)
{
    const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.constData(), nullptr), &std::free);
    return real ? QByteArray(real.get()) : path;
}

bool writeAll(int file, const QByteArray &contents)
{
    qsizetype done = 0;
    while (done < contents.size()) {
        const ssize_t written = ::write(file, contents.constData() + done, std::size_t(contents.size() - done));
        if (written < 0 && errno != EINTR)
            return false;
        done += std::max<ssize_t>(written, 0);
    }
    return ::fsync(file) == 0;
}

/// A file in a folder that has a hidden name only while it is about to get its own: a file without a name leaves
/// nothing behind when its process is killed.
class FileInMaking
{
public:
    FileInMaking(int folder, const QByteArray &name)
        : m_folder(folder)
        , m_hidden('.' + name.left(200) + '.' + QByteArray::number(::getpid()) + ".part")
    {
        constexpr mode_t asTheUmaskAllows = 0666;
        m_file = UniqueDescriptor(::openat(folder, ".", O_TMPFILE | O_RDWR | O_CLOEXEC, asTheUmaskAllows));
        m_isNamed = !m_file && (errno == EOPNOTSUPP || errno == EISDIR || errno == EINVAL);
        if (m_isNamed) {
            (void)::unlinkat(folder, m_hidden.constData(), 0);
            m_file = UniqueDescriptor(::openat(folder, m_hidden.constData(),
                                               O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC | O_NOFOLLOW, asTheUmaskAllows));
            m_isNamed = bool(m_file);
        }
    }
    ~FileInMaking()
    {
        if (m_isNamed)
            (void)::unlinkat(m_folder, m_hidden.constData(), 0);
    }
    FileInMaking(const FileInMaking &) = delete;
    FileInMaking &operator=(const FileInMaking &) = delete;

    [[nodiscard]] int descriptor() const { return m_file.get(); }

    bool giveName(const QByteArray &name)
    {
        if (!m_isNamed) {
            const QByteArray self = "/proc/self/fd/" + QByteArray::number(m_file.get());
            (void)::unlinkat(m_folder, m_hidden.constData(), 0);
            if (::linkat(AT_FDCWD, self.constData(), m_folder, m_hidden.constData(), AT_SYMLINK_FOLLOW) != 0)
                return false;
            m_isNamed = true;
        }
        if (::renameat(m_folder, m_hidden.constData(), m_folder, name.constData()) != 0)
            return false;
        m_isNamed = false;
        return true;
    }

private:
    const int m_folder;
    const QByteArray m_hidden;
    UniqueDescriptor m_file;
    bool m_isNamed = false;
};

/// Gives the file the permissions of the one that it replaces.
bool takeOverMode(int file, int folder, const QByteArray &name)
{
    struct stat older;
    return ::fstatat(folder, name.constData(), &older, 0) != 0 || ::fchmod(file, older.st_mode & 07777) == 0;
}

} // namespace

QByteArray folderOf(const QByteArray &path)
{
    const qsizetype slash = path.lastIndexOf('/');
    return slash < 0 ? QByteArrayLiteral(".") : path.left(std::max<qsizetype>(slash, 1));
}

NSError writeAtomically(const QByteArray &path, const QByteArray &contents)
{
    const QByteArray place = followed(path);
    const auto failure = [&place] { return NSError::errorWithErrno(errno, stringWithFileSystemRepresentation(place)); };
    const QByteArray name = place.mid(place.lastIndexOf('/') + 1);
    const UniqueDescriptor folder(::open(folderOf(place).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder)
        return failure();
    FileInMaking file(folder.get(), name);
    if (file.descriptor() < 0 || !writeAll(file.descriptor(), contents)
        || !takeOverMode(file.descriptor(), folder.get(), name) || !file.giveName(name))
        return failure();
    (void)::fsync(folder.get()); // the name, too
    return {};
}

} // namespace Tessaron::Desktop
