#pragma once

#include "platform/disctracks/CDText.h"
#include "platform/disctracks/DiscTrack.h"
#include "platform/foundation/Export.h"
#include "platform/foundation/Result.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <map>
#include <vector>

namespace Tessaron
{

/// Texts of one track, or of the disc, by the code of their language (EBU Tech 3264 annex 1) and by kind.
using SpokenTexts = std::map<std::uint8_t, std::map<CDTextKind, QString>>;

/// A part of an audio or movie file, in frames: 75 in a second, 588 samples each.
struct AudioPart {
    QByteArray path; ///< bytes
    std::uint64_t first = 0; ///< where it begins in the file
    std::uint64_t frames = 0; ///< 0 for all from `first` to the end of the file

    friend bool operator==(const AudioPart &, const AudioPart &) = default;
};

/// A track of an audio CD that is to be made, with all that can be said of it. Lengths are frames. A value.
struct AudioTrackOrder {
    std::uint32_t gap = 0; ///< silence that comes first, in front of `pregap`
    std::vector<AudioPart> pregap; ///< sound in front of index 1
    std::vector<AudioPart> sound; ///< from index 1 on; one at least
    std::vector<std::uint64_t> indexPoints; ///< where index 2, 3 … begin, counted from index 1
    std::uint64_t postgap = 0; ///< silence at its end
    QByteArray isrc; ///< with or without dashes, or empty
    CopyState copyState = CopyState::Unstated;
    bool hasPreEmphasis = false;
    bool hasFourChannels = false;
    SpokenTexts texts;
    /// The sound is one whole file, so that the tags of the file are those of this track.
    bool hasOwnFile = false;

    friend bool operator==(const AudioTrackOrder &, const AudioTrackOrder &) = default;
};

/// The tracks that a file, a list or a cue sheet stands for.
struct AudioTracks {
    std::vector<AudioTrackOrder> tracks;
    SpokenTexts texts; ///< of the disc, where a cue sheet says them
    QByteArray mediaCatalogNumber;
    QStringList notes; ///< what a cue sheet says and was not taken over, a sentence each
};

/// The tracks of a file: of one whose name ends in ".m3u" or ".m3u8" those that it lists; of a cue sheet (".cue") those
/// that it tells of; any other file is a track itself. Files of sound are not opened: a part that ends where its file
/// ends has 0 frames. An error of code Source or InvalidOrder (DiscJobErrors.h) names the line that cannot be used.
/// Reads from the disk, so it is not for the main thread. Thread-safe.
[[nodiscard]] TESSARON_EXPORT Result<AudioTracks> audioTracksAt(const QByteArray &path);

} // namespace Tessaron
