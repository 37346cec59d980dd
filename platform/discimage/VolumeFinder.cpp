#include "platform/discimage/VolumeFinder.h"

#include "platform/discimage/hfsplus/HfsPlusVolumeReader.h"
#include "platform/discimage/iso9660/IsoVolumeReader.h"
#include "platform/discimage/udf/UdfVolumeReader.h"

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
    add(VolumeKind::UDF, UdfVolumeReader::open(source));
    add(VolumeKind::HFSPlus, HfsPlusVolumeReader::open(source));
    return volumes;
}

} // namespace Tessaron
