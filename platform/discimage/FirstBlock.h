#pragma once

#include "platform/discimage/source/DiscImageSource.h"
#include "platform/foundation/Export.h"

#include <cstdint>

namespace Tessaron
{

/// The block of the disc that the image begins with, as its filesystems themselves count: by the record of contents of
/// our own images, the root directory of ISO 9660, or an anchor of UDF. A table of contents does not always tell it:
/// some leave out what lies between two sessions, and an image of a single track has none. What the source has is
/// answered where that fits, or nothing else can be found out.
[[nodiscard]] TESSARON_EXPORT std::uint32_t firstBlockOfImage(const DiscImageSource &source);

} // namespace Tessaron
