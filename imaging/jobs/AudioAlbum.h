#pragma once

#include "imaging/jobs/AudioSources.h"
#include "platform/disctracks/CDText.h"
#include "platform/disctracks/DiscTrack.h"
#include "platform/foundation/Result.h"
#include <TessaronClasses/AudioTracks.h>

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace Tessaron
{

/// A run of samples of a file.
struct SoundRun {
    std::size_t file = 0; ///< place in AudioSources::files
    std::uint64_t first = 0;
    std::uint64_t samples = 0;

    friend bool operator==(const SoundRun &, const SoundRun &) = default;
};

/// A track before it has its place on the disc.
struct AlbumTrack {
    QByteArray source; ///< path of the file or the cue sheet that tells of it
    std::optional<std::size_t> ownFile; ///< the file that holds this track and nothing else
    std::uint64_t silence = 0; ///< frames in front of it that no file holds
    std::vector<SoundRun> pregap; ///< behind that silence, in front of index 1
    std::vector<SoundRun> sound; ///< from index 1 on
    std::vector<std::uint64_t> indexPoints; ///< index 2 and so on, in samples from index 1
    std::uint64_t postgap = 0; ///< frames of silence that end it
    DiscTrack marks; ///< flags and ISRC; the rest of it does not count
    SpokenTexts texts; ///< those of a cue sheet
};

/// All tracks of a disc, in order.
struct AudioAlbum {
    std::vector<AlbumTrack> tracks;
    SpokenTexts texts; ///< of the disc; those of a cue sheet, where there is no other source
    QByteArray mediaCatalogNumber;
    QStringList notes; ///< what cue sheets say and is not taken, each in a sentence
};

/// The tracks that the sources stand for. `lengths` are those of the files, in samples. `gap` frames of silence come in
/// front of each source but the first; between the tracks of a cue sheet is what the sheet says. An error of code
/// Source names the line of the sheet.
[[nodiscard]] Result<AudioAlbum> audioAlbumOf(const AudioSources &sources, const std::vector<std::uint64_t> &lengths,
                                              std::uint32_t gap);

} // namespace Tessaron
