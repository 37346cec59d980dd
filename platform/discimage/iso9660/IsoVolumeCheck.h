#pragma once

#include "platform/discimage/source/DiscImageSource.h"
#include "platform/discimage/volume/VolumeCheck.h"
#include "platform/foundation/Export.h"

namespace Tessaron
{

/// Holds the structures of ISO 9660, Joliet and Rock Ridge in an image against one another: descriptors, root records,
/// path tables, directories, system use entries and the boot catalog of El Torito. Nothing is told of an image without
/// any trace of ISO 9660. Reads every directory once for each tree; memory is in proportion to the folders, not to the
/// files.
TESSARON_EXPORT void checkIsoVolumes(const DiscImageSource &source, VolumeProblemReport &report);

} // namespace Tessaron
