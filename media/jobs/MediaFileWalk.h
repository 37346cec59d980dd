#pragma once

#include "platform/foundation/NSError.h"
#include <TessaronClasses/DiscSources.h>
#include <TessaronClasses/UnreadableFolder.h>

#include <QByteArray>
#include <QList>
#include <QMimeDatabase>

#include <cstdint>
#include <deque>
#include <optional>
#include <stop_token>
#include <vector>

namespace Tessaron
{

/// A file of sound or pictures that move, as far as its name or a person says so.
struct FoundMediaFile {
    QByteArray path;
    QByteArray folder; ///< from the folder that was given, its name included, to the one around the file; may be empty
    std::uint64_t bytes = 0;
    bool wasGiven = false; ///< by its own path, not found in a folder
    NSError error; ///< of a source that is not there or cannot be read; null otherwise
};

/// What a walk has passed by.
struct MediaFileRemarks {
    std::vector<UnreadableFolder> unreadable;
    std::uint64_t leftOut = 0; ///< files of folders whose names say that they are neither sound nor movies
    std::uint64_t leftOutSpecial = 0; ///< links, pipes, devices and sockets in folders
    bool isDestinationLeftOut = false; ///< it lies in a source
};

/// Goes through files and folders, down to the last one, in the order given and by name inside of a folder, the files
/// of a folder before its folders. Links inside of folders are not followed. What it keeps grows with the largest
/// folder, not with all that there is. Any thread, one at a time.
class MediaFileWalk
{
public:
    /// A folder in the sources that is the destination is left out, unless it is one of them.
    explicit MediaFileWalk(QList<QByteArray> sources, const QByteArray &destination = {});

    /// The next file; no value when there are no more, or when a stop is requested.
    [[nodiscard]] std::optional<FoundMediaFile> next(const std::stop_token &stop);

    [[nodiscard]] const MediaFileRemarks &remarks() const { return m_remarks; }

private:
    /// A folder that is still to be listed.
    struct FolderToList {
        QByteArray path;
        QByteArray place; ///< as FoundMediaFile::folder
        bool wasGiven = false;
    };

    void take(const QByteArray &source);
    void listFolder(const FolderToList &folder);
    [[nodiscard]] int addEntry(const FolderToList &folder, const QByteArray &name, int descriptor);
    [[nodiscard]] bool isMediaName(const QByteArray &name) const;

    QList<QByteArray> m_sources;
    qsizetype m_nextSource = 0;
    std::optional<DeviceAndInode> m_destination; ///< absent while it is not there
    const QMimeDatabase m_types;
    std::vector<FolderToList> m_folders; ///< the next one last
    std::deque<FoundMediaFile> m_files;
    MediaFileRemarks m_remarks;
};

} // namespace Tessaron
