#include "platform/discimage/VolumeFinder.h"

#include "platform/discimage/IsoVolumeReader.h"

namespace Tessaron
{

std::vector<FoundVolume> volumesInImage(const std::shared_ptr<const DiscImageSource> &source)
{
    std::vector<FoundVolume> volumes;
    const auto add = [&volumes](VolumeKind kind, VolumeReaderResult result) {
        if (result.reader || result.error)
            volumes.push_back({kind, std::move(result.reader), result.error});
    };
    for (const VolumeKind kind : {VolumeKind::ISO9660, VolumeKind::RockRidge, VolumeKind::Joliet})
        add(kind, IsoVolumeReader::open(source, kind));
    return volumes;
}

} // namespace Tessaron
