#pragma once

#include "platform/discimage/source/DiscImageSource.h"
#include "platform/discimage/volume/VolumeCheck.h"

namespace Tessaron
{

/// Looks at what sectors have besides their user data: sync, address, mode, subheader, error detection and correction
/// (see checkSector()). An image of blocks of user data alone has none of it. Sectors whose detection and correction
/// are all zeros are passed over: programs that make images of files often leave them out. The first wrong sectors are
/// told one by one, the others as a number.
void checkSectors(const DiscImageSource &source, VolumeProblemReport &report);

} // namespace Tessaron
