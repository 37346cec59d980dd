#pragma once

#include "platform/quicktime/MovieAtoms.h"

#include <cstdint>
#include <map>
#include <optional>

namespace Tessaron
{

/// The bytes of all samples that a track's tables list; no value when the tables are cut or missing.
[[nodiscard]] std::optional<std::uint64_t> bytesOfSamples(AtomSource &source, const MovieTrackAtoms &track);

/// What the fragments of a movie add to a track (ISO/IEC 14496-12 8.8).
struct FragmentSums {
    std::uint64_t bytes = 0;
    std::uint64_t ticks = 0; ///< of the media
};

/// The sums by the identifiers of the tracks, over all fragments of the file; no value when one of them is cut, or when
/// there are more than can be.
[[nodiscard]] std::optional<std::map<std::uint32_t, FragmentSums>> sumsOfFragments(AtomSource &file,
                                                                                   const MovieTree &tree);

} // namespace Tessaron
