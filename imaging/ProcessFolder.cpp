#include "imaging/ProcessFolder.h"

#include "platform/foundation/DirectoryStream.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include <TessaronClasses/TemporaryFiles.h>

#include <cstdlib>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaron
{

namespace
{

constexpr const char *namePrefix = "process-";

UniqueDescriptor openFolder(int parent, const char *name)
{
    return UniqueDescriptor(::openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

bool hasName(int folder)
{
    struct stat status;
    return ::fstat(folder, &status) == 0 && status.st_nlink > 0;
}

/// The files of the folder and itself. Folders in it stay, and it with them: nothing here makes any.
void removeWithFiles(int parent, const char *name, int folder)
{
    const DirectoryStream stream = directoryStream(openFolder(folder, "."));
    while (const dirent *const entry = stream ? ::readdir(stream.get()) : nullptr)
        ::unlinkat(folder, entry->d_name, 0);
    ::unlinkat(parent, name, AT_REMOVEDIR);
}

/// Removes the folders whose processes have ended: their locks went with them.
void removeLeftovers(const QByteArray &parentPath)
{
    const UniqueDescriptor parent = openFolder(AT_FDCWD, parentPath.constData());
    const DirectoryStream stream = directoryStream(openFolder(AT_FDCWD, parentPath.constData()));
    while (const dirent *const entry = stream ? ::readdir(stream.get()) : nullptr) {
        if (!QByteArrayView(entry->d_name).startsWith(namePrefix))
            continue;
        const UniqueDescriptor folder = openFolder(parent.get(), entry->d_name);
        if (folder && ::flock(folder.get(), LOCK_EX | LOCK_NB) == 0)
            removeWithFiles(parent.get(), entry->d_name, folder.get());
    }
}

} // namespace

ProcessFolder::ProcessFolder(QByteArray (*parent)())
    : m_parent(parent)
{
}

ProcessFolder::~ProcessFolder()
{
    if (m_lock)
        removeWithFiles(AT_FDCWD, m_path.constData(), m_lock.get());
}

QByteArray ProcessFolder::path()
{
    const std::lock_guard lock(m_mutex);
    // Tested at each call: a service that cleans the place up may have removed the folder.
    if (m_lock && hasName(m_lock.get()))
        return m_path;
    m_lock.reset();
    const QByteArray parent = m_parent();
    if (parent.isEmpty())
        return {};
    removeLeftovers(parent);
    // A newcomer's sweep can come between making and locking.
    for (int attempt = 0; attempt < 100; ++attempt) {
        QByteArray pattern = parent + '/' + namePrefix + "XXXXXX";
        if (!::mkdtemp(pattern.data()))
            return {};
        UniqueDescriptor folder = openFolder(AT_FDCWD, pattern.constData());
        // A umask may have taken away more than it should.
        if (folder && ::flock(folder.get(), LOCK_EX | LOCK_NB) == 0 && hasName(folder.get())
            && ::fchmod(folder.get(), S_IRWXU) == 0) {
            m_lock = std::move(folder);
            m_path = pattern;
            return m_path;
        }
    }
    return {};
}

ProcessFolder &ProcessFolder::ofThisProcess()
{
    static ProcessFolder instance([] { return fileSystemRepresentation(temporaryFolder()); });
    return instance;
}

} // namespace Tessaron
