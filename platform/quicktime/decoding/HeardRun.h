#pragma once

#include "platform/quicktime/MovieAtoms.h"

#include <cstdint>
#include <optional>

namespace Tessaron
{

/// A run of a track's media that is to be heard, in ticks of the media.
struct MediaRun {
    std::int64_t begin = 0;
    std::int64_t end = 0; ///< not included
};

/// The one run of a track that is to be heard, exact to the tick; no value where the edit list plays several.
[[nodiscard]] std::optional<MediaRun> heardRun(const MovieAtoms &movie, const MovieTrackAtoms &track);

} // namespace Tessaron
