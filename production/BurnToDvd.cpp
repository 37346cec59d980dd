#include "production/BurnToDvd.h"

#include "platform/discrecording/objects/DRDeviceMedia.h"
#include "platform/discrecording/objects/DRTrackDescription.h"

namespace Tessaron
{

bool isDvd(const QVariantMap &media)
{
    return media.value(DRDeviceMediaClassKey).toString() == DRDeviceMediaClassDVD;
}

bool describeForDvd(DRTrack *track, std::uint32_t sectorSize)
{
    constexpr std::uint32_t blockSize = 2048;
    if (sectorSize != blockSize)
        return false;
    if (track) {
        StatedTrack stated;
        stated.blockSize = blockSize;
        stated.recording = {5, 16, 8, 0};
        track->setProperties(propertiesOfStatedTrack(stated, track->properties()));
    }
    return true;
}

} // namespace Tessaron
