#pragma once

#include "platform/discimage/volume/VolumeReader.h"
#include "platform/foundation/Export.h"
#include "platform/foundation/NSError.h"

#include <memory>
#include <vector>

namespace Tessaron
{

/// A filesystem that an image has.
struct FoundVolume {
    VolumeKind kind = VolumeKind::ISO9660;
    std::unique_ptr<VolumeReader> reader; ///< null when it cannot be read at all
    NSError error; ///< what is damaged in it; may come with a reader
};

/// Looks for every filesystem that is read here, in the order of VolumeKind.
[[nodiscard]] TESSARON_EXPORT std::vector<FoundVolume>
volumesInImage(const std::shared_ptr<const DiscImageSource> &source);

} // namespace Tessaron
