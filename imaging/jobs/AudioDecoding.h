#pragma once

#include "imaging/jobs/AudioTrackLayout.h"
#include "imaging/jobs/SoundLoudness.h"
#include "platform/foundation/Result.h"
#include "platform/quicktime/CDSound.h"
#include "platform/quicktime/SoundHelpers.h"

#include <QByteArray>
#include <QMap>
#include <QString>

#include <atomic>
#include <memory>
#include <stop_token>
#include <vector>

namespace Tessaron
{

/// An audio file, as far as the layout of a disc needs to know it.
struct AlbumFile {
    QByteArray path;
    std::uint64_t samples = 0;
    QMap<QString, QString> tags;
};

/// What work on several files needs in common.
struct AudioDecoding {
    SoundHelpers &helpers;
    std::atomic<std::uint64_t> &bytesDone; ///< counts sound of 16 bits that was measured or written
    const std::stop_token &stop;
};

/// Opens all files, several at a time, and finds out their exact lengths. The first failure, in the order of the files,
/// is an error of code Source (DiscJobErrors.h).
[[nodiscard]] Result<std::vector<AlbumFile>> openAudioFiles(const QList<QByteArray> &paths,
                                                            const AudioDecoding &decoding);

/// Decodes all files, several at a time, and measures their loudness.
[[nodiscard]] Result<std::vector<std::unique_ptr<LoudnessMeter>>> measureAudioFiles(const std::vector<AlbumFile> &files,
                                                                                    const AudioDecoding &decoding);

/// Decodes the files to their places in an image and multiplies each by its gain. What is broken in a file comes back
/// in its element of the result.
///
/// writeAudioFiles() writes into a file that has the length of all and holds zeros where no sound lies, several files
/// of sound at a time; streamAudioFiles() writes one frame after the other from the layout's first one on.
[[nodiscard]] Result<std::vector<AudioDamageReport>> writeAudioFiles(const std::vector<AlbumFile> &files,
                                                                     const std::vector<double> &gains,
                                                                     const AudioLayout &layout, int descriptor,
                                                                     const AudioDecoding &decoding);
[[nodiscard]] Result<std::vector<AudioDamageReport>> streamAudioFiles(const std::vector<AlbumFile> &files,
                                                                      const std::vector<double> &gains,
                                                                      const AudioLayout &layout, int descriptor,
                                                                      const AudioDecoding &decoding);

} // namespace Tessaron
