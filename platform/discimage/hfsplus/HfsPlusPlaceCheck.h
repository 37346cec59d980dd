#pragma once

#include "platform/discimage/source/DiscImageSource.h"
#include "platform/discimage/volume/VolumeCheck.h"

namespace Tessaron
{

/// Looks at every place where an HFS+ volume, its wrapper or the copy of its header can be: what is left of one that
/// is not found any more, and ways that do not lead to the same volume.
void checkHfsPlusPlaces(const DiscImageSource &source, const VolumeProblems &problems);

} // namespace Tessaron
