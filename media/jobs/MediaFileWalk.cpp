#include "media/jobs/MediaFileWalk.h"

#include "platform/foundation/DirectoryStream.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MessageTexts.h"
#include "platform/foundation/PathBytes.h"
#include <TessaronClasses/DiscJobErrors.h>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <utility>

namespace Tessaron
{

MediaFileWalk::MediaFileWalk(QList<QByteArray> sources, const QByteArray &destination)
    : m_sources(std::move(sources))
{
    struct stat status;
    if (!destination.isEmpty() && ::stat(destination.constData(), &status) == 0)
        m_destination = {status.st_dev, status.st_ino};
}

std::optional<FoundMediaFile> MediaFileWalk::next(const std::stop_token &stop)
{
    while (m_files.empty() && !stop.stop_requested()) {
        if (!m_folders.empty()) {
            const FolderToList folder = std::move(m_folders.back());
            m_folders.pop_back();
            listFolder(folder);
        } else if (m_nextSource < m_sources.size()) {
            take(m_sources[m_nextSource++]);
        } else {
            return std::nullopt;
        }
    }
    if (stop.stop_requested())
        return std::nullopt;
    FoundMediaFile file = std::move(m_files.front());
    m_files.pop_front();
    return file;
}

void MediaFileWalk::take(const QByteArray &source)
{
    struct stat status;
    const bool isThere = ::stat(source.constData(), &status) == 0;
    if (isThere && !S_ISDIR(status.st_mode) && !S_ISREG(status.st_mode)) {
        m_files.push_back({source,
                           {},
                           0,
                           true,
                           discJobError(DiscJobErrorCode::Source,
                                        QStringLiteral("%1 is neither a folder nor a regular file").arg(quoted(source)),
                                        QStringLiteral("Copy what it delivers into a file first."), source)});
        return;
    }
    const Result<std::vector<DiscSource>> found = discSourcesAtPaths({source});
    if (!found)
        m_files.push_back({source, {}, 0, true, found.error()});
    else if (found->front().isFolder)
        m_folders.push_back({source, found->front().name, true});
    else // The name of a link is the one that the result gets.
        m_files.push_back({source, {}, isThere ? std::uint64_t(status.st_size) : 0, true, {}});
}

void MediaFileWalk::listFolder(const FolderToList &folder)
{
    const int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC | (folder.wasGiven ? 0 : O_NOFOLLOW);
    const DirectoryStream stream = directoryStream(UniqueDescriptor(::open(folder.path.constData(), flags)));
    int failure = stream ? 0 : errno;
    QList<QByteArray> names;
    while (stream) {
        errno = 0;
        const dirent *const entry = ::readdir(stream.get());
        if (!entry) {
            failure = errno;
            break;
        }
        const QByteArray name = entry->d_name;
        if (name != "." && name != "..")
            names << name;
    }
    std::sort(names.begin(), names.end());
    const auto firstNew = std::ptrdiff_t(m_folders.size());
    for (const QByteArray &name : std::as_const(names)) {
        const int reason = addEntry(folder, name, ::dirfd(stream.get()));
        if (failure == 0)
            failure = reason;
    }
    if (failure != 0)
        m_remarks.unreadable.push_back({folder.path, failure});
    std::reverse(m_folders.begin() + firstNew, m_folders.end());
}

/// 0 or the errno value for an entry that cannot be looked at.
int MediaFileWalk::addEntry(const FolderToList &folder, const QByteArray &name, int descriptor)
{
    struct stat status;
    if (::fstatat(descriptor, name.constData(), &status, AT_SYMLINK_NOFOLLOW) != 0)
        return errno == ENOENT ? 0 : errno; // It may be gone by now.
    QByteArray path = childPath(folder.path, name);
    const DeviceAndInode identity = {status.st_dev, status.st_ino};
    if (S_ISDIR(status.st_mode) && m_destination == identity)
        m_remarks.isDestinationLeftOut = true;
    else if (S_ISDIR(status.st_mode))
        m_folders.push_back({std::move(path), childPath(folder.place, name), false});
    else if (!S_ISREG(status.st_mode))
        ++m_remarks.leftOutSpecial;
    else if (isMediaName(name))
        m_files.push_back({std::move(path), folder.place, std::uint64_t(status.st_size), false, {}});
    else
        ++m_remarks.leftOut;
    return 0;
}

/// By the name alone: what opens the file finds out the rest.
bool MediaFileWalk::isMediaName(const QByteArray &name) const
{
    const QList<QMimeType> types = m_types.mimeTypesForFileName(stringWithFileSystemRepresentation(name));
    return std::any_of(types.begin(), types.end(), [](const QMimeType &type) {
        const bool isList =
            type.name().contains(QStringLiteral("mpegurl")) || type.name().contains(QStringLiteral("scpls"));
        return !isList
            && (type.name().startsWith(QStringLiteral("audio/")) || type.name().startsWith(QStringLiteral("video/"))
                || type.inherits(QStringLiteral("application/ogg"))
                || type.name() == QStringLiteral("application/vnd.rn-realmedia"));
    });
}

} // namespace Tessaron
