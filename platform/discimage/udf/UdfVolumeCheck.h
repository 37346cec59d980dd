#pragma once

#include "platform/discimage/source/DiscImageSource.h"
#include "platform/discimage/volume/VolumeCheck.h"
#include "platform/foundation/Export.h"

#include <memory>

namespace Tessaron
{

/// Holds the structures of UDF in an image against one another: recognition sequence, all anchors, both descriptor
/// sequences, integrity descriptor, file set, and each file entry against the identifiers that lead to it. Nothing is
/// told of an image without any trace of UDF. Reads every file entry once for each of its names; memory is 32 bytes or
/// so for each file entry.
TESSARON_EXPORT void checkUdfVolume(const std::shared_ptr<const DiscImageSource> &source, VolumeProblemReport &report);

} // namespace Tessaron
