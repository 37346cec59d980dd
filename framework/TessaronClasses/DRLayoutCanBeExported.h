#pragma once

#include "platform/discrecording/objects/DRTrack.h"
#include "platform/foundation/Export.h"
#include <TessaronClasses/TessaronDiscImageFormat.h>

namespace Tessaron
{

/// Whether a layout can be written as an image of the format. Never for a null layout or a format that is made by other
/// means; always for the VANT format; for ISO when all tracks have blocks of 2048 bytes; for BIN when all tracks have
/// blocks of one size, 2048, 2336 or 2352 bytes, and no track has blocks of 2336 bytes and type 8 or 9. A track whose
/// properties name no block size or block type cannot be exported as either.
[[nodiscard]] TESSARON_EXPORT bool DRLayoutCanBeExported(const DRLayout &layout, TessaronDiscImageFormat format);

} // namespace Tessaron
