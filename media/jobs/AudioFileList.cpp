#include "media/jobs/AudioFileList.h"

#include "platform/foundation/DirectoryStream.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/PathBytes.h"
#include <TessaronClasses/DiscSources.h>

#include <QMimeDatabase>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>

namespace Tessaron
{

namespace
{

/// A folder that is still to be listed.
struct FolderToList {
    QByteArray path;
    QByteArray place; ///< below the destination
};

class FileGatherer
{
public:
    FileGatherer(const QByteArray &destination, bool isFlat, const std::stop_token &stop)
        : m_isFlat(isFlat)
        , m_stop(stop)
    {
        struct stat status;
        if (::stat(destination.constData(), &status) == 0)
            m_destination = {status.st_dev, status.st_ino};
    }
    void addFolder(const QByteArray &path, const QByteArray &place);

    AudioFileList list;

private:
    void listFolder(const FolderToList &folder);
    void addEntry(const FolderToList &folder, const QByteArray &name, int descriptor);
    [[nodiscard]] bool holdsSound(const QByteArray &name) const;

    const bool m_isFlat;
    const std::stop_token &m_stop;
    std::optional<DeviceAndInode> m_destination; ///< absent while it is not there
    const QMimeDatabase m_types;
    std::vector<FolderToList> m_waiting; ///< the next one last
};

void FileGatherer::addFolder(const QByteArray &path, const QByteArray &place)
{
    m_waiting.push_back({path, place});
    while (!m_waiting.empty() && !m_stop.stop_requested()) {
        const FolderToList next = std::move(m_waiting.back());
        m_waiting.pop_back();
        listFolder(next);
    }
}

void FileGatherer::listFolder(const FolderToList &folder)
{
    const DirectoryStream stream = directoryStream(
        UniqueDescriptor(::open(folder.path.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW)));
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
    if (failure != 0)
        list.unreadable.push_back({folder.path, failure});
    std::sort(names.begin(), names.end());
    const auto firstNew = std::ptrdiff_t(m_waiting.size());
    for (const QByteArray &name : std::as_const(names))
        addEntry(folder, name, ::dirfd(stream.get()));
    std::reverse(m_waiting.begin() + firstNew, m_waiting.end());
}

void FileGatherer::addEntry(const FolderToList &folder, const QByteArray &name, int descriptor)
{
    struct stat status;
    if (::fstatat(descriptor, name.constData(), &status, AT_SYMLINK_NOFOLLOW) != 0)
        return; // It is gone by now.
    const QByteArray path = childPath(folder.path, name);
    const DeviceAndInode identity = {status.st_dev, status.st_ino};
    if (S_ISDIR(status.st_mode) && m_destination == identity)
        list.isDestinationLeftOut = true;
    else if (S_ISDIR(status.st_mode))
        m_waiting.push_back({path, m_isFlat ? QByteArray() : childPath(folder.place, name)});
    else if (S_ISREG(status.st_mode) && holdsSound(name))
        list.files.push_back({path, folder.place, std::uint64_t(status.st_size), {}});
    else
        ++list.leftOut;
}

/// By the name alone: the tools find out the rest.
bool FileGatherer::holdsSound(const QByteArray &name) const
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

} // namespace

AudioFileList audioFilesAtPaths(const QList<QByteArray> &sources, const QByteArray &destination, bool isFlat,
                                const std::stop_token &stop)
{
    FileGatherer gatherer(destination, isFlat, stop);
    for (const QByteArray &path : sources) {
        const Result<std::vector<DiscSource>> found = discSourcesAtPaths({path});
        if (!found) {
            gatherer.list.files.push_back({path, {}, 0, found.error()});
            continue;
        }
        const DiscSource &source = found->front();
        if (source.isFolder) {
            gatherer.addFolder(source.path, isFlat ? QByteArray() : source.name);
            continue;
        }
        struct stat status;
        const bool isThere = ::stat(source.path.constData(), &status) == 0;
        // The name of a link is the one that the result gets.
        gatherer.list.files.push_back({path, {}, isThere ? std::uint64_t(status.st_size) : 0, {}});
    }
    return std::move(gatherer.list);
}

} // namespace Tessaron
