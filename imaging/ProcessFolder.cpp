#include "imaging/ProcessFolder.h"

#include "imaging/AbandonedEntries.h"
#include "platform/foundation/DirectoryStream.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include <TessaronClasses/TemporaryFiles.h>

#include <QByteArrayList>

#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaron
{

namespace
{

constexpr const char *namePrefix = "process-";
constexpr const char *notePrefix = "object-";

UniqueDescriptor openFolder(int parent, const char *name)
{
    return UniqueDescriptor(::openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

/// Whether another process that lives has noted an object of that name.
bool isAnothers(int parent, const char *note, const char *own)
{
    const DirectoryStream stream = directoryStream(openFolder(parent, "."));
    while (const dirent *const entry = stream ? ::readdir(stream.get()) : nullptr) {
        const QByteArrayView name(entry->d_name);
        if (!name.startsWith(namePrefix) || name == own)
            continue;
        const UniqueDescriptor folder = openFolder(parent, entry->d_name);
        if (folder && ::faccessat(folder.get(), note, F_OK, AT_SYMLINK_NOFOLLOW) == 0
            && ::flock(folder.get(), LOCK_EX | LOCK_NB) != 0)
            return true;
    }
    return false;
}

/// What objects of the process have left in the parent folder: entries with the noted names, and with those and an
/// extension.
void removeNotedObjects(int parent, const char *name, int folder)
{
    QByteArrayList noted;
    const DirectoryStream notes = directoryStream(openFolder(folder, "."));
    while (const dirent *const entry = notes ? ::readdir(notes.get()) : nullptr) {
        const QByteArray note(entry->d_name);
        if (note.startsWith(notePrefix) && !isAnothers(parent, entry->d_name, name))
            noted << note.sliced(qsizetype(std::strlen(notePrefix)));
    }
    const DirectoryStream stream = directoryStream(noted.isEmpty() ? UniqueDescriptor() : openFolder(parent, "."));
    while (const dirent *const entry = stream ? ::readdir(stream.get()) : nullptr) {
        if (noted.contains(QByteArray(entry->d_name).split('.').first()))
            removeEntry(parent, entry->d_name);
    }
}

/// The folder, what is in it, and what it notes.
void removeFolder(int parent, const char *name, int folder)
{
    removeNotedObjects(parent, name, folder);
    removeContents(folder);
    ::unlinkat(parent, name, AT_REMOVEDIR);
}

/// Removes the folders whose processes have ended.
void removeLeftovers(const QByteArray &parentPath)
{
    const UniqueDescriptor parent = openFolder(AT_FDCWD, parentPath.constData());
    if (!parent)
        return;
    forEachAbandoned(
        parent.get(), [](QByteArrayView name) { return name.startsWith(namePrefix); },
        [&parent](const QByteArray &name, int folder) { removeFolder(parent.get(), name.constData(), folder); });
}

} // namespace

ProcessFolder::ProcessFolder(QByteArray (*parent)())
    : m_parent(parent)
{
}

ProcessFolder::~ProcessFolder()
{
    if (!m_lock)
        return;
    const qsizetype slash = m_path.lastIndexOf('/');
    if (const UniqueDescriptor parent = openFolder(AT_FDCWD, m_path.first(slash).constData()))
        removeFolder(parent.get(), m_path.constData() + slash + 1, m_lock.get());
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
        if (folder && lockNewEntry(folder.get()) && ::fchmod(folder.get(), S_IRWXU) == 0) {
            m_lock = std::move(folder);
            m_path = pattern;
            return m_path;
        }
    }
    return {};
}

void ProcessFolder::noteObject(const QByteArray &name)
{
    const QByteArray folder = path();
    if (folder.isEmpty())
        return; // it stays then, as it would without a note
    const QByteArray note = folder + '/' + notePrefix + name;
    UniqueDescriptor(::open(note.constData(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600)).reset();
}

ProcessFolder &ProcessFolder::ofThisProcess()
{
    static ProcessFolder instance([] { return fileSystemRepresentation(temporaryFolder()); });
    return instance;
}

} // namespace Tessaron
