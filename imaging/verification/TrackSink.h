#pragma once

#include "platform/foundation/NSError.h"
#include <TessaronClasses/ExtractJob.h>

#include <QByteArray>
#include <QMap>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <memory>

namespace Tessaron
{

/// Where the bytes of a track go. Errors are those of a job (DiscJobErrors.h).
class TrackSink
{
public:
    virtual ~TrackSink() = default;
    TrackSink(const TrackSink &) = delete;
    TrackSink &operator=(const TrackSink &) = delete;

    [[nodiscard]] virtual NSError write(const char *bytes, std::size_t length) = 0;
    /// Writes what belongs behind all bytes.
    [[nodiscard]] virtual NSError finish() = 0;

protected:
    TrackSink() = default;
};

/// What a file is to become.
struct TrackFile {
    int descriptor = -1; ///< of an empty file, open for reading and writing; the caller's
    QByteArray path; ///< for errors
    std::uint64_t bytes = 0; ///< that will be written
};

/// Bytes as they are.
[[nodiscard]] std::unique_ptr<TrackSink> dataSink(const TrackFile &file);
/// The sound of a CD, in that form and with those tags (see tagsOfTrack()).
[[nodiscard]] std::unique_ptr<TrackSink> soundSink(const TrackFile &file, ExtractedSound form,
                                                   const QMap<QString, QString> &tags);

/// The most bytes of sound that a WAVE file with some tags holds.
[[nodiscard]] std::uint64_t mostSoundInWave();

} // namespace Tessaron
