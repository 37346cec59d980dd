#include "imaging/jobs/VantTrailer.h"

#include "platform/discrecording/objects/DRFolder.h"
#include "platform/discrecording/objects/DRTrack.h"
#include <TessaronClasses/VANTHeader.h>

namespace Tessaron
{

QByteArray vantTrailerForImage(std::uint64_t imageLength)
{
    // A track of its own, so that block size, type and form are those that every filesystem track has.
    const std::shared_ptr<DRTrack> track = DRTrack::trackForRootFolder(DRFolder::virtualFolderWithName({}));
    QVariantMap properties = track->properties();
    properties.insert(DRTrackLengthKey, quint64(imageLength / properties.value(DRBlockSizeKey).toUInt()));
    track->setProperties(properties);
    return VANTHeaderForDRLayout(track);
}

} // namespace Tessaron
