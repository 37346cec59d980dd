#pragma once

#include "platform/discimage/source/DiscImageSource.h"
#include "platform/discimage/udf/UdfPartitions.h"
#include "platform/discimage/volume/VolumeObject.h"
#include "platform/foundation/NSError.h"

namespace Tessaron
{

/// Fills in what the file entry (ECMA-167 4/14.9, 4/14.17) at the address says: all but the name. The extents of a
/// folder are set like those of a file; `location` and `identity` are the entry's place.
[[nodiscard]] NSError readUdfEntry(const DiscImageSource &source, const UdfVolumeStructure &structure,
                                   const UdfBlockAddress &address, VolumeObject *object);

} // namespace Tessaron
