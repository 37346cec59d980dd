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
    NSError error; ///< of a source that is not there or cannot be read; null otherwise
};

struct AudioFileList {
    std::vector<AudioFile> files; ///< in the order of the sources, by name inside of a folder
    std::vector<UnreadableFolder> unreadable;
    std::uint64_t leftOut = 0; ///< files of folders whose names say that they are neither sound nor movies
    bool isDestinationLeftOut = false; ///< it lies in a source
};

/// The files among the sources and in their folders, down to the last one. Links inside of folders are not followed,
/// and a folder in them that is the destination is left out.
[[nodiscard]] AudioFileList audioFilesAtPaths(const QList<QByteArray> &sources, const QByteArray &destination,
                                              bool isFlat, const std::stop_token &stop);

} // namespace Tessaron
