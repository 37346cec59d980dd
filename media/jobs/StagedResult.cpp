#include "media/jobs/StagedResult.h"

#include "imaging/AbandonedEntries.h"
#include "imaging/EmergencyRemoval.h"
#include "platform/foundation/DescriptorIO.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/PathBytes.h"
#include <TessaronClasses/PathHelpers.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace Tessaron
{

namespace
{

constexpr const char *hiddenNameBeginning = ".tessaron-convert-";

UniqueDescriptor openFolder(const QByteArray &path)
{
    return UniqueDescriptor(::open(path.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

NSError systemError(int errnoValue, const QByteArray &path)
{
    return NSError::errorWithErrno(errnoValue, stringWithFileSystemRepresentation(path));
}

} // namespace

StagedResult::StagedResult(QByteArray wanted, UniqueDescriptor parent, QByteArray hiddenName, UniqueDescriptor folder)
    : m_wanted(std::move(wanted))
    , m_parent(std::move(parent))
    , m_hiddenName(std::move(hiddenName))
    , m_folder(std::move(folder))
    , m_fileNumber(noteForEmergencyRemoval(m_folder.get(), lastPathComponent(m_wanted).toByteArray()))
    , m_folderNumber(noteForEmergencyRemoval(m_parent.get(), m_hiddenName, EmergencyKind::Folder))
{
}

StagedResult::~StagedResult()
{
    ::unlinkat(m_folder.get(), lastPathComponent(m_wanted).toByteArray().constData(), 0);
    ::unlinkat(m_parent.get(), m_hiddenName.constData(), AT_REMOVEDIR);
    forgetEmergencyRemoval(m_fileNumber);
    forgetEmergencyRemoval(m_folderNumber);
}

Result<std::unique_ptr<StagedResult>> StagedResult::create(const QByteArray &wanted, MadeFolders &folders)
{
    const QByteArray parentFolder = parentPath(wanted);
    if (const int failure = folders.make(parentFolder))
        return systemError(failure, parentFolder);
    UniqueDescriptor parent = openFolder(parentFolder);
    // Another process may sweep the folder between making and locking.
    for (;;) {
        QByteArray hidden = childPath(parentFolder, hiddenNameBeginning + QByteArrayLiteral("XXXXXX"));
        if (!parent || !::mkdtemp(hidden.data()))
            return systemError(errno, parentFolder);
        UniqueDescriptor folder = openFolder(hidden);
        if (!folder && errno != ENOENT) {
            const int failure = errno;
            ::rmdir(hidden.constData());
            return systemError(failure, hidden);
        }
        if (folder && lockNewEntry(folder.get()))
            return std::unique_ptr<StagedResult>(new StagedResult(
                wanted, std::move(parent), lastPathComponent(hidden).toByteArray(), std::move(folder)));
    }
}

/// Such a folder holds files only: one, or two while bytes are put in front.
void StagedResult::removeAbandoned(const QByteArray &parentFolder)
{
    const UniqueDescriptor parent = openFolder(parentFolder);
    if (!parent)
        return;
    forEachAbandoned(
        parent.get(), [](QByteArrayView name) { return isTemporaryName(name, hiddenNameBeginning); },
        [&parent](const QByteArray &name, int) { removeEntry(parent.get(), name.constData()); });
}

QByteArray StagedResult::path() const
{
    return childPath(childPath(parentPath(m_wanted), m_hiddenName), lastPathComponent(m_wanted));
}

namespace
{

/// 0 or the errno value.
int appendFile(int from, int to)
{
    QByteArray piece(qsizetype(256) * 1024, Qt::Uninitialized);
    std::uint64_t position = 0;
    for (;;) {
        std::size_t got = 0;
        if (const int failure = readFully(from, position, piece.data(), std::size_t(piece.size()), &got))
            return failure;
        if (got == 0)
            return 0;
        if (const int failure = writeFully(to, piece.constData(), got))
            return failure;
        position += got;
    }
}

} // namespace

/// The older file has no name any more while it is copied, so that there is but one file to remove in an emergency.
NSError StagedResult::prepend(const QByteArray &bytes)
{
    const QByteArray name = lastPathComponent(m_wanted).toByteArray();
    const UniqueDescriptor older(::openat(m_folder.get(), name.constData(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
    if (!older || ::unlinkat(m_folder.get(), name.constData(), 0) != 0)
        return systemError(errno, path());
    UniqueDescriptor newer(
        ::openat(m_folder.get(), name.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0666));
    if (!newer)
        return systemError(errno, path());
    int failure = writeFully(newer.get(), bytes.constData(), std::size_t(bytes.size()));
    if (failure == 0)
        failure = appendFile(older.get(), newer.get());
    if (!newer.closeAndReport() && failure == 0)
        failure = errno;
    if (failure == 0)
        return {};
    ::unlinkat(m_folder.get(), name.constData(), 0);
    return systemError(failure, path());
}

/// 0 or the errno value; EEXIST where something is at the path already.
int StagedResult::moveTo(const QByteArray &path) const
{
    const QByteArray from = lastPathComponent(m_wanted).toByteArray(), to = lastPathComponent(path).toByteArray();
    if (::renameat2(m_folder.get(), from.constData(), m_parent.get(), to.constData(), RENAME_NOREPLACE) == 0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS)
        return errno;
    // A file system that cannot do that in one step: the name is taken by an empty file first, which is ours.
    const UniqueDescriptor taken(
        ::openat(m_parent.get(), to.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (!taken || ::renameat(m_folder.get(), from.constData(), m_parent.get(), to.constData()) == 0)
        return taken ? 0 : errno;
    const int failure = errno;
    ::unlinkat(m_parent.get(), to.constData(), 0);
    return failure;
}

Result<QByteArray> StagedResult::publish()
{
    QByteArray path = m_wanted;
    for (;;) {
        const int failure = moveTo(path);
        if (failure == 0)
            return path;
        if (failure != EEXIST)
            return systemError(failure, path);
        path = fileSystemRepresentation(unusedName(stringWithFileSystemRepresentation(m_wanted)));
    }
}

} // namespace Tessaron
