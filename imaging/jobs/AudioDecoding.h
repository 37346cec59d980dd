#pragma once

#include "imaging/jobs/AudioTrackLayout.h"
#include "platform/foundation/Result.h"
#include "platform/quicktime/CDSound.h"

#include <QByteArray>
#include <QMap>
#include <QString>

#include <atomic>
#include <memory>
#include <stop_token>
#include <vector>

namespace Tessaron
{

/// An audio file, opened for the tracks of a disc.
struct OpenedSound {
    QByteArray path;
    std::uint64_t samples = 0;
    QMap<QString, QString> tags;
    std::unique_ptr<CDSound> sound; ///< at its beginning
};

/// Opens all files, several at a time, and finds out their exact lengths. The first failure, in the order of the files,
/// is an error of code Source (DiscJobErrors.h), as is a sound that is shorter than a frame.
[[nodiscard]] Result<std::vector<OpenedSound>> openSounds(const QList<QByteArray> &paths, const std::stop_token &stop);

/// Decodes the sounds to their places in a file that has the length of all and holds zeros, several at a time. What is
/// broken in a sound comes back in its element of the result; `*bytesDone` counts what is written. Sounds are closed as
/// soon as they are written.
[[nodiscard]] Result<std::vector<AudioDamageReport>> writeSounds(std::vector<OpenedSound> &sounds,
                                                                 const std::vector<AudioTrackPlace> &places,
                                                                 int descriptor, std::atomic<std::uint64_t> *bytesDone,
                                                                 const std::stop_token &stop);

} // namespace Tessaron
