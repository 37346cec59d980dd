#pragma once

#include "imaging/jobs/AudioAlbum.h"
#include "platform/disctracks/TableOfContents.h"

#include <cstdint>
#include <vector>

namespace Tessaron
{

/// Where a track lies in an image, in frames.
struct AudioTrackPlace {
    std::uint64_t pregap = 0; ///< in front of `firstFrame`, in the image
    std::uint64_t firstFrame = 0; ///< index 1
    std::uint64_t frames = 0; ///< to the track's end
    std::uint64_t postgap = 0; ///< the last ones of them, silence that was asked for
    std::vector<std::uint64_t> indexPoints; ///< from `firstFrame`

    friend bool operator==(const AudioTrackPlace &, const AudioTrackPlace &) = default;
};

/// Where a run of samples lies in an image.
struct SoundPiece {
    SoundRun run;
    std::uint64_t position = 0; ///< of its first sample, in the image's samples

    friend bool operator==(const SoundPiece &, const SoundPiece &) = default;
};

struct AudioLayout {
    std::vector<AudioTrackPlace> places; ///< of each track
    std::vector<SoundPiece> pieces; ///< in the order of the image, without overlaps; what is between them is silence
    std::uint64_t firstFrame = 0; ///< of all this
    std::uint64_t frames = 0; ///< of all this, from `firstFrame`

    friend bool operator==(const AudioLayout &, const AudioLayout &) = default;
};

/// Lays the tracks out one after another, from a frame of the image on. Where there is no silence between two of them,
/// a gapless sound follows the one before it at the very next sample, and its track begins at the next border of
/// frames. Each track must have a frame at least.
[[nodiscard]] AudioLayout audioLayoutOf(const std::vector<AlbumTrack> &tracks, bool isGapless,
                                        std::uint64_t firstFrame = 0);

/// The tracks as a table of contents has them, not numbered yet. What is in front of them is stored.
[[nodiscard]] std::vector<DiscTrack> discTracksOf(const std::vector<AlbumTrack> &tracks, const AudioLayout &layout);

/// The table of a disc with these tracks alone. In front of the first one is the pregap that every CD has and no image,
/// unless the image holds one.
[[nodiscard]] TableOfContents contentsOf(std::vector<DiscTrack> tracks);

} // namespace Tessaron
