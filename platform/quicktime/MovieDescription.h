#pragma once

#include "platform/foundation/Export.h"
#include "platform/foundation/Result.h"
#include "platform/quicktime/QTMovie.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <optional>
#include <stop_token>
#include <vector>

namespace Tessaron
{

/// A text that belongs to a movie.
struct MovieMetadataItem {
    /// Four characters in QuickTime and MP4 files, as in "\251nam", and for what other files name alike: album, artist,
    /// author, title and date. Else a name, as in "com.apple.quicktime.make" and "genre".
    QByteArray key;
    QByteArray value; ///< what the file holds, up to 64 KiB of it; UTF-8 unless the file is wrong
};

/// A picture that belongs to a movie, in the file.
struct MovieCover {
    QByteArray extension; ///< "jpg", "png", "gif" or "bmp"
    std::int64_t offset = 0; ///< bytes from the file's begin; -1 where only the media module finds it
    std::int64_t length = 0; ///< bytes
};

/// What an audio or movie file says of itself.
struct MovieDescription {
    QString container; ///< for people: "QuickTime", "MP4", "MP2/3 (MPEG audio layer 2/3)" …
    /// A QuickTime or MP4 file has the scale and value of its header. Other files have 600 units a second or, with
    /// sound alone, the sound's rate; the length is the announced one, not counted.
    QTTime duration;
    std::vector<QTTrack> tracks; ///< in the file's order
    std::vector<MovieMetadataItem> metadata; ///< of QuickTime and MP4 files in their order
    std::optional<MovieCover> cover; ///< the first one
};

/// Describes a local, regular file. QuickTime and MP4 files are described by their atoms alone, others by the media
/// module. Reads a bounded part of the file, in memory that does not grow with it; any bytes end in a description or in
/// an error. Any thread.
[[nodiscard]] TESSARON_EXPORT Result<MovieDescription> describeMovie(const QByteArray &path,
                                                                     const std::stop_token &stop = {});

/// The picture, as it is stored, of a movie that was described before. Any thread.
[[nodiscard]] TESSARON_EXPORT Result<QByteArray> pictureOfCover(const QByteArray &path, const MovieCover &cover,
                                                                const std::stop_token &stop = {});

} // namespace Tessaron
