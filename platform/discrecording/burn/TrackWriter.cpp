#include "platform/discrecording/burn/TrackWriter.h"

#include "platform/discrecording/burn/BurnErrors.h"
#include "platform/discrecording/burn/ImageTrackWriter.h"
#include "platform/discrecording/burn/ProducerTrackWriter.h"
#include "platform/discrecording/objects/DRTrack.h"
#include "platform/discrecording/objects/DRTrackDescription.h"

namespace Tessaron
{

TrackWriter::~TrackWriter() = default;

Result<std::unique_ptr<TrackWriter>> trackWriterFor(const std::shared_ptr<DRTrack> &track, DRBurn *burn,
                                                    const QVariantMap &media)
{
    if (!track)
        return burnError(paramErr, QStringLiteral("A track of the layout is missing."));
    if (track->producer()) {
        const Result<DiscTrack> described = describeProducerTrack(*track);
        if (!described)
            return described.error();
        return std::make_unique<ProducerTrackWriter>(track, *described, burn, media);
    }
    if (track->rootFolder()) {
        const Result<DiscTrack> described = discTrackOfProperties(track->properties(), TrackLengthIs::PlannedLater);
        if (!described)
            return described.error();
        if (!ImageTrackWriter::canWrite(*described))
            return burnError(paramErr,
                             QStringLiteral("A filesystem cannot be written in the blocks that its track asks for: %1 "
                                            "bytes (%2) of this type (%3).")
                                 .arg(described->blockSize)
                                 .arg(DRBlockSizeKey, DRBlockTypeKey),
                             QStringLiteral("Use blocks of 2048, 2352 or 2448 bytes in mode 1 or 2, or of 2336 bytes "
                                            "in mode 2."));
        return std::make_unique<ImageTrackWriter>(track->rootFolder(), *described);
    }
    return burnError(paramErr, QStringLiteral("A track has neither a folder nor a producer."));
}

} // namespace Tessaron
