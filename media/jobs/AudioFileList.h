#pragma once

#include "platform/foundation/NSError.h"
#include <TessaronClasses/UnreadableFolder.h>

#include <QByteArray>
#include <QList>

#include <cstdint>
#include <stop_token>
#include <vector>

namespace Tessaron
{

/// A file to convert.
struct AudioFile {
    QByteArray path;
    QByteArray folder; ///< where its result goes, below the destination; empty for the destination itself
    std::uint64_t bytes = 0;
};

struct AudioFileList {
    NSError error; ///< a source that is not there; null otherwise
    std::vector<AudioFile> files; ///< in the order of the sources, by name inside of a folder
    std::vector<UnreadableFolder> unreadable;
    std::uint64_t leftOut = 0; ///< files of folders whose names say that they are neither sound nor movies
};

/// The files among the sources and in their folders, down to the last one. Links inside of folders are not followed.
[[nodiscard]] AudioFileList audioFilesAtPaths(const QList<QByteArray> &sources, bool isFlat,
                                              const std::stop_token &stop);

} // namespace Tessaron
