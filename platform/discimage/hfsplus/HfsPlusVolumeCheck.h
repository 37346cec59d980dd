#pragma once

#include "platform/discimage/source/DiscImageSource.h"
#include "platform/discimage/volume/VolumeCheck.h"
#include "platform/foundation/Export.h"

namespace Tessaron
{

/// Holds the structures of an HFS+ volume in an image against one another: both headers, the allocation file against
/// what the forks use, each B-tree, and in the catalog threads, counts of children and hard links. Nothing is told of
/// an image without any trace of HFS+. Reads the catalog once; memory is about 50 bytes for each object, and a bit for
/// each block.
TESSARON_EXPORT void checkHfsPlusVolume(const DiscImageSource &source, VolumeProblemReport &report);

} // namespace Tessaron
