#pragma once

#include "platform/discrecording/objects/DRMSF.h"
#include "platform/discrecording/objects/DRTrack.h"

#include <QString>

#include <memory>

namespace Tessaron
{

// Audio tracks of a CD: blocks of 2352 bytes, block type, data form, track mode and session format 0. They say nothing
// of a pregap.

/// A track whose sound the producer delivers; null for a null producer.
[[nodiscard]] std::shared_ptr<DRTrack> trackForAudioOfLength(DRMSF length,
                                                             const std::shared_ptr<DRTrackProducer> &producer);

/// A track with all of the sound of an audio or movie file, in whole frames, the last one filled up with silence. The
/// file is opened here, and decoded while the track is written, in the process; null when it holds no sound that can be
/// decoded, or none at all.
[[nodiscard]] std::shared_ptr<DRTrack> trackForAudioFile(const QString &path);

} // namespace Tessaron
