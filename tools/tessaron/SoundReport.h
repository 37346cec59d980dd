#pragma once

#include "tools/tessaron/JsonWriter.h"
#include <TessaronClasses/AudioImageJob.h>

#include <vector>

namespace Tessaron::Tool
{

/// A line on standard error for each track that many recorders refuse.
void printShortTracks(const std::vector<AudioImageTrack> &tracks);

/// Member of that name: an array of objects with track, source, samples, pregapFrames, firstFrame, frames, title,
/// performer, isrc, tooShort, loudness, truePeak and gain where it was normalized, damagedPlaces and damage.
void writeSoundTracks(JsonWriter &writer, const char *name, const std::vector<AudioImageTrack> &tracks);

} // namespace Tessaron::Tool
