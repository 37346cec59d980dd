#pragma once

#include "platform/disctracks/TableOfContents.h"

#include <cstdint>
#include <vector>

namespace Tessaron
{

/// Where the sound of a source lies in an image.
struct AudioTrackPlace {
    std::uint64_t firstSample = 0; ///< of the source, in the image's samples
    std::uint64_t samples = 0;
    std::uint64_t pregap = 0; ///< frames, in front of `firstFrame`
    std::uint64_t firstFrame = 0; ///< index 1
    std::uint64_t frames = 0; ///< to the track's end

    friend bool operator==(const AudioTrackPlace &, const AudioTrackPlace &) = default;
};

/// Lays sounds out one after another. `gap` frames lie between two; without one, a gapless sound follows the one before
/// it at the very next sample, and its track begins at the next border of frames. Each sound has a frame at least.
[[nodiscard]] std::vector<AudioTrackPlace> audioTrackPlaces(const std::vector<std::uint64_t> &lengths,
                                                            std::uint32_t gap, bool isGapless);

/// Frames up to the end of the last track.
[[nodiscard]] std::uint64_t framesOf(const std::vector<AudioTrackPlace> &places);

/// The table of a disc with these audio tracks, whose gaps the image holds.
[[nodiscard]] TableOfContents contentsOf(const std::vector<AudioTrackPlace> &places);

} // namespace Tessaron
