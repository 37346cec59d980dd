#pragma once

#include "imaging/jobs/AudioAlbum.h"
#include "imaging/jobs/AudioSources.h"
#include "platform/foundation/NSError.h"
#include <TessaronClasses/AudioImageJob.h>

#include <cstdint>
#include <vector>

namespace Tessaron
{

// What an image of sound must not ask for. Errors are those of DiscJobErrors.h; a null one means that all is well.

/// Before anything is looked at: format and output.
[[nodiscard]] NSError errorOfOutput(const AudioImageOrder &order);

/// Before any file of sound is opened: how many there are.
[[nodiscard]] NSError errorOfSources(const AudioImageOrder &order, const AudioSources &sources);

/// Once the tracks are known: their number, their lengths, and the ISRCs given for them.
[[nodiscard]] NSError errorOfTracks(const AudioImageOrder &order, const std::vector<AlbumTrack> &tracks);

/// An error when the frames do not fit onto a disc of `capacity`. A capacity of 0 sets no limit.
[[nodiscard]] NSError errorOfCapacity(std::uint64_t frames, std::uint32_t capacity);

} // namespace Tessaron
